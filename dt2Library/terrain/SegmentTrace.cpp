#include "terrain/SegmentTrace.h"

#include "TriangleAroundVertexIterator.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

SegmentTrace::Place SegmentTrace::locate(const Point2& p)
{
    const Bbox2& box = dt2.bbox;
    if (p.x() < box.get_minX() - resolution || p.x() > box.get_maxX() + resolution ||
        p.y() < box.get_minY() - resolution || p.y() > box.get_maxY() + resolution) {
        return {};
    }
    if (pHint == nullptr) pHint = dt2.vertexVault.getCloseTriangle(p);
    int edge = -1;
    const int state = dt2.locateConflictTriangle(p, &pHint, &edge);
    if (state == -1) return snapped(p, {pHint, edge, nullptr});
    if (state == 4) {
        int i = 0;
        while (*pHint->corner(i) != p) ++i;
        return {pHint, -1, pHint->corner(i)};
    }
    const Place place = placeBeyondHull(p, {pHint, state});
    if (place.pT != nullptr) return place;
    const Point2 *p0 = pHint->corner(L::next(state)), *p1 = pHint->corner(L::prev(state));
    const bool bOutside = orbiTest.orientationInRange(p0, p1, &p) == ORIENTATION2_CW;
    return bOutside ? Place() : Place{pHint, state, nullptr};
}

/// The place of a point on the hull, within the resolution, that is beyond a given edge of it. It may be beyond others too,
/// about in line with the one that it is on.
SegmentTrace::Place SegmentTrace::placeBeyondHull(const Point2& p, Edge edge) const
{
    bool bBack = false;
    for (bool bFirst = true;; bFirst = false) {
        const Place place = snapped(p, {edge.pT, -1, nullptr});
        if (place.pVtx != nullptr || place.edge >= 0) return place;
        const Point2 &a = *edge.pT->corner(L::next(edge.ith)), &b = *edge.pT->corner(L::prev(edge.ith));
        const double abX = b.x() - a.x(), abY = b.y() - a.y(), apX = p.x() - a.x(), apY = p.y() - a.y();
        const double length = std::hypot(abX, abY), along = abX * apX + abY * apY;
        const bool bNearLine = std::fabs(abX * apY - abY * apX) <= 4.0 * resolution * length;
        const bool bBefore = along <= 0.0, bBehind = along >= length * length;
        if (!bNearLine || !(bBefore || bBehind) || (!bFirst && bBefore != bBack)) return {};
        bBack = bBefore;
        edge = nextOnHull(edge, bBack);
    }
}

/// The edge of the hull after one, counterclockwise, or the one before it.
SegmentTrace::Edge SegmentTrace::nextOnHull(Edge edge, bool bBack)
{
    const auto turn = bBack ? L::prev : L::next;
    edge.ith = turn(edge.ith);
    while (edge.pT->neighbor(edge.ith) != nullptr) {
        Triangle2* const pN = edge.pT->neighbor(edge.ith);
        edge = {pN, turn(L::indexOf(pN, edge.pT))};
    }
    return edge;
}

/// The place at a corner or edge of its triangle that is within the resolution, if there is one.
SegmentTrace::Place SegmentTrace::snapped(const Point2& p, Place place) const
{
    for (int i = 0; i < 3; ++i) {
        if (areClose(p, *place.pT->corner(i))) return {place.pT, -1, place.pT->corner(i)};
    }
    for (int i = 0; i < 3 && place.edge < 0; ++i) {
        if (isOnEdge(p, *place.pT->corner(L::next(i)), *place.pT->corner(L::prev(i)))) place.edge = i;
    }
    if (place.edge < 0) return place;
    if (isNeedle(*place.pT, place.edge)) return snappedInNeedle(p, place.pT, place.edge);
    Triangle2* const pN = place.pT->neighbor(place.edge);
    if (pN != nullptr && isNeedle(*pN, L::indexOf(pN, place.pT))) {
        return snappedInNeedle(p, pN, L::indexOf(pN, place.pT));
    }
    return place;
}

/// The place of a point on the long edge of a needle is on the other two, and so on to the last needle.
SegmentTrace::Place SegmentTrace::snappedInNeedle(const Point2& p, Triangle2* pT, int longEdge) const
{
    while (true) {
        Point2* const pApex = pT->corner(longEdge);
        if (areClose(p, *pApex)) return {pT, -1, pApex};
        const int i = isOnEdge(p, *pApex, *pT->corner(L::prev(longEdge))) ? L::next(longEdge) : L::prev(longEdge);
        Triangle2* const pN = pT->neighbor(i);
        if (pN == nullptr || !isNeedle(*pN, L::indexOf(pN, pT))) return {pT, i, nullptr};
        longEdge = L::indexOf(pN, pT);
        pT = pN;
    }
}

bool SegmentTrace::isNeedle(const Triangle2& t, int longEdge) const
{
    return isOnEdge(*t.corner(longEdge), *t.corner(L::next(longEdge)), *t.corner(L::prev(longEdge)));
}

bool SegmentTrace::isOnEdge(const Point2& p, const Point2& a, const Point2& b) const
{
    if (b < a) return isOnEdge(p, b, a);
    const double abX = b.x() - a.x(), abY = b.y() - a.y(), apX = p.x() - a.x(), apY = p.y() - a.y();
    const double length = std::hypot(abX, abY);
    const double along = abX * apX + abY * apY;
    return std::fabs(abX * apY - abY * apX) <= resolution * length && along > 0.0 && along < length * length &&
           !areClose(p, a) && !areClose(p, b);
}

bool SegmentTrace::run(const Point2& a, const Place& from, const Point2& b, std::vector<Meeting>& vMeetings)
{
    pA = pLast = &a;
    pB = &b;
    dx = b.x() - a.x();
    dy = b.y() - a.y();
    bAlongX = std::fabs(dx) >= std::fabs(dy);
    bForwards = bAlongX ? a.x() < b.x() : a.y() < b.y();
    // Of whatever isOnEdge() or areClose() may find, with what rounding may do to the area.
    closeArea = 4.0 * resolution * (std::fabs(dx) + std::fabs(dy));
    bLost = false;
    pMeetings = &vMeetings;
    vMeetings.clear();
    if (from.pVtx != nullptr) {
        walkFromVertex(from.pVtx);
    } else if (from.edge >= 0) {
        walkFromEdge(from.pT, from.edge);
    } else if (from.pT != nullptr) {
        walkFromInside(from.pT);
    } else {
        walkFromOutside();
    }
    return !bLost;
}

// ---- the walk: each operation goes on to the end of the segment or of the hull -------------------------------------------

void SegmentTrace::walkFromOutside()
{
    dt2.orbiTest.ensureStaticBound(pA);
    dt2.orbiTest.ensureStaticBound(pB);
    const Dt2::HullEntry entry = dt2.enterHull(*pA, *pB);
    Point2* pV = entry.pVtx;
    Triangle2* const pT = entry.edge.pT;
    for (const int i : {L::next(entry.edge.ith), L::prev(entry.edge.ith)}) {
        if (pT != nullptr && sideOf(*pT->corner(i)) == 0) pV = pT->corner(i);
    }
    if (pV != nullptr) {
        pV = firstOnLine(pV);
        if (leaveThroughVertex(pV, nullptr, nullptr)) walkFromVertex(pV);
    } else if (pT != nullptr) {
        pMeetings->push_back({Meeting::Crossing, nullptr, pT, entry.edge.ith, nullptr, nullptr});
        walkAcross(pT, entry.edge.ith);
    }
}

/// Along a straight side of the hull, the vertex that is nearest to the segment's start.
Point2* SegmentTrace::firstOnLine(Point2* pV) const
{
    for (Point2* pBefore = nullptr; pBefore != pV;) {
        pBefore = pV;
        const TriangleAroundVertexIterator itStart(pBefore);
        TriangleAroundVertexIterator it(itStart);
        do {
            for (int i = 0; i < 3 && *it != nullptr; ++i) {
                Point2* const p = (*it)->corner(i);
                if (isAhead(*p, *pV) && isAheadOfStart(*p) && sideOf(*p) == 0) pV = p;
            }
        } while (++it != itStart);
    }
    return pV;
}

void SegmentTrace::walkFromVertex(Point2* pV)
{
    while (pV != nullptr) {
        const TriangleAroundVertexIterator itStart(pV);
        TriangleAroundVertexIterator it(itStart);
        Edge along{nullptr, -1}, across{nullptr, -1};
        do {
            if (*it == nullptr) continue;
            const int i = L::indexOf(*it, pV);
            const Point2 &p = *(*it)->corner(L::next(i)), &q = *(*it)->corner(L::prev(i));
            const int sideP = sideOf(p), sideQ = sideOf(q);
            if (sideP < 0 && sideQ > 0) across = {*it, i};
            for (const int k : {L::next(i), L::prev(i)}) {
                // Of several vertices on the segment, the nearest: beyond it are needles along the segment.
                const Point2& ahead = *(*it)->corner(k);
                if ((k == L::next(i) ? sideP : sideQ) != 0 || !isAhead(*pV, ahead)) continue;
                if (along.pT == nullptr || isAhead(ahead, *along.pT->corner(along.ith))) along = {*it, k};
            }
        } while (++it != itStart);
        if (along.pT == nullptr && across.pT != nullptr) {
            for (const int k : {L::next(across.ith), L::prev(across.ith)}) {
                if (isOnEdge(*pB, *pV, *across.pT->corner(k))) along = {across.pT, k};
            }
        }
        if (along.pT != nullptr) {
            pV = leaveAlongEdge(pV, along.pT, along.ith);
        } else {
            Triangle2* const pT = across.pT;
            if (pT != nullptr && leaveThroughEdge(pT, across.ith)) {
                walkAcross(pT->neighbor(across.ith), L::indexOf(pT->neighbor(across.ith), pT));
            }
            return;
        }
    }
}

/// The segment runs along the edge of pT from pV to corner ith: to there, which is given, or to its own end.
Point2* SegmentTrace::leaveAlongEdge(Point2* pV, Triangle2* pT, int ith)
{
    Point2* const p = pT->corner(ith);
    const int third = 3 - ith - L::indexOf(pT, pV);
    Triangle2* const pN = pT->neighbor(third);
    const bool bOnLeft = third == L::next(ith);
    return leaveThroughVertex(p, bOnLeft ? pT : pN, bOnLeft ? pN : pT) ? p : nullptr;
}

/// The segment starts inside edge ith.
void SegmentTrace::walkFromEdge(Triangle2* pT, int ith)
{
    Point2 *const p = pT->corner(L::next(ith)), *const q = pT->corner(L::prev(ith));
    Triangle2* const pN = pT->neighbor(ith);
    const bool bToQ = isAhead(*pA, *q);
    if (isOnEdge(*pB, *p, *q) || sideOf(bToQ ? *q : *p) == 0) {
        if (bToQ) {
            if (leaveThroughVertex(q, pT, pN)) walkFromVertex(q);
        } else {
            if (leaveThroughVertex(p, pN, pT)) walkFromVertex(p);
        }
        return;
    }
    if (orbiTest.orientationInRange(p, q, pB) == ORIENTATION2_CCW) {
        walkFromInside(pT);
    } else if (pN != nullptr) {
        walkFromInside(pN);
    }
}

/// The segment starts inside of pT, or inside an edge of it on the other side of which it doesn't go.
void SegmentTrace::walkFromInside(Triangle2* pT)
{
    const int aSides[3] = {sideOf(*pT->corner(0)), sideOf(*pT->corner(1)), sideOf(*pT->corner(2))};
    for (int i = 0; i < 3; ++i) {
        Point2* const p = pT->corner(i);
        if (aSides[i] == 0 && isAheadOfStart(*p)) {
            if (leaveThroughVertex(p, pT, pT)) walkFromVertex(p);
            return;
        }
        if (aSides[L::next(i)] < 0 && aSides[L::prev(i)] > 0) {
            if (leaveThroughEdge(pT, i)) walkAcross(pT->neighbor(i), L::indexOf(pT->neighbor(i), pT));
            return;
        }
    }
    bLost = true;
}

/// The segment comes into pT through the inside of edge ith.
void SegmentTrace::walkAcross(Triangle2* pT, int ith)
{
    for (;;) {
        Point2* const pApex = pT->corner(ith);
        const int side = sideOf(*pApex);
        if (side == 0) {
            if (leaveThroughVertex(pApex, pT, pT)) walkFromVertex(pApex);
            return;
        }
        // Seen along the segment, corner i+1 is on the left, corner i+2 on the right.
        const int out = side > 0 ? L::next(ith) : L::prev(ith);
        if (!leaveThroughEdge(pT, out)) return;
        Triangle2* const pNext = pT->neighbor(out);
        ith = L::indexOf(pNext, pT);
        pT = pNext;
    }
}

/// The line leaves pT through the inside of edge ith. False when the segment, or the hull, ends before it is across.
bool SegmentTrace::leaveThroughEdge(Triangle2* pT, int ith)
{
    const Point2 *p = pT->corner(L::next(ith)), *q = pT->corner(L::prev(ith));
    if (orbiTest.orientationInRange(p, q, pB) != ORIENTATION2_CW || isOnEdge(*pB, *p, *q)) {
        pMeetings->push_back({Meeting::End, nullptr, pT, -1, pT, pT});
        return false;
    }
    pMeetings->push_back({Meeting::Crossing, nullptr, pT, ith, pT, pT});
    return pT->neighbor(ith) != nullptr;
}

/// The line comes to a vertex. False when the segment ends there or before.
bool SegmentTrace::leaveThroughVertex(Point2* pV, const Triangle2* pLeft, const Triangle2* pRight)
{
    if (!isAhead(*pV, *pB) || areClose(*pV, *pB)) {
        pMeetings->push_back({Meeting::End, nullptr, nullptr, -1, pLeft, pRight});
        return false;
    }
    if (!isAhead(*pLast, *pV)) {
        bLost = true;
        return false;
    }
    pLast = pV;
    pMeetings->push_back({Meeting::Vertex, pV, nullptr, -1, pLeft, pRight});
    return true;
}

/// 1 on the left of the segment's line, 0 on it, -1 on the right.
int SegmentTrace::sideOf(const Point2& p) const
{
    const double area = dx * (p.y() - pA->y()) - dy * (p.x() - pA->x());
    if (std::fabs(area) <= closeArea && (areClose(p, *pA) || areClose(p, *pB) || isOnEdge(p, *pA, *pB))) return 0;
    const Orientation2 ori = orbiTest.orientationInRange(pA, pB, &p);
    return ori == ORIENTATION2_CCW ? 1 : ori == ORIENTATION2_CW ? -1 : 0;
}

} // namespace ORBI_LUMO25D
