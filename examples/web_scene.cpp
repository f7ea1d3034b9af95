// A surface as a page for the browser: measured ground is triangulated, a building site is cut out of it, and the page shows
// both, with a path across that follows the ground.
//
//     web_scene POINTS.xyz HEIGHT_UNIT PAGE.html
//
// HEIGHT_UNIT is the length of the heights' unit in that of x and y: 1, unless a survey mixes feet and metres.

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

int run(const char* pPoints, double heightUnit, const char* pPage)
{
    std::vector<Point2> vPoints;
    if (!readXYZ(pPoints, vPoints)) return 1;
    for (Point2& p : vPoints) p.setHeight(p.z() * heightUnit);
    Lumo_2D lumo;
    lumo.setName("Building site");
    lumo.insert(vPoints);

    const Bbox2 box = lumo.computeBoundingBox();
    const Point2 center = box.computeCenter();
    std::vector<Segment2> vRing;
    generateCircle(48, center, box.getMaxRange() / 5.0, vRing);
    Zone2* const pSite = lumo.createZone_cookieCutter(vRing, false);
    if (pSite == nullptr) return 1;
    lumo.cutTriangles(Point2(box.get_minX(), center.y(), 0.0), Point2(box.get_maxX(), center.y(), 0.0), true);

    std::printf("site %.1f m2 in the plane, %.1f m2 in space\n", pSite->getArea2D(), pSite->getArea25D());
    return lumo.writeWebScene(pPage, {pSite}) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const double heightUnit = argc == 4 ? std::strtod(argv[2], nullptr) : 0.0;
    if (!(heightUnit > 0.0)) {
        std::printf("usage: web_scene POINTS.xyz HEIGHT_UNIT PAGE.html\n");
        return 2;
    }
    try {
        return run(argv[1], heightUnit, argv[3]);
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
