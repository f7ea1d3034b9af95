// How much surface has a lake's shore? A basin is triangulated, the lake and an island are cut out of it, and what is left
// of the lake is measured, also after more points have come in.

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// A zone inside a circle at the height of the water.
Zone2* circleZone(Lumo_2D& lumo, double radius)
{
    std::vector<Segment2> vRing;
    generateCircle(64, Point2(0, 0, 10), radius, vRing);
    return lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
}

} // namespace

int main()
{
    Lumo_2D lumo;
    lumo.insert(std::vector<Point2>{{-100, -100, 20}, {100, -100, 20}, {100, 100, 20}, {-100, 100, 20}, {0, 0, 15}});
    Zone2* const pLake = circleZone(lumo, 60);
    Zone2* const pIsland = circleZone(lumo, 20);
    Zone2* const pWater = zoneDifference(pLake, pIsland);
    std::printf("water %.0f m2, %zu triangles\n", pWater->getArea2D(), pWater->getNumberOfTriangles());

    // Zones are rules, not triangles: they stay right.
    lumo.insert(std::vector<Point2>{{40, 0, 2}, {0, 40, 3}, {-40, 0, 2}, {0, -40, 4}, {90, 0, 18}});
    std::printf("water %.0f m2, bottom %.0f m2, %zu triangles\n", pWater->getArea2D(), pWater->getArea25D(),
                pWater->getNumberOfTriangles());
    std::vector<Edge2> vBorder, vOpen;
    pWater->getBorderEdges(vBorder);
    std::vector<std::vector<Edge2>> vvRings;
    edgesToPolygons(vBorder, vvRings, vOpen);
    std::printf("%zu shores\n", vvRings.size());
    return 0;
}
