#include "Bbox2.h"
#include "Vector2.h"
#include "freeFunctions.h"
#include "geometry/SplitMix64.h"
#include "oracles/ExactOracle.h"

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

constexpr double MAX_DOUBLE = std::numeric_limits<double>::max();
constexpr double INF = std::numeric_limits<double>::infinity();

Bbox2 boxOf(double minX, double minY, double maxX, double maxY)
{
    Bbox2 box;
    box.add(Point2(minX, minY, 0));
    box.add(Point2(maxX, maxY, 0));
    return box;
}

/// Boxes that rounding could hurt: far away, huge, tiny, of few doubles.
std::vector<Bbox2> niceAndNastyBoxes()
{
    return {boxOf(0, 0, 1, 1), boxOf(-MAX_DOUBLE, -MAX_DOUBLE, MAX_DOUBLE, MAX_DOUBLE),
            boxOf(5e6, 6e6, 5e6 + 1, 6e6 + 1e-3), boxOf(-1e-310, 0, 1e-310, 1e-310), boxOf(1, 1, 1 + 2e-14, 1 + 2e-14)};
}

std::vector<double> coordsOf(const std::vector<Point2>& v)
{
    std::vector<double> vCoords;
    for (const Point2& p : v) vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
    return vCoords;
}

bool isOnSegment(const Segment2& s, const Point2& p)
{
    Bbox2 box;
    box.add(s.src);
    box.add(s.trg);
    return box.isInBox(p) && oracles::orientationSign(s.src, s.trg, p) == 0;
}

bool haveCommonPoint(const Segment2& s, const Segment2& t)
{
    const auto areParted = [](const Segment2& a, const Segment2& b) {
        return oracles::orientationSign(a.src, a.trg, b.src) * oracles::orientationSign(a.src, a.trg, b.trg) < 0;
    };
    return isOnSegment(s, t.src) || isOnSegment(s, t.trg) || isOnSegment(t, s.src) || isOnSegment(t, s.trg) ||
           (areParted(s, t) && areParted(t, s));
}

/// All pairs of edges and the sign of the area, exactly.
void expectSimpleAndCCW(const std::vector<Segment2>& v)
{
    mpq_class area = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        const Segment2& next = v[(i + 1) % v.size()];
        ASSERT_TRUE(v[i].trg == next.src && v[i].src != v[i].trg) << "not a closed chain at " << i;
        ASSERT_FALSE(isOnSegment(v[i], next.trg) || isOnSegment(next, v[i].src)) << "folds back at " << i;
        for (std::size_t j = i + 2; j < v.size() - (i == 0 ? 1U : 0U); ++j) {
            ASSERT_FALSE(haveCommonPoint(v[i], v[j])) << "edges " << i << " and " << j << " meet";
        }
        area += mpq_class(v[i].src.x()) * v[i].trg.y() - mpq_class(v[i].trg.x()) * v[i].src.y();
    }
    ASSERT_TRUE(area > 0) << "not counterclockwise";
}

} // namespace

TEST(Generators, RandomDataIsRepeatableAndStaysInItsBox)
{
    std::uint64_t seed = 41;
    for (const Bbox2& box : niceAndNastyBoxes()) {
        SCOPED_TRACE(testing::Message() << "seed " << ++seed);
        std::vector<Point2> vOnce, vTwice, vOther;
        generateRandomPoints3D(500, box, -3, 4, seed, vOnce);
        generateRandomPoints3D(500, box, -3, 4, seed, vTwice);
        generateRandomPoints3D(500, box, -3, 4, seed + 100, vOther);
        EXPECT_TRUE(coordsOf(vOnce) == coordsOf(vTwice) && coordsOf(vOnce) != coordsOf(vOther));
        generateRandomPoints(500, box, seed, vOnce);
        ASSERT_EQ(vOnce.size(), 1000U);
        int numLowerLeft = 0;
        const Point2 center = box.computeCenter();
        for (const Point2& p : vOnce) {
            EXPECT_TRUE(box.isInBox(p) && p.z() >= -3 && p.z() <= 4);
            if (p.x() < center.x() && p.y() < center.y()) ++numLowerLeft;
        }
        EXPECT_NEAR(numLowerLeft, 250, 70) << "not equally distributed";

        const double maxLen = 0.25 * (box.get_maxX() / 2 - box.get_minX() / 2);
        std::vector<Segment2> vSegments;
        generateRandomSegments(200, box, maxLen, seed, vSegments);
        ASSERT_EQ(vSegments.size(), 200U);
        for (const Segment2& segment : vSegments) {
            EXPECT_TRUE(box.isInBox(segment.src) && box.isInBox(segment.trg) && segment.src != segment.trg);
            const mpq_class dx = mpq_class(segment.trg.x()) - segment.src.x();
            const mpq_class dy = mpq_class(segment.trg.y()) - segment.src.y();
            EXPECT_TRUE(dx * dx + dy * dy <= mpq_class(maxLen) * mpq_class(maxLen));
        }
    }
}

TEST(Generators, RandomPolygonsAreSimpleInTheExactSense)
{
    std::vector<Bbox2> vBoxes = niceAndNastyBoxes();
    vBoxes.resize(99, boxOf(0, 0, 10, 1));
    vBoxes.push_back(vBoxes[4]); // many points on few doubles: equal ones and lines through others are drawn
    for (std::size_t i = 0; i < vBoxes.size(); ++i) {
        const std::size_t num = i < 98 ? 3 + i % 9 : 150;
        SCOPED_TRACE(testing::Message() << "seed " << i);
        std::vector<Segment2> vSegments, vAgain;
        generateRandomPolygon(num, vBoxes[i], i, vSegments);
        generateRandomPolygon(num, vBoxes[i], i, vAgain);
        ASSERT_EQ(vSegments.size(), num);
        expectSimpleAndCCW(vSegments);
        EXPECT_EQ(vSegments, vAgain);
    }
}

TEST(Generators, CirclesAndSinesLieOnTheirCurvesAndShearMovesXByY)
{
    std::vector<Point2> vSheared = {{1, 2, 3}, {-4, 8, 5}};
    shear(vSheared, 0.5);
    EXPECT_EQ(coordsOf(vSheared), (std::vector<double>{2, 2, 3, 0, 8, 5}));
    const Point2 center(100, -50, 3);
    for (std::size_t num = 3; num < 60; ++num) {
        std::vector<Segment2> vSegments;
        generateCircle(num, center, 2.0, vSegments);
        ASSERT_EQ(vSegments.size(), num);
        expectSimpleAndCCW(vSegments);
        for (const Segment2& segment : vSegments) {
            EXPECT_NEAR((segment.src - center).length(), 2.0, 1e-13);
            EXPECT_NEAR(segment.getSqLen25D(), vSegments[0].getSqLen25D(), 1e-12);
        }
        EXPECT_TRUE(vSegments[0].src.samePoint(Point2(102, -50, 3)));
        EXPECT_TRUE(num % 4 != 0 || vSegments[num / 4].src == Point2(100, -48, 3)) << "axes must be met exactly";

        generateSineSegments(num, center, 8.0, 3.0, 2.0, vSegments);
        ASSERT_EQ(vSegments.size(), 2 * num);
        EXPECT_TRUE(vSegments[num].src.samePoint(center) && vSegments.back().trg.x() == 108.0);
        for (std::size_t i = num; i < 2 * num; ++i) {
            const Point2& p = vSegments[i].trg;
            EXPECT_NEAR(p.y(), -50 + 3.0 * std::sin((p.x() - 100) * std::atan(1.0) * 2), 1e-12);
            EXPECT_TRUE(i == num || vSegments[i].src.samePoint(vSegments[i - 1].trg));
        }
    }
}

TEST(Generators, SenselessArgumentsAreReportedAndNothingIsAppended)
{
    const double nan = std::nan("");
    const Bbox2 good = boxOf(0, 0, 1, 1);
    const Point2 origin(0, 0, 0);
    std::vector<Point2> vPoints = {Point2(1, 1, MAX_DOUBLE), Point2(MAX_DOUBLE, MAX_DOUBLE, 1)};
    std::vector<Segment2> vSegments = {Segment2(vPoints[0], vPoints[1])};
    const std::vector<Point2> vPointsBefore = vPoints;
    const std::vector<Segment2> vSegmentsBefore = vSegments;
    std::vector<std::function<void()>> vCalls = {
        [&] { generateRandomPoints3D(5, good, 2, 1, 1, vPoints); },
        [&] { generateRandomPolygon(2, good, 1, vSegments); },
        [&] { generateRandomPolygon(200, boxOf(1, 1, 1 + 3e-16, 1 + 3e-16), 1, vSegments); },
        [&] { generateRandomSegments(50, boxOf(0, 0, 4e16, 4e16), 8.0, 1, vSegments); }, // too fine for some
        [&] { generateCircle(2, origin, 1, vSegments); },
        [&] { generateCircle(1000, Point2(1e17, 0, 0), 100, vPoints); },
        [&] { generateCircle(5, Point2(0, nan, 0), 1, vPoints); },
        [&] { generateCircle(5, Point2(0, 0, nan), 1, vPoints); },
        [&] { generateCircle(std::numeric_limits<std::size_t>::max(), origin, 1, vPoints); },
        [&] { generateSineSegments(1000, Point2(1e17, 0, 0), 100, 1, 1, vSegments); },
        [&] { generateSineSegments(5, origin, 1, 1, nan, vSegments); },
        [&] { shear(vSegments, nan); }};
    for (const double bad : {0.0, -1.0, nan, INF}) {
        vCalls.emplace_back([&, bad] { generateRandomSegments(5, good, bad, 1, vSegments); });
        vCalls.emplace_back([&, bad] { generateCircle(5, origin, bad, vPoints); });
        vCalls.emplace_back([&, bad] { generateSineSegments(5, origin, bad, 1, 1, vSegments); });
    }
    for (const Bbox2& box : {Bbox2(), boxOf(1, 1, 1, 2), boxOf(0, 0, INF, 1)}) {
        vCalls.emplace_back([&, box] { generateRandomPoints(5, box, 1, vPoints); });
        vCalls.emplace_back([&, box] { generateRandomPolygon(5, box, 1, vSegments); });
    }
    for (std::size_t i = 0; i < vCalls.size(); ++i) {
        testing::internal::CaptureStdout();
        vCalls[i]();
        EXPECT_NE(testing::internal::GetCapturedStdout().find("WARNING"), std::string::npos) << "call " << i;
        EXPECT_TRUE(coordsOf(vPoints) == coordsOf(vPointsBefore) && vSegments == vSegmentsBefore) << "call " << i;
    }
}
