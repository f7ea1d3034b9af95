#include "orbi_locate3/RTree.h"

#include "orbi_locate3/SpaceTwin.h"

namespace
{

/// With boxes that are points.
struct PointTree : ORBI_LOCATE3::RTree
{
    void addPoint(std::size_t index, const ORBI_LUMO25D::Point2& p)
    {
        addObject(index, p.x(), p.y(), p.z(), p.x(), p.y(), p.z());
    }
};

} // namespace

TEST(RTree3, BoxesDifferFromAScan)
{
    lumo_test::SpaceTwin::expectAgreement<PointTree, false>();
}
