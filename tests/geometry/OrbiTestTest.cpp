#include "geometry/OrbiTest.h"

#include "LumoException.h"
#include "freeFunctions.h"
#include "geometry/OrbiTest_integers.h"
#include "geometry/OrbiTest_intervals.h"
#include "geometry/SplitMix64.h"
#include "oracles/ExactOracle.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using Stage = PredicateStage;

namespace
{

constexpr double MAX_DOUBLE = std::numeric_limits<double>::max();
constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double DENORM_MIN = std::numeric_limits<double>::denorm_min();
constexpr std::uint64_t SEED = 20;

using Quad = std::array<Point2, 4>;

/// A way to make near-degenerate input: points 0 to 2 for orientation tests, all four for circles.
struct Family
{
    std::string name;
    std::function<Quad(SplitMix64&)> make;
    bool bFitsIntegers; ///< all coordinates in a window of 125 bits; false means some don't fit
};

Point2 nudged(const Point2& p, SplitMix64& random)
{
    double a[2] = {p.x(), p.y()};
    for (double& v : a) {
        const double goal = random.index(2) == 0 ? -INF : INF;
        for (std::size_t i = random.index(3); i > 0; --i) v = std::nextafter(v, goal);
    }
    return Point2(a[0], a[1], 0);
}

/// Coordinates drawn from a few values: all kinds of degeneracy come up. Those of y are by default those of x.
Family drawn(const std::string& name, bool bFitsIntegers, const std::vector<double>& vX, std::vector<double> vY = {})
{
    if (vY.empty()) vY = vX;
    const auto make = [vX, vY](SplitMix64& random) {
        const auto draw = [&random](const std::vector<double>& v) {
            return v[random.index(v.size())] * (random.index(2) == 0 ? 1.0 : -1.0);
        };
        Quad quad;
        for (Point2& p : quad) p = Point2(draw(vX), draw(vY), 0);
        return quad;
    };
    return {name, make, bFitsIntegers};
}

/// Points a + t d on one line, in exact arithmetic for small integers, times step; some moved by a few last bits.
Family line(const std::string& name, double origin, double step, bool bFitsIntegers)
{
    const auto make = [origin, step](SplitMix64& random) {
        const auto small = [&] { return static_cast<double>(random.index(41)) - 20.0; };
        const double dx = small(), dy = small();
        const auto at = [&](double t) { return Point2(origin + t * dx * step, origin / 2 + t * dy * step, 0); };
        Quad quad{at(small()), at(small()), at(small()), at(small())};
        if (random.index(2) == 0) quad[random.index(3)] = nudged(quad[0], random);
        if (random.index(2) == 0) quad[2] = nudged(quad[2], random);
        return quad;
    };
    return {name, make, bFitsIntegers};
}

/// Four points of the circle of radius 65 about the origin (16, 33, 56, 60, 63, 25, 39, 52: Pythagoras), times step.
Family circle(const std::string& name, double origin, double step, bool bFitsIntegers)
{
    const auto make = [origin, step](SplitMix64& random) {
        static const double aLegs[5][2] = {{16, 63}, {33, 56}, {25, 60}, {39, 52}, {0, 65}};
        const auto at = [&] {
            const double* legs = aLegs[random.index(5)];
            const std::size_t kind = random.index(8);
            const double x = legs[kind & 1U] * ((kind & 2U) != 0 ? -step : step);
            const double y = legs[1U - (kind & 1U)] * ((kind & 4U) != 0 ? -step : step);
            return Point2(origin + x, origin / 2 + y, 0);
        };
        Quad quad{at(), at(), at(), at()};
        if (random.index(2) == 0) quad[3] = nudged(quad[3], random);
        return quad;
    };
    return {name, make, bFitsIntegers};
}

std::vector<Family> families()
{
    std::vector<Family> v{
        drawn("the widest window", true, {0, 1, 0x1p124, 0x1.fffffffffffffp124}),
        drawn("about the widest small differences", true,
              {0, 1, 0x1p60, 0x1p61, 0x1.fffffffffffffp61, 0x1.fffffffffffffp62}),
        drawn("a window too wide", false, {0, 1, 0x1p126, 0x1.fffffffffffffp126}),
        drawn("steps of 1e-160", true, {0, 1e-160, 2e-160, 3e-160, 5e-160}),
        drawn("steps of 1e-79", true, {0, 1e-79, 2e-79, 3e-79, 5e-79}),
        drawn("denormals", true, {0, DENORM_MIN, 2 * DENORM_MIN, 1e-308, 3e-310, 0x1p-1022}),
        drawn("huge", true, {1e300, MAX_DOUBLE, 0x1p1023, 1.5e308}),
        drawn("huge and tiny", false, {0, 1e150, 1e-160, 3e-162, 1e300, MAX_DOUBLE, DENORM_MIN, 1e-24, 1}),
        drawn("huge by tiny", false, {0, 0.9 * MAX_DOUBLE, MAX_DOUBLE}, {0, 1e-300, 1.7e-300}),
        drawn("overflowing differences of products", true, {9.4e153, 1.34e154, 1.3407807929942597e154, 6.7e153}),
        drawn("few digits", true, {0.1, 0.3, 0.7, 0.123, 0.456}, {0.2, 0.4, 0.9, 0.789}),
    };
    const auto add = [&v](double origin, double step, bool bFits) {
        const std::string where = " at " + std::to_string(origin) + ", step 1e" + std::to_string(std::log10(step));
        v.push_back(line("line" + where, origin, step, bFits));
        v.push_back(circle("circle" + where, origin, step, bFits));
    };
    for (const double origin : {0.0, 5.25e6, 2e7 + 0.001}) {
        for (const double step : {1.0, 0.001, 0x1p-20, 1e5}) add(origin, step, origin != 0.0);
    }
    for (const double step : {1e-310, 1e-160, 1e-79, 1e60, 1e150, 1e300}) add(0.0, step, false);
    return v;
}

/// A rounding mode for its lifetime, at whose end it must still hold. Modes are told apart by what they do: the
/// standard's query may look at another unit's control word.
struct Rounding
{
    explicit Rounding(int mode) : before((std::fesetround(mode), trace())) {}
    ~Rounding()
    {
        EXPECT_EQ(before, trace());
        std::fesetround(FE_TONEAREST);
    }
    static std::array<double, 3> trace()
    {
        volatile double one = 1.0, tiny = 0x1p-60;
        return {one + tiny, -one - tiny, tiny - one};
    }
    const std::array<double, 3> before;
};

int signOf(Orientation2 ori)
{
    return (ori == ORIENTATION2_CCW) - (ori == ORIENTATION2_CW);
}

int signOf(CircleInc2 inc)
{
    return (inc == CINC2_INCIRCLE) - (inc == CINC2_OUTCIRCLE);
}

std::string text(const Quad& quad)
{
    std::ostringstream stream;
    for (const Point2& p : quad) stream << std::hexfloat << "(" << p.x() << ", " << p.y() << ") ";
    return stream.str();
}

bool isBelowOrAt(double bound, const mpq_class& value)
{
    return std::isnan(bound) || bound == -INF || (bound != INF && mpq_class(bound) <= value);
}

void expectOrientation(const Quad& q, bool bFitsIntegers, int mode, std::set<Stage>& sStages)
{
    const mpq_class det = oracles::orientationDet(q[0], q[1], q[2]);
    const int expected = sgn(det);
    const Rounding rounding(mode);
    OrbiTest orbiTest;
    orbiTest.ensureStaticBound(&q[0], &q[1], &q[2]);
    Stage stage{};
    EXPECT_EQ(signOf(orbiTest.getOrientation2(&q[0], &q[1], &q[2], &stage)), expected);
    EXPECT_EQ(signOf(orbiTest.getOrientation2(&q[1], &q[2], &q[0])), expected);
    EXPECT_EQ(signOf(orbiTest.getOrientation2(&q[1], &q[0], &q[2])), -expected);
    sStages.insert(stage);
    EXPECT_TRUE(expected != 0 || stage >= Stage::Shortcut);
    EXPECT_EQ(signOf(orbiTest.orientationByIntervals(&q[0], &q[1], &q[2], &stage)), expected);
    EXPECT_EQ(signOf(orbiTest.orientationExact(&q[0], &q[1], &q[2])), expected);
    EXPECT_EQ(signOf(getOrientation2(&q[0], &q[1], &q[2])), expected);
    EXPECT_EQ(signOf(getOrientation2_mt(&q[0], &q[1], &q[2])), expected);

    int sign = 2;
    const bool bFits = integers::orientationSign(&q[0], &q[1], &q[2], sign);
    EXPECT_TRUE(bFits || !bFitsIntegers);
    EXPECT_EQ(sign, bFits ? expected : 2);

    EXPECT_TRUE(isBelowOrAt(intervals::orientationLowerBound(&q[0], &q[1], &q[2]), det));
    EXPECT_TRUE(isBelowOrAt(-intervals::orientationUpperBound(&q[0], &q[1], &q[2]), -det));
}

void expectInCircle(Quad& q, bool bFitsIntegers, int mode, std::set<Stage>& sStages)
{
    const int expected = oracles::inCircleSign(q[0], q[1], q[2], q[3]);
    const Rounding rounding(mode);
    const OrbiTest orbiTest;
    Triangle2 t;
    t.setProperties(&q[0], &q[1], &q[2]);
    Stage stage{};
    EXPECT_EQ(signOf(orbiTest.circleInc3state(&t, &q[3], &stage)), expected);
    EXPECT_EQ(signOf(orbiTest.circleInc3state(&q[1], &q[2], &q[0], &q[3])), expected);
    EXPECT_EQ(signOf(orbiTest.circleInc3state(&q[1], &q[0], &q[2], &q[3])), -expected);
    sStages.insert(stage);
    EXPECT_TRUE(expected != 0 || stage >= Stage::Shortcut);
    EXPECT_EQ(signOf(orbiTest.circleIncExact(&t, &q[3])), expected);
    const CircleInc2 fast = orbiTest.circleIncFast(&t, &q[3]);
    EXPECT_TRUE(fast == CINC2_UNDECIDED || signOf(fast) == expected);

    int sign = 2;
    const bool bFits = integers::inCircleSign(&q[0], &q[1], &q[2], &q[3], sign);
    EXPECT_TRUE(bFits || !bFitsIntegers);
    EXPECT_EQ(sign, bFits ? expected : 2);
}

} // namespace

// Every stage by itself and the cascades against rationals that are expanded otherwise.
TEST(OrbiTest, NoStageIsWrongOnNearDegenerateInputOfAnyMagnitudeInAnyRoundingMode)
{
    std::set<Stage> sOrientation, sCircle;
    for (const Family& family : families()) {
        SplitMix64 random(SEED);
        for (int round = 0; round < 300 && !HasFailure(); ++round) {
            Quad quad = family.make(random);
            for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
                if (mode != FE_TONEAREST && round >= 30) break;
                SCOPED_TRACE(family.name + ", mode " + std::to_string(mode) + ", seed 20: " + text(quad));
                expectOrientation(quad, family.bFitsIntegers, mode, sOrientation);
                expectInCircle(quad, family.bFitsIntegers, mode, sCircle);
            }
        }
    }
    const std::set<Stage> sAll{Stage::Filter,   Stage::TightFilter, Stage::Intervals,
                               Stage::Shortcut, Stage::Integers,    Stage::Rationals};
    EXPECT_EQ(sOrientation, sAll);
    sCircle.insert(Stage::Intervals); // circles have none
    EXPECT_EQ(sCircle, sAll);

    const CoutCapture quiet;
    const lumo_test::TempWorkDir dir;
    const Point2 o(0, 0, 0), a(1, 1, 0), bad(NOT_A_NUMBER, 2, 0);
    const Rounding rounding(FE_DOWNWARD); // left by a failure too
    EXPECT_THROW(OrbiTest().orientationByIntervals(&o, &a, &bad), LumoException);
}

// The neighbourhood of a point of a line, last bit by last bit (Kettner et al., Classroom examples of robustness
// problems in geometric computations): plain floating point errs in many of these places.
TEST(OrbiTest, LastBitsBesideALineAreSeenByIntegersAndByIntervals)
{
    OrbiTest orbiTest;
    const Point2 q(12, 12, 0), r(24, 24, 0);
    orbiTest.ensureStaticBound(&r);
    for (int i = 0; i < 64; ++i) {
        for (int j = 0; j < 64; ++j) {
            const Point2 p(0.5 + i * 0x1p-53, 0.5 + j * 0x1p-53, 0);
            const int expected = (p.y() > p.x()) - (p.y() < p.x());
            Stage stage{};
            ASSERT_EQ(signOf(orbiTest.getOrientation2(&q, &r, &p, &stage)), expected);
            ASSERT_EQ(stage, Stage::Integers);
        }
    }
    // x0 y1 = 2^60 - 1 lies between doubles, y0 x1 = 2^60 + 1024 is one: the filters' bounds are wider than the
    // difference, the directed ones are not.
    const Point2 o(0, 0, 0), a(0x1p30 + 1, 0x1p30, 0), b(0x1p30 + 0x1p-20, 0x1p30 - 1, 0);
    Stage stage{};
    orbiTest.ensureStaticBound(&a);
    EXPECT_EQ(orbiTest.getOrientation2(&a, &b, &o, &stage), ORIENTATION2_CW);
    EXPECT_EQ(stage, Stage::Integers);
    EXPECT_EQ(orbiTest.orientationByIntervals(&a, &b, &o, &stage), ORIENTATION2_CW);
    EXPECT_EQ(stage, Stage::Intervals);
    EXPECT_EQ(intervals::orientationUpperBound(&a, &b, &o), -1024.0);
    EXPECT_EQ(intervals::orientationLowerBound(&a, &b, &o), -1024.0 - 128.0);
    EXPECT_EQ(intervals::orientationLowerBound(&o, &q, &r), 0.0); // where nothing is rounded, the bounds meet
}

TEST(OrbiTest, StaticBoundGrowsOnlyAndHoldsUpToTenTimesTheRange)
{
    OrbiTest orbiTest;
    const Point2 p(1, 2, 1e9), q(-400, 3, 0);
    // 29 and -1 are below the range: not looked at; 30 is no growth, but a new margin; a margin of 1e308 would overflow.
    const double aCases[][2] = {{0, 0}, {3, 30}, {29, 30}, {-1, 30}, {30, 300}, {400, 4000}, {1e308, 1e308}};
    for (const auto& [max, expected] : aCases) {
        max == 400 ? orbiTest.ensureStaticBound(&p, &q, &p) : orbiTest.setStaticBound_MT(max);
        EXPECT_EQ(orbiTest.getMaxCoord(), expected);
        EXPECT_EQ(orbiTest.getStaticBound(), 2.6645352591003757e-15 * expected * expected);
        EXPECT_GE(orbiTest.filterBound(), orbiTest.getStaticBound());
    }
    EXPECT_EQ(orbiTest.getOrientation2(&p, &q, &p), ORIENTATION2_COLLINEAR);
    const CoutCapture quiet;
    const lumo_test::TempWorkDir dir;
    EXPECT_THROW(orbiTest.setStaticBound_MT(NOT_A_NUMBER), LumoException);
}

TEST(OrbiTest, PointsOutOfRangeAreToldAndAnswered)
{
    const OrbiTest fresh;
    const Point2 a(0.1, 0, 0), b(1, -2.5, 0), c(1234567.25, 1, 0);
    CoutCapture output;
    EXPECT_EQ(fresh.getOrientation2(&a, &a, &a), ORIENTATION2_COLLINEAR);
    EXPECT_EQ(fresh.getOrientation2(&a, &b, &c), ORIENTATION2_CCW);
    EXPECT_NE(output.take().find("OrbiTest::getOrientation2, WARNING: Recompute the static bound!"), std::string::npos);
    Triangle2 t;
    Point2 corner[3] = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
    t.setProperties(&corner[0], &corner[1], &corner[2]);
    const Point2 right(2, 1, 0); // beyond the edge opposite corner 0, inside of the other two
    for (int i = 0; i < 3; ++i) EXPECT_EQ(signOf(fresh.getOrientation2(&t, i, &right)), i == 0 ? -1 : 1);
}

TEST(OrbiTest, GridsStayOutOfRationalsAndCocircularPointsAreUndecidedInFastMode)
{
    const OrbiTest orbiTest;
    struct Case
    {
        Quad quad;
        CircleInc2 exact, fast;
        Stage stage;
    };
    const std::vector<Case> cases{
        {{{{0.1, 0.1, 0}, {0.3, 0.1, 0}, {0.3, 0.7, 0}, {0.1, 0.7, 0}}}, CINC2_ZERO, CINC2_UNDECIDED, Stage::Shortcut},
        {{{{5, 0, 0}, {3, 4, 0}, {-4, 3, 0}, {0, -5, 0}}}, CINC2_ZERO, CINC2_UNDECIDED, Stage::Integers},
        {{{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1.25, 0}}}, CINC2_OUTCIRCLE, CINC2_OUTCIRCLE, Stage::Filter},
        {{{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {1, 1, 0}}}, CINC2_INCIRCLE, CINC2_INCIRCLE, Stage::Filter},
        // One corner shares x, another shares y with q, but there is no rectangle.
        {{{{0, 0, 0}, {2, 1, 0}, {1.5, 3, 0}, {0, 3, 0}}}, CINC2_INCIRCLE, CINC2_INCIRCLE, Stage::Filter},
    };
    for (Case c : cases) {
        SCOPED_TRACE(text(c.quad));
        Triangle2 t;
        t.setProperties(&c.quad[0], &c.quad[1], &c.quad[2]);
        Stage stage{};
        EXPECT_EQ(orbiTest.circleInc3state(&t, &c.quad[3], &stage), c.exact);
        EXPECT_EQ(stage, c.stage);
        EXPECT_EQ(orbiTest.circleIncExact(&t, &c.quad[3], &stage), c.exact);
        EXPECT_EQ(stage, c.stage == Stage::Shortcut ? Stage::Shortcut : Stage::Rationals);
        EXPECT_EQ(orbiTest.circleIncFast(&t, &c.quad[3]), c.fast);
    }
}

// One object, all of whose exact stages are entered for the first time by several threads at once.
TEST(OrbiTest, ThreadsShareOneObject)
{
    for (int round = 0; round < 20; ++round) {
        OrbiTest orbiTest;
        Point2 a(1e-200, 1e200, 0), b(2e-200, 2e200, 0), c(3e-200, 3e200, 0), d(1e-200, -1e200, 0);
        std::vector<std::thread> vThreads;
        std::array<int, 4> aNumWrong{};
        for (int& numWrong : aNumWrong) {
            vThreads.emplace_back([&orbiTest, &numWrong, &a, &b, &c, &d] {
                for (int i = 1; i < 20; ++i) {
                    orbiTest.setStaticBound_MT(1e200 * i);
                    double x = 0, y = 0;
                    orbiTest.getIntersectionCoords_gmp_MT(&a, &b, &a, &d, x, y);
                    numWrong += x != a.x() || y != a.y();
                    numWrong += orbiTest.getOrientation2(&a, &b, &c) != getOrientation2_mt(&a, &b, &c);
                    numWrong += orbiTest.circleInc3state(&a, &b, &d, &d) != CINC2_ZERO;
                }
            });
        }
        for (std::thread& thread : vThreads) thread.join();
        EXPECT_EQ(aNumWrong, (std::array<int, 4>{}));
    }
}
