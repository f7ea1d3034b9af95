#include "geometry/numericTools.h"

#include "geometry/OrbiTest.h"
#include "geometry/SplitMix64.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <gmpxx.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double unknown = std::numeric_limits<double>::max();
constexpr double u = 0x1p-53;

double absDifference(const mpq_class& exact, double value)
{
    return mpq_class(abs(exact - mpq_class(value))).get_d();
}

/// Kinds: a small grid, survey coordinates, nearly parallel needles, all magnitudes.
Point2 randomPoint(SplitMix64& random, int kind)
{
    const double x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0), z = random.between(0.0, 50.0);
    switch (kind) {
    case 0:
        return Point2(std::round(3 * x), std::round(3 * y), std::round(z));
    case 1:
        return Point2(21530000.125 + 20 * x, 6782000.375 + 20 * y, z);
    case 2:
        return Point2(1000 * x, 1000 * x + 1e-7 * y, z);
    default: {
        const int exponent = 10 * (static_cast<int>(random.index(40)) - 20);
        return Point2(std::ldexp(x, exponent), std::ldexp(y, exponent), z);
    }
    }
}

} // namespace

TEST(NumericTools, RangesAreOffAtTheirEnds)
{
    double lo = 9.0, hi = 9.0;
    EXPECT_TRUE(!commonRange(0, 1, 3, 2, lo, hi) && lo == 9.0);
    EXPECT_TRUE(commonRange(5, 1, 7, 4, lo, hi) && lo == 4.0 && hi == 5.0);
    EXPECT_TRUE(commonRange(0, 1, 1, 2, lo, hi) && lo == 1.0 && hi == 1.0);
    // Points of one line whose squared distances are equal in doubles.
    const double x = 21530000.125;
    const Point2 p(x, x, 0), q(x + 4096, x + 4096, 0), beyondP(std::nextafter(x, 0), std::nextafter(x, 0), 0),
        afterP(std::nextafter(x, 1e9), std::nextafter(x, 1e9), 0);
    for (const auto& [s, t] : {std::pair(p, q), std::pair(q, p)}) {
        EXPECT_TRUE(isStrictlyBetween(s, t, afterP) && !isStrictlyBetween(s, t, beyondP));
        EXPECT_FALSE(isStrictlyBetween(s, t, p) || isStrictlyBetween(s, t, q) || isStrictlyBetween(s, s, t));
        EXPECT_TRUE(isInRange2D(s, t, p) && isInRange2D(s, t, q) && !isInRange2D(s, t, beyondP));
    }
    const Point2 a(x, 6782000.375, 0), b(x + 37, 6782000.375 + 11, 0);
    for (int i = 0; i <= 100; ++i) {
        const Point2 r(a.x() + 0.37 * i, a.y() + 0.11 * i, 5);
        EXPECT_TRUE(approxHasOn(a, b, r) && !approxHasOn(a, b, Point2(r.x(), r.y() + 1e-4, 5))) << i;
    }
}

TEST(NumericTools, HeightsLeaveTheirRangeOrTheLine)
{
    lumo_test::CoutCapture out;
    const Point2 a(0, 0, 10), b(3, 4, 20);
    EXPECT_EQ(interpolateHeight(a, b, 0, 2), 15.0); // y is the longer axis, x isn't looked at
    EXPECT_EQ(interpolateHeight(a, b, 3, 6), 20.0);
    EXPECT_EQ(out.take(), "\n ** Numeric deviation, minZ=10, maxZ=20, result=25\n");
    EXPECT_EQ(heightOnSegment(Point2(5, 5, unknown), a, 1, 1), unknown);

    SplitMix64 random(1);
    for (int i = 0; i < 4000; ++i) {
        const int kind = i % 4;
        const Point2 p = randomPoint(random, kind), q = randomPoint(random, kind);
        const double s = random.unit();
        const double x = p.x() + s * (q.x() - p.x()), y = p.y() + s * (q.y() - p.y());
        const double z = heightOnSegment(p, q, x, y);
        EXPECT_EQ(heightOnSegment(p, q, p.x(), p.y()), p.z());
        if (p == q) continue;
        EXPECT_EQ(heightOnSegment(p, q, q.x(), q.y()), q.z());
        const bool bAlongX = std::fabs(q.x() - p.x()) >= std::fabs(q.y() - p.y());
        const auto along = [bAlongX](const Point2& r) { return mpq_class(bAlongX ? r.x() : r.y()); };
        const mpq_class t = (along(Point2(x, y, 0)) - along(p)) / (along(q) - along(p));
        const mpq_class exact = mpq_class(p.z()) + t * (mpq_class(q.z()) - mpq_class(p.z()));
        if (t < 0 || t > 1) continue; // clamped
        EXPECT_LE(absDifference(exact, z), 8 * u * 50);
        EXPECT_NEAR(interpolateHeight(p, q, x, y), exact.get_d(), 32 * u * 50);
    }
    // The difference of two heights, or of two coordinates, is more than a double holds.
    EXPECT_EQ(heightOnSegment(Point2(-1, 0, -1.5e308), Point2(1, 0, 1.5e308), 0, 0), 0.0);
    EXPECT_EQ(heightOnSegment(Point2(-1.5e308, 0, 1), Point2(1.5e308, 0, 3), 0, 0), 2.0);
}

TEST(NumericTools, FeetAndDistancesAreFurtherOffThanPromised)
{
    SplitMix64 random(2);
    for (int i = 0; i < 8000; ++i) {
        const int kind = i % 4;
        SCOPED_TRACE(::testing::Message() << "kind " << kind << ", i " << i);
        const Point2 a = randomPoint(random, kind), b = randomPoint(random, kind), p = randomPoint(random, kind);
        const Point2 foot = footOfPerpendicular(a, b, p);
        if (a == b) {
            EXPECT_TRUE(foot.samePoint(a));
            EXPECT_DOUBLE_EQ(distanceFromSegment2D(a, b, p), std::hypot(p.x() - a.x(), p.y() - a.y()));
            continue;
        }
        const mpq_class ax(a.x()), ay(a.y()), abx(b.x() - ax), aby(b.y() - ay), apx(p.x() - ax), apy(p.y() - ay);
        const mpq_class footT = (apx * abx + apy * aby) / (abx * abx + aby * aby);
        const mpq_class t = footT < 0 ? mpq_class(0) : (footT > 1 ? mpq_class(1) : footT); // on the segment
        const double nearer =
            std::min(std::hypot(p.x() - a.x(), p.y() - a.y()), std::hypot(p.x() - b.x(), p.y() - b.y()));
        const double largest = std::max({a.getMaxAbs(), b.getMaxAbs(), p.getMaxAbs()});
        ASSERT_LE(absDifference(ax + footT * abx, foot.x()), 32 * u * std::max(largest, nearer));
        ASSERT_LE(absDifference(ay + footT * aby, foot.y()), 32 * u * std::max(largest, nearer));
        const double distance = std::hypot(mpq_class(apx - t * abx).get_d(), mpq_class(apy - t * aby).get_d());
        ASSERT_NEAR(distanceFromSegment2D(a, b, p), distance, 32 * u * nearer);
        EXPECT_TRUE(footOfPerpendicular(a, b, a).samePoint(a) && footOfPerpendicular(a, b, b).samePoint(b));
        EXPECT_EQ(distanceFromSegment2D(a, b, b), 0.0);
        // In space: turned so that z takes the place of y.
        const auto turned = [](const Point2& q) { return Point2(q.x(), 0.0, q.y()); };
        ASSERT_NEAR(distanceFromSegment25D(turned(a), turned(b), turned(p)), distance, 32 * u * nearer);
    }
    EXPECT_DOUBLE_EQ(distanceFromSegment25D(Point2(0, 0, 0), Point2(2, 2, 2), Point2(1, 1, 4)), std::sqrt(6.0));
    EXPECT_DOUBLE_EQ(footOfPerpendicular(Point2(0, 0, 10), Point2(10, 0, 20), Point2(20, 7, 0)).z(), 30.0);
    // Where squares and differences overflow or vanish.
    for (const double m : {1e-300, 1e300, 1.7e308}) {
        const Point2 a(-m, 0, 0), b(m, 0, 0), p(0.5 * m, 0.5 * m, 0);
        EXPECT_NEAR(footOfPerpendicular(a, b, p).x() / m, 0.5, 1e-15);
        EXPECT_NEAR(distanceFromSegment2D(a, b, p) / m, 0.5, 1e-15);
    }
}

TEST(NumericTools, CrossingsAreFurtherOffThanPromised)
{
    SplitMix64 random(3);
    OrbiTest orbiTest;
    int numInBoth = 0, numParallel = 0, numExactEnds = 0;
    for (int i = 0; i < 20000; ++i) {
        const int kind = i % 4;
        SCOPED_TRACE(::testing::Message() << "kind " << kind << ", i " << i);
        const Segment2 a(randomPoint(random, kind), randomPoint(random, kind));
        Segment2 b(randomPoint(random, kind), randomPoint(random, kind));
        if (i % 7 == 0) { // the exact multiple of a direction
            b.trg = Point2(b.src.x() + 2 * (a.trg.x() - a.src.x()), b.src.y() + 2 * (a.trg.y() - a.src.y()), 0);
        }
        const mpq_class ax(a.src.x()), ay(a.src.y()), bx(b.src.x()), by(b.src.y());
        const mpq_class adx = mpq_class(a.trg.x()) - ax, ady = mpq_class(a.trg.y()) - ay;
        const mpq_class bdx = mpq_class(b.trg.x()) - bx, bdy = mpq_class(b.trg.y()) - by;
        const mpq_class det = adx * bdy - ady * bdx;
        SegmentCrossing crossing;
        const bool bCrossing = computeCrossing(orbiTest, a, b, crossing);
        ASSERT_EQ(bCrossing, det != 0);
        numParallel += bCrossing ? 0 : 1;
        if (!bCrossing) continue;
        const mpq_class t = ((bx - ax) * bdy - (by - ay) * bdx) / det, s = ((bx - ax) * ady - (by - ay) * adx) / det;
        const mpq_class x = ax + t * adx, y = ay + t * ady;
        ASSERT_EQ(crossing.bInBoth, t >= 0 && t <= 1 && s >= 0 && s <= 1);
        ASSERT_EQ(crossing.onFirst, crossing.onSecond);
        const Point2& p = crossing.onFirst;
        const bool bEnd = crossing.bInBoth && (t == 0 || t == 1 || s == 0 || s == 1);
        const double length = bEnd || !crossing.bInBoth ? 0.0 : 0x1p-44 * std::sqrt(a.getSqLen2D());
        ASSERT_LE(absDifference(x, p.x()), bEnd ? 0.0 : length + 2 * u * std::fabs(p.x()));
        ASSERT_LE(absDifference(y, p.y()), bEnd ? 0.0 : length + 2 * u * std::fabs(p.y()));
        if (!crossing.bInBoth) continue;
        ++numInBoth;
        numExactEnds += bEnd ? 1 : 0;
        for (const Segment2* pS : std::initializer_list<const Segment2*>{&a, &b}) {
            const Point2& onIt = pS == &a ? crossing.onFirst : crossing.onSecond;
            ASSERT_TRUE(isInRange2D(pS->src, pS->trg, p));
            if (kind != 1) continue;
            const mpq_class& r = pS == &a ? t : s;
            const mpq_class z = mpq_class(pS->src.z()) + r * (mpq_class(pS->trg.z()) - mpq_class(pS->src.z()));
            const double slope = std::fabs(pS->trg.z() - pS->src.z()) / std::sqrt(pS->getSqLen2D());
            ASSERT_LE(absDifference(z, onIt.z()), 1e-12 + 1e-8 * slope);
        }
    }
    EXPECT_GT(std::min({numInBoth, numParallel, numExactEnds}), 200);
}

} // namespace ORBI_LUMO25D
