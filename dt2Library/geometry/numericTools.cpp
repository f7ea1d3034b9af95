#include "geometry/numericTools.h"

#include "geometry/OrbiTest.h"
#include "geometry/Rational.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double unknownHeight = std::numeric_limits<double>::max();

/// A vector times 2^exponent. Its largest component is neither so large nor so small that products of two of them
/// overflow or lose more than their roundings, unless it is the null vector.
struct Offset
{
    double x, y, z;
    int exponent;
};

double maxAbs(const Offset& v)
{
    return std::max(std::fabs(v.x), std::max(std::fabs(v.y), std::fabs(v.z)));
}

double dot(const Offset& v, const Offset& w)
{
    return v.x * w.x + v.y * w.y + v.z * w.z;
}

/// Of the part without the power of two.
double norm(const Offset& v)
{
    return std::sqrt(dot(v, v));
}

Offset offset(const Point2& from, const Point2& to, bool bWithHeight)
{
    Offset v{to.x() - from.x(), to.y() - from.y(), bWithHeight ? to.z() - from.z() : 0.0, 0};
    if (maxAbs(v) == 0.0 || (maxAbs(v) > 0x1p-400 && maxAbs(v) < 0x1p400)) return v;
    if (!std::isfinite(maxAbs(v))) {
        v = {0.5 * to.x() - 0.5 * from.x(), 0.5 * to.y() - 0.5 * from.y(),
             bWithHeight ? 0.5 * to.z() - 0.5 * from.z() : 0.0, 1};
    }
    const int shift = std::ilogb(maxAbs(v));
    return {std::scalbn(v.x, -shift), std::scalbn(v.y, -shift), std::scalbn(v.z, -shift), v.exponent + shift};
}

bool isShorterOrEqual(const Offset& v, const Offset& w)
{
    return norm(v) <= std::scalbn(norm(w), w.exponent - v.exponent);
}

/// start + x * 2^exponent; infinite only where the sum is no double.
double sumWithScaled(double start, double x, int exponent)
{
    const double sum = start + std::scalbn(x, exponent);
    return std::isfinite(sum) ? sum : 2.0 * (0.5 * start + std::scalbn(x, exponent - 1));
}

double distanceFromSegment(const Point2& a, const Point2& b, const Point2& p, bool bInSpace)
{
    const Offset v = offset(a, b, bInSpace);
    const Offset fromA = offset(a, p, bInSpace);
    const Offset fromB = offset(b, p, bInSpace);
    if (dot(fromA, v) <= 0.0) return std::scalbn(norm(fromA), fromA.exponent); // a point, too
    if (dot(fromB, v) >= 0.0) return std::scalbn(norm(fromB), fromB.exponent);
    const Offset& w = isShorterOrEqual(fromA, fromB) ? fromA : fromB;
    const double s = dot(w, v) / dot(v, v);
    return std::scalbn(norm({w.x - s * v.x, w.y - s * v.y, w.z - s * v.z, 0}), w.exponent);
}

/// Whether the directions of two segments have the exact determinant 0.
bool areParallel(const Segment2& a, const Segment2& b)
{
    const filters::OrientationValue value{a.trg.x() - a.src.x(), a.trg.y() - a.src.y(), b.trg.x() - b.src.x(),
                                          b.trg.y() - b.src.y()};
    if (std::fabs(value.det()) > value.bound()) return false;

    const auto dx = [](const Segment2& s) { return difference(s.trg.x(), s.src.x()); };
    const auto dy = [](const Segment2& s) { return difference(s.trg.y(), s.src.y()); };
    return product(dx(a), dy(b)).compare(product(dy(a), dx(b))) == 0;
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

/// The height at v between those at two places on an axis, exact at both. From the nearer place; with products of their
/// own, since the difference of heights may overflow.
double heightAlong(double zA, double zB, double a, double b, double v)
{
    if (a == b) return zA;
    // Where a difference overflows, halves lose nothing that counts.
    const double scale = std::isfinite(b - a) ? 1.0 : 0.5;
    const double extent = b * scale - a * scale;
    const double t = std::clamp((v * scale - a * scale) / extent, 0.0, 1.0);
    const double s = std::clamp((b * scale - v * scale) / extent, 0.0, 1.0);
    const double z = t <= 0.5 ? zA + (t * zB - t * zA) : zB + (s * zA - s * zB);
    return std::clamp(z, std::min(zA, zB), std::max(zA, zB));
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
    if (ax == bx || a.z() == b.z()) return a.z();
    const double slope = (b.z() - a.z()) / (bx - ax);
    // Beyond the range of doubles, or near its ends, the quotient would tell little or nothing.
    if (!(std::fabs(slope) > 0x1p-900 && std::fabs(slope) < 0x1p900)) {
        return heightAlong(a.z(), b.z(), ax, bx, x);
    }
    const double result = slope * (x - ax) + a.z();
    const auto range = std::minmax({a.z(), b.z()});
    if (result >= range.first && result <= range.second) return result;

    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "\n ** Numeric deviation, minZ=" << range.first << ", maxZ=" << range.second << ", result=" << result;
    printLine(text.str());
    return std::clamp(result, range.first, range.second);
}

double heightOnSegment(const Point2& a, const Point2& b, double x, double y)
{
    if (a.z() == unknownHeight || b.z() == unknownHeight) return unknownHeight;
    if (a.z() == b.z()) return a.z();
    // Where both overflow, either will do.
    const bool bAlongX = std::fabs(b.x() - a.x()) >= std::fabs(b.y() - a.y());
    return bAlongX ? heightAlong(a.z(), b.z(), a.x(), b.x(), x) : heightAlong(a.z(), b.z(), a.y(), b.y(), y);
}

// ---- feet and distances ---------------------------------------------------------------------------------------------

Point2 footOfPerpendicular(const Point2& a, const Point2& b, const Point2& p)
{
    const Offset v = offset(a, b, false);
    const Offset fromA = offset(a, p, false);
    const Offset fromB = offset(b, p, false);
    if (a == b) return Point2(a.x(), a.y(), a.z());
    const bool bFromA = isShorterOrEqual(fromA, fromB);
    const Point2& start = bFromA ? a : b;
    const Offset& w = bFromA ? fromA : fromB;
    const double s = dot(w, v) / dot(v, v);
    double z = unknownHeight;
    if (a.z() != unknownHeight && b.z() != unknownHeight) {
        const Offset rise = offset(Point2(0.0, 0.0, a.z()), Point2(0.0, 0.0, b.z()), true);
        z = sumWithScaled(start.z(), s * rise.z, w.exponent - v.exponent + rise.exponent);
    }
    return Point2(sumWithScaled(start.x(), s * v.x, w.exponent), sumWithScaled(start.y(), s * v.y, w.exponent), z);
}

double distanceFromSegment2D(const Point2& a, const Point2& b, const Point2& p)
{
    return distanceFromSegment(a, b, p, false);
}

double distanceFromSegment25D(const Point2& a, const Point2& b, const Point2& p)
{
    return distanceFromSegment(a, b, p, true);
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
    // No two ends of one segment are on the other's line now.
    const bool bInBoth = o3 != o4 && o1 != o2;
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
