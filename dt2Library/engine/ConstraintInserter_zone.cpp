// The walk along a segment, and the triangulation of the zone that it crosses.

#include "engine/ConstraintInserter.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/aroundVertex.h"
#include "geometry/snapping.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

/// Rounding of a cross product of differences, against the sum of the magnitudes of its terms: (3 + 16e)e, e = 2^-53
/// (Shewchuk 1997), with room for the rounding of the bound.
constexpr double orientationFactor = 3.4e-16;

} // namespace

// ---- sides ----------------------------------------------------------------------------------------------------------

void ConstraintInserter::setTrack(const ConstraintSegment2* pCSeg)
{
    track.a = pCSeg->getSrc();
    track.b = pCSeg->getTrg();
    if (*track.b < *track.a) std::swap(track.a, track.b);
    track.pCarrier = pCSeg->pCarrier;
    track.dx = track.b->x() - track.a->x();
    track.dy = track.b->y() - track.a->y();
    track.snap = bExact ? 0.0 : snapDistance(*track.pCarrier->getSrc(), *track.pCarrier->getTrg());
    // A vertex near the carrier is within twice that of the part, whose ends are near the carrier themselves. What is
    // smaller than the last number here may have lost its sign by underflow.
    track.bound = 2.5 * track.snap * (std::fabs(track.dx) + std::fabs(track.dy)) + 1e-300;
}

void ConstraintInserter::reverseTrack()
{
    std::swap(track.a, track.b);
    track.dx = -track.dx;
    track.dy = -track.dy;
}

/// On which side of the track a vertex lies; Near, when it is so close to the segment that it counts as on it.
ConstraintInserter::Side ConstraintInserter::sideOf(const Point2* pVtx) const
{
    const double left = track.dx * (pVtx->y() - track.a->y());
    const double right = track.dy * (pVtx->x() - track.a->x());
    const double det = left - right;
    const double bound = track.bound + orientationFactor * (std::fabs(left) + std::fabs(right));
    if (det > bound) return OnTheLeft;
    if (det < -bound) return OnTheRight;
    return sideOfDoubtful(pVtx);
}

ConstraintInserter::Side ConstraintInserter::sideOfDoubtful(const Point2* pVtx) const
{
    const Orientation2 ori = orbiTest.orientationInRange(track.a, track.b, pVtx);
    if (ori == ORIENTATION2_COLLINEAR) return OnTheLine;
    const bool bNear = isInside(*pVtx, *track.a, *track.b) &&
                       isWithin(*pVtx, *track.pCarrier->getSrc(), *track.pCarrier->getTrg(), track.snap);
    if (bNear) return Near;
    return ori == ORIENTATION2_CCW ? OnTheLeft : OnTheRight;
}

// ---- the walk -------------------------------------------------------------------------------------------------------

ConstraintInserter::Way ConstraintInserter::findWay()
{
    Way way = leave();
    return way.kind == Way::Clear ? walk(way.pT, way.ith) : way;
}

/// Finds the triangle through which the segment leaves one of its ends: Clear, with the end's index in it. An end may
/// have very many triangles: after a few steps both ends are searched, by turns, and the track is reversed if that of b is
/// found first.
ConstraintInserter::Way ConstraintInserter::leave()
{
    constexpr int patience = 12;
    Turn turnA;
    turnA.pCenter = track.a;
    turnA.pGoal = track.b;
    turnA.pStart = turnA.pT = track.a->getIncidentTriangle();
    Turn turnB;
    turnB.pCenter = track.b;
    turnB.pGoal = track.a;
    turnB.pStart = turnB.pT = track.b->getIncidentTriangle();
    LUMO_CHECK(turnA.pT != nullptr, "pStart->getIncidentTriangle()!=NULL");
    LUMO_CHECK(turnB.pT != nullptr, "pStop->getIncidentTriangle()!=NULL");
    Way way;
    for (int i = 0; !turnA.bDone || !turnB.bDone; ++i) {
        if (step(turnA, way)) return way;
        if (i < patience) continue;
        reverseTrack();
        if (step(turnB, way)) return way;
        reverseTrack();
    }
    LUMO_CHECK(false, "pT!=NULL");
}

/// Looks at one triangle around the start of the track. True when the way is known.
bool ConstraintInserter::step(Turn& turn, Way& way) const
{
    if (turn.bDone) return false;
    Triangle2* const pT = turn.pT;
    const int ith = L::indexOf(pT, turn.pCenter);
    Point2* const p = pT->corner(L::next(ith));
    Point2* const q = pT->corner(L::prev(ith));
    if (p == turn.pGoal || q == turn.pGoal) {
        way.kind = Way::Stands;
        return true;
    }
    const Side sideP = sideOf(p);
    const Side sideQ = sideOf(q);
    // An edge that stands is left alone, however near a vertex beside it is.
    if ((sideP == Near || sideQ == Near) && isEdge(turn.pCenter, turn.pGoal)) {
        way.kind = Way::Stands;
        return true;
    }
    const bool bSplitAtP = sideP == Near || (sideP == OnTheLine && sideQ == OnTheLeft);
    const bool bSplitAtQ = sideQ == Near || (sideQ == OnTheLine && sideP == OnTheRight);
    if (bSplitAtP || bSplitAtQ) {
        way.kind = Way::Vertex;
        way.pVertex = bSplitAtP ? p : q;
        return true;
    }
    if (sideP == OnTheRight && sideQ == OnTheLeft) {
        way.kind = Way::Clear;
        way.pT = pT;
        way.ith = ith;
        return true;
    }
    turn.pT = pT->neighbor(turn.bBackward ? L::prev(ith) : L::next(ith));
    if (turn.pT == nullptr && !turn.bBackward) {
        turn.bBackward = true;
        turn.pT = turn.pStart->neighbor(L::prev(L::indexOf(turn.pStart, turn.pCenter)));
    }
    turn.bDone = turn.pT == nullptr || turn.pT == turn.pStart;
    return false;
}

namespace
{

/// A number that depends on nothing but the vertex' place, and looks random.
std::uint64_t priority(const Point2* p)
{
    const auto bits = [](double v) {
        std::uint64_t b = 0;
        std::memcpy(&b, &v, sizeof b);
        return b;
    };
    std::uint64_t h = (bits(p->x()) * 0x9E3779B97F4A7C15U) ^ (bits(p->y()) * 0xC2B2AE3D27D4EB4FU);
    h = (h ^ (h >> 29)) * 0xBF58476D1CE4E5B9U;
    return h ^ (h >> 32);
}

} // namespace

/// Of the vertices that follow the given one along edges on the track, the one to split at. Segments that overlap have
/// such vertices in common: split each at the one of the highest priority, and they have most of their parts in common,
/// too, as the subtrees of a treap (Seidel and Aragon 1996). Split one after another, n nested segments had n^2 parts.
Point2* ConstraintInserter::sharedSplit(Point2* pVtx) const
{
    Point2* pBest = pVtx;
    for (Point2* p = nextOnTrack(pVtx); p != nullptr; p = nextOnTrack(p)) {
        if (priority(p) > priority(pBest)) pBest = p;
    }
    return pBest;
}

/// The neighbour of a vertex on the track that lies exactly on it, too, and before its end; or null.
Point2* ConstraintInserter::nextOnTrack(const Point2* pVtx) const
{
    const bool bAscending = *track.a < *track.b;
    if (orbiTest.orientationInRange(track.a, track.b, pVtx) != ORIENTATION2_COLLINEAR) return nullptr;
    Point2* pAhead = nullptr;
    anyNeighborOf(pVtx, [&](Point2* p) {
        const bool bBehind = bAscending ? *pVtx < *p : *p < *pVtx;
        const bool bBeforeEnd = bAscending ? *p < *track.b : *track.b < *p;
        if (bBehind && bBeforeEnd && sideOf(p) == OnTheLine) pAhead = p;
        return pAhead != nullptr;
    });
    return pAhead;
}

bool ConstraintInserter::isEdge(Point2* pA, Point2* pB) const
{
    return dt2.getAdjacentTriangle(pA, pB) != nullptr || dt2.getAdjacentTriangle(pB, pA) != nullptr;
}

/// Walks from the track's start, corner ith of pT, to its end, and collects the zone and its border on both sides.
ConstraintInserter::Way ConstraintInserter::walk(Triangle2* pT, int ith)
{
    Point2* pRight = pT->corner(L::next(ith));
    Point2* pLeft = pT->corner(L::prev(ith));
    vZone.assign(1, pT);
    vLeft.clear();
    vRight.clear();
    collect(vLeft, track.a, nullptr, 0);
    collect(vRight, track.a, nullptr, 0);
    collect(vLeft, pLeft, pT, L::next(ith));
    collect(vRight, pRight, pT, L::prev(ith));
    for (;;) {
        if (ConstraintSegment2* const pOther = manager.getCSeg(pLeft, pRight)) {
            return {Way::Crossing, nullptr, pOther, pT, ith};
        }
        Triangle2* const pNext = pT->neighbor(ith);
        LUMO_CHECK(pNext != nullptr, "pNextT!=NULL");
        vZone.push_back(pNext);
        const int j = L::indexOf(pNext, pT);
        Point2* const pApex = pNext->corner(j);
        manager.prefetch(pApex);
        // Corner j+1 of the next triangle is the left one, j+2 the right one.
        if (pApex == track.b) {
            collect(vLeft, pApex, pNext, L::prev(j));
            collect(vRight, pApex, pNext, L::next(j));
            return {Way::Clear, nullptr, nullptr, nullptr, 0};
        }
        const Side side = sideOf(pApex);
        if (side == OnTheLine || side == Near) return {Way::Vertex, pApex, nullptr, nullptr, 0};
        if (side == OnTheLeft) {
            collect(vLeft, pApex, pNext, L::prev(j));
            pLeft = pApex;
            ith = L::next(j);
        } else {
            collect(vRight, pApex, pNext, L::next(j));
            pRight = pApex;
            ith = L::prev(j);
        }
        pT = pNext;
    }
}

/// Appends a vertex to a border; the edge from the vertex before lies opposite corner ith of pT.
void ConstraintInserter::collect(std::vector<BorderLink>& vBorder, Point2* pVtx, const Triangle2* pT, int ith)
{
    Triangle2* const pOuter = pT == nullptr ? nullptr : pT->neighbor(ith);
    vBorder.push_back({pVtx, pOuter, pOuter == nullptr ? 0 : L::indexOf(pOuter, pT), -1});
}

// ---- the zone -------------------------------------------------------------------------------------------------------

/// Replaces the triangles of the zone by as many that have the segment as an edge.
void ConstraintInserter::rebuildZone()
{
    // While it is out of use, a triangle is known by its missing corner.
    for (Triangle2* pT : vZone) {
        L::setCorner(pT, 0, nullptr);
    }
    int numTwins = 0;
    findTwins(vLeft, numTwins);
    findTwins(vRight, numTwins);
    numUsed = 0;
    vCheck.clear();
    const EdgeRef left = triangulate(vLeft, true);
    const EdgeRef right = triangulate(vRight, false);
    LUMO_CHECK(numUsed == vZone.size(), "lPolygon.size()==1");
    connect(left.pT, left.ith, right.pT, right.ith);
    linkTwins();
    repairEdges();
}

/// Marks the edges that both sides of lie in the zone: the segment passes on both sides of their far ends.
void ConstraintInserter::findTwins(std::vector<BorderLink>& vBorder, int& numTwins)
{
    for (BorderLink& link : vBorder) {
        if (link.pOuter == nullptr || link.pOuter->corner(0) != nullptr) continue;
        link.pOuter = nullptr;
        link.twin = numTwins++;
    }
}

/// Triangulates the polygon between a border and the segment, and returns its edge along the segment.
///
/// Each vertex of the border sees the segment along an edge of the old zone, and these edges meet the segment in the order
/// of the border. So an ear that is convex holds no other vertex, and one pass with a stack cuts all of them.
ConstraintInserter::EdgeRef ConstraintInserter::triangulate(const std::vector<BorderLink>& vBorder, bool bLeft)
{
    const Orientation2 convex = bLeft ? ORIENTATION2_CW : ORIENTATION2_CCW;
    vChain.clear();
    for (const BorderLink& link : vBorder) {
        vChain.push_back(link);
        while (vChain.size() >= 3) {
            const BorderLink l2 = vChain[vChain.size() - 1];
            const BorderLink l1 = vChain[vChain.size() - 2];
            Point2* const p0 = vChain[vChain.size() - 3].pVtx;
            if (l2.pVtx == p0 || orbiTest.orientationInRange(p0, l1.pVtx, l2.pVtx) != convex) break;
            LUMO_CHECK(numUsed < vZone.size(), "lPolygon.size()>1");
            Triangle2* const pT = vZone[numUsed++];
            // The middle vertex is corner 0, so that edge 0 is the new one.
            if (bLeft) {
                L::set(pT, l1.pVtx, p0, l2.pVtx, nullptr, nullptr, nullptr);
            } else {
                L::set(pT, l1.pVtx, l2.pVtx, p0, nullptr, nullptr, nullptr);
            }
            attach(pT, bLeft ? 2 : 1, l1, p0);
            attach(pT, bLeft ? 1 : 2, l2, l1.pVtx);
            for (int i = 0; i < 3; ++i) {
                pT->corner(i)->setIncidentTriangle(pT);
            }
            vChain.pop_back();
            vChain.back() = {l2.pVtx, pT, 0, -1};
        }
    }
    LUMO_CHECK(vChain.size() == 2, "lPolygon.size()==1");
    return {vChain.back().pOuter, vChain.back().back};
}

/// Links edge ith of a new triangle, from pBefore to the vertex of the link, with what lies beyond.
void ConstraintInserter::attach(Triangle2* pT, int ith, const BorderLink& link, Point2* pBefore)
{
    if (link.twin >= 0) vTwins.push_back({pT, ith, pBefore, link.pVtx});
    if (link.pOuter == nullptr) return;
    connect(pT, ith, link.pOuter, link.back);
    vCheck.push_back({pT, ith});
}

/// An edge with the zone on both sides got a new triangle on each.
void ConstraintInserter::linkTwins()
{
    for (std::size_t i = 0; i < vTwins.size(); ++i) {
        const TwinSide& side = vTwins[i];
        if (side.pT->neighbor(side.ith) != nullptr) continue;
        const auto isOtherSide = [&side](const TwinSide& other) {
            return other.pSrc == side.pTrg && other.pTrg == side.pSrc;
        };
        const auto it = std::find_if(vTwins.begin(), vTwins.end(), isOtherSide);
        LUMO_CHECK(it != vTwins.end(), "p1==pT1->getCorner(incIndexBy1(b1.opp))");
        connect(side.pT, side.ith, it->pT, it->ith);
        vCheck.push_back({side.pT, side.ith});
    }
    vTwins.clear();
}

/// Lawson's flips from the edges in vCheck until all edges around are locally Delaunay or constraints.
void ConstraintInserter::repairEdges()
{
    while (!vCheck.empty()) {
        const EdgeRef edge = vCheck.back();
        vCheck.pop_back();
        Triangle2* const pT = edge.pT;
        Triangle2* const pN = pT->neighbor(edge.ith);
        if (pN == nullptr || !dt2.isInCircle(pT, pN->corner(L::indexOf(pN, pT)))) continue;
        if (manager.isConstraint(pT->corner(L::next(edge.ith)), pT->corner(L::prev(edge.ith)))) continue;
        flipDiagonal(pT, edge.ith);
        // The new diagonal lies opposite corner 1 of pT and corner 2 of pN.
        vCheck.push_back({pT, 0});
        vCheck.push_back({pT, 2});
        vCheck.push_back({pN, 0});
        vCheck.push_back({pN, 1});
    }
}

} // namespace ORBI_LUMO25D
