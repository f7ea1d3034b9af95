#include "repair/BorderWalk.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// Cuts a closed chain into rings that visit no vertex twice.
void appendSimpleRings(const std::vector<Edge2>& vChain, std::vector<std::vector<Edge2>>& vRings)
{
    std::vector<Edge2> vOpen;
    std::unordered_map<const Point2*, std::size_t> mSourceToPosition; // of the edges in vOpen
    for (const Edge2& edge : vChain) {
        mSourceToPosition[edge.getSrc()] = vOpen.size();
        vOpen.push_back(edge);
        const auto it = mSourceToPosition.find(edge.getTrg());
        if (it == mSourceToPosition.end()) continue;
        const auto begin = vOpen.begin() + static_cast<std::ptrdiff_t>(it->second);
        vRings.emplace_back(begin, vOpen.end());
        for (const Edge2& closed : vRings.back()) mSourceToPosition.erase(closed.getSrc());
        vOpen.erase(begin, vOpen.end());
    }
}

} // namespace

BorderWalk::BorderWalk(const std::vector<Edge2>& vBorder_, const std::function<bool(Edge2&)>& turn_,
                       const std::function<Vector2(const Point2*)>& normalAt_)
    : vBorder(vBorder_), turn(turn_), normalAt(normalAt_)
{
    for (std::size_t i = 0; i < vBorder.size(); ++i) mVertexToOutgoing[vBorder[i].getSrc()].push_back(i);
    for (auto& entry : mVertexToOutgoing) {
        if (entry.second.size() > 2) sortAround(entry.first, entry.second); // two have no order around a vertex
    }
}

void BorderWalk::sortAround(const Point2* pVertex, std::vector<std::size_t>& vOutgoing) const
{
    const Vector2 normal = normalAt(pVertex);
    const Vector2 x = *vBorder[vOutgoing.front()].getTrg() - *pVertex;
    const Vector2 y = crossProduct(normal, x);
    const Vector2 xInPlane = x - (x * normal) * normal;
    std::vector<std::pair<double, std::size_t>> vSorted;
    for (const std::size_t i : vOutgoing) {
        const Vector2 v = *vBorder[i].getTrg() - *pVertex;
        const double angle = std::atan2(v * y, v * xInPlane);
        vSorted.emplace_back(std::isfinite(angle) ? angle : 0.0, i);
    }
    std::sort(vSorted.begin(), vSorted.end());
    for (std::size_t i = 0; i < vSorted.size(); ++i) vOutgoing[i] = vSorted[i].second;
}

bool BorderWalk::findNext(const Edge2& edge, std::size_t& next)
{
    Edge2 leaving = edge;
    if (!turn(leaving)) return false;
    const std::vector<std::size_t>& vOutgoing = outgoingOf(edge);
    // A fan goes counterclockwise from its leaving edge to its arriving one; then the gap, then the next fan.
    for (std::size_t i = 0; i < vOutgoing.size(); ++i) {
        if (vBorder[vOutgoing[i]] != leaving) continue;
        next = vOutgoing[(i + 1) % vOutgoing.size()];
        return true;
    }
    return false;
}

void BorderWalk::getRings(std::vector<std::vector<Edge2>>& vRings)
{
    std::vector<bool> vVisited(vBorder.size(), false);
    std::vector<Edge2> vChain;
    for (std::size_t first = 0; first < vBorder.size(); ++first) {
        vChain.clear();
        std::size_t i = first;
        bool bGoesOn = true;
        while (bGoesOn && !vVisited[i]) {
            vVisited[i] = true;
            vChain.push_back(vBorder[i]);
            bGoesOn = findNext(vBorder[i], i);
        }
        if (!vChain.empty() && bGoesOn && i == first) appendSimpleRings(vChain, vRings);
    }
}

} // namespace ORBI_LUMO25D
