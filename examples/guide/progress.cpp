// Listens to a long operation, draws how far it was at which time, and cancels another one at its half.
//
//     progress POINTS.xyz PICTURE.ps

#include "EfficientModel.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace ORBI_LUMO25D;

/// Notes at which time, in seconds, which step had come how far; has enough at some point.
class Recorder : public MsgBase
{
public:
    explicit Recorder(double enough_) : enough(enough_) {}
    void update(MsgType, const char* step, double fraction) override
    {
        if (fraction >= enough) throw std::runtime_error("enough");
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        if (vCurves.empty() || fraction < vCurves.back().second.back().y()) vCurves.push_back({step, {}});
        vCurves.back().second.emplace_back(time.count(), fraction, 0.0);
    }

    double enough;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::vector<std::pair<std::string, std::vector<Point2>>> vCurves;
};

int main(int argc, char** argv)
{
    std::vector<Point2> vScan, vFew;
    if (argc != 3 || !readXYZ(argv[1], vScan)) return 2;

    Recorder recorder(2.0); // never
    EfficientModel model(vScan);
    model.subscribe(MSG_PROGRESS, &recorder); // ours; it must live until it is unsubscribed
    model.extract(5.0, vFew);
    model.unsubscribe(MSG_PROGRESS, &recorder);

    Visualizer2 picture(argv[2]);
    const double end = recorder.vCurves.back().second.back().x();
    double y = 0.97; // of the texts
    for (const double part : {0.0, 0.5, 1.0})
        picture.addObject(Segment2({0, part, 0}, {2, part, 0}), Color(CGRAY, 0.5F));
    for (auto& [step, vCurve] : recorder.vCurves) {
        for (Point2& p : vCurve) p.setCoords(p.x() / end * 2.0, p.y(), 0.0);
        std::vector<Segment2> vLine;
        pointsToPolyline(vCurve, false, vLine);
        const Color color(Color::getNextColorName(), 2.0F);
        picture.addObject(vLine, color);
        picture.addObject(Label({std::min(vCurve.front().x(), 1.4), y += 0.06, 0}, step.c_str(), false, 12), color);
        std::printf("%s: %zu reports from %.0f %% of the time\n", step.c_str(), vCurve.size(),
                    50.0 * vCurve.front().x());
    }
    picture.writeFile();

    Lumo_2D lumo;
    Recorder canceller(0.5);
    lumo.subscribe(MSG_PROGRESS, &canceller);
    try {
        lumo.insert(vScan);
    } catch (const std::runtime_error&) { // what the listener threw
        const bool bValid = lumo.checkValidity(true, nullptr);
        std::printf("cancelled, %s, with %zu points\n", bValid ? "valid" : "broken", lumo.numberOfPoints());
    }
    return 0;
}
