#include "geometry/snapping.h"

#include "geometry/OrbiTest.h"
#include "geometry/Rational.h"
#include "geometry/distances.h"
#include "geometry/exactSums.h"

#include "Point2.h"
#include "Vector2.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

// ---- exact ----------------------------------------------------------------------------------------------------------

Rational exactSquaredLength(const Point2& a, const Point2& b)
{
    const Rational dx = difference(a.x(), b.x());
    const Rational dy = difference(a.y(), b.y());
    Rational sum = product(dx, dx);
    sum += product(dy, dy);
    return sum;
}

// ---- double-double --------------------------------------------------------------------------------------------------

using DD = DoubleWithRest;

DD quickSum(double a, double b)
{
    const double s = a + b;
    return {s, b - (s - a)};
}

DD operator*(DD a, DD b)
{
    const DD p = exactProduct(a.hi, b.hi);
    return quickSum(p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi));
}

DD operator-(DD a, DD b)
{
    const DD s = exactSum(a.hi, -b.hi);
    return quickSum(s.hi, s.lo + (a.lo - b.lo));
}

DD operator/(DD a, DD b)
{
    const double q = a.hi / b.hi;
    const DD rest = a - b * DD{q, 0.0};
    return quickSum(q, (rest.hi + rest.lo) / b.hi);
}

/// a + t d, rounded once but for far smaller errors.
double along(double a, DD t, DD d)
{
    const DD step = t * d;
    const DD s = exactSum(a, step.hi);
    return s.hi + (s.lo + step.lo);
}

/// False when double-double can't be trusted with these lines.
bool plainCrossing(const Point2& a, const Point2& b, const Point2& c, const Point2& d, double& x, double& y)
{
    const DD abx = exactSum(b.x(), -a.x()), aby = exactSum(b.y(), -a.y());
    const DD cdx = exactSum(d.x(), -c.x()), cdy = exactSum(d.y(), -c.y());
    const DD acx = exactSum(c.x(), -a.x()), acy = exactSum(c.y(), -a.y());
    const DD denominator = abx * cdy - aby * cdx;
    const double size = (std::fabs(abx.hi) + std::fabs(aby.hi)) * (std::fabs(cdx.hi) + std::fabs(cdy.hi));
    // Far from where the error terms underflow and products overflow; an angle that is not too acute.
    if (!(size > 1e-100 && size < 1e200 && std::fabs(denominator.hi) > 1e-9 * size)) return false;
    const DD numerator = acx * cdy - acy * cdx;
    const DD t = numerator / denominator;
    // Error of t: about 2^-102 / 1e-9 times |ac| / |ab|, that is 2^-72 of the distance: nothing against a last place, unless
    // the coordinate is so near zero that its last place is as small.
    if (!(std::fabs(t.hi) < 4.0)) return false;
    x = along(a.x(), t, abx);
    y = along(a.y(), t, aby);
    const auto isLarge = [](double v, DD extent) {
        return std::isfinite(v) && std::fabs(v) >= 0x1p-16 * std::fabs(extent.hi);
    };
    return isLarge(x, abx) && isLarge(y, aby);
}

} // namespace

double snapDistance(const Point2& a, const Point2& b)
{
    constexpr double unitInLastPlace = 0x1p-52;
    constexpr double smallestStep = std::numeric_limits<double>::denorm_min();
    return 4.0 * std::max(unitInLastPlace * std::max(a.getMaxAbs(), b.getMaxAbs()), smallestStep);
}

int compareLengths(const Point2& a, const Point2& b, const Point2& c, const Point2& d)
{
    // Each sum is off by at most 2^-51 of itself, as long as nothing underflows.
    const double ab = sqDistance2D(a, b);
    const double cd = sqDistance2D(c, d);
    const double larger = std::max(ab, cd);
    if (larger > 1e-280 && larger < 1e300 && std::fabs(ab - cd) > 0x1p-49 * larger) return ab < cd ? -1 : 1;
    const int result = exactSquaredLength(a, b).compare(exactSquaredLength(c, d));
    return (result > 0) - (result < 0);
}

int compareAlong(const Vector2& d, const Point2& p, const Point2& q)
{
    const auto sign = [](double v) { return (v > 0.0) - (v < 0.0); };
    const int signX = sign(d.x()) * (q.x() > p.x() ? 1 : q.x() < p.x() ? -1 : 0);
    const int signY = sign(d.y()) * (q.y() > p.y() ? 1 : q.y() < p.y() ? -1 : 0);
    if (signX * signY >= 0) return signX != 0 ? signX : signY;
    // Each term is off by at most 2^-51 of itself, as long as nothing underflows.
    const double x = d.x() * (q.x() - p.x());
    const double y = d.y() * (q.y() - p.y());
    const double size = std::fabs(x) + std::fabs(y);
    if (size > 1e-280 && size < 1e300 && std::fabs(x + y) > 0x1p-49 * size) return sign(x + y);
    Rational sum = product(Rational(d.x()), difference(q.x(), p.x()));
    sum += product(Rational(d.y()), difference(q.y(), p.y()));
    return sum.sign();
}

bool isInside(const Point2& v, const Point2& a, const Point2& b)
{
    return compareLengths(v, a, a, b) < 0 && compareLengths(v, b, a, b) < 0;
}

bool isInRange2D(const Point2& v, const Point2& a, const Point2& b)
{
    return compareLengths(v, a, a, b) <= 0 && compareLengths(v, b, a, b) <= 0;
}

bool isWithin(const Point2& v, const Point2& a, const Point2& b, double distance)
{
    Rational det = product(difference(b.x(), a.x()), difference(v.y(), a.y()));
    det -= product(difference(b.y(), a.y()), difference(v.x(), a.x()));
    Rational limit = product(Rational(distance), Rational(distance));
    limit *= exactSquaredLength(a, b);
    return product(det, det).compare(limit) <= 0;
}

bool isWithinBox(const Point2& p, const Point2& q, double distance)
{
    return std::fabs(p.x() - q.x()) <= distance && std::fabs(p.y() - q.y()) <= distance;
}

bool roundedCrossing(const OrbiTest& orbiTest, const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                     double& x, double& y)
{
    if (plainCrossing(a, b, c, d, x, y)) return true;
    Rational denominator = product(difference(b.x(), a.x()), difference(d.y(), c.y()));
    denominator -= product(difference(b.y(), a.y()), difference(d.x(), c.x()));
    if (denominator.sign() == 0) return false;
    orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, &d, x, y);
    return std::isfinite(x) && std::isfinite(y);
}

} // namespace ORBI_LUMO25D
