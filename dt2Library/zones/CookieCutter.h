#ifndef LUMO25D_ZONES_COOKIECUTTER_H
#define LUMO25D_ZONES_COOKIECUTTER_H

#include "Segment2.h"
#include "Triangle2.h"

#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintGraph2;
class Dt2;
class Point2;
class Zone2;

/// Cuts a simple polygon out of a surface: the triangles inside both the polygon and the hull as it was.
///
/// Corners outside of the hull widen the triangulation; the old hull is held by constraints. Then the surface is cut along
/// the polygon. Cuts and hull part the triangles into regions, and of each one point decides, by exact tests against the
/// polygon and the hull: where rounding lets two edges of the polygon run into one, the direction of a cut would not.
/// The triangulation must have area.
class CookieCutter
{
public:
    CookieCutter(Dt2& dt2_, const std::vector<Segment2>& vPolygon_, bool bProtectEdges_)
        : dt2(dt2_), vPolygon(vPolygon_), bProtectEdges(bProtectEdges_)
    {
    }

    /// The bounded zone; null, with a warning, when polygon and hull have no area in common.
    Zone2* run();

private:
    void widen();
    bool cut();
    std::vector<Triangle2*> trianglesAtBorders() const;
    std::vector<Triangle2*> keptTriangles() const;
    bool isKept(const std::vector<Triangle2*>& vRegion) const;
    bool isInPolygon(const Point2& p) const;
    bool isInHull(const Point2& p) const;

    Dt2& dt2;
    const std::vector<Segment2>& vPolygon;
    const bool bProtectEdges;
    std::vector<Point2*> vHull; ///< as it was, counterclockwise; empty when all corners lie within it
    std::vector<ConstraintGraph2*> vBorders;
};

} // namespace ORBI_LUMO25D

#endif
