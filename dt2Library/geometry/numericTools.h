#ifndef LUMO25D_GEOMETRY_NUMERICTOOLS_H
#define LUMO25D_GEOMETRY_NUMERICTOOLS_H

#include "Point2.h"
#include "Segment2.h"

namespace ORBI_LUMO25D
{

class OrbiTest;

// Constructions: results that are numbers, not decisions. Each contract tells how far off they may be; u is 2^-53, the
// rounding of one operation; next to 0, where doubles have fewer bits, twice the smallest of them comes to each bound, and
// what lies beyond the largest is infinite. All coordinates must be finite numbers. No function here keeps a state: any
// thread may call any of them.

// ---- ranges ---------------------------------------------------------------------------------------------------------

/// The common part [lo, hi] of two closed intervals, whose ends may be given in either order. False, with lo and hi left
/// alone, if there is none; a single common value is one. Exact.
bool commonRange(double a0, double a1, double b0, double b1, double& lo, double& hi);

/// True when r lies between p and q and is neither of them. The three points must be on one line, decided exactly: then
/// this is exact too, and means that the squared distance of p and q is larger than those of p, r and of q, r.
bool isStrictlyBetween(const Point2& p, const Point2& q, const Point2& r);

/// True when r is on the segment p q but for the rounding of its coordinates: its distance in the plane is at most 2^-40
/// times the largest coordinate of the three points (6e-6 m for coordinates of 6 700 km).
bool approxHasOn(const Point2& p, const Point2& q, const Point2& r);

// ---- heights --------------------------------------------------------------------------------------------------------

/// The height at (x, y) on the straight line through a and b, by the axis in which they are further apart, clamped to
/// the heights of a and b. A value that had to be clamped is told on the standard output. Off by at most 16u times the
/// larger height in size. Without extent in the plane, or when a height isn't known (the largest double): the height of
/// a, the largest double.
double interpolateHeight(const Point2& a, const Point2& b, double x, double y);

/// The same without a word, and exact at both ends: for positions that are known to be on the segment but for rounding.
double heightOnSegment(const Point2& a, const Point2& b, double x, double y);

// ---- feet and distances ---------------------------------------------------------------------------------------------

/// The foot of the perpendicular from p on the line through a and b, in the plane; its height is that of the line there,
/// beyond the segment too, or the largest double where a height isn't known. Exactly a (or b) when p is. Off by at most
/// 32u times the larger of the largest coordinate and the distance of p from the nearer end; in height by 32u times that
/// distance and the line's slope, and 4u times the largest height, the foot's included. a when a equals b.
Point2 footOfPerpendicular(const Point2& a, const Point2& b, const Point2& p);

/// The distance of p from the closed segment a b, which may be a point: in the plane, in space. Off by at most 32u times
/// the distance of p from the nearer end; 0 for the ends.
double distanceFromSegment2D(const Point2& a, const Point2& b, const Point2& p);
double distanceFromSegment25D(const Point2& a, const Point2& b, const Point2& p);

// ---- crossings ------------------------------------------------------------------------------------------------------

/// Where the lines of two segments cross.
struct SegmentCrossing
{
    Point2 onFirst;       ///< with the height of the first segment there
    Point2 onSecond;      ///< the same x and y, with the height of the second
    bool bInBoth = false; ///< the crossing belongs to both closed segments; decided exactly
};

/// Crosses the lines of two segments. False, with the result left alone, when they are parallel, coincide, or a segment
/// is a point: decided exactly.
///
/// An end point that lies exactly on the other segment is the crossing, exactly. Any other crossing of both segments is
/// off by at most 2^-44 times the length of the first one and, in each coordinate, a unit in the last place, and lies in
/// the common box of both. It is computed in plain arithmetic where that is known to do, that is for angles that aren't
/// acute and distances that aren't extreme, and exactly otherwise, as are crossings beyond an end: those are rounded
/// once. Heights are those at the rounded crossing, as by heightOnSegment(), also beyond an end.
///
/// The predicates' range grows as needed.
bool computeCrossing(OrbiTest& orbiTest, const Segment2& first, const Segment2& second, SegmentCrossing& crossing);

} // namespace ORBI_LUMO25D

#endif
