#include "TriangleAroundVertexIterator.h"

#include "LumoException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// Triangles around the origin, counterclockwise; closed, or open with the gap before the first one.
struct Fan
{
    Point2 center{0, 0, 0};
    std::vector<Point2> vRim;
    std::vector<Triangle2> vTriangles;

    Fan(std::size_t numTriangles, bool bClosed) : vRim(numTriangles + (bClosed ? 0U : 1U)), vTriangles(numTriangles)
    {
        for (std::size_t i = 0; i < vRim.size(); ++i) {
            const double angle = 6.28 * static_cast<double>(i) / static_cast<double>(numTriangles + 1);
            vRim[i].setCoords(std::cos(angle), std::sin(angle), angle);
        }
        for (std::size_t i = 0; i < numTriangles; ++i) {
            Point2* aCorners[3] = {&center, &vRim[i], &vRim[(i + 1) % vRim.size()]};
            std::rotate(aCorners, aCorners + 2 * i % 3, aCorners + 3); // the centre takes every index in turn
            vTriangles[i].setProperties(aCorners[0], aCorners[1], aCorners[2]);
        }
        for (std::size_t i = 0; i + (bClosed ? 0U : 1U) < numTriangles; ++i) {
            Triangle2& next = vTriangles[(i + 1) % numTriangles];
            const Point2* pShared = &vRim[(i + 1) % vRim.size()];
            vTriangles[i].setOppTriangle(vTriangles[i].getIntraTriangleIndex(&center, pShared), &next);
            next.setOppTriangle(next.getIntraTriangleIndex(&center, pShared), &vTriangles[i]);
        }
    }
};

} // namespace

TEST(TriangleAroundVertexIterator, OneRoundMeetsEachTriangleOnceAndOneGapAtTheHull)
{
    for (std::size_t n = 1; n <= 14; ++n) {
        const bool bClosed = n > 7;
        Fan fan(bClosed ? n - 5 : n, bClosed);
        std::vector<Triangle2*> vCircle; // the triangles in order and, at the hull, NULL
        for (Triangle2& t : fan.vTriangles) vCircle.push_back(&t);
        if (!bClosed) vCircle.push_back(nullptr);
        const std::size_t size = vCircle.size();
        for (std::size_t start = 0; start < fan.vTriangles.size(); ++start) {
            SCOPED_TRACE(testing::Message() << "size " << size << ", closed " << bClosed << ", start " << start);
            const TriangleAroundVertexIterator itStart(&fan.center, vCircle[start]);
            TriangleAroundVertexIterator forward(itStart), backward(itStart);
            for (std::size_t step = 1; step <= 2 * size; ++step) {
                Triangle2* const pNext = vCircle[(start + step) % size];
                Triangle2* const pPrev = vCircle[(start + 2 * size - step) % size];
                EXPECT_TRUE(forward.previewNextTriangle() == pNext && *++forward == pNext);
                EXPECT_TRUE(backward.previewPrevTriangle() == pPrev && *--backward == pPrev);
                EXPECT_EQ(forward == itStart, step % size == 0);
            }
        }
    }
}

TEST(TriangleAroundVertexIterator, ABrokenStartIsAFailedCondition)
{
    Fan fan(3, true);
    const Point2 lonely(1, 1, 1);
    EXPECT_THROW(TriangleAroundVertexIterator it(&lonely), LumoException);
    EXPECT_THROW(++TriangleAroundVertexIterator(&lonely, &fan.vTriangles[0]), LumoException);
}
