// Contour lines of a terrain, drawn.
//
//     contours POINTS.xyz INTERVAL PICTURE.ps
//
// Every fifth line is drawn bolder, as on a map.

#include "IsoContours.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    const double interval = argc > 2 ? std::atof(argv[2]) : 0.0;
    if (argc < 4 || !(interval > 0.0) || !readXYZ(argv[1], vPoints)) {
        std::printf("usage: contours POINTS.xyz INTERVAL PICTURE.ps\n");
        return 2;
    }
    Lumo_2D lumo;
    lumo.insert(vPoints);
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);

    const IsoContours iso(vTriangles); // one index for all heights
    Visualizer2 vis(argv[3]);
    std::size_t numOpen = 0, numClosed = 0;
    double length = 0.0;
    for (double i = std::ceil(iso.getMinHeight() / interval); i * interval <= iso.getMaxHeight(); ++i) {
        std::vector<std::vector<Segment2>> vvContours;
        // Measured heights are often round: the last argument lets it step aside by a tiny amount.
        if (!iso.getContours(i * interval, vvContours, false, true)) return 1;
        const bool bBold = std::fmod(i, 5.0) == 0.0;
        for (const std::vector<Segment2>& vLine : vvContours) {
            const bool bClosed = vLine.front().src == vLine.back().trg;
            ++(bClosed ? numClosed : numOpen);
            for (const Segment2& s : vLine) length += std::sqrt(s.getSqLen2D());
            vis.addObject(vLine, Color(0.5, 0.3, 0.1, bBold ? 0.4 : 0.1, false));
        }
    }
    vis.addHeaderLine("Contours");
    vis.writeFile();
    std::printf("heights %.2f to %.2f: %zu open lines, %zu closed ones, %.1f long in all\n", iso.getMinHeight(),
                iso.getMaxHeight(), numOpen, numClosed, length);
    return 0;
}
