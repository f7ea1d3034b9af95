#include "orbi_octree/Octree.h"

#include "LumoException.h"
#include "orbi_locate3/SpaceTwin.h"
#include "support/TestOutput.h"

using ORBI_LUMO25D::Point2;
using ORBI_OCTREE::Octree;

TEST(Octree, AnswersBetweenAdditionsDifferFromAScan)
{
    lumo_test::SpaceTwin::expectAgreement<Octree>();
}

TEST(Octree, CoordinatesOutOfRangeEnter)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    Octree octree;
    for (const double bad : {std::nan(""), HUGE_VAL, -2e300}) {
        EXPECT_THROW(octree.addPoint(0, Point2(bad, 0, 0)), ORBI_LUMO25D::LumoException);
        EXPECT_THROW(octree.addPoint(0, Point2(0, 0, bad)), ORBI_LUMO25D::LumoException);
    }
    std::size_t index = 0;
    double sq = 0.0;
    EXPECT_FALSE(octree.size() > 0 || octree.getClosest(Point2(0, 0, 0), index, sq));
}
