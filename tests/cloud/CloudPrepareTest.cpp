#include "CloudPrepare.h"

#include "LumoException.h"
#include "Lumo_2D.h"
#include "cloud/CloudTwin.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace cloud_test;
using oracles::Dice;
using ::testing::HasSubstr;

namespace
{

constexpr int numSeeds = 300;

/// Where clouds lie: at the origin, across it, in survey coordinates, where doubles are an eighth apart.
const std::vector<double> offsets = {0.0, -17.3, 6782000.375, 1e15};

/// A small cloud of one of many shapes: spread, on a lattice with several returns a place, on lines, clustered, one place.
Points randomCloud(Dice& dice)
{
    const int shape = dice.below(7), n = 1 + dice.below(shape < 2 ? 120 : 40);
    const double offset = dice.of(offsets), size = dice.of(std::vector<double>{1.0, 40.0, 1e-3, 1e5});
    const double relief = dice.of(std::vector<double>{0.0, 1.0, 20.0});
    Points v;
    for (int i = 0; i < n; ++i) {
        double x = dice.real(), y = dice.real();
        if (shape == 1) x = dice.below(8), y = dice.below(8);
        if (shape == 2) y = 0.25;
        if (shape == 3) x = 0.25;
        if (shape == 4) x = y = dice.below(100);
        if (shape == 5) x = 0.01 * x + dice.below(2), y = 0.01 * y + dice.below(2);
        if (shape == 6) x = y = 0.5;
        const double z = shape == 1 ? dice.below(4) : relief * dice.real() - 5.0;
        v.emplace_back(offset + size * x, size * y - offset, z);
        v.back().setCustomIndex(i % 3 == 0 ? -1 : i);
    }
    return v;
}

Points pointsOf(const CloudPrepare& cloud)
{
    Points v;
    cloud.getPoints(v);
    return v;
}

/// Whether the two hold the same points in any order; means may differ in their last bits.
::testing::AssertionResult sameCloud(Points vActual, const Points& vExpected)
{
    if (vActual.size() != vExpected.size()) {
        return ::testing::AssertionFailure() << vActual.size() << " points instead of " << vExpected.size();
    }
    for (const Point2& p : vExpected) {
        const auto isSame = [&p](const Point2& q, double ulps) {
            const double slack = ulps * 0x1p-52 * p.getMaxAbs();
            return std::fabs(p.x() - q.x()) <= slack && std::fabs(p.y() - q.y()) <= slack &&
                   std::fabs(p.z() - q.z()) <= 0x1p-50 * std::fabs(p.z()) && p.getCustomIndex() == q.getCustomIndex();
        };
        // Where doubles are sparse, the next point may be a few ulps away: the very same comes first.
        auto it = std::find_if(vActual.begin(), vActual.end(), [&](const Point2& q) { return isSame(q, 0.0); });
        if (it == vActual.end()) {
            it = std::find_if(vActual.begin(), vActual.end(), [&](const Point2& q) { return isSame(q, 1.0); });
        }
        if (it == vActual.end()) return ::testing::AssertionFailure() << "without " << p;
        *it = vActual.back();
        vActual.pop_back();
    }
    return ::testing::AssertionSuccess();
}

/// simplify(cloud, bDryRun) in both ways: the dry run tells the number and changes nothing.
template <class Simplify>
void expectSimplified(const Points& vCloud, const Points& vExpected, const Simplify& simplify)
{
    CloudPrepare cloud;
    cloud.add(vCloud);
    EXPECT_EQ(simplify(cloud, true), vExpected.size());
    ASSERT_TRUE(sameCloud(pointsOf(cloud), vCloud)) << "after the dry run";
    EXPECT_EQ(simplify(cloud, false), vExpected.size());
    EXPECT_TRUE(sameCloud(pointsOf(cloud), vExpected));
}

} // namespace

TEST(CloudPrepare, RandomCloudsDifferFromNaiveBinning)
{
    for (int seed = 0; seed < numSeeds; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(static_cast<std::uint64_t>(seed));
        const Points vCloud = randomCloud(dice);
        const CloudTwin twin(vCloud);
        const auto sum = static_cast<SumStrategy>(dice.below(4));
        const auto hull = static_cast<ConvexHullStrategy>(dice.below(3));
        bool bArea = false;
        const Points vHull = hull == CHS_NOHULL ? Points() : twin.hull(hull == CHS_MAXHULL, bArea);
        if (hull != CHS_NOHULL) {
            CloudPrepare cloud;
            cloud.add(vCloud);
            Points vFound;
            EXPECT_EQ(cloud.computeConvexHull(hull == CHS_MAXHULL, vFound), bArea);
            EXPECT_TRUE(sameCloud(vFound, bArea ? vHull : Points()));
        }
        CloudPrepare cloud;
        cloud.add(vCloud);
        const double range = std::max({cloud.getRangeX(), cloud.getRangeY(), 1e-3});
        const double length = range * dice.of(std::vector<double>{2.0, 1.0, 0.3, 0.125, 0.01});
        expectSimplified(vCloud, twin.grid(length, sum, vHull), [&](CloudPrepare& c, bool bDryRun) {
            return c.uniformSimplifyGrid(length, sum, hull, bDryRun);
        });
        const double maxDiffZ = dice.of(std::vector<double>{-1.0, 0.0, 0.5, 3.0, 1e9});
        expectSimplified(vCloud, twin.adaptive(maxDiffZ, sum, vHull), [&](CloudPrepare& c, bool bDryRun) {
            return c.adaptiveSimplify(maxDiffZ, sum, hull, bDryRun);
        });
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(CloudPrepare, LargeCloudsHullLosesAPoint)
{
    for (int shape = 0; shape < 10; ++shape) {
        SCOPED_TRACE(shape);
        Dice dice(static_cast<std::uint64_t>(shape));
        Points vCloud;
        for (int i = 0; i < 20000; ++i) {
            double x = dice.real(), y = dice.real();
            if (shape % 5 == 1) x = 2.0 * x - 1.0, y = (2.0 * y - 1.0) * std::sqrt(1.0 - x * x);
            if (shape % 5 == 2) x *= 1e-9;
            if (shape % 5 == 3) x = std::floor(150.0 * x), y = std::floor(150.0 * y);
            if (shape % 5 == 4) y = i == 7777 ? 0.5 : 0.0; // straight, but for a point that the sample misses
            const double offset = shape < 5 ? 0.0 : 1e6;
            vCloud.emplace_back(x + offset, y - offset, 0.0);
            vCloud.back().setCustomIndex(i);
        }
        CloudPrepare cloud;
        cloud.add(vCloud);
        for (const bool bAllPoints : {false, true}) {
            bool bArea = false;
            const Points vExpected = CloudTwin(vCloud).hull(bAllPoints, bArea);
            Points vHull;
            ASSERT_TRUE(cloud.computeConvexHull(bAllPoints, vHull));
            ASSERT_EQ(vHull.size(), vExpected.size());
            for (std::size_t i = 0; i < vHull.size(); ++i) {
                EXPECT_EQ(vHull[i].getCustomIndex(), vExpected[i].getCustomIndex());
            }
        }
    }
}

TEST(CloudPrepare, NumberOfPointsIsMissed)
{
    const lumo_test::CoutCapture silence;
    for (int shape = 0; shape < 6; ++shape) {
        for (const int numWanted : {1, 2, 30, 1000, 4999}) {
            SCOPED_TRACE(std::to_string(shape) + ": " + std::to_string(numWanted));
            Dice dice(static_cast<std::uint64_t>(shape));
            Points vCloud;
            for (int i = 0; i < 5000; ++i) {
                double x = dice.real(), y = dice.real();
                if (shape == 1) y = x;
                if (shape == 2) x = 1e-12 * x + dice.below(3), y *= 1e-12;
                if (shape == 3) x += 1e6, y -= 3e6;
                if (shape == 4) x = x * x * x, y = y * y * y;
                if (shape == 5) x = y = 7.0;
                vCloud.emplace_back(x, y, 0.0);
            }
            CloudPrepare cloud;
            cloud.add(vCloud);
            const auto num = static_cast<double>(cloud.uniformSimplifyNum(numWanted, SMS_AVERAGE, CHS_NOHULL));
            EXPECT_EQ(num, static_cast<double>(cloud.getNumPoints()));
            if (shape == 5) {
                EXPECT_EQ(num, 1.0);
            } else if (shape == 2) { // clusters that are finer than any grid can tell apart
                EXPECT_LE(num, std::max(numWanted, 4));
            } else {
                EXPECT_NEAR(num, numWanted, 3.0 + 0.02 * numWanted);
            }
        }
    }
}

TEST(CloudPrepare, BadInputIsNotRefused)
{
    lumo_test::CoutCapture output;
    const lumo_test::TempWorkDir directory;
    CloudPrepare cloud;
    Points vNone;
    EXPECT_FALSE(cloud.computeConvexHull(true, vNone));
    EXPECT_THAT(output.take(), HasSubstr("No area"));
    EXPECT_THROW(cloud.uniformSimplifyGrid(1.0, SMS_AVERAGE, CHS_NOHULL, false), LumoException);
    EXPECT_THROW(cloud.adaptiveSimplify(1.0, SMS_AVERAGE, CHS_NOHULL, false), LumoException);
    EXPECT_THAT(output.take(), HasSubstr("maxx!=-1.7976931348623158e+308"));

    const double infinite = std::numeric_limits<double>::infinity(), nan = std::nan("");
    cloud.add(1.0, infinite, 0.0, 5);
    EXPECT_THAT(output.take(), HasSubstr("1 point(s) refused"));
    const double aCoordinates[] = {0, 0, 1, nan, 0, 0, 100, 50, 2, 3, 3, -infinite, 7, 7, 7};
    cloud.add(5, aCoordinates);
    EXPECT_THAT(output.take(), HasSubstr("2 point(s) refused"));
    EXPECT_EQ(cloud.getNumPoints(), 3u);
    EXPECT_EQ(cloud.getRangeX(), 100.0);
    EXPECT_EQ(cloud.getRangeY(), 50.0);
    EXPECT_EQ(cloud.getRangeZ(), 6.0);

    for (const double length : {0.0, -1.0, nan, infinite}) {
        EXPECT_EQ(cloud.uniformSimplifyGrid(length, SMS_AVERAGE, CHS_NOHULL, false), 0u);
        EXPECT_THAT(output.take(), HasSubstr("parameter gridLength"));
    }
    for (const int num : {-1, 0, 3}) {
        EXPECT_EQ(cloud.uniformSimplifyNum(num, SMS_AVERAGE, CHS_NOHULL), 0u);
        EXPECT_THAT(output.take(), HasSubstr("parameter gridLength<=0, returning"));
    }
    EXPECT_EQ(cloud.adaptiveSimplify(nan, SMS_AVERAGE, CHS_NOHULL, false), 0u);
    EXPECT_THAT(output.take(), HasSubstr("maxDiffZ"));
    EXPECT_THROW(cloud.uniformSimplifyGrid(1e-9, SMS_AVERAGE, CHS_NOHULL, false), LumoException);
    EXPECT_THAT(output.take(),
                ::testing::AllOf(HasSubstr("BaseLevel out of range: 37"), HasSubstr("numCReal>=numReqC")));
    EXPECT_THROW(cloud.adaptiveSimplify(1.0, static_cast<SumStrategy>(4), CHS_NOHULL, true), LumoException);
    EXPECT_EQ(cloud.getNumPoints(), 3u);
    cloud.clear();
    EXPECT_EQ(cloud.getNumPoints(), 0u);
    EXPECT_EQ(cloud.getRangeX(), 0.0);
}

TEST(CloudPrepare, ExtremeCoordinatesLeaveTheDoubles)
{
    for (const double unit : {5e-324, 1e-310, 1e-290, 1e300, 1.7e308}) {
        SCOPED_TRACE(unit);
        CloudPrepare corners;
        for (int i = 0; i < 8; ++i) {
            const double x = i & 1 ? unit : -unit, y = i & 2 ? unit : -unit;
            corners.add(x, y, i & 2 ? 1e308 : -1e308, i);
        }
        EXPECT_EQ(corners.uniformSimplifyGrid(unit, SMS_MAXIMUM, CHS_MINHULL, true), 4u);
        EXPECT_EQ(corners.uniformSimplifyGrid(1.7e308, SMS_MINIMUM, CHS_NOHULL, true), unit > 1e308 ? 4u : 1u);
        EXPECT_EQ(corners.adaptiveSimplify(1.0, SMS_AVERAGE, CHS_NOHULL, false), 4u);
        for (const Point2& p : pointsOf(corners)) {
            EXPECT_EQ(p.getMaxAbs(), unit);
            EXPECT_EQ(std::fabs(p.z()), 1e308);
        }
    }
    // Sums of x that are no doubles; means half-way between the doubles of a straight line; sums that lose digits.
    CloudPrepare mixed, line, crowd;
    for (int i = 0; i < 3000; ++i) crowd.add(1e15 + i % 3, -1e15 - i % 3, 0.0, i);
    crowd.uniformSimplifyGrid(100.0, SMS_AVERAGE, CHS_NOHULL, false);
    EXPECT_TRUE(pointsOf(crowd).at(0).samePoint(Point2(1e15 + 1, -1e15 - 1, 0.0)));
    for (int i = 0; i < 40; ++i) {
        mixed.add(1.5e308, 1e-300, 5e-324, i);
        line.add(0x1p52 + i, 0x1p52 + 3 * i, 0.0, i);
    }
    EXPECT_EQ(mixed.adaptiveSimplify(1.0, SMS_AVERAGE, CHS_NOHULL, false), 1u);
    EXPECT_TRUE(sameCloud(pointsOf(mixed), {Point2(1.5e308, 1e-300, 5e-324)}));
    line.uniformSimplifyGrid(8.0, SMS_AVERAGE, CHS_MINHULL, false);
    Points vHull;
    EXPECT_FALSE(line.computeConvexHull(false, vHull)) << "a mean left the line";
}

TEST(CloudPrepare, InsertedCloudIsAnotherTriangulation)
{
    lumo_test::CoutCapture output;
    for (const int numCPU : {1, 2}) {
        for (const bool bClear : {false, true}) {
            Dice dice(3);
            Points vPoints = dice.points(5000, 100.0, 70.0);
            vPoints.insert(vPoints.end(), vPoints.begin(), vPoints.begin() + 500); // duplicates, that come too late
            for (std::size_t i = 0; i < vPoints.size(); ++i) vPoints[i].setCustomIndex(static_cast<std::int32_t>(i));
            CloudPrepare cloud;
            cloud.add(vPoints);
            Lumo_2D byCloud, byVector;
            byCloud.setNumCPU(numCPU);
            byCloud.insert(&cloud, bClear);
            byVector.insert(vPoints);
            EXPECT_EQ(cloud.getNumPoints(), bClear ? 0u : vPoints.size());
            EXPECT_TRUE(byCloud.checkValidity(true, "cloud"));
            EXPECT_EQ(byCloud.numberOfTriangles(), byVector.numberOfTriangles());
            std::vector<Point2*> vVertices;
            byCloud.getVertexPointers(vVertices);
            std::set<std::int32_t> sIndices;
            for (const Point2* p : vVertices) {
                const auto i = static_cast<std::size_t>(p->getCustomIndex());
                EXPECT_TRUE(i < 5000 && p->samePoint(vPoints[i]));
                sIndices.insert(p->getCustomIndex());
            }
            EXPECT_EQ(sIndices.size(), 5000u);
        }
    }
    Lumo_2D lumo;
    lumo.insert(static_cast<CloudPrepare*>(nullptr), true);
    EXPECT_THAT(output.take(), HasSubstr("no cloud given"));
}
