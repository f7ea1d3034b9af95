#ifndef LUMO25D_CORE_CIRCLEBOUND_H
#define LUMO25D_CORE_CIRCLEBOUND_H

#include "Bbox2.h"
#include "Triangle2.h"

namespace ORBI_LUMO25D
{

/// A disk that is sure to contain the circumcircle of a triangle, or the knowledge that doubles can't give one.
///
/// The centre is computed from differences to corner 0, together with a bound of its error: the rounding of the
/// numerators and of the denominator, which a flat triangle amplifies, and of the sum with the corner's coordinates,
/// which counts at survey offsets. The disk is trusted when that bound is at most a hundredth of the radius; its radius
/// is then enlarged by twice the bound, for the error of the centre and of the radius, and by the margin, a fraction of
/// it.
class CircleBound
{
public:
    explicit CircleBound(const Triangle2& t, double margin = 0.0);

    bool isTrusted() const { return bTrusted; }
    /// True when the disk has a point in common with the border of the box, or holds p; for a trusted disk.
    bool meetsBorder(const Bbox2& box) const;
    bool contains(const Point2& p) const;
    /// Grows the box so that it holds what of the disk lies within the limits; for a trusted disk.
    void addTo(Bbox2& box, const Bbox2& limits) const;

private:
    double cx = 0.0;
    double cy = 0.0;
    double radius = 0.0;
    bool bTrusted = false;
};

} // namespace ORBI_LUMO25D

#endif
