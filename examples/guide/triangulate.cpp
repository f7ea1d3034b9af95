// Triangulates a scan, measures the surface, and draws it with the triangles around its highest point.
//
//     triangulate POINTS.xyz PICTURE.ps
//
// Places are in metres, heights in US survey feet.

#include "../Relief.h"

#include "Lumo_2D.h"
#include "TriangleAroundVertexIterator.h"
#include "freeFunctions.h"

#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    if (argc != 3 || !readXYZ(argv[1], vPoints)) return 2;

    for (Point2& p : vPoints) p.setHeight(p.z() * 1200.0 / 3937.0); // areas in space want one unit

    Lumo_2D lumo;
    std::vector<Point2*> vHandles;
    lumo.insert(vPoints, vHandles); // all at once: the fastest way

    double onTheMap = 0.0, inSpace = 0.0;
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    for (const Triangle2* pT : vTriangles) {
        onTheMap += pT->getArea2D();
        inSpace += pT->getArea25D();
    }
    std::printf("%zu vertices, %zu triangles, %.0f m2 on the map, %.0f m2 in space\n", lumo.numberOfPoints(),
                vTriangles.size(), onTheMap, inSpace);

    const Point2* pTop = vHandles.front();
    for (const Point2* pVertex : vHandles) {
        if (pVertex->z() > pTop->z()) pTop = pVertex;
    }
    std::vector<Triangle2*> vAround;
    TriangleAroundVertexIterator it(pTop);
    const TriangleAroundVertexIterator start(it);
    do {
        if (*it != nullptr) vAround.push_back(*it); // NULL where the walk leaves the hull
        ++it;
    } while (it != start);
    std::printf("%zu triangles meet at the top, at %.2f m\n", vAround.size(), pTop->z());

    Visualizer2 picture(argv[2]);
    addRelief(vTriangles, picture);
    lumo.show(&picture);
    picture.addObject(vAround, Color(CRED, 1.2F));
    picture.writeFile();
    return 0;
}
