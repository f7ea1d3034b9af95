// Times saved states beside the triangulation that they spare.
//
//     saving [--points N] [--rounds N]
//
// Uniform points with a tenth as many constraint segments, in rings that don't touch. Times are medians of the rounds; the
// file lies in the system's cache.

#include "inputs.h"
#include "measure.h"

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Times;

namespace
{

constexpr std::size_t ringSize = 100;

/// Rings of that many segments, each in a cell of its own.
std::vector<std::vector<Segment2>> rings(std::size_t numSegments)
{
    const auto side = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(numSegments) / ringSize)));
    std::vector<std::vector<Segment2>> vvRings;
    for (std::size_t i = 0; i < numSegments / ringSize; ++i) {
        const double x = (static_cast<double>(i % side) + 0.5) / static_cast<double>(side);
        const double y = (static_cast<double>(i / side) + 0.5) / static_cast<double>(side);
        vvRings.emplace_back();
        generateCircle(ringSize, Point2(x, y, 0), 0.4 / static_cast<double>(side), vvRings.back());
    }
    return vvRings;
}

class Samples
{
public:
    void add(const Times& start) { v.push_back((Times::now() - start).wall); }
    double median()
    {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    }

private:
    std::vector<double> v;
};

struct Round
{
    Samples triangulate, save, load, read;
};

/// False when what was loaded differs.
bool run(const std::vector<Point2>& vPoints, const std::vector<Segment2>& vSegments, const std::vector<Segment2>& vRing,
         const char* filename, Round& round)
{
    Times start = Times::now();
    Lumo_2D lumo(vPoints.size() + vSegments.size());
    lumo.insert(vPoints);
    lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
    round.triangulate.add(start);
    const std::vector<Zone2*> vZones{
        lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE)};

    start = Times::now();
    bool bOK = lumo.saveTriangulation(filename, vZones);
    round.save.add(start);

    start = Times::now();
    Lumo_2D loaded;
    std::vector<Zone2*> vLoaded;
    bOK = loaded.load(filename, vLoaded) && bOK;
    round.load.add(start);

    start = Times::now(); // what a reading of the bytes alone costs
    std::FILE* const pFile = std::fopen(filename, "rb");
    std::vector<char> vBytes(std::filesystem::file_size(filename));
    bOK = pFile != nullptr && std::fread(vBytes.data(), 1, vBytes.size(), pFile) == vBytes.size() && bOK;
    if (pFile != nullptr) std::fclose(pFile);
    round.read.add(start);
    return bOK && loaded.numberOfPoints() == lumo.numberOfPoints() &&
           loaded.numberOfTriangles() == lumo.numberOfTriangles() &&
           vLoaded[0]->getNumberOfTriangles() == vZones[0]->getNumberOfTriangles();
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t numPoints = 1000000;
    int numRounds = 5;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--points") == 0) numPoints = std::strtoull(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--rounds") == 0) numRounds = std::max(1, std::atoi(argv[i + 1]));
    }
    const auto vPoints = benchmarks::uniform(numPoints);
    const auto vvRings = rings(numPoints / 10);
    std::vector<Segment2> vSegments;
    for (const auto& vRing : vvRings) vSegments.insert(vSegments.end(), vRing.begin(), vRing.end());
    const std::string filename = (std::filesystem::temp_directory_path() / "lumo25d_saving.bin").string();
    benchmarks::settleMemory(1000 * numPoints);
    Round round;
    bool bOK = true;
    for (int i = 0; i < numRounds; ++i) {
        bOK = run(vPoints, vSegments, vvRings.front(), filename.c_str(), round) && bOK;
    }
    const double whole = round.triangulate.median();
    std::printf("| %zu points, %zu segments, %.1f MB | s | of triangulating |\n|---|---|---|\n", numPoints,
                vSegments.size(), static_cast<double>(std::filesystem::file_size(filename)) * 1e-6);
    for (auto& [name, samples] : {std::pair{"triangulate", &round.triangulate}, std::pair{"save", &round.save},
                                  std::pair{"load", &round.load}, std::pair{"read the bytes", &round.read}}) {
        std::printf("| %s | %.3f | %.2f |\n", name, samples->median(), samples->median() / whole);
    }
    std::filesystem::remove(filename);
    if (!bOK) std::printf("DIFFERENT RESULTS\n");
    return bOK ? 0 : 1;
}
