#include "terrain/HeightIndex.h"

#include "geometry/KeyOrder.h"
#include "geometry/finite.h"
#include "orbi_tools/HilbertCurve2.h"
#include "support/check.h"
#include "support/messages.h"

#include "Bbox2.h"

#include <functional>

namespace ORBI_LUMO25D
{

namespace
{

bool isUsable(const Triangle2* pT)
{
    if (pT == nullptr) return false;
    for (int i = 0; i < 3; ++i) {
        const Point2* p = pT->corner(i);
        if (p == nullptr || !isFinite25D(*p)) return false;
    }
    return true;
}

} // namespace

HeightIndex::HeightIndex(const std::vector<Triangle2*>& vT)
{
    std::vector<const Triangle2*> vTriangles;
    vTriangles.reserve(vT.size());
    for (const Triangle2* pT : vT) {
        if (isUsable(pT)) vTriangles.push_back(pT);
    }
    if (vTriangles.size() < vT.size()) {
        msgWarning("IsoContours", std::to_string(vT.size() - vTriangles.size()) +
                                      " triangles without finite coordinates are left out");
    }
    // A triangulation lists its triangles by address.
    const std::less<const Triangle2*> byAddress;
    if (!std::is_sorted(vTriangles.begin(), vTriangles.end(), byAddress)) {
        std::sort(vTriangles.begin(), vTriangles.end(), byAddress);
    }
    vTriangles.erase(std::unique(vTriangles.begin(), vTriangles.end()), vTriangles.end());
    if (vTriangles.empty()) return;
    sortAlongCurve(vTriangles);
    buildTree();
}

void HeightIndex::sortAlongCurve(const std::vector<const Triangle2*>& vTriangles)
{
    const std::size_t n = vTriangles.size();
    LUMO_CHECK(n < KeyedPosition::maxPositions, "n<KeyedPosition::maxPositions");
    Bbox2 box;
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) box.add(*pT->corner(i));
    }
    largestCoordinate = std::max(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs());

    const HilbertCurve2 curve(box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY(), KeyedPosition::keyBits);
    std::vector<KeyedPosition> vOrder(n), vScratch(n);
    for (std::size_t i = 0; i < n; ++i) {
        const Point2& p = *vTriangles[i]->corner(0);
        vOrder[i] = KeyedPosition(curve.index(p.x(), p.y()), i);
    }
    sortByKey(vOrder.data(), vScratch.data(), n);
    vCorners.reserve(n);
    for (const KeyedPosition& item : vOrder) {
        const Triangle2* const pT = vTriangles[item.position()];
        vCorners.push_back({pT->corner(0), pT->corner(1), pT->corner(2)});
    }
}

void HeightIndex::buildTree()
{
    std::vector<Range> vLevel;
    vLevel.reserve(vCorners.size());
    for (const Corners& t : vCorners) {
        const auto [low, high] = std::minmax({t[0]->z(), t[1]->z(), t[2]->z()});
        vLevel.push_back({low, high});
    }
    vvLevels.push_back(std::move(vLevel));
    while (vvLevels.back().size() > 1) {
        const std::vector<Range>& vBelow = vvLevels.back();
        std::vector<Range> vNodes;
        vNodes.reserve((vBelow.size() + fanOut - 1) / fanOut);
        for (std::size_t i = 0; i < vBelow.size(); ++i) {
            if (i % fanOut == 0) vNodes.push_back(vBelow[i]);
            vNodes.back().minZ = std::min(vNodes.back().minZ, vBelow[i].minZ);
            vNodes.back().maxZ = std::max(vNodes.back().maxZ, vBelow[i].maxZ);
        }
        vvLevels.push_back(std::move(vNodes));
    }
}

} // namespace ORBI_LUMO25D
