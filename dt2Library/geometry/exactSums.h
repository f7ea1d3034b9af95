#ifndef LUMO25D_GEOMETRY_EXACTSUMS_H
#define LUMO25D_GEOMETRY_EXACTSUMS_H

#include "Point2.h"

namespace ORBI_LUMO25D
{

/// A rounded value and what rounding took from it: together the exact result, where nothing overflows or underflows, in
/// round-to-nearest.
struct DoubleWithRest
{
    double hi;
    double lo;
};

/// a + b (Knuth 1969).
inline DoubleWithRest exactSum(double a, double b)
{
    const double s = a + b;
    const double bb = s - a;
    return {s, (a - (s - bb)) + (b - bb)};
}

/// a * b (Dekker 1971).
inline DoubleWithRest exactProduct(double a, double b)
{
    constexpr double splitter = 134217729.0; // 2^27 + 1
    const double p = a * b;
    const double ca = splitter * a, cb = splitter * b;
    const double aHi = ca - (ca - a), bHi = cb - (cb - b);
    const double aLo = a - aHi, bLo = b - bHi;
    return {p, ((aHi * bHi - p) + aHi * bLo + aLo * bHi) + aLo * bLo};
}

/// Twice the area of the triangle a b c in the plane, negative if it is clockwise: off by the last rounding and about
/// 2^-100 of the products of its sides, however thin it is. Not finite where those overflow.
inline double preciseDoubledArea(const Point2& a, const Point2& b, const Point2& c)
{
    const DoubleWithRest bx = exactSum(b.x(), -a.x()), by = exactSum(b.y(), -a.y());
    const DoubleWithRest cx = exactSum(c.x(), -a.x()), cy = exactSum(c.y(), -a.y());
    const DoubleWithRest l = exactProduct(bx.hi, cy.hi), r = exactProduct(by.hi, cx.hi);
    const DoubleWithRest d = exactSum(l.hi, -r.hi);
    const double rests = (bx.hi * cy.lo + bx.lo * cy.hi) - (by.hi * cx.lo + by.lo * cx.hi) + (l.lo - r.lo);
    return d.hi + (d.lo + rests);
}

} // namespace ORBI_LUMO25D

#endif
