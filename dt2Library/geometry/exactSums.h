#ifndef LUMO25D_GEOMETRY_EXACTSUMS_H
#define LUMO25D_GEOMETRY_EXACTSUMS_H

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

} // namespace ORBI_LUMO25D

#endif
