#ifndef LUMO25D_GEOMETRY_SNAPPING_H
#define LUMO25D_GEOMETRY_SNAPPING_H

namespace ORBI_LUMO25D
{

class OrbiTest;
class Point2;
class Vector2;

// What is needed where a point that is defined by lines has to become a vertex, that is, a pair of doubles: crossings
// that are right to the last bit, and exact questions about points near a segment. All in the plane; coordinates must
// be finite. Any thread may call.

/// A few units in the last place of the largest coordinate of the segment's ends: rounding a crossing to doubles moves
/// it by less than a quarter of this, truncating it by less than half.
double snapDistance(const Point2& a, const Point2& b);

/// Sign of |a b| - |c d|, exact.
int compareLengths(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

/// Sign of the scalar product of d, in the plane, and the way from p to q: whether q lies farther in direction d; exact.
int compareAlong(const Vector2& d, const Point2& p, const Point2& q);

/// Whether v is nearer to each end of a b than the ends are to each other; exact.
bool isInside(const Point2& v, const Point2& a, const Point2& b);

/// Whether v is not farther from either end of a b than they are from each other; exact.
bool isInRange2D(const Point2& v, const Point2& a, const Point2& b);

/// Whether v is within the distance of the line through a and b, which must differ; exact.
bool isWithin(const Point2& v, const Point2& a, const Point2& b, double distance);

/// Whether p is within the distance of q in x and in y, as far as doubles tell.
bool isWithinBox(const Point2& p, const Point2& q, double distance);

/// Where the lines a b and c d cross, each coordinate within one unit in its last place. False for parallel lines, and
/// when the crossing lies beyond the doubles. In double-double arithmetic (Dekker 1971) where that is known to suffice,
/// which is unless the angle is below 1e-9, else in rationals.
bool roundedCrossing(const OrbiTest& orbiTest, const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                     double& x, double& y);

} // namespace ORBI_LUMO25D

#endif
