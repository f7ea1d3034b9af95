#include "Point2.h"

#include "Segment2.h"
#include "Triangle2.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ORBI_LUMO25D;

TEST(Point2, CopiesArePlainPointsWithTheCustomIndex)
{
    Triangle2 t;
    Point2 vertex(1, 2, 3);
    vertex.setIncidentTriangle(&t);
    vertex.setCustomIndex(7);
    Point2 assigned;
    assigned = vertex;
    for (const Point2& copy : {Point2(vertex), assigned}) {
        EXPECT_TRUE(copy.samePoint(vertex) && copy.getCustomIndex() == 7 && copy.getIncidentTriangle() == nullptr);
    }
    vertex.setCoords(4, 5, 6);
    vertex.setHeight(9);
    EXPECT_EQ(vertex.getIncidentTriangle(), &t) << "moving a vertex must not cut it off its triangle";
}

// All pairs of a small lattice: the orders agree with those of numbers, heights count in one of them only.
TEST(Point2, OrdersAreLexicographicAndIgnoreTheHeightWhereTheySaySo)
{
    std::vector<Point2> vPoints;
    for (int i = 0; i < 27; ++i) vPoints.emplace_back(i / 9, i / 3 % 3, i % 3);
    for (std::size_t i = 0; i < 27; ++i) {
        for (std::size_t j = 0; j < 27; ++j) {
            const Point2 &p = vPoints[i], &q = vPoints[j];
            EXPECT_EQ(p < q, i / 3 < j / 3);
            EXPECT_EQ(p > q, i / 3 > j / 3);
            EXPECT_EQ(p == q, i / 3 == j / 3);
            EXPECT_EQ(p.samePoint(q), i == j);
            EXPECT_EQ(Func_ltPointXYZ()(p, q), i < j);
            const Segment2 a(p, q), b(q, p);
            EXPECT_TRUE(a == b) << "the direction of a segment must not count";
            EXPECT_EQ(Func_compareSegment()(&a, &b), i / 3 < j / 3);
            EXPECT_EQ(a == Segment2(p, p), i / 3 == j / 3);
        }
    }
}
