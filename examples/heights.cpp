// A profile: heights along a straight line across a surface.
//
//     heights POINTS.xyz x0 y0 x1 y1 STEPS [TOLERANCE]
//
// prints "distance height" for STEPS + 1 positions. A position outside the surface has no height, unless it is within
// TOLERANCE of the border.

#include "Lumo_2D.h"
#include "Vector2.h"
#include "freeFunctions.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    if (argc < 7 || !readXYZ(argv[1], vPoints)) {
        std::printf("usage: heights POINTS.xyz x0 y0 x1 y1 STEPS [TOLERANCE]\n");
        return 2;
    }
    const Point2 from(std::atof(argv[2]), std::atof(argv[3]), 0.0);
    const Point2 to(std::atof(argv[4]), std::atof(argv[5]), 0.0);
    const int numSteps = std::atoi(argv[6]);
    const double tolerance = argc > 7 ? std::atof(argv[7]) : 0.0;
    const double length = (to - from).length();

    Lumo_2D lumo;
    lumo.insert(vPoints);
    for (int i = 0; i <= numSteps; ++i) {
        const double t = static_cast<double>(i) / numSteps;
        const Point2 p = from + (to - from) * t;
        double height = 0.0;
        // No triangle given: the surface finds the one at the position itself.
        if (lumo.getHeight(p.x(), p.y(), height, nullptr, tolerance)) {
            std::printf("%12.2f %10.3f\n", t * length, height);
        } else {
            std::printf("%12.2f %10s\n", t * length, "outside");
        }
    }
    return 0;
}
