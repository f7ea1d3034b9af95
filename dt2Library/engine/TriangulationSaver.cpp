#include "engine/TriangulationSaver.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cmath>
#include <limits>
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
    EdgeKeys segments(vVertices.size());
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        segments.addUndirected(saved.vSegments[i], saved.vSegments[i + 1]);
    }
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        collectBorder(vvBorders[i], saved.vvZones[i]);
        for (std::size_t k = 0; k < saved.vvZones[i].size(); k += 2) {
            segments.addUndirected(saved.vvZones[i][k], saved.vvZones[i][k + 1]);
        }
    }
    segments.sort();
    if (segments.size() > maxCount) return fail("there are too many segments for 32-bit counts");
    saved.vSegments.clear();
    for (std::size_t i = 0; i < segments.size(); ++i) {
        saved.vSegments.push_back(segments.src(i));
        saved.vSegments.push_back(segments.trg(i));
    }
    return true;
}

/// Brings the border edges into the order of their triangles.
void TriangulationSaver::collectBorder(const std::vector<Edge2>& vBorder, std::vector<Index>& vZone) const
{
    using Place = std::pair<std::size_t, int>;
    std::vector<std::pair<Place, const Edge2*>> vEdges;
    for (const Edge2& edge : vBorder) {
        vEdges.emplace_back(Place(dt2.poolTriangles.indexOf(edge.getTriangle()), edge.getIndex()), &edge);
    }
    std::sort(vEdges.begin(), vEdges.end());
    for (const auto& [place, pEdge] : vEdges) {
        vZone.push_back(numberOf(pEdge->getSrc()));
        vZone.push_back(numberOf(pEdge->getTrg()));
    }
}

// ---- triangles and vertices -----------------------------------------------------------------------------------------

template <class IsWanted>
bool TriangulationSaver::collectMesh(const IsWanted& isWanted)
{
    const std::size_t numTriangles = dt2.numberOfTriangles();
    if (numTriangles > maxCount) return fail("there are too many triangles for 32-bit counts");
    vVertices.clear();
    vVertices.reserve(dt2.vertexVault.numActive());
    vNumbers.assign(dt2.poolVertices.size(), -1);
    saved.vTriangles.resize(3 * numTriangles);
    Index* pOut = saved.vTriangles.data();
    bool bOK = true;
    dt2.poolTriangles.forEach([&](const Triangle2* pT) {
        if (pT->corner(0) == nullptr || !isWanted(pT)) return;
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = pT->corner(i);
            Index& number = vNumbers[dt2.poolVertices.indexOf(pVtx)];
            if (number < 0) {
                number = static_cast<Index>(vVertices.size());
                bOK = addVertex(pVtx) && bOK;
            }
            *pOut++ = number;
        }
    });
    saved.vTriangles.resize(static_cast<std::size_t>(pOut - saved.vTriangles.data()));
    return bOK;
}

/// Without area, there are vertices alone.
bool TriangulationSaver::collectWaiting()
{
    std::vector<Point2*> vWaiting;
    dt2.getVertexPointers(vWaiting);
    std::sort(vWaiting.begin(), vWaiting.end(), [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
    vVertices.clear();
    vNumbers.assign(dt2.poolVertices.size(), -1);
    for (const Point2* pVtx : vWaiting) {
        vNumbers[dt2.poolVertices.indexOf(pVtx)] = static_cast<Index>(vVertices.size());
        if (!addVertex(pVtx)) return false;
    }
    return true;
}

/// Heights may have been changed to anything.
bool TriangulationSaver::addVertex(const Point2* pVtx)
{
    if (vVertices.size() >= maxCount) return fail("there are too many vertices for 32-bit counts");
    vVertices.push_back(pVtx);
    return (std::isfinite(pVtx->x()) && std::isfinite(pVtx->y()) && std::isfinite(pVtx->z())) ||
           fail("a coordinate is not a finite number");
}

TriangulationSaver::Index TriangulationSaver::numberOf(const Point2* pVtx) const
{
    return vNumbers[dt2.poolVertices.indexOf(pVtx)];
}

// ---- segments -------------------------------------------------------------------------------------------------------

/// Alive segments that are edges of the triangles collected; those that wait without area.
bool TriangulationSaver::collectSegments()
{
    std::vector<ConstraintSegment2*> vCSegs;
    dt2.getAliveConstraintSegments(vCSegs);
    EdgeKeys keys(vVertices.size());
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        const Index src = numberOf(pCSeg->getSrc());
        const Index trg = numberOf(pCSeg->getTrg());
        if (src >= 0 && trg >= 0) keys.addUndirected(src, trg);
    }
    keys.sort();
    std::vector<bool> vStands(keys.size(), !dt2.hasArea());
    for (std::size_t i = 0; keys.size() > 0 && i < saved.vTriangles.size(); i += 3) {
        const Index* const t = &saved.vTriangles[i];
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t position = keys.findUndirected(t[k], t[k == 2 ? 0 : k + 1]);
            if (position != EdgeKeys::none) vStands[position] = true;
        }
    }
    saved.vSegments.clear();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!vStands[i]) continue;
        saved.vSegments.push_back(keys.src(i));
        saved.vSegments.push_back(keys.trg(i));
    }
    numSegmentsLeftOut = vCSegs.size() - saved.vSegments.size() / 2;
    return saved.vSegments.size() / 2 <= maxCount || fail("there are too many segments for 32-bit counts");
}

} // namespace ORBI_LUMO25D
