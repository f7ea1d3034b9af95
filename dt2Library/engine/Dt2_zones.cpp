// Zones: the factories, and what they need of the engine.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"
#include "zones/CookieCutter.h"
#include "zones/ZoneFlood.h"
#include "zones/ZoneQuality.h"
#include "zones/triangleSets.h"

#include "ConstraintGraph2.h"
#include "Edge2.h"
#include "Segment2.h"
#include "Zone2.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>

namespace ORBI_LUMO25D
{

// ---- factories on graphs --------------------------------------------------------------------------------------------

Zone2* Dt2::enterZone(std::unique_ptr<Zone2> pZone)
{
    vZones.push_back(std::move(pZone));
    return vZones.back().get();
}

namespace
{

/// Graphs of another triangulation would be looked up in this one's marks.
bool areGraphsOf(const Dt2& dt2, const std::vector<ConstraintGraph2*>& vGraphs)
{
    const auto isNull = [](const ConstraintGraph2* pGraph) { return pGraph == nullptr; };
    if (std::any_of(vGraphs.begin(), vGraphs.end(), isNull)) {
        msgError("Dt2::createZone()", "One of the constraint graphs is NULL. Returning NULL");
        return false;
    }
    const auto isForeign = [&dt2](const ConstraintGraph2* pGraph) {
        return pGraph->getDelaunayTriangulation() != &dt2;
    };
    if (std::any_of(vGraphs.begin(), vGraphs.end(), isForeign)) {
        msgError("Dt2::createZone()", "A constraint graph belongs to another triangulation. Returning NULL");
        return false;
    }
    return true;
}

} // namespace

Zone2* Dt2::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc)
{
    if (!hasArea()) {
        msgWarning("Dt2::createZone", "The triangulation has no area yet. Returning NULL");
        return nullptr;
    }
    const bool bNoGraph = zoneLoc == ZL_GLOBAL || (zoneLoc >= ZL_RESULT_UNION && zoneLoc <= ZL_RESULT_SYM_DIFFERENCE);
    if (bNoGraph) {
        LUMO_CHECK(pConstraintGraph == nullptr, "pConstraintGraph==NULL");
        return enterZone(std::make_unique<Zone2>(this, zoneLoc));
    }
    if (pConstraintGraph == nullptr) {
        msgError("Dt::createZone()", "pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. Returning NULL");
        return nullptr;
    }
    if (!areGraphsOf(*this, {pConstraintGraph})) return nullptr;
    if (!pConstraintGraph->isOriented()) {
        msgWarning("Dt2::createZone()", "The constraint graph is not oriented, returning NULL");
        return nullptr;
    }
    return enterZone(std::make_unique<Zone2>(this, zoneLoc, pConstraintGraph));
}

namespace
{

bool isAccepted(bool bAccepted, const char* locations)
{
    if (!bAccepted) {
        msgError("Dt2::createZone()", std::string("This overloaded version of createZone accepts only ") + locations +
                                          " as zoneLocation. Returning NULL");
    }
    return bAccepted;
}

} // namespace

Zone2* Dt2::createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc)
{
    const bool bAccepted = zoneLoc == ZL_INSIDE || zoneLoc == ZL_OUTSIDE;
    if (!isAccepted(bAccepted, "ZL_INSIDE and ZL_OUTSIDE") || !areGraphsOf(*this, vConstraintGraphs)) return nullptr;
    return enterZone(std::make_unique<Zone2>(this, zoneLoc, vConstraintGraphs));
}

Zone2* Dt2::createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                       const Point2& startPoint)
{
    if (!isAccepted(zoneLoc == ZL_GROW, "ZL_GROW") || !areGraphsOf(*this, vConstraintGraphs)) return nullptr;
    return enterZone(std::make_unique<Zone2>(this, vConstraintGraphs, zoneLoc, std::vector<Point2>{startPoint}));
}

Zone2* Dt2::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint)
{
    return createZone(std::vector<ConstraintGraph2*>{pConstraintGraph}, zoneLoc, startPoint);
}

Zone2* Dt2::createZone(const std::vector<Edge2>& vEdges, ZoneLocation zoneLoc)
{
    if (!isAccepted(zoneLoc == ZL_BOUNDED, "ZL_BOUNDED")) return nullptr;
    // Directed as the edges are, so that holes and parts that lie apart keep their sides.
    std::set<ConstraintMgr::VertexPair> sPairs;
    for (const Edge2& edge : vEdges) {
        sPairs.emplace(edge.getSrc(), edge.getTrg());
    }
    ConstraintGraph2* const pGraph = pConstraintMgr->createConstraint(sPairs, CIS_CONSTRAINED_DELAUNAY);
    return createZone(pGraph, ZL_BOUNDED);
}

void Dt2::deleteZone(Zone2* pZone)
{
    // What was made last is deleted first, mostly.
    const auto it = std::find_if(vZones.rbegin(), vZones.rend(),
                                 [pZone](const std::unique_ptr<Zone2>& pOwn) { return pOwn.get() == pZone; });
    if (it == vZones.rend()) {
        msgWarning("Dt2::deleteZone(..)", "trying to delete a non-existing zone");
        return;
    }
    vZones.erase(std::next(it).base());
}

// ---- factory on triangles -------------------------------------------------------------------------------------------

namespace
{

/// Of the barycentres that are strictly inside of their triangles, in spite of rounding, the leftmost one (of several, the
/// lowest): a choice that doesn't depend on the order of triangles. False when there is none, after telling so.
bool findStartPoint(const OrbiTest& orbiTest, const std::vector<Triangle2*>& vComponent, Point2& startPoint)
{
    bool bFound = false;
    for (const Triangle2* pT : vComponent) {
        const Point2 p = pT->getBarycenter();
        if (bFound && !(p < startPoint)) continue;
        bool bInside = true;
        for (int i = 0; i < 3; ++i) {
            bInside = bInside && orbiTest.orientationInRange(pT->corner(incIndexBy1(i)), pT->corner(incIndexBy2(i)),
                                                             &p) == ORIENTATION2_CCW;
        }
        if (!bInside) continue;
        startPoint = p;
        bFound = true;
    }
    if (bFound) return true;
    msgWarning("Dt2::createZone()", "A connected component of the zone is almost degenerate:");
    for (const Triangle2* pT : vComponent) {
        std::cout << "Unable to handle the triangle " << *pT << '\n';
    }
    msgError("Dt2::createZone", "An almost degenerate part of the zone has no start point for zone growing!");
    return false;
}

/// The triangles of the triangulation; others are warned about.
std::vector<Triangle2*> ownTriangles(const Dt2& dt2, const std::vector<Triangle2*>& vTriangles)
{
    std::vector<Triangle2*> vT;
    std::copy_if(vTriangles.begin(), vTriangles.end(), std::back_inserter(vT),
                 [&dt2](const Triangle2* pT) { return dt2.isAliveTriangle(pT); });
    if (vT.size() < vTriangles.size()) {
        msgWarning("Dt2::createZone()", std::to_string(vTriangles.size() - vT.size()) +
                                            " triangle(s) ignored: they do not belong to the triangulation");
    }
    return vT;
}

/// The border of a set of triangles, by place: triangles mostly come in the order of their addresses, another one in each
/// run.
std::vector<Segment2> sortedBorder(const Dt2& dt2, const std::vector<Triangle2*>& vT)
{
    std::vector<Edge2> vEdges;
    getBorderEdges(dt2, vT, vEdges);
    std::vector<Segment2> vSegments;
    vSegments.reserve(vEdges.size());
    for (const Edge2& edge : vEdges) {
        vSegments.emplace_back(*edge.getSrc(), *edge.getTrg());
    }
    std::sort(vSegments.begin(), vSegments.end(),
              [](const Segment2& a, const Segment2& b) { return Func_compareSegment()(&a, &b); });
    return vSegments;
}

} // namespace

Zone2* Dt2::createZone(const std::vector<Triangle2*>& vTriangles)
{
    const RoundToNearest rounding;
    const std::vector<Triangle2*> vT = ownTriangles(*this, vTriangles);
    std::vector<std::vector<Triangle2*>> vvT;
    getConnectedComponents(*this, vT, vvT);
    std::vector<Point2> vStartPoints;
    for (const std::vector<Triangle2*>& vComponent : vvT) {
        Point2 startPoint;
        if (findStartPoint(orbiTest, vComponent, startPoint)) vStartPoints.push_back(startPoint);
    }
    std::sort(vStartPoints.begin(), vStartPoints.end());
    std::vector<ConstraintGraph2*> vGraphs;
    if (ConstraintGraph2* const pGraph = createConstraint(sortedBorder(*this, vT), CIS_CONSTRAINED_DELAUNAY, true)) {
        vGraphs.push_back(pGraph);
    }
    return enterZone(std::make_unique<Zone2>(this, vGraphs, ZL_GROW, vStartPoints));
}

// ---- growing --------------------------------------------------------------------------------------------------------

void Dt2::growZoneAreas(const std::vector<ConstraintGraph2*>& vConstraintGraphs,
                        const std::vector<Point2>& vStartPoints, std::vector<Triangle2*>& vOut)
{
    if (!hasArea()) return;
    ZoneFlood flood(*this);
    flood.stopAt(vConstraintGraphs);
    for (const Point2& startPoint : vStartPoints) {
        Triangle2* const pT = locate(startPoint);
        if (pT == nullptr) {
            msgWarning("growZoneArea()", "pVtx is outside the convex hull of the triangulation, no triangles returned");
        } else {
            flood.run({pT}, vOut);
        }
    }
}

Zone2* Dt2::createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bProtectEdges)
{
    if (!hasArea()) {
        msgWarning("Dt2::createZone_cookieCutter()", "The triangulation has no area yet. Returning NULL");
        return nullptr;
    }
    return isSimplePolygon(vSegments) ? CookieCutter(*this, vSegments, bProtectEdges).run() : nullptr;
}

// ---- quality --------------------------------------------------------------------------------------------------------

bool Dt2::checkZoneQuality(Zone2* pZone, double minAngle, const char* zoneName)
{
    const std::string text = zoneName == nullptr ? "" : zoneName;
    if (minAngle == -999.0) pZone->debug((text + ".ps").c_str());
    if (minAngle == -1000.0) {
        pConstraintMgr->writeConstraintsBIN(text.c_str());
        return true;
    }
    applyConstraintsAndZones();
    const ZoneQuality quality(*this, *pZone, text);
    if (minAngle == std::numeric_limits<double>::max()) return quality.checkGrowFactor();
    if (minAngle == -500.0) return quality.checkHeightAspect();
    return quality.checkAspectAndAngle(minAngle);
}

} // namespace ORBI_LUMO25D
