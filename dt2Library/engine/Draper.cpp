#include "engine/Draper.h"

#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/check.h"

#include "TriangleAroundVertexIterator.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

Draper::Draper(Dt2& dt2_, double zTolerance_) : dt2(dt2_), orbiTest(dt2_.orbiTest), zTolerance(zTolerance_) {}

bool Draper::drape(const Segment2& segment, std::vector<Segment2>& vPieces)
{
    a = segment.src;
    b = segment.trg;
    dt2.orbiTest.ensureStaticBound(&a);
    dt2.orbiTest.ensureStaticBound(&b);
    vPath.clear();
    const bool bInside = walk();
    appendPieces(vPieces);
    return bInside;
}

// ---- the walk: each operation goes on to the end of the segment, and is false when that lies outside of the hull ---------

bool Draper::walk()
{
    Triangle2* pT = dt2.locate(a);
    if (pT == nullptr) {
        walkFromOutside();
        return false;
    }
    int edge = -1;
    const int state = dt2.locateConflictTriangle(a, &pT, &edge);
    if (state == 4) return walkFromVertex(pT->corner(*pT->corner(0) == a ? 0 : *pT->corner(1) == a ? 1 : 2));
    if (state >= 0) edge = state;
    if (edge >= 0) return walkFromEdge(pT, edge);
    add(Point2(a.x(), a.y(), OrbiTest::getPlaneHeightExact(pT->corner(0), pT->corner(1), pT->corner(2), a.x(), a.y())));
    return walkFromInside(pT);
}

void Draper::walkFromOutside()
{
    const Dt2::HullEntry entry = dt2.enterHull(a, b);
    if (entry.pVtx != nullptr) {
        walkFromVertex(entry.pVtx);
    } else if (entry.edge.pT != nullptr) {
        addCrossing(entry.edge.pT, entry.edge.ith);
        walkThrough(entry.edge.pT, entry.edge.ith);
    }
}

/// a lies inside edge ith of pT.
bool Draper::walkFromEdge(Triangle2* pT, int ith)
{
    Point2* const p = pT->corner(L::next(ith));
    Point2* const q = pT->corner(L::prev(ith));
    add(Point2(a.x(), a.y(), heightOnSegment(*p, *q, a.x(), a.y())));
    const Orientation2 ori = orbiTest.orientationInRange(p, q, &b);
    if (ori == ORIENTATION2_COLLINEAR) {
        Point2* const pNext = isAhead(a, *p) ? p : q;
        if (isAhead(*pNext, b)) return walkFromVertex(pNext);
        add(Point2(b.x(), b.y(), heightOnSegment(*p, *q, b.x(), b.y())));
        return true;
    }
    Triangle2* const pInto = ori == ORIENTATION2_CCW ? pT : pT->neighbor(ith);
    return pInto != nullptr && walkFromInside(pInto);
}

/// a lies in pT, at no corner, and b not beyond an edge that a lies on.
bool Draper::walkFromInside(Triangle2* pT)
{
    if (!isBeyond(pT, 0) && !isBeyond(pT, 1) && !isBeyond(pT, 2)) {
        addEnd(pT);
        return true;
    }
    for (int i = 0; i < 3; ++i) {
        Point2* const p = pT->corner(L::next(i));
        const int sideP = sideOf(*p);
        if (sideP == 0 && isAhead(a, *p)) return walkFromVertex(p);
        if (sideP >= 0 || sideOf(*pT->corner(L::prev(i))) <= 0) continue;
        addCrossing(pT, i);
        Triangle2* const pNext = pT->neighbor(i);
        return pNext != nullptr && walkThrough(pNext, L::indexOf(pNext, pT));
    }
    LUMO_CHECK(false, "pNext!=NULL");
}

bool Draper::walkFromVertex(Point2* pV)
{
    for (;;) {
        add(*pV);
        if (*pV == b) return true;
        Triangle2* pT = nullptr;
        int ith = -1;
        if (leaveVertex(pV, pT, ith)) {
            if (pV == nullptr) return true;
            continue;
        }
        if (pT == nullptr) return false;
        if (!isBeyond(pT, ith)) {
            addEnd(pT);
            return true;
        }
        addCrossing(pT, ith);
        Triangle2* const pNext = pT->neighbor(ith);
        return pNext != nullptr && walkThrough(pNext, L::indexOf(pNext, pT));
    }
}

/// True when the segment runs along an edge: to its other end, which becomes pV, or null if b comes first. Else corner ith
/// of pT is the vertex that it leaves through pT, if there is such a triangle.
bool Draper::leaveVertex(Point2*& pV, Triangle2*& pT, int& ith)
{
    const TriangleAroundVertexIterator itStart(pV);
    TriangleAroundVertexIterator it(itStart);
    do {
        if (*it == nullptr) continue;
        const int i = L::indexOf(*it, pV);
        Point2* const aEnds[2] = {(*it)->corner(L::next(i)), (*it)->corner(L::prev(i))};
        const int aSides[2] = {sideOf(*aEnds[0]), sideOf(*aEnds[1])};
        for (const int k : {0, 1}) {
            if (aSides[k] != 0 || !isAhead(*pV, *aEnds[k])) continue;
            const bool bEndsHere = *aEnds[k] != b && !isAhead(*aEnds[k], b);
            if (bEndsHere) add(Point2(b.x(), b.y(), heightOnSegment(*pV, *aEnds[k], b.x(), b.y())));
            pV = bEndsHere ? nullptr : aEnds[k];
            return true;
        }
        if (aSides[0] < 0 && aSides[1] > 0) {
            pT = *it;
            ith = i;
        }
    } while (++it != itStart);
    return false;
}

/// The segment comes into pT through the inside of edge ith.
bool Draper::walkThrough(Triangle2* pT, int ith)
{
    for (;;) {
        if (!isBeyond(pT, L::next(ith)) && !isBeyond(pT, L::prev(ith))) {
            addEnd(pT);
            return true;
        }
        Point2* const pApex = pT->corner(ith);
        const int side = sideOf(*pApex);
        if (side == 0) return walkFromVertex(pApex);
        // Seen along the segment, corner i+1 is on the left, corner i+2 on the right.
        const int out = side > 0 ? L::next(ith) : L::prev(ith);
        addCrossing(pT, out);
        Triangle2* const pNext = pT->neighbor(out);
        if (pNext == nullptr) return false;
        ith = L::indexOf(pNext, pT);
        pT = pNext;
    }
}

// ---- decisions ------------------------------------------------------------------------------------------------------

/// 1 on the left of the segment's line, 0 on it, -1 on the right.
int Draper::sideOf(const Point2& p) const
{
    const Orientation2 ori = orbiTest.orientationInRange(&a, &b, &p);
    return ori == ORIENTATION2_CCW ? 1 : ori == ORIENTATION2_CW ? -1 : 0;
}

/// Of places on the segment's line: whether p lies in its direction.
bool Draper::isAhead(const Point2& from, const Point2& p) const
{
    return a < b ? from < p : p < from;
}

bool Draper::isBeyond(const Triangle2* pT, int ith) const
{
    return orbiTest.orientationInRange(pT->corner(L::next(ith)), pT->corner(L::prev(ith)), &b) == ORIENTATION2_CW;
}

// ---- the path -------------------------------------------------------------------------------------------------------

void Draper::addCrossing(const Triangle2* pT, int ith)
{
    const Point2* p = pT->corner(L::next(ith));
    const Point2* q = pT->corner(L::prev(ith));
    if (*q < *p) std::swap(p, q); // the last place must not depend on the side
    double x = 0.0;
    double y = 0.0;
    const bool bCross = roundedCrossing(orbiTest, a, b, *p, *q, x, y);
    LUMO_CHECK(bCross, "bCross");
    add(Point2(x, y, heightOnSegment(*p, *q, x, y)));
}

void Draper::addEnd(const Triangle2* pT)
{
    add(Point2(b.x(), b.y(), OrbiTest::getPlaneHeightExact(pT->corner(0), pT->corner(1), pT->corner(2), b.x(), b.y())));
}

/// Crossings that rounding puts on one place are one.
void Draper::add(const Point2& p)
{
    if (vPath.empty() || vPath.back() != p) vPath.push_back(p);
}

/// Leaves out vertices of the path as far as the tolerance allows: from the last vertex that was kept, the slopes that pass
/// all vertices since within the tolerance are an interval; the next vertex is kept when the one behind it leaves it.
void Draper::appendPieces(std::vector<Segment2>& vPieces) const
{
    if (vPath.size() < 2) return;
    std::size_t kept = 0;
    double lo = -std::numeric_limits<double>::infinity();
    double hi = std::numeric_limits<double>::infinity();
    const auto slope = [this, &kept](std::size_t i, double dz) {
        const double way = std::hypot(vPath[i].x() - vPath[kept].x(), vPath[i].y() - vPath[kept].y());
        return (vPath[i].z() + dz - vPath[kept].z()) / way;
    };
    for (std::size_t i = 1; i < vPath.size(); ++i) {
        if (i > kept + 1 && (zTolerance < 0.0 || slope(i, 0.0) < lo || slope(i, 0.0) > hi)) {
            vPieces.emplace_back(vPath[kept], vPath[i - 1]);
            kept = i - 1;
            lo = -std::numeric_limits<double>::infinity();
            hi = std::numeric_limits<double>::infinity();
        }
        lo = std::max(lo, slope(i, -zTolerance));
        hi = std::min(hi, slope(i, zTolerance));
    }
    vPieces.emplace_back(vPath[kept], vPath.back());
}

} // namespace ORBI_LUMO25D
