#ifndef LUMO25D_MESHING_TRIANGLESHAPE_H
#define LUMO25D_MESHING_TRIANGLESHAPE_H

#include "Triangle2.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

/// Squared lengths and areas of a triangle, in the plane and in space, by one look at its corners. Refinement looks at each
/// triangle that arises: no roots and no angles here, squared sines tell as much.
class TriangleShape
{
public:
    explicit TriangleShape(const Triangle2& t)
    {
        const Point2& p = *t.corner(0);
        const Point2& q = *t.corner(1);
        const Point2& r = *t.corner(2);
        const double ux = q.x() - p.x(), uy = q.y() - p.y(), uz = q.z() - p.z();
        const double vx = r.x() - p.x(), vy = r.y() - p.y(), vz = r.z() - p.z();
        const double wx = r.x() - q.x(), wy = r.y() - q.y(), wz = r.z() - q.z();
        const double nz = ux * vy - uy * vx;
        const double nx = uy * vz - uz * vy;
        const double ny = uz * vx - ux * vz;
        aSq2D[0] = wx * wx + wy * wy;
        aSq2D[1] = vx * vx + vy * vy;
        aSq2D[2] = ux * ux + uy * uy;
        aSq25D[0] = aSq2D[0] + wz * wz;
        aSq25D[1] = aSq2D[1] + vz * vz;
        aSq25D[2] = aSq2D[2] + uz * uz;
        sqCross2D = nz * nz;
        sqCross25D = sqCross2D + nx * nx + ny * ny;
    }

    /// False for lengths below 1e-70 or above 1e70, the fourth powers of which are no doubles: nothing can be constructed
    /// there either.
    bool isMeasurable() const { return maxSq2D() > 1e-140 && maxSq25D() < 1e140; }
    double maxSq2D() const { return std::max({aSq2D[0], aSq2D[1], aSq2D[2]}); }
    double maxSq25D() const { return std::max({aSq25D[0], aSq25D[1], aSq25D[2]}); }
    double area2D() const { return 0.5 * std::sqrt(sqCross2D); }
    double area25D() const { return 0.5 * std::sqrt(sqCross25D); }
    /// Squared sine of the smallest angle: 0.75 for an equilateral triangle, 0 for one without an area.
    double sqSineSmallest25D() const { return sqSine(sqCross25D, aSq25D); }
    double sqSineSmallest2D() const { return sqSine(sqCross2D, aSq2D); }

private:
    /// The smallest angle lies between the two longest edges.
    static double sqSine(double sqCross, const double* aSq)
    {
        const double largest = std::max({aSq[0], aSq[1], aSq[2]});
        const double middle = std::max(std::min(aSq[0], aSq[1]), std::min(std::max(aSq[0], aSq[1]), aSq[2]));
        return sqCross / (largest * middle);
    }

    double aSq2D[3];  ///< edge i lies opposite corner i
    double aSq25D[3]; ///< the same in space
    double sqCross2D; ///< four times the squared area
    double sqCross25D;
};

} // namespace ORBI_LUMO25D

#endif
