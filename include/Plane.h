#ifndef LUMO25D_PLANE_H
#define LUMO25D_PLANE_H

#include "Lumo25DApi.h"
#include "Point2.h"
#include "Vector2.h"

#include <cmath>

namespace ORBI_LUMO25D
{

/// A plane in space: the points p with normal * p = d. The normal has length 1, or is null for the default plane and
/// for a degenerate one.
class LUMO25D_API Plane
{
public:
    /// Null normal, d 0.
    Plane() = default;
    /// Through p, with the direction n as its normal. A null n is warned about and gives a null normal.
    Plane(const Point2& p, const Vector2& n);
    /// Through three points; the normal points to where they turn counterclockwise. Collinear points are warned about
    /// and give the default plane; ask canConstruct() before.
    Plane(const Point2& p0, const Point2& p1, const Point2& p2);

    /// True when the three points span a plane. Silent, but for equal points, whose null vector normalize() reports.
    static bool canConstruct(const Point2& p0, const Point2& p1, const Point2& p2);

    /// Distance from the plane, positive on the side that the normal points to.
    double signedDistance(const Point2& p) const
    {
        return normal.x() * p.x() + normal.y() * p.y() + normal.z() * p.z() - d;
    }
    /// The distance without its sign.
    double distance(const Point2& p) const { return std::fabs(signedDistance(p)); }
    /// Strictly on that side, or on the other one; decided in rounded arithmetic, so that points on the plane may get any
    /// answer.
    bool hasOnPositiveSide(const Point2& p) const { return signedDistance(p) > 0.0; }
    bool hasOnNegativeSide(const Point2& p) const { return signedDistance(p) < 0.0; }
    /// The foot of the perpendicular from p.
    Point2 projection(const Point2& p) const { return p - normal * signedDistance(p); }

    Vector2 normal; ///< of length 1, or null
    double d = 0.0; ///< the distance of the plane from the origin, along the normal
};

} // namespace ORBI_LUMO25D

#endif
