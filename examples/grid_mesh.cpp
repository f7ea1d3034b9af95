// A mesh in rows: a yard with a building in it, meshed along the building's front, and drawn.

#include "Color.h"
#include "Lumo_2D.h"
#include "MeshGenParams.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::puts("usage: grid_mesh drawing.ps");
        return 1;
    }
    Lumo_2D lumo;
    lumo.insert(std::vector<Point2>{{-50, -50, 98}, {150, -50, 102}, {150, 150, 107}, {-50, 150, 101}});

    // The yard counterclockwise, the building clockwise: the zone is on the left of every segment.
    std::vector<Segment2> vBorder;
    pointsToPolyline({{2, 4, 100}, {92, -6, 101}, {104, 58, 103}, {61, 96, 104}, {12, 78, 103}}, true, vBorder);
    pointsToPolyline({{40, 28, 101}, {32, 44, 102}, {68, 62, 103}, {76, 46, 102}}, true, vBorder);
    Zone2* const pYard = lumo.createZone(lumo.createConstraint(vBorder, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);

    MeshGenParams params(pYard);
    params.gridVector = Vector2(36, 18, 0); // the building's front
    params.gridLength = 4.0;
    params.minAngleDegree = 25.0;
    lumo.refineAdvanced(&params);

    std::vector<Triangle2*> vT;
    pYard->getTriangles(vT);
    std::size_t numHalfCells = 0;
    double smallest = 180.0;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const double angle = pT->getInteriorAngle2D(i);
            if (angle < smallest) smallest = angle;
        }
        const double area = pT->getArea2D();
        if (area > 7.99 && area < 8.01) ++numHalfCells;
    }
    std::printf("%zu triangles, %zu of them half a cell; smallest angle %.1f degrees\n", vT.size(), numHalfCells,
                smallest);

    Visualizer2 drawing(argv[1]);
    pYard->show(&drawing, Color(CBLACK, 0.4F));
    drawing.writeFile();
    return 0;
}
