// Stop work on a site in the evening, go on in the morning: a surface with a pit's rim as constraint and the pit as a zone is
// saved, loaded into a new object, and surveyed further.

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main()
{
    {
        Lumo_2D lumo;
        lumo.insert(std::vector<Point2>{{-50, -50, 20}, {50, -50, 21}, {50, 50, 22}, {-50, 50, 21}, {0, 0, 12}});
        std::vector<Segment2> vRim;
        generateCircle(12, Point2(0, 0, 20), 30, vRim);
        Zone2* const pPit = lumo.createZone(lumo.createConstraint(vRim, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
        std::printf("evening: %zu triangles, pit %.0f m2\n", lumo.numberOfTriangles(), pPit->getArea2D());
        if (!lumo.saveTriangulation("site.lumo", {pPit})) return 1;
    }
    Lumo_2D lumo;
    std::vector<Zone2*> vZones;
    if (!lumo.load("site.lumo", vZones)) return 1;
    std::printf("morning: %zu triangles, pit %.0f m2\n", lumo.numberOfTriangles(), vZones[0]->getArea2D());

    lumo.insert(std::vector<Point2>{{5, 5, 10}, {-40, 0, 20}, {8, -6, 11}});
    std::printf("surveyed: %zu triangles, pit %.0f m2\n", lumo.numberOfTriangles(), vZones[0]->getArea2D());
    return 0;
}
