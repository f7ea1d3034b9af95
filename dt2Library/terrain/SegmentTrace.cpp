#include "terrain/SegmentTrace.h"

#include "TriangleAroundVertexIterator.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "support/check.h"

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

SegmentTrace::Place SegmentTrace::locate(const Point2& p)
{
    if (!dt2.bbox.isInBox(p)) return {};
    if (pHint == nullptr) pHint = dt2.vertexVault.getCloseTriangle(p);
    int edge = -1;
    const int state = dt2.locateConflictTriangle(p, &pHint, &edge);
    if (state == -1) return {pHint, edge, nullptr};
    if (state == 4) {
        int i = 0;
        while (*pHint->corner(i) != p) ++i;
        return {pHint, -1, pHint->corner(i)};
    }
    const Point2 *p0 = pHint->corner(L::next(state)), *p1 = pHint->corner(L::prev(state));
    if (orbiTest.orientationInRange(p0, p1, &p) == ORIENTATION2_CW) return {};
    return {pHint, state, nullptr};
}

void SegmentTrace::run(const Point2& a, const Place& from, const Point2& b, std::vector<Meeting>& vMeetings)
{
    pA = &a;
    pB = &b;
    bUpwards = a < b;
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
                if (isAhead(*p, *pV) && isAhead(*pA, *p) && sideOf(*p) == 0) pV = p;
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
        Point2* pNext = nullptr;
        bool bDone = false;
        do {
            if (*it == nullptr) continue;
            const int i = L::indexOf(*it, pV);
            const Point2 &p = *(*it)->corner(L::next(i)), &q = *(*it)->corner(L::prev(i));
            const int sideP = sideOf(p);
            if (sideP > 0) continue;
            const int sideQ = sideOf(q);
            if ((sideP == 0 && isAhead(*pV, p)) || (sideQ == 0 && isAhead(*pV, q))) {
                pNext = leaveAlongEdge(pV, *it, i);
                bDone = true;
            } else if (sideP < 0 && sideQ > 0) {
                if (leaveThroughEdge(*it, i)) walkAcross((*it)->neighbor(i), L::indexOf((*it)->neighbor(i), *it));
                bDone = true;
            }
        } while (!bDone && ++it != itStart);
        pV = pNext;
    }
}

/// The segment runs along an edge of corner ith of pT, which is pV: to the other end of the edge, which is given, or to its
/// own.
Point2* SegmentTrace::leaveAlongEdge(Point2* pV, Triangle2* pT, int ith)
{
    Point2 *const p = pT->corner(L::next(ith)), *const q = pT->corner(L::prev(ith));
    if (sideOf(*p) == 0 && isAhead(*pV, *p)) {
        return leaveThroughVertex(p, pT, pT->neighbor(L::prev(ith))) ? p : nullptr;
    }
    return leaveThroughVertex(q, pT->neighbor(L::next(ith)), pT) ? q : nullptr;
}

/// The segment starts inside edge ith.
void SegmentTrace::walkFromEdge(Triangle2* pT, int ith)
{
    Point2 *const p = pT->corner(L::next(ith)), *const q = pT->corner(L::prev(ith));
    Triangle2* const pN = pT->neighbor(ith);
    const Orientation2 ori = orbiTest.orientationInRange(p, q, pB);
    if (ori == ORIENTATION2_CCW) return walkFromInside(pT);
    if (ori == ORIENTATION2_CW) {
        if (pN != nullptr) walkFromInside(pN);
        return;
    }
    if (isAhead(*pA, *q)) {
        if (leaveThroughVertex(q, pT, pN)) walkFromVertex(q);
    } else {
        if (leaveThroughVertex(p, pN, pT)) walkFromVertex(p);
    }
}

/// The segment starts inside of pT, or inside an edge of it on the other side of which it doesn't go.
void SegmentTrace::walkFromInside(Triangle2* pT)
{
    const int aSides[3] = {sideOf(*pT->corner(0)), sideOf(*pT->corner(1)), sideOf(*pT->corner(2))};
    for (int i = 0; i < 3; ++i) {
        Point2* const p = pT->corner(i);
        if (aSides[i] == 0 && isAhead(*pA, *p)) {
            if (leaveThroughVertex(p, pT, pT)) walkFromVertex(p);
            return;
        }
        if (aSides[L::next(i)] < 0 && aSides[L::prev(i)] > 0) {
            if (leaveThroughEdge(pT, i)) walkAcross(pT->neighbor(i), L::indexOf(pT->neighbor(i), pT));
            return;
        }
    }
    LUMO_CHECK(false, "a segment leaves the triangle where it starts");
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
    if (orbiTest.orientationInRange(p, q, pB) != ORIENTATION2_CW) {
        pMeetings->push_back({Meeting::End, nullptr, pT, -1, pT, pT});
        return false;
    }
    pMeetings->push_back({Meeting::Crossing, nullptr, pT, ith, pT, pT});
    return pT->neighbor(ith) != nullptr;
}

/// The line comes to a vertex. False when the segment ends there or before.
bool SegmentTrace::leaveThroughVertex(Point2* pV, const Triangle2* pLeft, const Triangle2* pRight)
{
    if (!isAhead(*pV, *pB)) {
        pMeetings->push_back({Meeting::End, nullptr, nullptr, -1, pLeft, pRight});
        return false;
    }
    pMeetings->push_back({Meeting::Vertex, pV, nullptr, -1, pLeft, pRight});
    return true;
}

/// 1 on the left of the segment's line, 0 on it, -1 on the right.
int SegmentTrace::sideOf(const Point2& p) const
{
    const Orientation2 ori = orbiTest.orientationInRange(pA, pB, &p);
    return ori == ORIENTATION2_CCW ? 1 : ori == ORIENTATION2_CW ? -1 : 0;
}

} // namespace ORBI_LUMO25D
