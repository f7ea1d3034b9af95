#include "oracles/MeshOracle.h"

#include "Bbox2.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string>

namespace
{

using namespace ORBI_LUMO25D;

using Points = std::vector<Point2>;
using Corners = std::array<std::pair<double, double>, 3>;

Points randomPoints(std::size_t n, double width, double height, unsigned seed)
{
    Bbox2 box;
    box.add(Point2(0.0, 0.0, 0.0));
    box.add(Point2(width, height, 0.0));
    Points vPoints;
    generateRandomPoints(n, box, seed, vPoints);
    return vPoints;
}

Points moved(Points vPoints, double dx, double dy)
{
    for (Point2& p : vPoints) {
        p.setCoords(p.x() + dx, p.y() + dy, p.z());
    }
    return vPoints;
}

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
    const std::size_t n = 4000;
    const Points vUnit = randomPoints(n, 1.0, 1.0, 1);
    std::vector<Input> vInputs;
    vInputs.push_back({"uniform", true, vUnit});
    vInputs.push_back({"survey", true, moved(randomPoints(n, 1000.0, 700.0, 2), 21530000.0, 6782000.0)});
    vInputs.push_back({"thin strip", true, randomPoints(n, 1000.0, 1e-4, 3)});
    vInputs.push_back({"three lines", false,
                       mapped(vUnit, [](const Point2& p) { return Point2(p.x(), std::floor(3.0 * p.y()), 0.0); })});
    vInputs.push_back({"one line", false, mapped(vUnit, [](const Point2& p) { return Point2(p.x(), p.x(), 0.0); })});
    vInputs.push_back({"circle", false, mapped(vUnit, [](const Point2& p) {
                           return Point2(std::cos(7.0 * p.x()), std::sin(7.0 * p.x()), 0.0);
                       })});
    vInputs.push_back({"grid, mostly duplicates", false, mapped(vUnit, [](const Point2& p) {
                           return Point2(std::floor(30.0 * p.x()), std::floor(30.0 * p.y()), p.x());
                       })});
    Points vSorted(vUnit);
    std::sort(vSorted.begin(), vSorted.end());
    vInputs.push_back({"sorted by x", true, vSorted});
    Points vOutliers = randomPoints(n, 1e-7, 1e-7, 4);
    vOutliers.emplace_back(1e5, 3.0, 0.0);
    vOutliers.emplace_back(-2e5, 7e4, 0.0);
    vInputs.push_back({"cluster and outliers", true, vOutliers});
    Points vTwice(vUnit);
    vTwice.insert(vTwice.end(), vUnit.begin(), vUnit.end());
    vInputs.push_back({"everything twice", true, vTwice});
    return vInputs;
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
        for (const int numCPU : {2, 3, 8}) {
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
    const Points vPoints = randomPoints(6000, 10.0, 10.0, 5);
    Lumo_2D lumo;
    lumo.setNumCPU(3);
    const Points vFirst(vPoints.begin(), vPoints.begin() + 2000);
    std::vector<Point2*> vHandles;
    lumo.insert(vFirst, vHandles);
    for (std::size_t i = 0; i < 500; ++i) {
        lumo.remove(vHandles[i]);
    }
    lumo.insert(vPoints);
    EXPECT_TRUE(lumo.checkValidity(true, "second bulk"));
    EXPECT_EQ(lumo.numberOfPoints(), vPoints.size());
    Lumo_2D single;
    single.insert(vPoints);
    EXPECT_TRUE(trianglesOf(lumo) == trianglesOf(single));
}

} // namespace
