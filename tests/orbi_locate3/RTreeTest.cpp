#include "orbi_locate3/RTree.h"

#include "orbi_locate3/SpaceTwin.h"

using ORBI_LOCATE3::RTree;
using ORBI_LUMO25D::Point2;

TEST(RTree3, BoxesAndClosestPointsDifferFromAScan)
{
    lumo_test::SpaceTwin::expectAgreement<RTree>();
    std::size_t index = 0;
    double sq = 0.0;
    RTree tree;
    EXPECT_FALSE(tree.getClosest(Point2(0, 0, 0), index, sq));
    tree.addTriangle(5, Point2(0, 8, 3), Point2(4, 1, 7), Point2(2, 2, 5));
    EXPECT_TRUE(tree.getClosest(Point2(-1, 9, 9), index, sq) && index == 5 && sq == 6.0);
    EXPECT_TRUE(tree.getClosest(Point2(6, 0, 1), index, sq) && index == 5 && sq == 9.0);
}
