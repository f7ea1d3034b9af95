#include "Point2.h"

#include "Circle2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "Vector2.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// The printed form with every address as "@".
template <typename T>
std::string textOf(const T& object)
{
    std::ostringstream stream;
    stream << object;
    std::string text = stream.str();
    for (std::size_t i = text.find("0x"); i != std::string::npos; i = text.find("0x")) {
        text.replace(i, text.find_first_of(",)", i) - i, "@");
    }
    return text;
}

} // namespace

TEST(Point2, CopiesArePlainPointsWithTheCustomIndex)
{
    Triangle2 t;
    Point2 vertex(1, 2, 3);
    vertex.setIncidentTriangle(&t);
    vertex.setCustomIndex(7);
    Point2 assigned(vertex);
    assigned.setIncidentTriangle(&t);
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
    for (int i = 0; i < 27; ++i) {
        for (int j = 0; j < 27; ++j) {
            const Point2& p = vPoints[static_cast<std::size_t>(i)];
            const Point2& q = vPoints[static_cast<std::size_t>(j)];
            EXPECT_EQ(p < q, i / 3 < j / 3);
            EXPECT_EQ(p > q, i / 3 > j / 3);
            EXPECT_EQ(p == q, i / 3 == j / 3);
            EXPECT_EQ(p.samePoint(q), i == j);
            EXPECT_EQ(Func_ltPointXYZ()(p, q), i < j);
            const Segment2 a(p, q);
            const Segment2 b(q, p);
            EXPECT_TRUE(a == b) << "the direction of a segment must not count";
            EXPECT_EQ(Func_compareSegment()(&a, &b), i / 3 < j / 3);
            EXPECT_EQ(a == Segment2(p, p), i / 3 == j / 3);
        }
    }
}

TEST(Point2, TextsHaveTheirFixedForm)
{
    Point2 p(1.5, -2, 3);
    p.setCustomIndex(4);
    EXPECT_EQ(textOf(p), "Point2 (@,4): 1.5, -2, 3");
    EXPECT_EQ(textOf(Vector2(1, 2.5, -3)), "Vector2: 1, 2.5, -3");
    EXPECT_EQ(textOf(Segment2(p, p)), "Segment2 (@): Point2 (@,4): 1.5, -2, 3,Point2 (@,4): 1.5, -2, 3");
    EXPECT_EQ(textOf(Circle2(p, 9)), "Circle2: Point2 (@,-1): 1.5, -2, 0, r=3");
    testing::internal::CaptureStdout();
    p.print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1.5 -2 3\n");
}
