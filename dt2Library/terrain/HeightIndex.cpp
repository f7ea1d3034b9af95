#include "terrain/HeightIndex.h"

#include "geometry/KeyOrder.h"
#include "geometry/finite.h"
#include "orbi_tools/HilbertCurve2.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

/// How far ahead memory is asked for: triangles, and then their corners, may lie at random places.
constexpr std::size_t ahead = 8;

void prefetchCorners(const Triangle2* pT)
{
    if (pT == nullptr) return;
    for (int i = 0; i < 3; ++i) __builtin_prefetch(pT->corner(i));
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

/// Keeps the order of heights: none changes places with another, though some become the same.
float rounded(double z)
{
    constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(z, -largest, largest));
}

} // namespace

/// What is known of the triangles when each has been looked at once.
class HeightIndex::Extent
{
public:
    void add(const Triangle2& t)
    {
        const Point2 &a = *t.corner(0), &b = *t.corner(1), &c = *t.corner(2);
        minX = std::min({minX, a.x(), b.x(), c.x()});
        maxX = std::max({maxX, a.x(), b.x(), c.x()});
        minY = std::min({minY, a.y(), b.y(), c.y()});
        maxY = std::max({maxY, a.y(), b.y(), c.y()});
        if (pBefore != nullptr) {
            wayX += std::fabs(a.x() - pBefore->x());
            wayY += std::fabs(a.y() - pBefore->y());
        }
        pBefore = &a;
    }
    double maxAbs() const { return std::max({-minX, maxX, -minY, maxY}); }
    /// True when the way from triangle to triangle is about as short as along a curve.
    bool isCurve(std::size_t n) const
    {
        const double side = std::sqrt(static_cast<double>(n));
        return wayX <= 8.0 * side * (maxX - minX) && wayY <= 8.0 * side * (maxY - minY);
    }

    double minX = std::numeric_limits<double>::max(), maxX = std::numeric_limits<double>::lowest();
    double minY = minX, maxY = maxX;

private:
    double wayX = 0.0, wayY = 0.0;
    const Point2* pBefore = nullptr;
};

HeightIndex::HeightIndex(const std::vector<Triangle2*>& vT) : vTriangles(vT.begin(), vT.end())
{
    LUMO_CHECK(vT.size() < none, "vT.size()<none");
    // A triangulation lists its triangles by address.
    const std::less<const Triangle2*> byAddress;
    if (!std::is_sorted(vTriangles.begin(), vTriangles.end(), byAddress)) {
        std::sort(vTriangles.begin(), vTriangles.end(), byAddress);
    }
    const Extent extent = keepUsable();
    if (vTriangles.empty()) return;
    largestCoordinate = extent.maxAbs();
    if (!extent.isCurve(vTriangles.size())) sortAlongCurve(extent);
    buildTree();
}

/// Each triangle once, with its range.
HeightIndex::Extent HeightIndex::keepUsable()
{
    Extent extent;
    lowest = std::numeric_limits<double>::max();
    highest = std::numeric_limits<double>::lowest();
    std::vector<Range> vRanges;
    vRanges.reserve(vTriangles.size());
    std::size_t numKept = 0, numBad = 0;
    for (std::size_t i = 0; i < vTriangles.size(); ++i) {
        if (i + 2 * ahead < vTriangles.size()) __builtin_prefetch(vTriangles[i + 2 * ahead]);
        if (i + ahead < vTriangles.size()) prefetchCorners(vTriangles[i + ahead]);
        const Triangle2* const pT = vTriangles[i];
        if (!isUsable(pT)) {
            ++numBad;
            continue;
        }
        if (numKept > 0 && vTriangles[numKept - 1] == pT) continue;
        vTriangles[numKept++] = pT;
        const auto [low, high] = std::minmax({pT->corner(0)->z(), pT->corner(1)->z(), pT->corner(2)->z()});
        vRanges.push_back({rounded(low), rounded(high)});
        lowest = std::min(lowest, low);
        highest = std::max(highest, high);
        extent.add(*pT);
    }
    vTriangles.resize(numKept);
    vvLevels.push_back(std::move(vRanges));
    if (numBad > 0) {
        msgWarning("IsoContours", std::to_string(numBad) + " triangles without finite coordinates are left out");
    }
    return extent;
}

void HeightIndex::sortAlongCurve(const Extent& extent)
{
    const std::size_t n = vTriangles.size();
    LUMO_CHECK(n < KeyedPosition::maxPositions, "n<KeyedPosition::maxPositions");
    const HilbertCurve2 curve(extent.minX, extent.minY, extent.maxX, extent.maxY, KeyedPosition::keyBits);
    std::vector<KeyedPosition> vOrder(n), vScratch(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 2 * ahead < n) __builtin_prefetch(vTriangles[i + 2 * ahead]);
        if (i + ahead < n) __builtin_prefetch(vTriangles[i + ahead]->corner(0));
        const Point2& p = *vTriangles[i]->corner(0);
        vOrder[i] = KeyedPosition(curve.index(p.x(), p.y()), i);
    }
    sortByKey(vOrder.data(), vScratch.data(), n);
    std::vector<Range> vRanges;
    vRanges.reserve(n);
    vAlongCurve.reserve(n);
    for (const KeyedPosition& place : vOrder) {
        vAlongCurve.push_back(static_cast<std::uint32_t>(place.position()));
        vRanges.push_back(vvLevels[0][place.position()]);
    }
    vvLevels[0].swap(vRanges);
}

void HeightIndex::buildTree()
{
    while (vvLevels.back().size() > 1) {
        const std::vector<Range>& vBelow = vvLevels.back();
        std::vector<Range> vNodes;
        vNodes.reserve((vBelow.size() + fanOut - 1) / fanOut);
        for (std::size_t first = 0; first < vBelow.size(); first += fanOut) {
            Range range = vBelow[first];
            for (std::size_t i = first; i < std::min(first + fanOut, vBelow.size()); ++i) {
                range.minZ = std::min(range.minZ, vBelow[i].minZ);
                range.maxZ = std::max(range.maxZ, vBelow[i].maxZ);
            }
            vNodes.push_back(range);
        }
        vvLevels.push_back(std::move(vNodes));
    }
}

std::uint32_t HeightIndex::searchNumberOf(const Triangle2* pT, std::uint32_t near, std::ptrdiff_t guess) const
{
    // Between two triangles here there are at most as many others as fit into the memory between them.
    const auto from = static_cast<std::ptrdiff_t>(near);
    const auto to = std::clamp<std::ptrdiff_t>(guess, 0, static_cast<std::ptrdiff_t>(size()) - 1);
    const std::ptrdiff_t low = std::min(from, to), high = std::max(from, to);
    const auto end = vTriangles.begin() + high + 1;
    const auto it = std::lower_bound(vTriangles.begin() + low, end, pT, std::less<const Triangle2*>());
    return it != end && *it == pT ? static_cast<std::uint32_t>(it - vTriangles.begin()) : none;
}

/// Level by level, so that memory can be asked for ahead. Which children hold the height can't be predicted: no branches.
void HeightIndex::findAt(double height, Found& found) const
{
    found.size = 0;
    if (empty() || height < lowest || height > highest || std::isnan(height)) return;
    const float z = rounded(height);
    if (found.vNumbers.empty()) found.vNumbers.resize(1);
    found.vNumbers[0] = 0;
    found.size = 1;
    for (std::size_t level = vvLevels.size() - 1; level > 0; --level) {
        const std::vector<Range>& vRanges = vvLevels[level - 1];
        found.vParents.swap(found.vNumbers);
        const std::vector<std::uint32_t>& vParents = found.vParents;
        if (found.vNumbers.size() < found.size * fanOut) found.vNumbers.resize(found.size * fanOut);
        std::uint32_t* const aNumbers = found.vNumbers.data();
        std::size_t numFound = 0;
        for (std::size_t i = 0; i < found.size; ++i) {
            if (i + ahead < found.size) {
                const std::size_t next = vParents[i + ahead] * fanOut;
                for (std::size_t k = 0; k < fanOut; k += 8) // 64 bytes
                    __builtin_prefetch(&vRanges[std::min(next + k, vRanges.size() - 1)]);
            }
            const std::size_t first = vParents[i] * fanOut;
            const std::size_t end = std::min(first + fanOut, vRanges.size());
            for (std::size_t child = first; child < end; ++child) {
                aNumbers[numFound] = static_cast<std::uint32_t>(child);
                numFound += static_cast<std::size_t>(vRanges[child].holds(z));
            }
        }
        found.size = numFound;
    }
    if (vAlongCurve.empty()) return;
    for (std::size_t i = 0; i < found.size; ++i) found.vNumbers[i] = vAlongCurve[found.vNumbers[i]];
}

} // namespace ORBI_LUMO25D
