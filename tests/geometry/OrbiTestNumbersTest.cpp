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

using namespace ORBI_LUMO25D;

namespace
{

constexpr double INF = std::numeric_limits<double>::infinity();

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

// The crossing of two lines from the vector form p1 + t (p2 - p1), heights from barycentric coordinates.
TEST(OrbiTest, CrossingsAndHeightsAreTruncatedOnce)
{
    const OrbiTest orbiTest;
    SplitMix64 random(7);
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        SCOPED_TRACE("seed 7, round " + std::to_string(round));
        const Point2 p1 = point(random), p2 = point(random), p3 = point(random), q = point(random);
        const mpq_class x1(p1.x()), y1(p1.y()), dx(p2.x() - x1), dy(p2.y() - y1);
        const mpq_class ex(mpq_class(q.x()) - p3.x()), ey(mpq_class(q.y()) - p3.y());
        const mpq_class t = ((p3.x() - x1) * ey - (p3.y() - y1) * ex) / (dx * ey - dy * ex);
        double x = 0, y = 0;
        orbiTest.getIntersectionCoords_gmp_MT(&p1, &p2, &p3, &q, x, y);
        EXPECT_TRUE(isTruncated(x, x1 + t * dx) && isTruncated(y, y1 + t * dy)) << x << " " << y;

        const mpq_class sum = oracles::orientationDet(q, p2, p3) * mpq_class(p1.z()) +
                              oracles::orientationDet(p1, q, p3) * mpq_class(p2.z()) +
                              oracles::orientationDet(p1, p2, q) * mpq_class(p3.z());
        EXPECT_TRUE(isTruncated(OrbiTest::getPlaneHeightExact(&p1, &p2, &p3, q.x(), q.y()),
                                sum / oracles::orientationDet(p1, p2, p3)));
        const bool bByY = std::fabs(p1.y() - p2.y()) > std::fabs(p1.x() - p2.x());
        const mpq_class u = bByY ? (q.y() - y1) / dy : (q.x() - x1) / dx;
        EXPECT_TRUE(isTruncated(OrbiTest::getLineHeightExact(&p1, &p2, q.x(), q.y()),
                                (1 - u) * mpq_class(p1.z()) + u * mpq_class(p2.z())));
    }
}

TEST(OrbiTest, WhatHasNoAnswerIsAFailedConditionAndTheObjectSurvives)
{
    lumo_test::CoutCapture output;
    const lumo_test::TempWorkDir dir;
    const Point2 a(0, 0, 1), b(2, 2, 1), c(4, 0, 5), d(6, 2, 5), bad(std::nan(""), 0, 0), far(1, INF, 0);
    OrbiTest orbiTest;
    orbiTest.setStaticBound_MT(10.0);
    double x = 7, y = 8;
    EXPECT_THROW(orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, &d, x, y), LumoException);
    EXPECT_NE(output.take().find("OrbiTest::getIntersectionCoords(), ERROR: denom=0 -> parallel segments"),
              std::string::npos);
    orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &c, &a, x, y); // no lock is left behind
    EXPECT_EQ(x + y, 0.0);
    EXPECT_THROW(OrbiTest::getPlaneHeightExact(&a, &b, &b, 1, 1), LumoException);
    EXPECT_THROW(OrbiTest::getLineHeightExact(&a, &a, 1, 1), LumoException);
    EXPECT_THROW(getOrientation2(nullptr, &b, &c), LumoException);
    EXPECT_THROW(getOrientation2_mt(&a, nullptr, &c), LumoException);
    EXPECT_THROW(getOrientation2_mt(&a, &b, nullptr), LumoException);

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
        EXPECT_NE(output.take().find("coordinates are finite"), std::string::npos);
    }
    EXPECT_EQ(orbiTest.orientationExact(&a, &c, &b), ORIENTATION2_CCW);
}

TEST(OrbiTest, SegmentsMeetByTheirOrientationsAndTetrahedraHaveOne)
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
        {{0, 0, 0}, {4, 4, 0}, {1, 0, 0}, {1, 0.5, 0}, IST_NOIS},
        {{0, 0, 0}, {4, 4, 0}, {1, 1, 0}, {2, 2, 0}, IST_COLLINEAR}, // within
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
    const Point2 o(0, 0, 0), x(2, 0, 0), y(0, 2, 0), z(0, 0, 2), xy(1, 1, 0);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&x, &y, &z, &o)), 1);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&y, &x, &z, &o)), 2);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&x, &y, &xy, &o)), 0);
    EXPECT_EQ(static_cast<int>(orbiTest.getOrientation3(&o, &y, &z, &x)), 2); // from another corner
}
