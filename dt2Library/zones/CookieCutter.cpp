#include "zones/CookieCutter.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/RoundToNearest.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"
#include "zones/ZoneFlood.h"

#include "ConstraintGraph2.h"
#include "Zone2.h"

#include <algorithm>
#include <set>

namespace ORBI_LUMO25D
{

namespace
{

const char* const function = "Dt2::createZone_cookieCutter()";

/// The ends of the segments that lie outside of the hull, each once.
std::vector<Point2> endsOutside(Dt2& dt2, const std::vector<Segment2>& vSegments)
{
    std::vector<Point2> vEnds;
    for (const Segment2& segment : vSegments) {
        vEnds.push_back(segment.src);
        vEnds.push_back(segment.trg);
    }
    std::sort(vEnds.begin(), vEnds.end());
    vEnds.erase(std::unique(vEnds.begin(), vEnds.end()), vEnds.end());
    const auto isInside = [&dt2](const Point2& p) { return dt2.locate(p) != nullptr; };
    vEnds.erase(std::remove_if(vEnds.begin(), vEnds.end(), isInside), vEnds.end());
    return vEnds;
}

} // namespace

Zone2* CookieCutter::run()
{
    const RoundToNearest rounding;
    widen();
    if (!cut()) {
        msgWarning(function, "bad input polygon");
        return nullptr;
    }
    const std::vector<Triangle2*> vKept = keptTriangles();
    if (vKept.empty()) {
        msgWarning(function, "output domain empty");
        return nullptr;
    }
    return dt2.createZone(vKept)->convertToBoundedZone();
}

/// Takes in the corners outside of the hull, and keeps the old hull as constraints.
void CookieCutter::widen()
{
    const std::vector<Point2> vOutside = endsOutside(dt2, vPolygon);
    if (vOutside.empty()) return;
    dt2.getConvexHull(true, vHull);
    std::set<ConstraintMgr::VertexPair> sPairs;
    for (std::size_t i = 0; i < vHull.size(); ++i) {
        sPairs.emplace(vHull[i], vHull[(i + 1) % vHull.size()]);
    }
    vBorders.push_back(dt2.getConstraintMgr().createConstraint(sPairs, CIS_CONSTRAINED_DELAUNAY));
    dt2.insertVector(vOutside, nullptr);
}

/// Cuts the surface along the polygon; false when that gives no edge.
bool CookieCutter::cut()
{
    std::vector<ConstraintSegment2*> vCSegs;
    dt2.CUTT_cutTriangles(vPolygon, bProtectEdges, vCSegs);
    std::vector<Segment2> vPieces;
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        vPieces.emplace_back(*pCSeg->getSrc(), *pCSeg->getTrg());
    }
    if (vPieces.empty()) return false;
    vBorders.push_back(dt2.createConstraint(vPieces, CIS_CONSTRAINED_DELAUNAY, false));
    return vBorders.back() != nullptr;
}

// ---- regions --------------------------------------------------------------------------------------------------------

std::vector<Triangle2*> CookieCutter::trianglesAtBorders() const
{
    std::vector<Triangle2*> vT;
    for (const ConstraintGraph2* pGraph : vBorders) {
        std::vector<ConstraintSegment2*> vChain;
        pGraph->getChildConstraintSegments(vChain);
        for (const ConstraintSegment2* pCSeg : vChain) {
            vT.push_back(dt2.getAdjacentTriangle(pCSeg->getSrc(), pCSeg->getTrg()));
            vT.push_back(dt2.getAdjacentTriangle(pCSeg->getTrg(), pCSeg->getSrc()));
        }
    }
    vT.erase(std::remove(vT.begin(), vT.end(), nullptr), vT.end());
    return vT;
}

std::vector<Triangle2*> CookieCutter::keptTriangles() const
{
    constexpr std::uint8_t seen = 1;
    PoolMarks<Triangle2> marks(dt2.poolTriangles);
    ZoneFlood flood(dt2);
    flood.stopAt(vBorders);
    std::vector<Triangle2*> vKept;
    for (Triangle2* pStart : trianglesAtBorders()) {
        if (marks[pStart] == seen) continue;
        std::vector<Triangle2*> vRegion;
        flood.run({pStart}, vRegion);
        for (const Triangle2* pT : vRegion) {
            marks[pT] = seen;
        }
        if (isKept(vRegion)) vKept.insert(vKept.end(), vRegion.begin(), vRegion.end());
    }
    return vKept;
}

/// By the barycentre of the largest triangle, which rounding leaves far from all borders unless the region is a sliver.
bool CookieCutter::isKept(const std::vector<Triangle2*>& vRegion) const
{
    const Triangle2* const pLargest =
        *std::max_element(vRegion.begin(), vRegion.end(),
                          [](const Triangle2* pA, const Triangle2* pB) { return pA->getArea2D() < pB->getArea2D(); });
    const Point2 p = pLargest->getBarycenter();
    return isInPolygon(p) && isInHull(p);
}

/// Counts the sides to the left of the point (even-odd rule).
bool CookieCutter::isInPolygon(const Point2& p) const
{
    bool bInside = false;
    for (const Segment2& side : vPolygon) {
        if ((side.src.y() > p.y()) == (side.trg.y() > p.y())) continue;
        const bool bUp = side.trg.y() > side.src.y();
        const Orientation2 orientation = dt2.orbiTest.orientationInRange(&side.src, &side.trg, &p);
        if (orientation == (bUp ? ORIENTATION2_CW : ORIENTATION2_CCW)) bInside = !bInside;
    }
    return bInside;
}

bool CookieCutter::isInHull(const Point2& p) const
{
    for (std::size_t i = 0; i < vHull.size(); ++i) {
        const Point2* const pNext = vHull[(i + 1) % vHull.size()];
        if (dt2.orbiTest.orientationInRange(vHull[i], pNext, &p) == ORIENTATION2_CW) return false;
    }
    return true;
}

} // namespace ORBI_LUMO25D
