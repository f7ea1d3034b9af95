#include "oracles/Dice.h"

#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <string>
#include <thread>

namespace
{

/// How often memory may still be taken on threads that don't know about it; negative: no limit.
std::atomic<int> workersAllocations{-1};
thread_local bool bIsWorker = true;

} // namespace

// Where it inlines one of them, g++ takes it for the counterpart of the library's own.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

void* operator new(std::size_t n)
{
    if (bIsWorker && workersAllocations.load() >= 0 && workersAllocations.fetch_sub(1) <= 0) {
        workersAllocations = 0;
        throw std::bad_alloc();
    }
    if (void* const p = std::malloc(n)) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept
{
    return std::malloc(n);
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}

namespace
{

using namespace ORBI_LUMO25D;
using oracles::Dice;

using Points = std::vector<Point2>;
using Corners = std::array<std::pair<double, double>, 3>;

Points mapped(Points vPoints, const std::function<Point2(const Point2&)>& f)
{
    std::transform(vPoints.begin(), vPoints.end(), vPoints.begin(), f);
    return vPoints;
}

struct Input
{
    const char* name;
    bool bGeneral; ///< no four points on a circle: there is one triangulation only
    Points vPoints;
};

/// What could break the regions of the chunks: circles that doubles get wrong, huge ones, and points all over each other.
std::vector<Input> hardInputs()
{
    const int n = 12000; // enough for chunks
    Dice dice(1);
    const Points vUnit = dice.points(n, 1.0, 1.0);
    Points vOutliers = dice.points(n, 1e-7, 1e-7);
    vOutliers.emplace_back(1e5, 3.0, 0.0);
    vOutliers.emplace_back(-2e5, 7e4, 0.0);
    Points vTwice(vUnit);
    vTwice.insert(vTwice.end(), vUnit.begin(), vUnit.end());
    const auto survey = [](const Point2& p) { return Point2(p.x() + 21530000.0, p.y() + 6782000.0, 0.0); };
    const auto threeLines = [](const Point2& p) { return Point2(p.x(), std::floor(3.0 * p.y()), 0.0); };
    const auto oneLine = [](const Point2& p) { return Point2(p.x(), p.x(), 0.0); };
    const auto circle = [](const Point2& p) { return Point2(std::cos(7.0 * p.x()), std::sin(7.0 * p.x()), 0.0); };
    const auto grid = [](const Point2& p) { return Point2(std::floor(30.0 * p.x()), std::floor(30.0 * p.y()), p.x()); };
    return {
        {"uniform", true, vUnit},
        {"survey", true, mapped(dice.points(n, 1000.0, 700.0), survey)},
        {"thin strip", true, dice.points(n, 1000.0, 1e-4)},
        {"three lines", false, mapped(vUnit, threeLines)},
        {"one line", false, mapped(vUnit, oneLine)},
        {"circle", false, mapped(vUnit, circle)},
        {"grid, mostly duplicates", false, mapped(vUnit, grid)},
        {"cluster and outliers", true, vOutliers},
        {"everything twice", true, vTwice},
    };
}

std::vector<Corners> trianglesOf(const Lumo_2D& lumo)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    std::vector<Corners> vCorners;
    for (const Triangle2* pT : vT) {
        Corners corners;
        for (int i = 0; i < 3; ++i) {
            corners[static_cast<std::size_t>(i)] = {pT->getCorner(i)->x(), pT->getCorner(i)->y()};
        }
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        vCorners.push_back(corners);
    }
    std::sort(vCorners.begin(), vCorners.end());
    return vCorners;
}

TEST(Threads, bulkInsertionGivesWhatOneThreadGives)
{
    for (const Input& input : hardInputs()) {
        Lumo_2D single;
        single.insert(input.vPoints);
        for (const int numCPU : {2, 3, 4, 16}) {
            SCOPED_TRACE(std::string(input.name) + ", threads: " + std::to_string(numCPU));
            Lumo_2D lumo;
            lumo.setNumCPU(numCPU);
            std::vector<Point2*> vHandles;
            lumo.insert(input.vPoints, vHandles);
            EXPECT_TRUE(lumo.checkValidity(true, input.name));
            EXPECT_EQ(lumo.numberOfPoints(), single.numberOfPoints());
            EXPECT_EQ(lumo.numberOfTriangles(), single.numberOfTriangles());
            for (std::size_t i = 0; i < vHandles.size(); ++i) {
                ASSERT_EQ(*vHandles[i], input.vPoints[i]);
            }
            if (input.bGeneral) {
                EXPECT_TRUE(trianglesOf(lumo) == trianglesOf(single));
            }
        }
    }
}

TEST(Threads, laterBulksAndRemovalsGoOnFromAThreadedOne)
{
    const Points vPoints = Dice(5).points(30000, 10.0, 10.0);
    Lumo_2D lumo;
    lumo.setNumCPU(3);
    const Points vFirst(vPoints.begin(), vPoints.begin() + 14000);
    std::vector<Point2*> vHandles;
    lumo.insert(vFirst, vHandles);
    for (std::size_t i = 0; i < 1500; ++i) lumo.remove(vHandles[i]);
    // Random doubles are in general position: there is one Delaunay triangulation only.
    Lumo_2D fewer;
    fewer.insert(Points(vFirst.begin() + 1500, vFirst.end()));
    EXPECT_TRUE(trianglesOf(lumo) == trianglesOf(fewer));
    lumo.setNumCPU(std::numeric_limits<int>::max()); // no more are started than there is work for
    lumo.insert(vPoints);
    EXPECT_TRUE(lumo.checkValidity(true, "second bulk"));
    EXPECT_EQ(lumo.numberOfPoints(), vPoints.size());
    Lumo_2D single;
    single.insert(vPoints);
    EXPECT_TRUE(trianglesOf(lumo) == trianglesOf(single));
}

/// Memory ends on a worker after so many allocations: while it looks at its region, before its first point, or amid its
/// points, whose duplicates are listed.
TEST(Threads, aWorkerWithoutMemoryEndsTheProcessOrLeavesAnUnsoundTriangulation)
{
    Points vPoints = Dice(7).points(12000, 1.0, 1.0);
    vPoints.insert(vPoints.end(), vPoints.begin(), vPoints.end());
    Lumo_2D single;
    single.insert(vPoints);
    int numFailed = 0;
    bool bFails = true;
    for (int numAllocations = 0; bFails; numAllocations = numAllocations * 3 / 2 + 1) {
        SCOPED_TRACE("allocations: " + std::to_string(numAllocations));
        Lumo_2D lumo;
        lumo.setNumCPU(4);
        bIsWorker = false;
        workersAllocations = numAllocations;
        try {
            lumo.insert(vPoints);
            bFails = workersAllocations == 0;
        } catch (const std::bad_alloc&) {
            ++numFailed;
        }
        workersAllocations = -1;
        bIsWorker = true;
        EXPECT_TRUE(lumo.checkValidity(true, "after the failure"));
        lumo.insert(vPoints);
        EXPECT_TRUE(trianglesOf(lumo) == trianglesOf(single));
    }
    EXPECT_GT(numFailed, 0);
}

TEST(Threads, twoTriangulationsMadeAtOneTimeDisturbEachOther)
{
    const std::vector<Input> vInputs = hardInputs();
    const auto insertBoth = [&vInputs](int numCPU, std::vector<Corners>& vCorners) {
        for (const Input& input : {vInputs[0], vInputs[1]}) {
            Lumo_2D lumo;
            lumo.setNumCPU(numCPU);
            lumo.insert(input.vPoints);
            const std::vector<Corners> vMore = trianglesOf(lumo);
            vCorners.insert(vCorners.end(), vMore.begin(), vMore.end());
        }
    };
    std::array<std::vector<Corners>, 3> avCorners;
    std::thread other([&] { insertBoth(2, avCorners[0]); });
    insertBoth(2, avCorners[1]);
    other.join();
    insertBoth(1, avCorners[2]);
    EXPECT_TRUE(avCorners[0] == avCorners[2]);
    EXPECT_TRUE(avCorners[1] == avCorners[2]);
}

} // namespace
