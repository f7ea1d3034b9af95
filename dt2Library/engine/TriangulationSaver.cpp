#include "engine/TriangulationSaver.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t maxCount = static_cast<std::size_t>(std::numeric_limits<SavedTriangulation::Index>::max());

} // namespace

bool TriangulationSaver::fail(const char* what)
{
    error = what;
    return false;
}

void TriangulationSaver::reset()
{
    saved = SavedTriangulation();
    vNumbers.assign(dt2.poolVertices.size(), -1);
    vvBorders.assign(vZones.size(), {});
    numSegmentsLeftOut = 0;
}

bool TriangulationSaver::allSegmentsStand()
{
    if (!dt2.hasArea() || dt2.getConstraintMgr().empty()) return true;
    reset();
    std::vector<Triangle2*> vT;
    dt2.getTrianglePointers(vT);
    if (!numberTriangles(vT)) return true; // collect() will tell
    collectSegments(false);
    return numSegmentsLeftOut == 0;
}

bool TriangulationSaver::collect(bool bZonesOnly)
{
    reset();
    if (vZones.size() > maxCount) return fail("there are too many zones for 32-bit counts");
    if (!(dt2.hasArea() ? collectMesh(bZonesOnly) : collectWaiting())) return false;
    collectZones();
    collectSegments(bZonesOnly);
    return saved.vSegments.size() / 2 <= maxCount || fail("there are too many segments for 32-bit counts");
}

// ---- triangles and vertices -----------------------------------------------------------------------------------------

bool TriangulationSaver::collectMesh(bool bZonesOnly)
{
    std::vector<Triangle2*> vT;
    dt2.getTrianglePointers(vT);
    PoolMarks<Triangle2> marks(dt2.poolTriangles);
    std::vector<Triangle2*> vZone;
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        if (vZones[i] == nullptr) continue;
        vZone.clear();
        vZones[i]->getTriangles(vZone);
        getBorderEdges(dt2, vZone, vvBorders[i]);
        if (!bZonesOnly) continue;
        for (const Triangle2* pT : vZone) {
            marks[pT] = 1;
        }
    }
    if (bZonesOnly) {
        vT.erase(std::remove_if(vT.begin(), vT.end(), [&marks](const Triangle2* pT) { return marks[pT] == 0; }),
                 vT.end());
    }
    return numberTriangles(vT);
}

bool TriangulationSaver::numberTriangles(const std::vector<Triangle2*>& vT)
{
    if (vT.size() > maxCount) return fail("there are too many triangles for 32-bit counts");
    saved.vVertices.reserve(std::min(dt2.vertexVault.numActive(), 3 * vT.size()));
    saved.vTriangles.resize(3 * vT.size());
    Index* pOut = saved.vTriangles.data();
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = pT->corner(i);
            Index& number = vNumbers[dt2.poolVertices.indexOf(pVtx)];
            if (number < 0) {
                number = static_cast<Index>(saved.vVertices.size());
                if (!addVertex(pVtx)) return false;
            }
            *pOut++ = number;
        }
    }
    return true;
}

/// Without area, there are vertices alone.
bool TriangulationSaver::collectWaiting()
{
    std::vector<Point2*> vVertices;
    dt2.getVertexPointers(vVertices);
    std::sort(vVertices.begin(), vVertices.end(), [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
    for (const Point2* pVtx : vVertices) {
        vNumbers[dt2.poolVertices.indexOf(pVtx)] = static_cast<Index>(saved.vVertices.size());
        if (!addVertex(pVtx)) return false;
    }
    return true;
}

/// Heights may have been changed to anything.
bool TriangulationSaver::addVertex(const Point2* pVtx)
{
    if (saved.vVertices.size() == maxCount) return fail("there are too many vertices for 32-bit counts");
    saved.vVertices.push_back(*pVtx);
    return (std::isfinite(pVtx->x()) && std::isfinite(pVtx->y()) && std::isfinite(pVtx->z())) ||
           fail("a coordinate is not a finite number");
}

TriangulationSaver::Index TriangulationSaver::numberOf(const Point2* pVtx) const
{
    return vNumbers[dt2.poolVertices.indexOf(pVtx)];
}

// ---- zones and segments ---------------------------------------------------------------------------------------------

void TriangulationSaver::collectZones()
{
    saved.vvZones.resize(vZones.size());
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        std::vector<Edge2>& vBorder = vvBorders[i];
        const auto place = [this](const Edge2& e) {
            return std::make_pair(dt2.poolTriangles.indexOf(e.getTriangle()), e.getIndex());
        };
        std::sort(vBorder.begin(), vBorder.end(),
                  [&place](const Edge2& a, const Edge2& b) { return place(a) < place(b); });
        for (const Edge2& edge : vBorder) {
            saved.vvZones[i].push_back(numberOf(edge.getSrc()));
            saved.vvZones[i].push_back(numberOf(edge.getTrg()));
        }
    }
}

void TriangulationSaver::collectSegments(bool bZonesOnly)
{
    std::vector<ConstraintSegment2*> vCSegs;
    dt2.getAliveConstraintSegments(vCSegs);
    EdgeKeys keys(saved.vVertices.size());
    std::size_t numWithoutVertices = 0;
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        const Index src = numberOf(pCSeg->getSrc());
        const Index trg = numberOf(pCSeg->getTrg());
        if (src < 0 || trg < 0) {
            ++numWithoutVertices;
        } else {
            keys.addUndirected(src, trg);
        }
    }
    for (const std::vector<Index>& vZone : saved.vvZones) {
        for (std::size_t i = 0; i < vZone.size(); i += 2) {
            keys.addUndirected(vZone[i], vZone[i + 1]);
        }
    }
    keys.sort();
    std::vector<bool> vStands(keys.size(), !dt2.hasArea());
    for (std::size_t i = 0; keys.size() > 0 && i < saved.vTriangles.size(); i += 3) {
        const Index* const t = &saved.vTriangles[i];
        for (const auto& [a, b] :
             {std::make_pair(t[0], t[1]), std::make_pair(t[1], t[2]), std::make_pair(t[2], t[0])}) {
            const std::size_t position = keys.findUndirected(a, b);
            if (position != EdgeKeys::none) vStands[position] = true;
        }
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!vStands[i]) continue;
        saved.vSegments.push_back(keys.src(i));
        saved.vSegments.push_back(keys.trg(i));
    }
    // Outside of the zones, segments have nothing to do with what is saved.
    if (!bZonesOnly) numSegmentsLeftOut = numWithoutVertices + keys.size() - saved.vSegments.size() / 2;
}

} // namespace ORBI_LUMO25D
