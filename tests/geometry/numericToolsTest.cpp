#include "geometry/numericTools.h"

#include "geometry/OrbiTest.h"
#include "geometry/SplitMix64.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <gmpxx.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double largest = std::numeric_limits<double>::max();
constexpr int numKinds = 6;

/// By kind: a small grid, survey coordinates, all magnitudes, differences overflow, few bits left, a square.
double randomCoordinate(SplitMix64& random, int kind)
{
    const double x = random.between(-1.0, 1.0);
    const int exponent = 10 * static_cast<int>(random.index(180)) - 900;
    const double aCoordinates[numKinds] = {std::round(3 * x),
                                           21530000.125 + 20 * x,
                                           std::ldexp(x, exponent),
                                           0.99 * largest * x,
                                           std::ldexp(std::round(8 * x), -1074),
                                           x};
    return aCoordinates[kind];
}

/// As likely on the line of a and b, but for its rounding, as anywhere.
Point2 randomPoint(SplitMix64& random, int kind, const Point2& a = Point2(), const Point2& b = Point2())
{
    double x = randomCoordinate(random, kind), y = randomCoordinate(random, kind);
    if (a != b && random.index(2) == 0) {
        const double t = random.between(-0.2, 1.2);
        x = std::clamp((1 - t) * a.x() + t * b.x(), -largest, largest);
        y = std::clamp((1 - t) * a.y() + t * b.y(), -largest, largest);
    }
    return Point2(x, y, random.index(3) == 0 ? 0.99 * randomCoordinate(random, kind) : random.between(0.0, 50.0));
}

/// |value - exact| <= units of 2^-53 times size, and a bit; beyond the doubles the value is infinite.
bool isNear(double value, const mpq_class& exact, double units, const mpf_class& size)
{
    if (abs(exact) > 0.999 * mpq_class(largest)) return std::fabs(value) > 0.998 * largest;
    const mpf_class off(abs(exact - mpq_class(std::isfinite(value) ? value : 0.0)), 200);
    return std::isfinite(value) &&
           off <= size * (units * 0x1p-53) + mpf_class(2 * std::numeric_limits<double>::denorm_min());
}

/// Offsets in rationals.
struct Exact
{
    mpq_class x, y, z;
    Exact(const Point2& from, const Point2& to, bool bInSpace = false)
        : x(mpq_class(to.x()) - from.x()), y(mpq_class(to.y()) - from.y()), z(0)
    {
        if (bInSpace) z = mpq_class(to.z()) - from.z();
    }
    mpq_class operator*(const Exact& o) const { return x * o.x + y * o.y + z * o.z; }
    mpq_class operator%(const Exact& o) const { return x * o.y - y * o.x; }
    mpf_class norm() const { return sqrt(mpf_class(*this * *this, 200)); }
};

} // namespace

TEST(NumericTools, UnknownHeightsAreComputedWithOrClampingIsSilent)
{
    const Point2 a(0, 0, 10), b(3, 4, 20), unknown(5, 5, largest);
    lumo_test::CoutCapture out;
    EXPECT_EQ(interpolateHeight(a, b, 3, 6), 20.0); // y is the longer axis
    EXPECT_EQ(out.take(), "\n ** Numeric deviation, minZ=10, maxZ=20, result=25\n");
    EXPECT_TRUE(heightOnSegment(unknown, a, 6, 6) == largest && interpolateHeight(a, unknown, 6, 6) == largest);
    EXPECT_EQ(footOfPerpendicular(unknown, a, b).z(), largest);
    EXPECT_TRUE(approxHasOn(a, b, Point2(1.5, 2.000000000001, 5)) && !approxHasOn(a, b, Point2(1.5, 2.00000000001, 5)));
}

TEST(NumericTools, HeightsFeetOrDistancesAreFurtherOffThanPromised)
{
    lumo_test::CoutCapture out; // of heights that are clamped
    SplitMix64 random(2);
    for (int i = 0; i < 6000; ++i) {
        const int kind = i % numKinds;
        const Point2 a = randomPoint(random, kind), b = randomPoint(random, kind), p = randomPoint(random, kind, a, b);
        SCOPED_TRACE(::testing::Message() << "kind " << kind << ", i " << i);
        const Exact ab(a, b), ap(a, p), bp(b, p);
        const double z = std::max(std::fabs(a.z()), std::fabs(b.z()));
        const mpf_class nearer = std::min<mpf_class>(ap.norm(), bp.norm());
        const Point2 foot = footOfPerpendicular(a, b, p);
        if (a == b) {
            EXPECT_TRUE(foot.samePoint(a));
        } else {
            const bool bAlongX = std::fabs(b.x() - a.x()) >= std::fabs(b.y() - a.y());
            const mpq_class s = bAlongX ? ap.x / ab.x : ap.y / ab.y;
            const mpq_class rise = mpq_class(b.z()) - a.z(), height = a.z() + std::clamp<mpq_class>(s, 0, 1) * rise;
            ASSERT_TRUE(isNear(heightOnSegment(a, b, p.x(), p.y()), height, 8, z));
            ASSERT_TRUE(isNear(interpolateHeight(a, b, p.x(), p.y()), height, 16, z));
            ASSERT_TRUE(heightOnSegment(a, b, a.x(), a.y()) == a.z() && heightOnSegment(a, b, b.x(), b.y()) == b.z());

            const mpq_class t = (ap * ab) / (ab * ab);
            const mpf_class size = std::max<mpf_class>(nearer, std::max({a.getMaxAbs(), b.getMaxAbs(), p.getMaxAbs()}));
            ASSERT_TRUE(isNear(foot.x(), a.x() + t * ab.x, 32, size)) << foot;
            ASSERT_TRUE(isNear(foot.y(), a.y() + t * ab.y, 32, size)) << foot;
            const mpq_class footZ = a.z() + t * rise;
            const mpf_class slope = mpf_class(abs(rise), 200) / ab.norm();
            ASSERT_TRUE(isNear(foot.z(), footZ, 4, 8 * nearer * slope + z + mpf_class(abs(footZ), 200))) << foot;
        }
        EXPECT_TRUE(footOfPerpendicular(a, b, a).samePoint(a) && (a == b || footOfPerpendicular(a, b, b).samePoint(b)));
        for (const bool bInSpace : {false, true}) {
            const auto distance = bInSpace ? distanceFromSegment25D : distanceFromSegment2D;
            const Exact v(a, b, bInSpace), fromA(a, p, bInSpace), fromB(b, p, bInSpace);
            const mpq_class t = v * v == 0 ? mpq_class(0) : std::clamp<mpq_class>((fromA * v) / (v * v), 0, 1);
            Exact w = fromA;
            w.x -= t * v.x;
            w.y -= t * v.y;
            w.z -= t * v.z;
            ASSERT_TRUE(
                isNear(distance(a, b, p), mpq_class(w.norm()), 32, std::min<mpf_class>(fromA.norm(), fromB.norm())));
            EXPECT_TRUE(distance(a, b, a) == 0.0 && distance(a, b, b) == 0.0);
        }
    }
}

TEST(NumericTools, CrossingsAreFurtherOffThanPromised)
{
    SplitMix64 random(3);
    OrbiTest orbiTest;
    int numExactEnds = 0;
    for (int i = 0; i < 6000; ++i) {
        const int kind = i % numKinds;
        Segment2 a(randomPoint(random, kind), randomPoint(random, kind));
        Segment2 b(randomPoint(random, kind, a.src, a.trg), randomPoint(random, kind, a.src, a.trg));
        if (i % 2 == 0) std::swap(a, b);
        const Exact ab(a.src, a.trg), cd(b.src, b.trg), ac(a.src, b.src);
        const mpq_class det = ab % cd;
        SCOPED_TRACE(::testing::Message() << "kind " << kind << ", i " << i);
        SegmentCrossing crossing;
        ASSERT_EQ(computeCrossing(orbiTest, a, b, crossing), det != 0);
        if (det == 0) continue;
        const mpq_class t = ac % cd / det, s = ac % ab / det;
        ASSERT_EQ(crossing.bInBoth, t >= 0 && t <= 1 && s >= 0 && s <= 1);
        const bool bEnd = crossing.bInBoth && (t == 0 || t == 1 || s == 0 || s == 1);
        numExactEnds += bEnd ? 1 : 0;
        const mpq_class x = a.src.x() + t * ab.x, y = a.src.y() + t * ab.y;
        const Point2 &p = crossing.onFirst, &q = crossing.onSecond;
        const mpf_class size = crossing.bInBoth ? 0x1p9 * ab.norm() : mpf_class(0); // 2^-44 in all
        ASSERT_TRUE(bEnd ? x == p.x() : isNear(p.x(), x, 1, size + 2 * mpf_class(abs(x), 200)));
        ASSERT_TRUE(bEnd ? y == p.y() : isNear(p.y(), y, 1, size + 2 * mpf_class(abs(y), 200)));
        ASSERT_TRUE(p == q || !std::isfinite(p.x()) || !std::isfinite(p.y()));
        if (!crossing.bInBoth) continue;
        ASSERT_TRUE(p.z() == heightOnSegment(a.src, a.trg, p.x(), p.y()) &&
                    q.z() == heightOnSegment(b.src, b.trg, p.x(), p.y()));
        for (const Segment2& c : {a, b}) {
            ASSERT_EQ(p.x(), std::clamp(p.x(), std::min(c.src.x(), c.trg.x()), std::max(c.src.x(), c.trg.x())));
            ASSERT_EQ(p.y(), std::clamp(p.y(), std::min(c.src.y(), c.trg.y()), std::max(c.src.y(), c.trg.y())));
        }
    }
    EXPECT_GT(numExactEnds, 100);
}

} // namespace ORBI_LUMO25D
