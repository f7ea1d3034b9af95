// The steps that make one constraint segment stand: what to split where. The walk and the zone are in
// ConstraintInserter_zone.cpp, Delaunay edges in ConstraintInserter_conforming.cpp.

#include "engine/ConstraintInserter.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/check.h"
#include "support/messages.h"

#include <cmath>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

ConstraintInserter::ConstraintInserter(Dt2& dt2_) : dt2(dt2_), manager(dt2_.getConstraintMgr()), orbiTest(dt2_.orbiTest)
{
}

// ---- one segment ----------------------------------------------------------------------------------------------------

void ConstraintInserter::beginRun()
{
    numConformingSplitsLeft = 10000 + 8 * (dt2.vertexVault.numActive() + manager.numSegments());
    bLeftAsItIs = false;
}

void ConstraintInserter::endRun()
{
    if (!bLeftAsItIs) return;
    msgWarning("Dt2::conformingInsertion()",
               "a part of a constraint can't be made a Delaunay edge by splits, left as it is");
}

bool ConstraintInserter::establish(ConstraintSegment2* pCSeg)
{
    LUMO_CHECK(pCSeg->isAlive(), "pInitialCSeg->isAlive()");
    allowSteps();
    vWork.assign(1, pCSeg);
    return workOff();
}

/// Every vertex and every other segment may be in the way once, and each split leaves two parts.
void ConstraintInserter::allowSteps()
{
    numStepsLeft = 10000 + 4 * (dt2.vertexVault.numActive() + manager.numSegments());
}

bool ConstraintInserter::workOff()
{
    while (!vWork.empty()) {
        ConstraintSegment2* const pPart = vWork.back();
        vWork.pop_back();
        // The parts of one that is dead by now were established, or put on this list, when it was split.
        if (pPart->isAlive() && !establishAsEdge(pPart)) {
            vWork.clear();
            return false;
        }
    }
    return true;
}

/// A step towards an edge; what remains to be done goes on the work list.
bool ConstraintInserter::establishAsEdge(ConstraintSegment2* pCSeg)
{
    if (numStepsLeft == 0) return false;
    --numStepsLeft;
    setTrack(pCSeg);
    const Way way = findWay();
    switch (way.kind) {
    case Way::Stands:
        return !isConforming(pCSeg) || makeConforming(pCSeg);
    case Way::Vertex:
        return splitAtVertex(pCSeg, sharedSplit(way.pVertex));
    case Way::Crossing:
        return splitAtCrossing(pCSeg, way);
    default:
        rebuildZone();
        return !isConforming(pCSeg) || makeConforming(pCSeg);
    }
}

bool ConstraintInserter::isConforming(const ConstraintSegment2* pCSeg)
{
    return pCSeg->getCIS() != CIS_CONSTRAINED_DELAUNAY;
}

/// The parts of a split segment go on the work list, so that the one that was walked along first comes next.
void ConstraintInserter::pushParts(ConstraintSegment2* pCSeg)
{
    const bool bForward = *pCSeg->getSrc() < *pCSeg->getTrg();
    ConstraintSegment2* pFirst = pCSeg->aChildren[bForward ? 0 : 1];
    ConstraintSegment2* pSecond = pCSeg->aChildren[bForward ? 1 : 0];
    vWork.push_back(pSecond);
    vWork.push_back(pFirst);
}

bool ConstraintInserter::splitAtVertex(ConstraintSegment2* pCSeg, Point2* pVtx)
{
    if (!pCSeg->split_combinatorialOnly(pVtx)) return false;
    pushParts(pCSeg);
    return true;
}

/// Splits a segment that stands at a vertex that does not lie on its edge.
bool ConstraintInserter::splitOther(ConstraintSegment2* pOther, Point2* pVtx)
{
    if (!pOther->split_combinatorialOnly(pVtx)) return false;
    repairReleasedEdge(pOther->getSrc(), pOther->getTrg());
    pushParts(pOther);
    return true;
}

/// Another constraint is in the way. Where the crossing is next to an end of one of the two, that end splits the other;
/// else both are split at a new vertex.
bool ConstraintInserter::splitAtCrossing(ConstraintSegment2* pCSeg, const Way& way)
{
    Point2* const c0 = way.pT->corner(L::next(way.ith));
    Point2* const c1 = way.pT->corner(L::prev(way.ith));
    ConstraintSegment2* const pOther = way.pOther;
    Point2* const a = track.a;
    Point2* const b = track.b;
    Point2 crossing;
    if (!crossingPoint(track, *pOther, crossing)) return false;

    // An end within half the distance in both coordinates is within the whole distance of the other carrier.
    const double mySnap = 0.5 * track.snap;
    const double othersSnap = 0.5 * snapDistance(*pOther->pCarrier->getSrc(), *pOther->pCarrier->getTrg());
    // A vertex inside a segment makes both parts shorter. Between neighbouring doubles there may be none that is, and
    // then the one that the crossing is equal to has to do.
    for (Point2* c : {c0, c1}) {
        if (crossing == *c || (isWithinBox(crossing, *c, mySnap) && isInside(*c, *a, *b)))
            return splitAtVertex(pCSeg, c);
    }
    for (Point2* v : {a, b}) {
        if (crossing == *v || (isWithinBox(crossing, *v, othersSnap) && isInside(*v, *c0, *c1))) {
            vWork.push_back(pCSeg);
            return splitOther(pOther, v);
        }
    }
    Point2* const pNew = insertOnEdge(pOther, pCSeg, crossing, way.pT, way.ith);
    if (pNew == nullptr) return false;
    if (pNew != a && pNew != b) return splitAtVertex(pCSeg, pNew);
    vWork.push_back(pCSeg);
    return true;
}

/// Where the track crosses another constraint that stands in its way, with the mean of both heights. On the carriers if
/// that is a point of both parts, else on the parts themselves. False if there are no such doubles.
bool ConstraintInserter::crossingPoint(const Track& t, const ConstraintSegment2& other, Point2& crossing) const
{
    const Point2& a = *t.a;
    const Point2& b = *t.b;
    const Point2& c = *other.getSrc();
    const Point2& d = *other.getTrg();
    const auto crossLines = [this, &crossing](const Point2& p, const Point2& q, const Point2& r, const Point2& s) {
        double x = 0.0;
        double y = 0.0;
        // Directed by coordinates: the last place must not depend on addresses.
        const bool bInOrder = r < s;
        if (!roundedCrossing(orbiTest, p, q, bInOrder ? r : s, bInOrder ? s : r, x, y)) return false;
        crossing.setCoords(x, y, 0.0);
        return true;
    };
    const auto isOnBoth = [&a, &b, &c, &d, &crossing]() {
        return isInRange2D(crossing, a, b) && isInRange2D(crossing, c, d);
    };
    const ConstraintSegment2& mine = *t.pCarrier;
    const ConstraintSegment2& others = *other.pCarrier;
    const bool bForward = *mine.getSrc() < *mine.getTrg();
    const Point2& p = bForward ? *mine.getSrc() : *mine.getTrg();
    const Point2& q = bForward ? *mine.getTrg() : *mine.getSrc();
    if (&mine == &others || !crossLines(p, q, *others.getSrc(), *others.getTrg()) || !isOnBoth()) {
        if (!crossLines(a, b, c, d)) return false;
        if (!isOnBoth()) {
            msgWarning("Dt2::treatConstraintZone()",
                       "intersection point of two constraints has bad numerica accuracy!");
        }
    }
    const double z0 = heightOnSegment(a, b, crossing.x(), crossing.y());
    const double z1 = heightOnSegment(c, d, crossing.x(), crossing.y());
    crossing.setHeight(z0 / 2.0 + z1 / 2.0);
    return true;
}

// ---- new vertices ---------------------------------------------------------------------------------------------------

/// Inserts a point that lies on a standing constraint, opposite corner ith of pT, but for rounding, and splits the
/// constraint there; its parts stand or are on the work list. pOther, if given, crosses it there and is about to be split
/// too. Returns the vertex, null when the constraint can't be split.
Point2* ConstraintInserter::insertOnEdge(ConstraintSegment2* pOnEdge, ConstraintSegment2* pOther, const Point2& p,
                                         Triangle2* pT, int ith)
{
    if (canSplit(p, pT, ith)) {
        Point2* const pNew = dt2.newVertexInVault(p);
        manager.prefetch(pNew);
        dt2.splitEdgeAt(pNew, pT, ith);
        const bool bOK = pOnEdge->split_combinatorialOnly(pNew);
        LUMO_CHECK(bOK, "bOK");
        return pNew;
    }
    // Rounding has moved the point into a triangle beyond: the edge is released, the point goes in like any other, and
    // the parts are established anew.
    Point2* pNew = nullptr;
    {
        // The other one must not be in force either: flips may make it an edge that nothing would release later.
        const ConstraintMgr::OutOfForce outOfForce(*pOnEdge);
        const ConstraintMgr::OutOfForce otherOutOfForce(pOther == nullptr ? *pOnEdge : *pOther);
        repairReleasedEdge(pOnEdge->getSrc(), pOnEdge->getTrg());
        pNew = dt2.insertNear(p, pOnEdge->getSrc()->getIncidentTriangle());
    }
    if (pNew == pOnEdge->getSrc() || pNew == pOnEdge->getTrg() || !pOnEdge->split_combinatorialOnly(pNew)) {
        vWork.push_back(pOnEdge);
        return nullptr;
    }
    pushParts(pOnEdge);
    return pNew;
}

Point2* ConstraintInserter::splitStanding(ConstraintSegment2* pCSeg, const Point2& p, Triangle2* pT, int ith)
{
    allowSteps();
    Point2* const pNew = insertOnEdge(pCSeg, nullptr, p, pT, ith);
    workOff();
    return pNew;
}

/// Whether an edge can be split at a point that may be off the edge by rounding. It must see the four corners around, and
/// lie in the circles of both triangles, as a point on the edge does: then all edges to it are Delaunay.
bool ConstraintInserter::canSplit(const Point2& p, const Triangle2* pT, int ith) const
{
    const Triangle2* const pN = pT->neighbor(ith);
    if (pN == nullptr) return false;
    const Point2* const aQuad[4] = {pT->corner(ith), pT->corner(L::next(ith)), pN->corner(L::indexOf(pN, pT)),
                                    pT->corner(L::prev(ith))};
    for (int i = 0; i < 4; ++i) {
        if (orbiTest.orientationInRange(aQuad[i], aQuad[(i + 1) % 4], &p) != ORIENTATION2_CCW) return false;
    }
    return dt2.isInCircle(pT, &p) && dt2.isInCircle(pN, &p);
}

// ---- out of force ---------------------------------------------------------------------------------------------------

void ConstraintInserter::repairReleasedEdge(Point2* pA, Point2* pB)
{
    if (pA->getIncidentTriangle() == nullptr || pB->getIncidentTriangle() == nullptr) return;
    Triangle2* const pT = dt2.getAdjacentTriangle(pA, pB);
    if (pT == nullptr) return; // no edge, or one on the hull that runs the other way
    const int ith = pT->getIntraTriangleIndex(pA, pB);
    if (pT->neighbor(ith) == nullptr) return;
    vCheck.push_back({pT, ith});
    repairEdges();
}

} // namespace ORBI_LUMO25D
