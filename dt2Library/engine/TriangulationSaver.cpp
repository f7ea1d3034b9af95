#include "engine/TriangulationSaver.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "geometry/finite.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t maxCount = static_cast<std::size_t>(std::numeric_limits<SavedIndices::Index>::max());

} // namespace

bool TriangulationSaver::fail(const char* what)
{
    error = what;
    return false;
}

bool TriangulationSaver::collectAll()
{
    const bool bOK = dt2.hasArea() ? collectMesh([](const Triangle2*) { return true; }) : collectWaiting();
    return bOK && collectSegments();
}

bool TriangulationSaver::addZones(bool bZonesOnly)
{
    if (vZones.size() > maxCount) return fail("there are too many zones for 32-bit counts");
    std::vector<std::vector<Edge2>> vvBorders(vZones.size());
    PoolMarks<Triangle2> marks(dt2.poolTriangles);
    std::vector<Triangle2*> vT;
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        if (vZones[i] == nullptr || !dt2.hasArea()) continue;
        vT.clear();
        vZones[i]->getTriangles(vT);
        getBorderEdges(dt2, vT, vvBorders[i]);
        for (const Triangle2* pT : vT) {
            marks[pT] = 1;
        }
    }
    if (bZonesOnly) {
        if (!collectMesh([&marks](const Triangle2* pT) { return marks[pT] != 0; }) || !collectSegments()) return false;
    }
    saved.vvZones.resize(vZones.size());
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        collectBorder(vvBorders[i], saved.vvZones[i]);
    }
    addBordersToSegments();
    return saved.vSegments.size() / 2 <= maxCount || fail("there are too many segments for 32-bit counts");
}

void TriangulationSaver::addBordersToSegments()
{
    std::vector<std::pair<Index, Index>> vEdges;
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        vEdges.emplace_back(saved.vSegments[i], saved.vSegments[i + 1]); // sorted
    }
    const auto numSegments = static_cast<std::ptrdiff_t>(vEdges.size());
    for (const std::vector<Index>& vZone : saved.vvZones) {
        for (std::size_t k = 0; k < vZone.size(); k += 2) {
            vEdges.push_back(std::minmax(vZone[k], vZone[k + 1]));
        }
    }
    std::sort(vEdges.begin() + numSegments, vEdges.end());
    std::inplace_merge(vEdges.begin(), vEdges.begin() + numSegments, vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    saved.vSegments.clear();
    for (const auto& [src, trg] : vEdges) {
        saved.vSegments.push_back(src);
        saved.vSegments.push_back(trg);
    }
}

void TriangulationSaver::collectBorder(const std::vector<Edge2>& vBorder, std::vector<Index>& vZone) const
{
    std::vector<std::pair<Index, Index>> vEdges;
    for (const Edge2& edge : vBorder) vEdges.emplace_back(numberOf(edge.getSrc()), numberOf(edge.getTrg()));
    std::sort(vEdges.begin(), vEdges.end());
    for (const auto& [src, trg] : vEdges) {
        vZone.push_back(src);
        vZone.push_back(trg);
    }
}

// ---- triangles and vertices -----------------------------------------------------------------------------------------

void TriangulationSaver::begin()
{
    numVertices = 0;
    numTriangles = 0;
    bFinite = true;
    aVertices = BlockArray<char>(dt2.vertexVault.numActive() * savedVertexSize);
    aNumbers = BlockArray<Index>(dt2.poolVertices.size());
    std::fill_n(aNumbers.data(), dt2.poolVertices.size(), -1);
}

template <class IsWanted>
bool TriangulationSaver::collectMesh(const IsWanted& isWanted)
{
    if (dt2.numberOfTriangles() > maxCount) return fail("there are too many triangles for 32-bit counts");
    if (dt2.vertexVault.numActive() > maxCount) return fail("there are too many vertices for 32-bit counts");
    begin();
    const auto forEachWanted = [this, &isWanted](const auto& f) {
        dt2.poolTriangles.forEach([&](const Triangle2* pT) {
            if (pT->corner(0) != nullptr && isWanted(pT)) f(pT);
        });
    };
    constexpr Index used = 0;
    forEachWanted([this](const Triangle2* pT) {
        for (int i = 0; i < 3; ++i) aNumbers[dt2.poolVertices.indexOf(pT->corner(i))] = used;
    });
    numberVertices();

    const BlockArray<Index> aUnsorted(3 * dt2.numberOfTriangles());
    Index* pOut = aUnsorted.data();
    forEachWanted([this, &pOut](const Triangle2* pT) {
        for (int i = 0; i < 3; ++i) *pOut++ = numberOf(pT->corner(i));
    });
    numTriangles = static_cast<std::size_t>(pOut - aUnsorted.data()) / 3;
    sortTriangles(aUnsorted.data());
    return bFinite || fail("a coordinate is not a finite number");
}

/// Numbers those that have any number, in the order of the pool.
void TriangulationSaver::numberVertices()
{
    dt2.poolVertices.forEachRun([this](const Point2* pFirst, std::size_t n) {
        Index* const aNumbersOfRun = aNumbers.data() + dt2.poolVertices.indexOf(pFirst);
        for (std::size_t i = 0; i < n; ++i) {
            if (aNumbersOfRun[i] >= 0) aNumbersOfRun[i] = addVertex(pFirst + i);
        }
    });
}

/// By their lowest vertices; those that have the same one stay in their order.
void TriangulationSaver::sortTriangles(const Index* aUnsorted)
{
    const auto lowest = [](const Index* c) { return static_cast<std::size_t>(std::min({c[0], c[1], c[2]})); };
    const Index* const pEnd = aUnsorted + 3 * numTriangles;
    std::vector<std::uint32_t> vPlaces(numVertices + 1, 0); // where the next triangle of each vertex goes
    for (const Index* c = aUnsorted; c != pEnd; c += 3) ++vPlaces[lowest(c) + 1];
    std::partial_sum(vPlaces.begin(), vPlaces.end(), vPlaces.begin());
    aCorners = BlockArray<Index>(3 * numTriangles);
    for (const Index* c = aUnsorted; c != pEnd; c += 3) {
        std::copy_n(c, 3, aCorners.data() + 3 * std::size_t(vPlaces[lowest(c)]++));
    }
}

/// Without area, there are vertices alone.
bool TriangulationSaver::collectWaiting()
{
    if (dt2.vertexVault.numActive() > maxCount) return fail("there are too many vertices for 32-bit counts");
    std::vector<Point2*> vWaiting;
    dt2.getVertexPointers(vWaiting);
    std::sort(vWaiting.begin(), vWaiting.end(), [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
    begin();
    for (const Point2* pVtx : vWaiting) {
        aNumbers[dt2.poolVertices.indexOf(pVtx)] = addVertex(pVtx);
    }
    return bFinite || fail("a coordinate is not a finite number");
}

/// Heights may have been changed to anything.
TriangulationSaver::Index TriangulationSaver::addVertex(const Point2* pVtx)
{
    bFinite = bFinite && isFinite25D(*pVtx);
    storeVertex(pVtx->x(), pVtx->y(), pVtx->z(), pVtx->getCustomIndex(),
                aVertices.data() + numVertices * savedVertexSize);
    return static_cast<Index>(numVertices++);
}

TriangulationSaver::Index TriangulationSaver::numberOf(const Point2* pVtx) const
{
    return aNumbers[dt2.poolVertices.indexOf(pVtx)];
}

// ---- segments -------------------------------------------------------------------------------------------------------

/// Alive segments that are edges of the triangles collected; those that wait without area.
bool TriangulationSaver::collectSegments()
{
    std::vector<ConstraintSegment2*> vCSegs;
    dt2.getAliveConstraintSegments(vCSegs);
    EdgeKeys keys(numVertices);
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        const Index src = numberOf(pCSeg->getSrc());
        const Index trg = numberOf(pCSeg->getTrg());
        if (src >= 0 && trg >= 0) keys.addUndirected(src, trg);
    }
    keys.sort();
    std::vector<char> vStands(keys.size(), dt2.hasArea() ? 0 : 1);
    for (std::size_t t = 0; keys.size() > 0 && t < numTriangles; ++t) {
        const Index* const c = aCorners.data() + 3 * t;
        if (keys.isEnd(c[0]) + keys.isEnd(c[1]) + keys.isEnd(c[2]) < 2) continue;
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t position = keys.findUndirected(c[k], c[k == 2 ? 0 : k + 1]);
            if (position != EdgeKeys::none) vStands[position] = 1;
        }
    }
    saved.vSegments.clear();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (vStands[i] == 0) continue;
        saved.vSegments.push_back(keys.src(i));
        saved.vSegments.push_back(keys.trg(i));
    }
    numSegmentsLeftOut = vCSegs.size() - saved.vSegments.size() / 2;
    return saved.vSegments.size() / 2 <= maxCount || fail("there are too many segments for 32-bit counts");
}

bool TriangulationSaver::write(const char* filename) const
{
    const SavedCounts counts{numVertices, saved.vSegments.size() / 2, numTriangles, saved.vvZones.size()};
    return writeTriangulationFile(filename, counts, aVertices.data(), aCorners.data(), saved);
}

} // namespace ORBI_LUMO25D
