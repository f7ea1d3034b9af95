// How much of Iceland lies within 100 km of its westernmost and within 150 km of its easternmost point?
//
//     zones COAST.xyz PICTURE.ps
//
// The coast is a ring of longitudes and latitudes.

#include "../LocalMetres.h"

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

/// The inside of a circle, which becomes a constraint.
Zone2* zoneAround(Lumo_2D& lumo, const Point2& center, double radius)
{
    std::vector<Segment2> vRing;
    generateCircle(128, center, radius, vRing);
    return lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
}

int main(int argc, char** argv)
{
    std::vector<Point2> vCoast;
    if (argc != 3 || !readXYZ(argv[1], vCoast)) return 2;
    std::transform(vCoast.begin(), vCoast.end(), vCoast.begin(), LocalMetres(-19.0, 65.0, 65.0));
    const auto ends = std::minmax_element(vCoast.begin(), vCoast.end()); // by x

    Lumo_2D lumo;
    std::vector<Segment2> vRing;
    pointsToPolyline(vCoast, true, vRing);
    Zone2* const pLand = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
    Zone2* const pCircles = zoneUnion(zoneAround(lumo, *ends.first, 100e3), zoneAround(lumo, *ends.second, 150e3));
    Zone2* const pNear = zoneIntersection(pLand, pCircles);
    Zone2* const pFar = zoneDifference(pLand, pCircles);
    std::printf("land %.0f km2: %.0f near, %.0f far\n", pLand->getArea2D() / 1e6, pNear->getArea2D() / 1e6,
                pFar->getArea2D() / 1e6);

    // A zone is a rule: it stays right when points come in later.
    lumo.insert(LocalMetres(-19.0, 65.0, 65.0)(Point2(-21.94, 64.147, 0.0))); // Reykjavik
    std::printf("in %zu and %zu triangles\n", pNear->getNumberOfTriangles(), pFar->getNumberOfTriangles());

    Visualizer2 picture(argv[2]);
    std::vector<Triangle2*> vNear, vFar;
    pNear->getTriangles(vNear);
    pFar->getTriangles(vFar);
    picture.addObject(vNear, Color(0.95, 0.75, 0.35, 0.0, true));
    picture.addObject(vFar, Color(0.55, 0.72, 0.55, 0.0, true));
    pLand->show(&picture, Color(CGRAY, 0.1F));
    std::vector<Segment2> vBorder;
    pNear->getBoundarySegments(vBorder);
    pCircles->getBoundarySegments(vBorder);
    pLand->getBoundarySegments(vBorder);
    picture.addObject(vBorder, Color(0.2, 0.2, 0.4, 0.6, false));
    picture.writeFile();
    return 0;
}
