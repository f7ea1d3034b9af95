#include "terrain/HeightIndex.h"

#include "geometry/KeyOrder.h"
#include "geometry/finite.h"
#include "orbi_tools/HilbertCurve2.h"
#include "support/check.h"
#include "support/messages.h"

#include "Bbox2.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace ORBI_LUMO25D
{

namespace
{

/// How far ahead memory is asked for: triangles, and then their corners, lie at random places.
constexpr std::size_t ahead = 8;

void prefetchCorners(const HeightIndex::Corners& t)
{
    for (const Point2* p : t) __builtin_prefetch(p);
}

HeightIndex::Corners cornersOf(const Triangle2& t)
{
    return {t.corner(0), t.corner(1), t.corner(2)};
}

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
    for (std::size_t i = 0; i < vT.size(); ++i) {
        if (i + 2 * ahead < vT.size()) __builtin_prefetch(vT[i + 2 * ahead]);
        if (i + ahead < vT.size() && vT[i + ahead] != nullptr) prefetchCorners(cornersOf(*vT[i + ahead]));
        if (isUsable(vT[i])) vTriangles.push_back(vT[i]);
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
    double wayX = 0.0, wayY = 0.0; // from triangle to triangle
    for (std::size_t i = 0; i < n; ++i) {
        if (i + ahead < n) prefetchCorners(cornersOf(*vTriangles[i + ahead]));
        for (int k = 0; k < 3; ++k) box.add(*vTriangles[i]->corner(k));
        const Point2& p = *vTriangles[i]->corner(0);
        const Point2& before = *vTriangles[i == 0 ? 0 : i - 1]->corner(0);
        wayX += std::fabs(p.x() - before.x());
        wayY += std::fabs(p.y() - before.y());
    }
    largestCoordinate = std::max(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs());
    const double side = std::sqrt(static_cast<double>(n));
    if (wayX <= 8.0 * side * box.getRangeX() && wayY <= 8.0 * side * box.getRangeY()) {
        vCorners.reserve(n);
        for (const Triangle2* pT : vTriangles) vCorners.push_back(cornersOf(*pT));
        return;
    }

    const HilbertCurve2 curve(box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY(), KeyedPosition::keyBits);
    std::vector<KeyedPosition> vOrder(n), vScratch(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (i + ahead < n) __builtin_prefetch(vTriangles[i + ahead]->corner(0));
        const Point2& p = *vTriangles[i]->corner(0);
        vOrder[i] = KeyedPosition(curve.index(p.x(), p.y()), i);
    }
    sortByKey(vOrder.data(), vScratch.data(), n);
    vCorners.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (i + ahead < n) __builtin_prefetch(vTriangles[vOrder[i + ahead].position()]);
        vCorners.push_back(cornersOf(*vTriangles[vOrder[i].position()]));
    }
}

void HeightIndex::buildTree()
{
    std::vector<Range> vLevel;
    vLevel.reserve(vCorners.size());
    for (std::size_t i = 0; i < vCorners.size(); ++i) {
        if (i + ahead < vCorners.size()) prefetchCorners(vCorners[i + ahead]);
        const Corners& t = vCorners[i];
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

/// Level by level, so that memory can be asked for ahead. Which children hold the height can't be predicted: no branches.
std::vector<std::uint32_t> HeightIndex::trianglesAt(double height) const
{
    std::vector<std::uint32_t> vNodes, vChildren;
    if (empty() || !vvLevels.back()[0].holds(height)) return vNodes;
    vNodes.push_back(0);
    for (std::size_t level = vvLevels.size() - 1; level > 0; --level) {
        const std::vector<Range>& vRanges = vvLevels[level - 1];
        vChildren.resize(vNodes.size() * fanOut);
        std::size_t numFound = 0;
        for (std::size_t i = 0; i < vNodes.size(); ++i) {
            if (i + ahead < vNodes.size()) {
                const std::size_t next = vNodes[i + ahead] * fanOut;
                for (std::size_t k = 0; k < fanOut; k += 4) // 64 bytes
                    __builtin_prefetch(&vRanges[std::min(next + k, vRanges.size() - 1)]);
            }
            const std::size_t first = vNodes[i] * fanOut;
            const std::size_t end = std::min(first + fanOut, vRanges.size());
            for (std::size_t child = first; child < end; ++child) {
                vChildren[numFound] = static_cast<std::uint32_t>(child);
                numFound += static_cast<std::size_t>(vRanges[child].holds(height));
            }
        }
        vChildren.resize(numFound);
        vNodes.swap(vChildren);
    }
    return vNodes;
}

} // namespace ORBI_LUMO25D
