#ifndef LUMO25D_GEOMETRY_ORBITEST_FILTERS_H
#define LUMO25D_GEOMETRY_ORBITEST_FILTERS_H

#include "Point2.h"

#include <cmath>

/// The floating-point filters of the predicates: a value, and a bound that its error can't reach.
///
/// After Shewchuk, "Adaptive precision floating-point arithmetic and fast robust geometric predicates" (1997), with
/// three changes. The unit roundoff is taken as u = 2^-52 instead of 2^-53, so that the bounds hold in every rounding
/// mode that the caller may have set, not in round-to-nearest alone. Underflow is counted: a difference of doubles is
/// either exact or has a relative error (it never loses bits to underflow), but each product may be off by up to
/// h = 2^-1074, absolutely. And where overflow can't be excluded the bound is infinite: in some modes an overflow ends
/// in the largest double, which is seen by nothing that comes after. A value compared as value > bound or
/// value < -bound is never believed then, nor when it is no number. Only flush-to-zero modes of the processor are not
/// covered; they make denormal coordinates and differences vanish before any filter sees them.
namespace ORBI_LUMO25D::filters
{

/// The determinant D of an orientation test, from differences to p2.
struct OrientationValue
{
    double dx0, dy0, dx1, dy1;

    double det() const { return dx0 * dy1 - dy0 * dx1; }
    /// |det()| above this has the true sign. Both products consist of three rounded operations each, and the last
    /// subtraction doesn't change the sign: (3 + 16u)u times the sum of their sizes, and 2h; 3u = 6.661e-16.
    double bound() const
    {
        const double span = (std::fabs(dx0) + std::fabs(dy0)) + (std::fabs(dx1) + std::fabs(dy1));
        const double size = std::fabs(dx0 * dy1) + std::fabs(dy0 * dx1);
        return span < 0x1p510 ? 6.7e-16 * size + 0x1p-1000 : HUGE_VAL;
    }
};

inline OrientationValue orientation(const Point2* p0, const Point2* p1, const Point2* p2)
{
    const double x2 = p2->x(), y2 = p2->y();
    return {p0->x() - x2, p0->y() - y2, p1->x() - x2, p1->y() - y2};
}

/// Bound of det() for points whose coordinates are at most m in size. staticBound is that of round-to-nearest in first
/// order, 24 m^2 2^-53: two products of differences of at most 2m, three roundings each. Twice that is for the other
/// rounding modes, a hundredth of it for the second order. Infinite where a product could overflow.
inline double orientationBoundFor(double m, double staticBound)
{
    return m < 0x1p510 ? 2.01 * staticBound + 0x1p-1000 : HUGE_VAL;
}

/// The in-circle determinant E of a triangle and a point q, from differences to q.
///
/// Each of its monomials goes through ten rounded operations before the last addition, which doesn't change the sign
/// of the sum. With P the permanent, the rounding error is below (10 + 170u)u P, P as computed; 10u = 2.2204e-15.
/// Underflow adds at most 4h(lifts' sum) + 2h(minors' sum) + 4h, and each minor is at most the sum of two lifts, so
/// together less than 2^-1070 (lifts' sum + 1). The bounds have, or demand, 2^-1000 (lifts' sum + 1).
struct InCircleValue
{
    double bXc, cXb, cXa, aXc, aXb, bXa; ///< bXc = bdx * cdy and so on
    double aLift, bLift, cLift;          ///< squared distances from q

    double det() const { return ((bXc - cXb) * aLift + (cXa - aXc) * bLift) + (aXb - bXa) * cLift; }

    /// The cheap bound, by the lifts alone: |bdx cdy| + |cdx bdy| <= sqrt(bLift cLift) by Cauchy and Schwarz, and with
    /// X, Y, Z the square roots of the three products of two lifts, P <= XY + YZ + ZX <= X^2 + Y^2 + Z^2.
    double liftBound() const
    {
        const double abLift = aLift + bLift;
        const double sum = abLift + cLift;
        return sum < 0x1p500 ? 2.25e-15 * (aLift * bLift + abLift * cLift) + (0x1p-1000 * sum + 0x1p-1000) : HUGE_VAL;
    }

    /// The bound B of the approximate mode: 30 times 2^-53 P, of which 20 are needed in the worst rounding mode. The
    /// rest is for underflow, where B is well above what that can do; otherwise infinite.
    double permanentBound() const
    {
        const double bound =
            3.33e-15 * (((std::fabs(bXc) + std::fabs(cXb)) * aLift + (std::fabs(cXa) + std::fabs(aXc)) * bLift) +
                        (std::fabs(aXb) + std::fabs(bXa)) * cLift);
        const double sum = (aLift + bLift) + cLift;
        return sum < 0x1p500 && bound > 0x1p-1000 * sum + 0x1p-1000 ? bound : HUGE_VAL;
    }
};

inline InCircleValue inCircle(const Point2* pA, const Point2* pB, const Point2* pC, const Point2* q)
{
    const double qx = q->x(), qy = q->y();
    const double adx = pA->x() - qx, ady = pA->y() - qy;
    const double bdx = pB->x() - qx, bdy = pB->y() - qy;
    const double cdx = pC->x() - qx, cdy = pC->y() - qy;
    return {bdx * cdy,
            cdx * bdy,
            cdx * ady,
            adx * cdy,
            adx * bdy,
            bdx * ady,
            adx * adx + ady * ady,
            bdx * bdx + bdy * bdy,
            cdx * cdx + cdy * cdy};
}

} // namespace ORBI_LUMO25D::filters

#endif
