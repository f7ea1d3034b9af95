#ifndef LUMO25D_TESTS_ORACLES_EXACTORACLE_H
#define LUMO25D_TESTS_ORACLES_EXACTORACLE_H

#include "Point2.h"
#include "Triangle2.h"

#include <gmpxx.h>

/// Orientation and in-circle in rationals, for finite coordinates of any size. The determinants are expanded otherwise
/// than in the library: with absolute coordinates, without differences.
namespace oracles
{

/// The determinant of the rows (x, y, 1).
inline mpq_class orientationDet(const ORBI_LUMO25D::Point2& a, const ORBI_LUMO25D::Point2& b,
                                const ORBI_LUMO25D::Point2& c)
{
    const mpq_class ax(a.x()), ay(a.y()), bx(b.x()), by(b.y()), cx(c.x()), cy(c.y());
    return (ax * by - ay * bx) + (bx * cy - by * cx) + (cx * ay - cy * ax);
}

/// 1: c lies to the left of the line from a to b; -1: to the right; 0: on it.
inline int orientationSign(const ORBI_LUMO25D::Point2& a, const ORBI_LUMO25D::Point2& b, const ORBI_LUMO25D::Point2& c)
{
    return sgn(orientationDet(a, b, c));
}

/// The determinant of the rows (x, y, x^2 + y^2, 1), by the third column. Positive if a, b, c turn counterclockwise
/// and q lies strictly inside their circle.
inline mpq_class inCircleDet(const ORBI_LUMO25D::Point2& a, const ORBI_LUMO25D::Point2& b,
                             const ORBI_LUMO25D::Point2& c, const ORBI_LUMO25D::Point2& q)
{
    const auto lift = [](const ORBI_LUMO25D::Point2& p) {
        const mpq_class x(p.x()), y(p.y());
        return mpq_class(x * x + y * y);
    };
    return lift(a) * orientationDet(b, c, q) - lift(b) * orientationDet(a, c, q) + lift(c) * orientationDet(a, b, q) -
           lift(q) * orientationDet(a, b, c);
}

inline int inCircleSign(const ORBI_LUMO25D::Point2& a, const ORBI_LUMO25D::Point2& b, const ORBI_LUMO25D::Point2& c,
                        const ORBI_LUMO25D::Point2& q)
{
    return sgn(inCircleDet(a, b, c, q));
}

/// A place that need not be a pair of doubles.
struct ExactPoint
{
    mpq_class x, y;
};

inline ExactPoint exact(const ORBI_LUMO25D::Point2& p)
{
    return {p.x(), p.y()};
}

/// Twice the area of a triangle, positive when it is counterclockwise; by differences.
inline mpq_class doubledArea(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

inline ExactPoint middleOf(const ORBI_LUMO25D::Triangle2& t)
{
    const ExactPoint a = exact(*t.corner(0)), b = exact(*t.corner(1)), c = exact(*t.corner(2));
    return {(a.x + b.x + c.x) / 3, (a.y + b.y + c.y) / 3};
}

} // namespace oracles

#endif
