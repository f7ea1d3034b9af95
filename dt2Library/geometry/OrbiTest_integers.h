#ifndef LUMO25D_GEOMETRY_ORBITEST_INTEGERS_H
#define LUMO25D_GEOMETRY_ORBITEST_INTEGERS_H

#include "Point2.h"

/// The exact stage between the filters and the rationals: coordinates become integers of a common unit.
///
/// Doubles are whole numbers of their last bit. Where all the bits of the coordinates of one axis (of both axes, for
/// the circle) fit into a window of 125, differences and products are integers of a known, fixed width: no memory, no
/// rounding, no exponents to watch, whatever the rounding mode. All real data fits; a coordinate of 1e-40 beside one of
/// 1 does not.
namespace ORBI_LUMO25D::integers
{

/// Sets sign to -1, 0 or 1, that of the determinant (x0 - x2)(y1 - y2) - (y0 - y2)(x1 - x2). False, without an answer,
/// if the coordinates don't fit or aren't finite.
bool orientationSign(const Point2* p0, const Point2* p1, const Point2* p2, int& sign);

/// The same for the in-circle determinant: 1 if q lies inside the circle through three counterclockwise points.
bool inCircleSign(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q, int& sign);

} // namespace ORBI_LUMO25D::integers

#endif
