// Contours every 20 m over shaded ground, and a profile from west to east.
//
//     contours POINTS.xyz PICTURE.ps
//
// Points are longitudes and latitudes with heights in metres; those around the highest one are drawn.

#include "../LocalMetres.h"
#include "../Relief.h"

#include "IsoContours.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vDegrees, vPoints;
    if (argc != 3 || !readXYZ(argv[1], vDegrees) || vDegrees.empty()) return 2;
    const auto lower = [](const Point2& a, const Point2& b) { return a.z() < b.z(); };
    const Point2 top = *std::max_element(vDegrees.begin(), vDegrees.end(), lower);
    const LocalMetres toMetres(top.x(), top.y(), top.y());
    for (const Point2& p : vDegrees) {
        const Point2 q = toMetres(p);
        if (std::fabs(q.x()) < 3000.0 && std::fabs(q.y()) < 2200.0) vPoints.push_back(q);
    }
    Lumo_2D lumo;
    lumo.insert(vPoints);
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    Visualizer2 picture(argv[2]);
    addRelief(vTriangles, picture);

    const IsoContours iso(vTriangles); // one index for all heights
    std::size_t numClosed = 0, numOpen = 0;
    for (double z = 20.0 * std::ceil(iso.getMinHeight() / 20.0); z < iso.getMaxHeight(); z += 20.0) {
        std::vector<std::vector<Segment2>> vvLines;
        iso.getContours(z, vvLines, false, true);
        for (const std::vector<Segment2>& vLine : vvLines) {
            ++(vLine.front().src == vLine.back().trg ? numClosed : numOpen);
            picture.addObject(vLine, Color(0.35, 0.2, 0.1, std::fmod(z, 100.0) == 0.0 ? 1.0 : 0.3, false));
        }
    }
    std::printf("%zu closed contours, %zu that end at the border\n", numClosed, numOpen);
    picture.writeFile();

    for (double x = -3000.0; x <= 3000.0; x += 1000.0) {
        double height = 0.0;
        if (lumo.getHeight(x, 0.0, height)) std::printf("%6.0f m east of the top: %6.1f m\n", x, height);
    }
    return 0;
}
