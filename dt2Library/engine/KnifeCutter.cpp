#include "engine/KnifeCutter.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/check.h"
#include "support/messages.h"

#include "TriangleAroundVertexIterator.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

KnifeCutter::KnifeCutter(Dt2& dt2_) : dt2(dt2_), orbiTest(dt2_.orbiTest) {}

// ---- one knife ------------------------------------------------------------------------------------------------------

bool KnifeCutter::cut(const Segment2& knife)
{
    if (knife.src == knife.trg) return false;
    setKnife(knife);
    Point2* pV = enter();
    if (pV != nullptr) {
        pEnd = vertexAt(b);
        while (pV != pEnd && !bOutside) {
            Point2* const pNext = advance(pV);
            if (pNext == nullptr) break;
            addPiece(pV, pNext);
            pV = pNext;
        }
    }
    if (bStuck) msgWarning("Dt2::CUTT_cutTriangles()", "insufficient numeric accuracy, a cut ends early");
    return pV != nullptr;
}

void KnifeCutter::setKnife(const Segment2& knife)
{
    a = knife.src;
    b = knife.trg;
    dt2.orbiTest.ensureStaticBound(&a);
    dt2.orbiTest.ensureStaticBound(&b);
    pEnd = nullptr;
    bStuck = false;
    bOutside = false;
    dx = b.x() - a.x();
    dy = b.y() - a.y();
    snap = snapDistance(a, b);
}

/// The vertex at which the knife starts, or enters the hull; null when it misses the hull.
Point2* KnifeCutter::enter()
{
    if (Point2* const pStart = vertexAt(a)) return pStart;
    const Dt2::HullEntry entry = dt2.enterHull(a, b);
    if (entry.pVtx != nullptr || entry.edge.pT == nullptr) return entry.pVtx;
    return enterAcross(entry.edge.pT, entry.edge.ith);
}

/// The next vertex on the way from pV, at the other end of an edge; null where the knife leaves the hull.
Point2* KnifeCutter::advance(Point2* pV)
{
    for (;;) {
        Triangle2* pT = nullptr;
        if (Point2* const pNext = leaveAlongEdge(pV, pT)) return pNext;
        if (pT == nullptr) return nullptr;
        Point2* const pNext = passEdges(pT, L::indexOf(pT, pV));
        if (pNext != pV) return pNext;
    }
}

/// The neighbour of pV at the other end of an edge that the knife runs along; if there is none, pWedge becomes the triangle
/// that it leaves pV through.
Point2* KnifeCutter::leaveAlongEdge(Point2* pV, Triangle2*& pWedge) const
{
    Point2* pNearest = nullptr;
    const TriangleAroundVertexIterator itStart(pV);
    TriangleAroundVertexIterator it(itStart);
    do {
        if (*it == nullptr) continue;
        const int ith = L::indexOf(*it, pV);
        Orientation2 aSides[2] = {};
        for (const int k : {0, 1}) {
            Point2* const p = (*it)->corner(k == 0 ? L::next(ith) : L::prev(ith));
            if (p == pEnd) return p;
            aSides[k] = orbiTest.orientationInRange(pV, &b, p);
            if (!isOnTheWay(*p, *pV)) continue;
            if (pNearest == nullptr || compareLengths(*pV, *p, *pV, *pNearest) < 0) pNearest = p;
        }
        if (aSides[0] == ORIENTATION2_CW && aSides[1] == ORIENTATION2_CCW) pWedge = *it;
    } while (++it != itStart);
    return pNearest;
}

/// Whether p counts as on the knife and lies between a place and the end of the knife.
bool KnifeCutter::isOnTheWay(const Point2& p, const Point2& from) const
{
    // In this order, because what lies behind is near, too, as a rule: that would be found out exactly, at a price.
    return isInside(p, from, b) && (isNear(p) || orbiTest.orientationInRange(&from, &b, &p) == ORIENTATION2_COLLINEAR);
}

/// Whether p is so close to the line of the knife that it counts as on it.
bool KnifeCutter::isNear(const Point2& p) const
{
    // The cross product of a point that is near is at most its distance times the length, and off by a few roundings.
    const double t0 = dx * (p.y() - a.y());
    const double t1 = dy * (p.x() - a.x());
    const double bound = 2.5 * snap * (std::fabs(dx) + std::fabs(dy)) + 0x1p-50 * (std::fabs(t0) + std::fabs(t1));
    return !(std::fabs(t0 - t1) > bound + 1e-320) && isWithin(p, a, b, snap);
}

// ---- crossings ------------------------------------------------------------------------------------------------------

/// Leads the knife into the hull across hull edge j of pT. Where further edges are crossed within the snap distance, as
/// between border vertices that are collinear but for rounding, it starts at the innermost of them: the slivers outside
/// have heights of their own. Returns the vertex there; null if no double will do.
Point2* KnifeCutter::enterAcross(Triangle2* pT, int j)
{
    std::vector<Crossed> vEdges;
    std::vector<Triangle2*> vInner; // the triangle behind each edge
    Point2 first, innermost;
    while (pT != nullptr) {
        const Crossed edge{pT->corner(L::next(j)), pT->corner(L::prev(j)), vEdges.empty()};
        Point2 at;
        if (!crossing(edge, a, at)) break;
        if (vEdges.empty()) first = at;
        if (!isWithinBox(at, first, snap)) break;
        if (Point2* const pStart = nearEnd(edge, at, a)) return pStart;
        vEdges.push_back(edge);
        vInner.push_back(pT);
        innermost = at;
        const Point2& apex = *pT->corner(j);
        if (isOnTheWay(apex, a)) break;
        const int i = orbiTest.orientationInRange(&a, &b, &apex) == ORIENTATION2_CCW ? L::next(j) : L::prev(j);
        Triangle2* const pNext = pT->neighbor(i);
        if (pNext != nullptr) j = L::indexOf(pNext, pT);
        pT = pNext;
    }
    Point2* pNew = splitFromInside(vEdges, vInner, innermost);
    if (pNew == nullptr) {
        bWiden = true;
        for (std::size_t i = vEdges.size(); pNew == nullptr && i-- > 0;) {
            pNew = nearEnd(vEdges[i], innermost, a);
        }
        if (pNew == nullptr) pNew = splitFromInside(vEdges, vInner, innermost);
        bWiden = false;
    }
    bStuck = pNew == nullptr;
    return pNew;
}

/// Splits the innermost of some edges, of which the first lies on the hull, with as many of those outside as it takes.
Point2* KnifeCutter::splitFromInside(const std::vector<Crossed>& vEdges, const std::vector<Triangle2*>& vInner,
                                     const Point2& innermost)
{
    vCrossed.clear();
    vZone.clear();
    for (std::size_t i = vEdges.size(); i-- > 0;) {
        vCrossed.push_back(vEdges[i]);
        if (vZone.empty()) vZone.push_back(vInner[i]);
        if (i > 0) vZone.push_back(vInner[i - 1]);
        if (Point2* const pNew = splitCrossed(innermost, a)) return pNew;
    }
    return nullptr;
}

/// Leads the knife from corner ith of pT across the edge opposite: splits it, alone if possible, else together with the
/// next ones, else with edges beside the knife, too. Returns the vertex there, which is the corner itself when the edges
/// pass so close to it that they are split there; null if no double will do, or the hull ends there.
Point2* KnifeCutter::passEdges(Triangle2* pT, int ith)
{
    Point2* pNext = passEdgesAhead(pT, ith);
    if (bStuck) {
        bWiden = true;
        pNext = passEdgesAhead(pT, ith);
        bWiden = false;
    }
    return pNext;
}

Point2* KnifeCutter::passEdgesAhead(Triangle2* pT, int ith)
{
    Point2* const pV = pT->corner(ith);
    vZone.assign(1, pT);
    vCrossed.clear();
    Point2 first;
    for (;;) {
        const Crossed edge{pT->corner(L::next(ith)), pT->corner(L::prev(ith)), pT->neighbor(ith) == nullptr};
        Point2 at;
        bStuck = !crossing(edge, *pV, at);
        if (vCrossed.empty()) first = at;
        bStuck = bStuck || !isWithinBox(at, first, snap);
        if (bStuck) return nullptr;
        if (Point2* const pHub = nearEnd(edge, at, *pV)) {
            if (makeStarAt(pHub)) return pHub;
        }
        vCrossed.push_back(edge);
        Triangle2* const pNext = pT->neighbor(ith);
        if (pNext != nullptr) vZone.push_back(pNext);
        const bool bAtVertex = isWithinBox(at, *pV, 0.5 * snap);
        if (bAtVertex && pNext != nullptr && makeStarAt(pV)) return pV;
        if (Point2* const pNew = splitCrossed(at, *pV)) {
            bOutside = pNext == nullptr;
            return pNew;
        }
        bStuck = pNext == nullptr && !bAtVertex;
        if (pNext == nullptr) return nullptr;

        const int j = L::indexOf(pNext, pT);
        Point2* const pApex = pNext->corner(j);
        if (pApex == pEnd || isOnTheWay(*pApex, *pV)) {
            bStuck = !makeStarAt(pApex);
            return bStuck ? nullptr : pApex;
        }
        // Seen along the knife, corner j+1 is on the left, corner j+2 on the right.
        ith = orbiTest.orientationInRange(pV, &b, pApex) == ORIENTATION2_CCW ? L::next(j) : L::prev(j);
        pT = pNext;
    }
}

/// Where the knife crosses an edge, on the way from a place; computed on what is left of the knife where the whole of it, by
/// rounding, doesn't.
bool KnifeCutter::crossing(const Crossed& edge, const Point2& from, Point2& p) const
{
    const Point2* p0 = edge.p0;
    const Point2* p1 = edge.p1;
    if (*p1 < *p0) std::swap(p0, p1); // the last place must not depend on which triangle is asked
    double x = 0.0;
    double y = 0.0;
    for (const Point2* pSrc : {static_cast<const Point2*>(&a), &from}) {
        if (!roundedCrossing(orbiTest, *pSrc, b, *p0, *p1, x, y)) continue;
        p.setCoords(x, y, 0.0);
        if (isInRange2D(p, *p0, *p1) && (pSrc == &from || isInRange2D(p, from, b))) return true;
    }
    return false;
}

/// The end of the edge that its crossing is next to; null if there is none on the way.
Point2* KnifeCutter::nearEnd(const Crossed& edge, const Point2& at, const Point2& from) const
{
    const double distance = (bWiden ? 2.0 : 0.5) * snap;
    for (Point2* pHub : {edge.p0, edge.p1}) {
        if (isWithinBox(at, *pHub, distance) && (*pHub == b || isInside(*pHub, from, b))) return pHub;
    }
    return nullptr;
}

/// Splits all crossed edges at one new vertex, as close to the given place as can be.
Point2* KnifeCutter::splitCrossed(const Point2& at, const Point2& from)
{
    if (isInside(at, from, b) && becomesStar(at)) return newHub(at);
    // An end of the knife that is outside of the hull may be so by rounding alone.
    for (const Point2* pKnifeEnd : {&a, &b}) {
        if (pEnd == nullptr && isWithinBox(at, *pKnifeEnd, snap) && becomesStar(*pKnifeEnd)) return newHub(*pKnifeEnd);
    }
    constexpr int maxSteps = 2; // of a quarter of the snap distance: the farthest candidate is within it
    for (int distance = 1; distance <= maxSteps; ++distance) {
        for (int i = -distance; i <= distance; ++i) {
            for (int j = -distance; j <= distance; ++j) {
                if (std::max(std::abs(i), std::abs(j)) != distance) continue;
                const Point2 p(at.x() + 0.25 * snap * i, at.y() + 0.25 * snap * j, 0.0);
                if (isInside(p, from, b) && becomesStar(p)) return newHub(p);
            }
        }
    }
    return nullptr;
}

bool KnifeCutter::isCrossed(const Point2* pA, const Point2* pB) const
{
    return std::any_of(vCrossed.begin(), vCrossed.end(), [pA, pB](const Crossed& edge) {
        return (edge.p0 == pA && edge.p1 == pB) || (edge.p0 == pB && edge.p1 == pA);
    });
}

/// Whether all triangles that join p with the edges around the zone turn counterclockwise. On the hull, a point on or
/// outside of the crossed edge will do. p may be a vertex, a corner of the zone.
bool KnifeCutter::isStarCenter(const Point2& p) const
{
    for (const Triangle2* pT : vZone) {
        for (int i = 0; i < 3; ++i) {
            const Point2* const p0 = pT->corner(L::next(i));
            const Point2* const p1 = pT->corner(L::prev(i));
            const Triangle2* const pOuter = pT->neighbor(i);
            const bool bCrossed = isCrossed(p0, p1);
            if (bCrossed && pOuter != nullptr) continue;
            if (!bCrossed && std::find(vZone.begin(), vZone.end(), pOuter) != vZone.end()) return false;
            if (p0 == &p || p1 == &p) continue;
            const bool bLeft = orbiTest.orientationInRange(p0, p1, &p) == ORIENTATION2_CCW;
            if (bLeft == bCrossed) return false;
        }
    }
    return true;
}

/// The same; if wanted, with the zone widened across edges that p lies on or beyond, though the knife doesn't cross them.
/// They must be near, and as high there as the crossed edge: then they may be split at p, too.
bool KnifeCutter::becomesStar(const Point2& p)
{
    if (isStarCenter(p)) return true;
    if (!bWiden) return false;
    constexpr std::size_t maxWidening = 64;
    const std::vector<Crossed> vCrossedBefore(vCrossed);
    const std::vector<Triangle2*> vZoneBefore(vZone);
    for (std::size_t i = 0; i < maxWidening && widen(p); ++i) {
        if (isStarCenter(p)) return true;
    }
    vCrossed = vCrossedBefore;
    vZone = vZoneBefore;
    return false;
}

/// Takes in the triangle behind one edge of the zone that p isn't inside of. False when that can't be.
bool KnifeCutter::widen(const Point2& p)
{
    for (const Triangle2* pT : vZone) {
        for (int i = 0; i < 3; ++i) {
            Point2* const p0 = pT->corner(L::next(i));
            Point2* const p1 = pT->corner(L::prev(i));
            if (p0 == &p || p1 == &p || isCrossed(p0, p1)) continue;
            if (orbiTest.orientationInRange(p0, p1, &p) == ORIENTATION2_CCW) continue;
            Triangle2* const pOuter = pT->neighbor(i);
            if (pOuter == nullptr || !isInRange2D(p, *p0, *p1) || !isWithin(p, *p0, *p1, snap)) return false;
            // A corner that the zone has already would become a vertex inside of it.
            const Point2* const pFar = pOuter->corner(L::indexOf(pOuter, pT));
            const auto hasFar = [pFar](const Triangle2* pMember) { return pMember->hasVertex(pFar); };
            if (std::any_of(vZone.begin(), vZone.end(), hasFar) || !isSameHeight(p, *p0, *p1)) return false;
            // Hull edges stay first or last.
            vCrossed.insert(vCrossed.begin() + 1, {p0, p1, false});
            vZone.push_back(pOuter);
            return true;
        }
    }
    return false;
}

/// Whether an edge is as high at p as the first crossed edge, but for the rounding of p.
bool KnifeCutter::isSameHeight(const Point2& p, const Point2& p0, const Point2& p1) const
{
    const Point2& q0 = *vCrossed.front().p0;
    const Point2& q1 = *vCrossed.front().p1;
    const auto slope = [](const Point2& src, const Point2& trg) {
        return std::fabs(trg.z() - src.z()) / std::hypot(trg.x() - src.x(), trg.y() - src.y());
    };
    const double z = heightOnSegment(q0, q1, p.x(), p.y());
    const double allowed = 4.0 * snap * (slope(p0, p1) + slope(q0, q1)) + 0x1p-48 * std::fabs(z);
    return std::fabs(heightOnSegment(p0, p1, p.x(), p.y()) - z) <= allowed;
}

// ---- new vertices ---------------------------------------------------------------------------------------------------

/// The vertex at a place, made if there is none; null outside of the hull.
Point2* KnifeCutter::vertexAt(const Point2& p)
{
    Triangle2* pT = dt2.locate(p);
    if (pT == nullptr) return nullptr;
    int edge = -1;
    const int state = dt2.locateConflictTriangle(p, &pT, &edge);
    if (state == 4) return pT->corner(*pT->corner(0) == p ? 0 : *pT->corner(1) == p ? 1 : 2);
    if (state >= 0) edge = state;
    if (edge >= 0) {
        vZone.assign(1, pT);
        if (pT->neighbor(edge) != nullptr) vZone.push_back(pT->neighbor(edge));
        vCrossed.assign(1, {pT->corner(L::next(edge)), pT->corner(L::prev(edge)), pT->neighbor(edge) == nullptr});
        return newHub(p);
    }
    // In a sliver, plain arithmetic may be off by as much as its corners differ.
    const double z = OrbiTest::getPlaneHeightExact(pT->corner(0), pT->corner(1), pT->corner(2), p.x(), p.y());
    return dt2.insertNear(Point2(p.x(), p.y(), z), pT);
}

/// Makes a vertex in the middle of the zone, with the height of the first crossed edge, and splits all crossed edges there.
Point2* KnifeCutter::newHub(const Point2& p)
{
    const Crossed& edge = vCrossed.front();
    const double z = heightOnSegment(*edge.p0, *edge.p1, p.x(), p.y());
    Point2* const pHub = dt2.newVertexInVault(Point2(p.x(), p.y(), z));
    const Crossed& last = vCrossed.back();
    Crossed* const pHull = edge.bHull ? &vCrossed.front() : last.bHull ? &vCrossed.back() : nullptr;
    if (pHull != nullptr) growHull(pHub, *pHull);
    makeStar(pHub);
    dt2.vertexVault.sortIfNeeded(true);
    return pHub;
}

/// A vertex outside of a crossed hull edge first gets triangles on all hull edges that it sees; the one on the crossed edge
/// belongs to the zone.
void KnifeCutter::growHull(Point2* pHub, Crossed& edge)
{
    if (orbiTest.orientationInRange(edge.p0, edge.p1, pHub) == ORIENTATION2_COLLINEAR) return;
    Triangle2* const pT = dt2.getAdjacentTriangle(edge.p0, edge.p1);
    const int ith = pT->getIntraTriangleIndex(edge.p0, edge.p1);
    dt2.insertVertexCH(pHub, pT, ith);
    vZone.push_back(pT->neighbor(ith));
}

/// Splits all crossed edges at a corner of the zone, if that turns no triangle over.
bool KnifeCutter::makeStarAt(Point2* pHub)
{
    if (vCrossed.empty()) return true;
    if (!becomesStar(*pHub)) return false;
    makeStar(pHub);
    return true;
}

/// Replaces the triangles of the zone by those that join the hub, a vertex inside of it, on its hull edge or a corner of it,
/// with the edges around: that splits the crossed edges.
void KnifeCutter::makeStar(Point2* pHub)
{
    struct Side
    {
        Point2* pSrc;
        Point2* pTrg;
        Triangle2* pOuter;
        int back;
        Triangle2* pT; ///< the new triangle on it; null for an edge of the hub itself
    };
    std::vector<Side> vSides;
    for (const Triangle2* pT : vZone) {
        for (int i = 0; i < 3; ++i) {
            Point2* const p0 = pT->corner(L::next(i));
            Point2* const p1 = pT->corner(L::prev(i));
            Triangle2* const pOuter = pT->neighbor(i);
            if (isCrossed(p0, p1)) continue;
            vSides.push_back({p0, p1, pOuter, pOuter == nullptr ? 0 : L::indexOf(pOuter, pT), nullptr});
        }
    }
    std::vector<Triangle2*> vFree(vZone);
    for (Side& side : vSides) {
        if (side.pSrc == pHub || side.pTrg == pHub) continue;
        side.pT = vFree.empty() ? dt2.getNewTriangle() : vFree.back();
        if (!vFree.empty()) vFree.pop_back();
        side.pT->setProperties(pHub, side.pSrc, side.pTrg);
        if (side.pOuter != nullptr) connect(side.pT, 0, side.pOuter, side.back);
    }
    LUMO_CHECK(vFree.empty(), "vFree.empty()");
    for (const Side& side : vSides) {
        if (side.pT == nullptr) continue;
        for (const Side& other : vSides) {
            if (other.pSrc == side.pTrg && other.pT != nullptr) connect(side.pT, 1, other.pT, 2);
            if (other.pT != nullptr || other.pOuter == nullptr) continue;
            if (other.pSrc == side.pTrg && other.pTrg == pHub) connect(side.pT, 1, other.pOuter, other.back);
            if (other.pTrg == side.pSrc && other.pSrc == pHub) connect(side.pT, 2, other.pOuter, other.back);
        }
    }
    for (const Crossed& edge : vCrossed) {
        if (edge.p0 != pHub && edge.p1 != pHub) splitOwner(edge, pHub);
    }
}

/// The constraint and the piece that a crossed edge was.
void KnifeCutter::splitOwner(const Crossed& edge, Point2* pHub)
{
    splitPiece(edge.p0, edge.p1, pHub);
    ConstraintSegment2* const pCSeg = dt2.getConstraintSegment(edge.p0, edge.p1);
    if (pCSeg == nullptr || pCSeg->split_combinatorialOnly(pHub)) return;
    msgWarning("Dt2::CUTT_cutTriangles()", "a constraint can't be split where a cut crosses it, it is given up");
    dt2.pConstraintMgr->takeOutOfForce(pCSeg);
}

// ---- pieces ---------------------------------------------------------------------------------------------------------

void KnifeCutter::addPiece(Point2* pA, Point2* pB)
{
    if (mPieces.emplace(VertexPair2(pA, pB), vPieces.size()).second) vPieces.emplace_back(pA, pB);
}

void KnifeCutter::splitPiece(Point2* pA, Point2* pB, Point2* pVtx)
{
    const auto it = mPieces.find(VertexPair2(pA, pB));
    if (it == mPieces.end()) return;
    const std::size_t position = it->second;
    mPieces.erase(it);
    Point2* const pTrg = vPieces[position].second;
    vPieces[position].second = pVtx;
    mPieces.emplace(VertexPair2(vPieces[position].first, pVtx), position);
    addPiece(pVtx, pTrg);
}

} // namespace ORBI_LUMO25D
