#ifndef LUMO25D_GEOMETRY_ORBITEST_INTERVALS_H
#define LUMO25D_GEOMETRY_ORBITEST_INTERVALS_H

#include "Point2.h"

/// Bounds of the determinant (x0 - x2)(y1 - y2) - (y0 - y2)(x1 - x2), by directed rounding.
///
/// Each product is rounded in the one direction that the bound needs, as its sign demands, and so is the difference of
/// the two: the bounds hold in the presence of overflow and underflow, too. A bound may be infinite, or no number where
/// infinities cancel. The rounding mode of the calling thread is as before afterwards.
namespace ORBI_LUMO25D::intervals
{

double orientationUpperBound(const Point2* p0, const Point2* p1, const Point2* p2);
double orientationLowerBound(const Point2* p0, const Point2* p1, const Point2* p2);

} // namespace ORBI_LUMO25D::intervals

#endif
