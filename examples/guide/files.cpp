// From a text file into every other form that there is, and back.
//
//     files POINTS.xyz DIRECTORY

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <cstdio>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints, vSame;
    if (argc != 3 || !readXYZ(argv[1], vPoints)) return 2;
    const std::string directory = std::string(argv[2]) + "/";

    // Points: binary files are read many times as fast as text, and hold every bit.
    const std::string points = directory + "points.bin";
    if (!writePointsBIN(points.c_str(), vPoints) || !readPointsBIN(points.c_str(), vSame)) return 1;
    std::printf("%zu points written, %zu read\n", vPoints.size(), vSame.size());

    // The triangulation as it stands, with a zone of it: restored without any Delaunay work.
    Lumo_2D lumo;
    lumo.insert(vSame);
    const Bbox2 box = lumo.computeBoundingBox();
    std::vector<Segment2> vRing;
    generateCircle(48, box.computeCenter(), box.getMaxRange() / 5.0, vRing);
    Zone2* const pPlot = lumo.createZone_cookieCutter(vRing, false);
    const std::string state = directory + "plot.lumo";
    if (!lumo.saveTriangulation(state.c_str(), {pPlot})) return 1;

    Lumo_2D restored;
    std::vector<Zone2*> vZones;
    if (!restored.load(state.c_str(), vZones)) return 1;
    std::printf("%zu triangles saved, %zu restored; the plot has %.0f and %.0f\n", lumo.numberOfTriangles(),
                restored.numberOfTriangles(), pPlot->getArea2D(), vZones[0]->getArea2D());

    // For other programs, for the browser, and as plain arrays.
    restored.setName("A plot on the surface");
    if (!restored.writeObj((directory + "plot.obj").c_str(), vZones)) return 1;
    if (!restored.writeWebScene((directory + "files.html").c_str(), vZones, "ft")) return 1;
    LumoExport arrays;
    restored.exportTriangulation(arrays, false, false);
    int a = 0, b = 0, c = 0;
    arrays.getCornerIndices(0, a, b, c);
    std::printf("%d vertices and %d triangles in arrays, the first of %d, %d, %d\n", arrays.numPoints,
                arrays.numTriangles, a, b, c);
    return 0;
}
