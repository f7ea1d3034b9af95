#include "repair/FrontIndex.h"

#include <algorithm>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t maxRecent = 32;

} // namespace

ORBI_LOCATE3::RTree::Box FrontIndex::boxOf(const Record& record) const
{
    const Point2& p = surface.point(front.node(record.node).vertex);
    const Point2& q = surface.point(front.node(record.next).vertex);
    return {{std::min(p.x(), q.x()), std::min(p.y(), q.y()), std::min(p.z(), q.z())},
            {std::max(p.x(), q.x()), std::max(p.y(), q.y()), std::max(p.z(), q.z())}};
}

void FrontIndex::add(std::size_t node)
{
    vRecent.push_back({node, front.node(node).next});
    if (vRecent.size() >= maxRecent) pack();
}

void FrontIndex::pack()
{
    std::vector<Record> vRecords;
    vRecords.swap(vRecent);
    while (!vLevels.empty() && vLevels.back().vRecords.size() <= vRecords.size()) {
        vRecords.insert(vRecords.end(), vLevels.back().vRecords.begin(), vLevels.back().vRecords.end());
        vLevels.pop_back();
    }
    const auto isDead = [this](const Record& record) { return !isAlive(record); };
    vRecords.erase(std::remove_if(vRecords.begin(), vRecords.end(), isDead), vRecords.end());
    if (vRecords.empty()) return;

    vLevels.emplace_back();
    Level& level = vLevels.back();
    level.tree.reserve(vRecords.size());
    for (std::size_t i = 0; i < vRecords.size(); ++i) {
        const ORBI_LOCATE3::RTree::Box box = boxOf(vRecords[i]);
        level.tree.addObject(i, box.lo[0], box.lo[1], box.lo[2], box.hi[0], box.hi[1], box.hi[2]);
    }
    level.vRecords.swap(vRecords);
}

} // namespace ORBI_LUMO25D
