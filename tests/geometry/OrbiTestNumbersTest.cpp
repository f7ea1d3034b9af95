#include "geometry/OrbiTest.h"

#include "LumoException.h"
#include "freeFunctions.h"
#include "geometry/SplitMix64.h"
#include "oracles/ExactOracle.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;

namespace
{

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr std::uint64_t SEED = 7;

/// Whether v is the exact value, truncated toward zero to a double; infinite if that is beyond the doubles.
bool isTruncated(double v, const mpq_class& exact)
{
    const mpq_class size = abs(exact), beyond(mpz_class(1) << 1024U);
    if (v != 0.0 && (v > 0.0) != (exact > 0)) return false;
    if (std::isinf(v)) return size >= beyond;
    const double next = std::nextafter(std::fabs(v), INF);
    return mpq_class(std::fabs(v)) <= size && size < (std::isinf(next) ? beyond : mpq_class(next));
}

/// Mostly ordinary, at times at survey offsets or of extreme size.
double coordinate(SplitMix64& random)
{
    static const double aScales[] = {1.0, 1.0, 1e-3, 5e6, 1e-150, 1e100};
    return random.between(-1.0, 1.0) * aScales[random.index(6)];
}

Point2 point(SplitMix64& random)
{
    return Point2(coordinate(random), coordinate(random), coordinate(random));
}

} // namespace

// The crossing, from the vector form p1 + t (p2 - p1): one rounding, toward zero.
TEST(OrbiTest, IntersectionOfLinesIsTruncatedOnce)
{
    const OrbiTest orbiTest;
    SplitMix64 random(SEED);
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(SEED) + ", round " + std::to_string(round));
        const Point2 p1 = point(random), p2 = point(random), p3 = point(random), p4 = point(random);
        const mpq_class dx(mpq_class(p2.x()) - p1.x()), dy(mpq_class(p2.y()) - p1.y());
        const mpq_class ex(mpq_class(p4.x()) - p3.x()), ey(mpq_class(p4.y()) - p3.y());
        const mpq_class det = dx * ey - dy * ex;
        ASSERT_TRUE(det != 0);
        const mpq_class t = ((mpq_class(p3.x()) - p1.x()) * ey - (mpq_class(p3.y()) - p1.y()) * ex) / det;
        double x = 0, y = 0;
        orbiTest.getIntersectionCoords_gmp_MT(&p1, &p2, &p3, &p4, x, y);
        EXPECT_TRUE(isTruncated(x, p1.x() + t * dx)) << x;
        EXPECT_TRUE(isTruncated(y, p1.y() + t * dy)) << y;
    }
}

// A height, from barycentric coordinates.
TEST(OrbiTest, HeightOnAPlaneAndOnALineIsTruncatedOnce)
{
    SplitMix64 random(SEED + 1);
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(SEED + 1) + ", round " + std::to_string(round));
        const Point2 p0 = point(random), p1 = point(random), p2 = point(random), q = point(random);
        const mpq_class area = oracles::orientationDet(p0, p1, p2);
        ASSERT_TRUE(area != 0);
        const mpq_class height = (oracles::orientationDet(q, p1, p2) * mpq_class(p0.z()) +
                                  oracles::orientationDet(p0, q, p2) * mpq_class(p1.z()) +
                                  oracles::orientationDet(p0, p1, q) * mpq_class(p2.z())) /
                                 area;
        EXPECT_TRUE(isTruncated(OrbiTest::getPlaneHeightExact(&p0, &p1, &p2, q.x(), q.y()), height));

        const bool bByY = std::fabs(p0.y() - p1.y()) > std::fabs(p0.x() - p1.x());
        const auto along = [bByY](const Point2& p) { return mpq_class(bByY ? p.y() : p.x()); };
        const mpq_class t = (along(q) - along(p0)) / (along(p1) - along(p0));
        EXPECT_TRUE(isTruncated(OrbiTest::getLineHeightExact(&p0, &p1, q.x(), q.y()),
                                (1 - t) * mpq_class(p0.z()) + t * mpq_class(p1.z())));
    }
}

TEST(OrbiTest, WhatHasNoAnswerIsAFailedConditionAndTheObjectSurvives)
{
    CoutCapture output;
    const lumo_test::TempWorkDir dir;
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const Point2 a(0, 0, 1), b(2, 2, 1), c(4, 0, 5), d(6, 2, 5), bad(notANumber, 0, 0), far(1, INF, 0);
    OrbiTest orbiTest;
    orbiTest.setStaticBound_MT(10.0);
    const auto lastFailure = [] { return lumo_test::readFile("LUMO_LOG.txt"); };
    const auto failed = [](const char* text) { return std::string("* Lumo, Condition [ ") + text + " failed ]\n"; };

    double x = 7, y = 8;
    EXPECT_THROW(orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, &d, x, y), LumoException);
    EXPECT_EQ(lastFailure(), failed("false"));
    EXPECT_NE(output.take().find("OrbiTest::getIntersectionCoords(), ERROR: denom=0 -> parallel segments"),
              std::string::npos);
    orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, &a, x, y); // no lock is left behind
    EXPECT_EQ(x + y, 0.0);

    EXPECT_THROW(OrbiTest::getPlaneHeightExact(&a, &b, &b, 1, 1), LumoException);
    EXPECT_THROW(OrbiTest::getLineHeightExact(&a, &a, 1, 1), LumoException);
    EXPECT_THROW(getOrientation2(nullptr, nullptr, &c), LumoException);
    EXPECT_EQ(lastFailure(), failed("p0!=0"));
    EXPECT_THROW(getOrientation2_mt(&a, nullptr, nullptr), LumoException);
    EXPECT_EQ(lastFailure(), failed("p1!=0"));
    EXPECT_THROW(getOrientation2_mt(&a, &b, nullptr), LumoException);
    EXPECT_EQ(lastFailure(), failed("p2!=0"));

    Point2 corner[3] = {a, c, b};
    Triangle2 t;
    t.setProperties(&corner[0], &corner[1], &corner[2]);
    for (const Point2* p : {&bad, &far}) {
        EXPECT_THROW(getOrientation2(&a, &b, p), LumoException);
        EXPECT_THROW(getOrientation2_mt(p, &a, &b), LumoException);
        EXPECT_THROW(orbiTest.orientationExact(&a, &b, p), LumoException);
        EXPECT_THROW(orbiTest.circleIncExact(&t, p), LumoException);
        EXPECT_THROW(orbiTest.circleInc3state(&t, p), LumoException);
        EXPECT_THROW(orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, p, x, y), LumoException);
        EXPECT_THROW(OrbiTest::getPlaneHeightExact(&a, &b, p, 0, 0), LumoException);
        EXPECT_EQ(orbiTest.circleIncFast(&t, p), CINC2_UNDECIDED);
        EXPECT_EQ(lastFailure(), failed("coordinates are finite"));
    }
    EXPECT_EQ(orbiTest.orientationExact(&a, &c, &b), ORIENTATION2_CCW);
    EXPECT_EQ(getOrientation2(&a, &c, &b), ORIENTATION2_CCW);
}

TEST(OrbiTest, SegmentsMeetByTheirOrientations)
{
    struct Case
    {
        Point2 p1, p2, p3, p4;
        SegmentMeet2 expected;
    };
    const Case cases[] = {
        {{0, 0, 0}, {4, 4, 0}, {0, 4, 0}, {4, 0, 0}, IST_REGULAR},
        {{0, 0, 0}, {4, 4, 0}, {2, 2, 0}, {4, 0, 0}, IST_REGULAR}, // touches in the inside of the first
        {{0, 0, 0}, {4, 4, 0}, {4, 4, 0}, {9, 0, 0}, IST_REGULAR}, // touches at an end
        {{0, 0, 0}, {4, 4, 0}, {5, 5, 0}, {9, 0, 0}, IST_NOIS},
        {{0, 0, 0}, {4, 4, 0}, {0, 1, 0}, {4, 5, 0}, IST_NOIS},
        {{0, 0, 0}, {4, 4, 0}, {1, 0, 0}, {1, 0.5, 0}, IST_NOIS},
        {{0, 0, 0}, {4, 4, 0}, {1, 1, 0}, {2, 2, 0}, IST_COLLINEAR}, // within
        {{0, 0, 0}, {4, 4, 0}, {-1, -1, 0}, {9, 9, 0}, IST_COLLINEAR},
        {{0, 0, 0}, {4, 4, 0}, {4, 4, 0}, {9, 9, 0}, IST_COLLINEAR}, // end to end
        {{0, 0, 0}, {4, 4, 0}, {5, 5, 0}, {9, 9, 0}, IST_NOIS},
    };
    OrbiTest orbiTest;
    orbiTest.setStaticBound_MT(10.0);
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(OrbiTest::toString(c.expected)) + ", case " + std::to_string(&c - cases));
        EXPECT_EQ(orbiTest.getIntersectionTypeIST(&c.p1, &c.p2, &c.p3, &c.p4), c.expected);
        EXPECT_EQ(orbiTest.getIntersectionTypeIST(&c.p2, &c.p1, &c.p4, &c.p3), c.expected);
        EXPECT_EQ(orbiTest.getIntersectionTypeIST(&c.p3, &c.p4, &c.p1, &c.p2), c.expected);
    }
}

TEST(OrbiTest, TetrahedraHaveASense)
{
    const OrbiTest orbiTest;
    const Point2 o(0, 0, 0), x(2, 0, 0), y(0, 2, 0), z(0, 0, 2), xy(1, 1, 0);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&x, &y, &z, &o)), 1);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&y, &x, &z, &o)), 2);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&x, &y, &xy, &o)), 0);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&o, &y, &z, &x)), 2); // from another corner
}
