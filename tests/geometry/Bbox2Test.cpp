#include "Bbox2.h"

#include "geometry/OrbiTest.h"
#include "geometry/SplitMix64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

constexpr double MAX_DOUBLE = std::numeric_limits<double>::max();
constexpr double INF = std::numeric_limits<double>::infinity();

Bbox2 boxOf(double minX, double minY, double maxX, double maxY, OrbiTest* pOrbiTest = nullptr)
{
    Bbox2 box(pOrbiTest);
    box.add(Point2(minX, minY, 0));
    box.add(Point2(maxX, maxY, 0));
    return box;
}

bool contains(const Bbox2& outer, const Bbox2& inner)
{
    return outer.isInBox(inner.getMinPoint()) && outer.isInBox(inner.getMaxPoint()) && outer.get_minX() > -INF &&
           outer.get_minY() > -INF && outer.get_maxX() < INF && outer.get_maxY() < INF;
}

} // namespace

// Points one by one, as a range, as pointers and as triples: all boxes agree, and tell of each change.
TEST(Bbox2, AddTellsWhetherABoundChanged)
{
    SplitMix64 random(31);
    Bbox2 box;
    std::vector<Point2> vPoints;
    std::vector<double> vCoords;
    double minX = INF, minY = INF, maxX = -INF, maxY = -INF;
    for (std::size_t i = 1; i <= 100; ++i) {
        // Few values, so that points meet bounds; the range of values grows.
        const Point2 p(static_cast<double>(random.index(i)) - 20, 2 * static_cast<double>(random.index(i)), 99);
        minX = std::min(minX, p.x());
        minY = std::min(minY, p.y());
        maxX = std::max(maxX, p.x());
        maxY = std::max(maxY, p.y());
        vPoints.push_back(p);
        vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
        const bool bInside = box.isInBox(p);
        EXPECT_EQ(box.add(p), !bInside) << "seed 31, point " << i;
        Bbox2 aBoxes[4] = {box};
        std::vector<Point2*> vPointers;
        for (Point2& point : vPoints) vPointers.push_back(&point);
        EXPECT_TRUE(aBoxes[1].add(vPoints.begin(), vPoints.end()) && aBoxes[3].add(i, vCoords.data()));
        EXPECT_TRUE(aBoxes[2].add(vPointers.begin(), vPointers.end()));
        for (Bbox2& other : aBoxes) {
            EXPECT_TRUE(other.getMinPoint() == Point2(minX, minY, 0) && other.getMaxPoint() == Point2(maxX, maxY, 0));
            EXPECT_FALSE(other.add(vPoints.begin(), vPoints.end()) || other.add(0, nullptr));
        }
    }
}

TEST(Bbox2, SingleBoundsMakeItValidTogetherAndSurviveTheFirstPoint)
{
    Bbox2 box;
    box.setMinX(1);
    box.setMinY(2);
    box.setMaxX(3);
    EXPECT_TRUE(box.isValid() && !box.isInBox(Point2(2, 2, 0)));
    EXPECT_TRUE(box.add(Point2(9, 9, 0)));
    EXPECT_TRUE(box.getMaxPoint() == Point2(3, 9, 0) && box.getMinPoint() == Point2(1, 2, 0));
}

TEST(Bbox2, InvalidBoxesAreReportedAndLeftAlone)
{
    Bbox2 box = boxOf(0, 0, 1, 1), invalid;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(box.doIntersect(invalid) || invalid.doIntersect(box));
    EXPECT_TRUE(contains(boxOf(0, 0, 1, 1), box + invalid));
    invalid.doubleTheBox();
    invalid.enlargeRanges(2);
    invalid.inflateIfDegenerate(1);
    EXPECT_FALSE(invalid.isValid());
    EXPECT_NE(testing::internal::GetCapturedStdout().find("WARNING: bbox invalid"), std::string::npos);
}

TEST(Bbox2, BoxesThatTouchIntersectAndPlusChangesItsLeftSide)
{
    const Bbox2 box = boxOf(0, 0, 4, 4);
    for (int x = -3; x <= 5; ++x) {
        for (int y = -3; y <= 5; ++y) {
            const Bbox2 other = boxOf(x, y, x + 2, y + 2);
            const bool bExpected = x + 2 >= 0 && x <= 4 && y + 2 >= 0 && y <= 4;
            EXPECT_TRUE(box.doIntersect(other) == bExpected && other.doIntersect(box) == bExpected) << x << " " << y;
            Bbox2 left;
            left + box;
            const Bbox2 sum = left + other;
            EXPECT_TRUE(contains(left, box) && contains(left, other) && contains(sum, left));
        }
    }
    std::vector<Point2> vCorners;
    box.getOffsetCorners(1, vCorners);
    EXPECT_EQ(vCorners, (std::vector<Point2>{{-1, -1, 0}, {5, -1, 0}, {5, 5, 0}, {-1, 5, 0}}));
}

TEST(Bbox2, GrowthTellsThePredicatesTheNewBound)
{
    for (const double x : {4.0, -1200.0}) { // the bound has a margin of ten times its range
        OrbiTest orbiTest;
        Bbox2 box = boxOf(x, 0, x + 8, 2, &orbiTest);
        testing::internal::CaptureStdout();
        for (const double range : {16.0, 1600.0}) {
            range == 16.0 ? box.doubleTheBox() : box.enlargeRanges(100);
            EXPECT_TRUE(box.getRangeX() == range && box.getRangeY() == range / 4);
            EXPECT_TRUE(box.computeCenter() == Point2(x + 4, 1, 0));
            const Point2 p = box.getMinPoint(), q = box.getMaxPoint();
            EXPECT_EQ(orbiTest.getOrientation2(&p, &q, &p), ORIENTATION2_COLLINEAR);
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "a corner is out of the predicates' range";
    }
}

// Every growth of every finite box keeps its points, stays finite, and has the extent that it promises.
TEST(Bbox2, GrowthLosesNoPointAndStaysFinite)
{
    const double aValues[] = {-MAX_DOUBLE, -1e17, -1.0 / 3, -5e-324, 0.0, 5e-324, 0.1, 1e17, MAX_DOUBLE};
    for (const double lo : aValues) {
        for (const double hi : aValues) {
            if (lo > hi) continue;
            const Bbox2 box = boxOf(lo, 7, hi, 7);
            EXPECT_TRUE(box.isInBox(box.computeCenter()));
            for (const double d : {0.001, 0.0, -1.0, 1e300, MAX_DOUBLE, INF, std::nan("")}) {
                SCOPED_TRACE(testing::Message() << lo << " to " << hi << ", d " << d);
                Bbox2 grown = box;
                grown.inflateIfDegenerate(d);
                EXPECT_TRUE(contains(grown, box) && grown.getRangeX() > 0 && grown.getRangeY() > 0);
                EXPECT_TRUE(lo == hi || grown.getRangeX() == box.getRangeX()) << "only degenerate ranges";
                EXPECT_TRUE(d != 0.001 || grown.get_maxY() == 7.001);
            }
            Bbox2 doubled = box;
            doubled.doubleTheBox();
            EXPECT_TRUE(contains(doubled, box));
            testing::internal::CaptureStdout();
            for (const double factor : {0.0, 0.3, 1.0, 1.01, 3.0, 1e300, -1.0, INF, std::nan("")}) {
                Bbox2 enlarged = box;
                enlarged.enlargeRanges(factor);
                EXPECT_TRUE(factor >= 0 && factor < 1 ? contains(box, enlarged) : contains(enlarged, box)) << factor;
                EXPECT_TRUE(enlarged.getRangeX() >= 0 && enlarged.getRangeY() >= 0) << factor;
                EXPECT_TRUE((factor >= 0 && factor < INF) || contains(box, enlarged)) << "a bad factor changes nothing";
            }
            testing::internal::GetCapturedStdout();
        }
    }
}
