#include "geometry/numericTools.h"

#include "geometry/OrbiTest.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <gmp.h>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double unknownHeight = std::numeric_limits<double>::max();

double sqDistance2D(const Point2& p, const Point2& q)
{
    const double dx = p.x() - q.x();
    const double dy = p.y() - q.y();
    return dx * dx + dy * dy;
}

/// A difference of two points, scaled.
struct Offset
{
    double x, y, z;
};

Offset offset(const Point2& from, const Point2& to, double scale, bool bWithHeight)
{
    return {to.x() * scale - from.x() * scale, to.y() * scale - from.y() * scale,
            bWithHeight ? to.z() * scale - from.z() * scale : 0.0};
}

/// A power of two under which differences of these coordinates can't overflow, nor can sums of their products with
/// components of at most 2.
double safeScale(double maxAbs)
{
    return maxAbs < 0x1p1000 ? 1.0 : 0x1p-30;
}

/// The direction of v, not normalised but scaled by a power of two, 2^exponent, so that its largest component is in
/// [1, 2) in size. False for the null vector.
bool scaledDirection(const Offset& v, Offset& direction, int& exponent)
{
    const double largest = std::max(std::fabs(v.x), std::max(std::fabs(v.y), std::fabs(v.z)));
    if (largest == 0.0) return false;
    exponent = -std::ilogb(largest);
    direction = {std::scalbn(v.x, exponent), std::scalbn(v.y, exponent), std::scalbn(v.z, exponent)};
    return true;
}

double dot(const Offset& v, const Offset& w)
{
    return v.x * w.x + v.y * w.y + v.z * w.z;
}

double norm(const Offset& v)
{
    return std::hypot(v.x, v.y, v.z);
}

double distanceFromSegment(const Point2& a, const Point2& b, const Point2& p, double maxAbs, bool bInSpace)
{
    const double scale = safeScale(maxAbs);
    const Offset v = offset(a, b, scale, bInSpace);
    const Offset fromA = offset(a, p, scale, bInSpace);
    const Offset fromB = offset(b, p, scale, bInSpace);
    Offset d{};
    int exponent = 0;
    if (!scaledDirection(v, d, exponent)) return norm(fromA) / scale;
    if (dot(fromA, d) <= 0.0) return norm(fromA) / scale;
    if (dot(fromB, d) >= 0.0) return norm(fromB) / scale;
    const Offset fromNearer = norm(fromA) <= norm(fromB) ? fromA : fromB;
    const double s = dot(fromNearer, d) / dot(d, d);
    return norm({fromNearer.x - s * d.x, fromNearer.y - s * d.y, fromNearer.z - s * d.z}) / scale;
}

/// Whether the directions of two segments have the exact determinant 0.
bool areParallel(const Segment2& a, const Segment2& b)
{
    const filters::OrientationValue value{a.trg.x() - a.src.x(), a.trg.y() - a.src.y(), b.trg.x() - b.src.x(),
                                          b.trg.y() - b.src.y()};
    if (std::fabs(value.det()) > value.bound()) return false;

    constexpr int numRationals = 6;
    mpq_t aQ[numRationals];
    for (mpq_t& q : aQ) mpq_init(q);
    const auto difference = [&aQ](int i, double v, double w) {
        mpq_set_d(aQ[i], v);
        mpq_set_d(aQ[4], w);
        mpq_sub(aQ[i], aQ[i], aQ[4]);
    };
    difference(0, a.trg.x(), a.src.x());
    difference(1, a.trg.y(), a.src.y());
    difference(2, b.trg.x(), b.src.x());
    difference(3, b.trg.y(), b.src.y());
    mpq_mul(aQ[4], aQ[0], aQ[3]);
    mpq_mul(aQ[5], aQ[1], aQ[2]);
    const bool bParallel = mpq_equal(aQ[4], aQ[5]) != 0;
    for (mpq_t& q : aQ) mpq_clear(q);
    return bParallel;
}

/// The crossing of two segments that are known to cross, in plain arithmetic; false where its error isn't known to be
/// small.
///
/// With P and N the sums of the sizes of the products in the denominator and in the numerator, each of them is off by at
/// most 4u times that. Both sums are at most 16 times the denominator here, so that the position t along the first
/// segment, at most 1, is off by less than 130u, and the crossing by 130u lengths and the rounding of the last sum.
bool crossPlainly(const Segment2& a, const Segment2& b, double& x, double& y)
{
    const double ax = a.trg.x() - a.src.x(), ay = a.trg.y() - a.src.y();
    const double bx = b.trg.x() - b.src.x(), by = b.trg.y() - b.src.y();
    const double sx = b.src.x() - a.src.x(), sy = b.src.y() - a.src.y();
    const double denominator = ax * by - ay * bx;
    const double sizeOfDenominator = std::fabs(ax * by) + std::fabs(ay * bx);
    const double sizeOfNumerator = std::fabs(sx * by) + std::fabs(sy * bx);
    const double largest = 16.0 * std::fabs(denominator);
    // Neither overflow (whatever it ends in) nor underflow plays a part between these bounds.
    const bool bTrusted = sizeOfDenominator <= largest && sizeOfNumerator <= largest && largest > 0x1p-900 &&
                          sizeOfDenominator < 0x1p1000 && sizeOfNumerator < 0x1p1000;
    if (!bTrusted) return false;
    const double t = (sx * by - sy * bx) / denominator;
    x = a.src.x() + t * ax;
    y = a.src.y() + t * ay;
    return true;
}

/// Two points that aren't both strictly on one side.
bool straddle(Orientation2 o0, Orientation2 o1)
{
    return o0 != o1 || o0 == ORIENTATION2_COLLINEAR;
}

void clampToBox(const Segment2& s, double& x, double& y)
{
    const auto rangeX = std::minmax({s.src.x(), s.trg.x()});
    const auto rangeY = std::minmax({s.src.y(), s.trg.y()});
    x = std::clamp(x, rangeX.first, rangeX.second);
    y = std::clamp(y, rangeY.first, rangeY.second);
}

} // namespace

// ---- ranges ---------------------------------------------------------------------------------------------------------

bool commonRange(double a0, double a1, double b0, double b1, double& lo, double& hi)
{
    const double commonLo = std::max(std::min(a0, a1), std::min(b0, b1));
    const double commonHi = std::min(std::max(a0, a1), std::max(b0, b1));
    if (!(commonLo <= commonHi)) return false;
    lo = commonLo;
    hi = commonHi;
    return true;
}

bool isStrictlyBetween(const Point2& p, const Point2& q, const Point2& r)
{
    // Along a line the lexicographic order is the order of the points: no distance need be computed and rounded.
    return p < q ? p < r && r < q : q < r && r < p;
}

bool isInRange2D(const Point2& p, const Point2& q, const Point2& r)
{
    if (r == p || r == q) return true;
    const double sqLength = sqDistance2D(p, q);
    return sqLength >= sqDistance2D(p, r) && sqLength >= sqDistance2D(q, r);
}

bool approxHasOn(const Point2& p, const Point2& q, const Point2& r)
{
    const double maxAbs = std::max(p.getMaxAbs(), std::max(q.getMaxAbs(), r.getMaxAbs()));
    return distanceFromSegment2D(p, q, r) <= 0x1p-40 * maxAbs;
}

// ---- heights --------------------------------------------------------------------------------------------------------

double interpolateHeight(const Point2& a, const Point2& b, double x, double y)
{
    if (a.z() == unknownHeight || b.z() == unknownHeight) return unknownHeight;
    double ax = a.x(), ay = a.y(), bx = b.x(), by = b.y();
    if (std::fabs(ay - by) > std::fabs(ax - bx)) {
        std::swap(ax, ay);
        std::swap(bx, by);
        std::swap(x, y);
    }
    if (ax == bx) return a.z();
    const double result = (b.z() - a.z()) / (bx - ax) * (x - ax) + a.z();
    const auto range = std::minmax({a.z(), b.z()});
    if (result >= range.first && result <= range.second) return result;

    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "\n ** Numeric deviation, minZ=" << range.first << ", maxZ=" << range.second << ", result=" << result;
    printLine(text.str());
    // Where the product overflowed in between, nothing but the plain way is left.
    return std::isnan(result) ? heightOnSegment(a, b, x, y) : std::clamp(result, range.first, range.second);
}

double heightOnSegment(const Point2& a, const Point2& b, double x, double y)
{
    if (a.z() == unknownHeight || b.z() == unknownHeight) return unknownHeight;
    if (a.z() == b.z()) return a.z();
    // Halved where differences could overflow.
    const double scale = std::max(a.getMaxAbs(), b.getMaxAbs()) < 0x1p1000 ? 1.0 : 0.25;
    const double dx = b.x() * scale - a.x() * scale;
    const double dy = b.y() * scale - a.y() * scale;
    const bool bAlongX = std::fabs(dx) >= std::fabs(dy);
    const double extent = bAlongX ? dx : dy;
    if (extent == 0.0) return a.z();
    const double fromA = bAlongX ? x * scale - a.x() * scale : y * scale - a.y() * scale;
    const double fromB = bAlongX ? x * scale - b.x() * scale : y * scale - b.y() * scale;
    const auto range = std::minmax({a.z(), b.z()});
    // From the nearer end, so that both are met exactly. Products of their own: the difference of heights may overflow.
    const double t = std::clamp(fromA / extent, 0.0, 1.0);
    const double s = std::clamp(-fromB / extent, 0.0, 1.0);
    const double z = t <= 0.5 ? a.z() + (t * b.z() - t * a.z()) : b.z() + (s * a.z() - s * b.z());
    return std::clamp(z, range.first, range.second);
}

// ---- feet and distances ---------------------------------------------------------------------------------------------

Point2 footOfPerpendicular(const Point2& a, const Point2& b, const Point2& p)
{
    const double scale = safeScale(std::max(a.getMaxAbs(), std::max(b.getMaxAbs(), p.getMaxAbs())));
    Offset d{};
    int exponent = 0;
    if (!scaledDirection(offset(a, b, scale, false), d, exponent)) return Point2(a.x(), a.y(), a.z());
    const Offset fromA = offset(a, p, scale, false);
    const Offset fromB = offset(b, p, scale, false);
    const bool bFromA = norm(fromA) <= norm(fromB);
    const Point2& start = bFromA ? a : b;
    const double s = dot(bFromA ? fromA : fromB, d) / dot(d, d);
    double z = unknownHeight;
    if (a.z() != unknownHeight && b.z() != unknownHeight) {
        const double t = std::scalbn(s, exponent);
        z = a.z() == b.z() || s == 0.0 ? start.z() : start.z() + (t * b.z() - t * a.z());
    }
    return Point2(start.x() + s * d.x / scale, start.y() + s * d.y / scale, z);
}

double distanceFromSegment2D(const Point2& a, const Point2& b, const Point2& p)
{
    const double maxAbs = std::max(a.getMaxAbs(), std::max(b.getMaxAbs(), p.getMaxAbs()));
    return distanceFromSegment(a, b, p, maxAbs, false);
}

double distanceFromSegment25D(const Point2& a, const Point2& b, const Point2& p)
{
    const double maxAbs2D = std::max(a.getMaxAbs(), std::max(b.getMaxAbs(), p.getMaxAbs()));
    const double maxAbsZ = std::max(std::fabs(a.z()), std::max(std::fabs(b.z()), std::fabs(p.z())));
    return distanceFromSegment(a, b, p, std::max(maxAbs2D, maxAbsZ), true);
}

// ---- crossings ------------------------------------------------------------------------------------------------------

bool computeCrossing(OrbiTest& orbiTest, const Segment2& first, const Segment2& second, SegmentCrossing& crossing)
{
    const Point2 *const p1 = &first.src, *const p2 = &first.trg, *const p3 = &second.src, *const p4 = &second.trg;
    orbiTest.ensureStaticBound(p1, p2, p3);
    orbiTest.ensureStaticBound(p4);
    const Orientation2 o3 = orbiTest.getOrientation2(p1, p2, p3), o4 = orbiTest.getOrientation2(p1, p2, p4);
    const Orientation2 o1 = orbiTest.getOrientation2(p3, p4, p1), o2 = orbiTest.getOrientation2(p3, p4, p2);
    // Both ends on the other's line: one line, or a point.
    if ((o3 == ORIENTATION2_COLLINEAR && o4 == ORIENTATION2_COLLINEAR) ||
        (o1 == ORIENTATION2_COLLINEAR && o2 == ORIENTATION2_COLLINEAR)) {
        return false;
    }
    const bool bInBoth = straddle(o3, o4) && straddle(o1, o2);
    double x = 0.0, y = 0.0;
    if (!bInBoth) {
        if (areParallel(first, second)) return false;
        orbiTest.getIntersectionCoords_gmp_MT(p1, p2, p3, p4, x, y);
    } else if (o3 == ORIENTATION2_COLLINEAR) {
        p3->xy(x, y);
    } else if (o4 == ORIENTATION2_COLLINEAR) {
        p4->xy(x, y);
    } else if (o1 == ORIENTATION2_COLLINEAR) {
        p1->xy(x, y);
    } else if (o2 == ORIENTATION2_COLLINEAR) {
        p2->xy(x, y);
    } else {
        if (!crossPlainly(first, second, x, y)) orbiTest.getIntersectionCoords_gmp_MT(p1, p2, p3, p4, x, y);
        clampToBox(first, x, y);
        clampToBox(second, x, y);
    }
    crossing.onFirst = Point2(x, y, heightOnSegment(first.src, first.trg, x, y));
    crossing.onSecond = Point2(x, y, heightOnSegment(second.src, second.trg, x, y));
    crossing.bInBoth = bInBoth;
    return true;
}

} // namespace ORBI_LUMO25D
