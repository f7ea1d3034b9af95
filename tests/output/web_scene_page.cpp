// Writes the page that the test in the browser looks at: the plane z = 100 + 0.25 (x - 5000000) + 0.5 (y - 6000000) at
// survey coordinates, with two vertices whose heights aren't known, constraints, a zone and a title that would break
// out of a script.

#include "Lumo_2D.h"

#include <limits>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    if (argc != 2) return 2;
    const auto onPlane = [](double dx, double dy) {
        return Point2(5000000.0 + dx, 6000000.0 + dy, 100.0 + 0.25 * dx + 0.5 * dy);
    };
    std::vector<Point2> vPoints;
    for (int i = 0; i <= 40; ++i) {
        for (int k = 0; k <= 30; ++k) vPoints.push_back(onPlane(0.25 * i, 0.25 * k));
    }
    Lumo_2D lumo;
    std::vector<Point2*> vHandles;
    lumo.insert(vPoints, vHandles);
    vHandles[33]->setHeight(std::numeric_limits<double>::quiet_NaN());
    vHandles[35]->setHeight(std::numeric_limits<double>::max());
    std::vector<Segment2> vRing;
    const Point2 aRing[] = {onPlane(6.0, 1.0), onPlane(9.0, 1.0), onPlane(9.0, 5.0)};
    for (int i = 0; i < 3; ++i) vRing.emplace_back(aRing[i], aRing[(i + 1) % 3]);
    Zone2* const pZone = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
    lumo.createConstraint({{onPlane(1.0, 6.0), onPlane(8.0, 6.5)}}, CIS_CONSTRAINED_DELAUNAY);
    lumo.setName("</script><b>\"title\" \\ \xc3\xa4");
    return lumo.writeWebScene(argv[1], {pZone}) ? 0 : 1;
}
