// Incremental insertion with edge flips (Lawson 1977; Guibas, Knuth and Sharir 1992): a vertex is located by a walk from
// a close triangle, its triangle or pair of triangles is split, and flips around it restore the empty circles. Points
// come in Hilbert order and are taken middle-first, which keeps walks and the working set short.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "core/InserterMT.h"
#include "core/MeshSurgery.h"
#include "support/check.h"
#include "support/messages.h"

#include "Edge2.h"

#include <algorithm>
#include <deque>
#include <new>

namespace ORBI_LUMO25D
{

namespace
{
/// Runs of at most this length are inserted in plain order.
constexpr std::ptrdiff_t maxPlainRun = 15;
/// Shorter ranges are not worth the threads.
constexpr std::size_t minParallelRange = 1000;
} // namespace

// ---- triangles ------------------------------------------------------------------------------------------------------

Triangle2* Dt2::getNewTriangle()
{
    if (vDeadTriangles.empty()) return new (poolTriangles.alloc()) Triangle2();
    Triangle2* const pT = vDeadTriangles.back();
    vDeadTriangles.pop_back();
    return pT;
}

Triangle2* Dt2::getNewTriangle(Point2* pA, Point2* pB, Point2* pC)
{
    Triangle2* const pT = getNewTriangle();
    pT->setProperties(pA, pB, pC);
    return pT;
}

Triangle2* Dt2::getFreshTriangles(std::size_t n)
{
    const std::lock_guard<std::mutex> lock(mtxTriangles);
    return poolTriangles.allocRange(n);
}

void Dt2::handBackTriangles(Triangle2* pFirst, Triangle2* pLast)
{
    const std::lock_guard<std::mutex> lock(mtxDead);
    // All or none: memory for the list comes first.
    const std::size_t needed = vDeadTriangles.size() + static_cast<std::size_t>(pLast - pFirst);
    if (needed > vDeadTriangles.capacity()) vDeadTriangles.reserve(std::max(needed, 2 * vDeadTriangles.capacity()));
    for (Triangle2* pT = pFirst; pT != pLast; ++pT) {
        vDeadTriangles.push_back(new (pT) Triangle2());
    }
}

StarRepair Dt2::emptyStarRepair() const
{
    StarRepair repair(starRepair);
    repair.clear();
    return repair;
}

void Dt2::flip(Triangle2* pT, int ith)
{
    flipDiagonal(pT, ith);
}

bool Dt2::canBeFlipped(const Triangle2* pT, int ith) const
{
    const Triangle2* const pN = pT->getOppositeTriangle(ith);
    if (pN == nullptr || isConstraint(pT, ith)) return false;
    const Point2* const a = pT->corner(ith);
    const Point2* const b = pT->corner(incIndexBy1(ith));
    const Point2* const c = pT->corner(incIndexBy2(ith));
    const Point2* const d = pN->corner(TriangleLinks::indexOf(pN, pT));
    return orbiTest.orientationInRange(a, d, b) == ORIENTATION2_CW &&
           orbiTest.orientationInRange(a, d, c) == ORIENTATION2_CCW;
}

// ---- ranges ---------------------------------------------------------------------------------------------------------

bool Dt2::createFullDimTriangle(std::size_t numPreExisting)
{
    LUMO_CHECK(!vertexVault.bFullDimensional, "!vertexVault.bFullDimensional");
    Point2* p0 = nullptr;
    Point2* p1 = nullptr;
    Point2* p2 = nullptr;
    if (!vertexVault.getThreeInitialPoints(p0, p1, p2)) return false;

    bFullDimensional = true;
    vertexVault.areaChanged();
    Triangle2* const pFirst = getNewTriangle(p0, p1, p2);
    const IdxVtxAct* const pStart = vertexVault.begin();
    const IdxVtxAct* const pStop = vertexVault.end();
    LUMO_CHECK(numPreExisting <= static_cast<std::size_t>(pStop - pStart),
               "numPreExistingVtx<=(size_t)distance(startIt,stopIt)");
    // The three initial vertices are met again as corners; registerDup ignores a vertex that is its own duplicate.
    const IdxVtxAct* const pMid = pStart + numPreExisting;
    if (pStart != pMid) triangulateRange(pStart, pMid, pFirst);
    if (pMid != pStop) triangulateRange(pMid, pStop, pFirst);
    return true;
}

void Dt2::triangulateRange(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint)
{
    if (mayUseThreads(static_cast<std::size_t>(pLast - pFirst))) {
        if (InserterMT(this).go(pFirst, pLast, pHint)) return;
        // As one thread does it: without the fake box, whose corners would have very many neighbours. The sample is in.
        vertexVault.removeFakeBox();
        if (!bFullDimensional) return;
        const IdxVtxAct* const pItem = std::find_if(pFirst, pLast, [](const IdxVtxAct& item) {
            return item.bActive && item.pVtx->getIncidentTriangle() != nullptr;
        });
        pHint = pItem == pLast ? vertexVault.getCloseTriangle(pFirst->idx) : pItem->pVtx->getIncidentTriangle();
    }
    triangulateRec(pFirst, pLast, pHint);
}

/// The one place that decides whether a range is shared by threads; chunks know nothing of constraints.
bool Dt2::mayUseThreads(std::size_t rangeSize) const
{
    return numCPU > 1 && rangeSize >= minParallelRange && vertexVault.hasFakeBox() && pConstraintMgr->empty();
}

Triangle2* Dt2::triangulateRec(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint)
{
    const std::ptrdiff_t size = pLast - pFirst;
    if (size > maxPlainRun) {
        const IdxVtxAct* const pMid = pFirst + size / 2;
        Point2* pVtx = pMid->pVtx;
        progress.step(1);
        if (pMid->bActive) pHint = insertOneVertex(&pVtx, pHint);
        LUMO_CHECK(pHint != nullptr, "lastTriangle!=NULL");
        Triangle2* const pLeft = triangulateRec(pFirst, pMid, pHint);
        // A duplicate has no triangle of its own: go on from the vertex that was there first.
        Triangle2* const pIncT = pMid->bActive ? pVtx->getIncidentTriangle() : pLeft;
        LUMO_CHECK(pIncT != nullptr, "pIncT!=NULL");
        return triangulateRec(pMid + 1, pLast, pIncT);
    }
    for (const IdxVtxAct* pItem = pFirst; pItem != pLast; ++pItem) {
        Point2* pVtx = pItem->pVtx;
        progress.step(1); // here, not in insertOneVertex(): a listener that throws leaves no vertex half inserted
        if (pItem->bActive) pHint = insertOneVertex(&pVtx, pHint);
    }
    return pHint;
}

// ---- one vertex -----------------------------------------------------------------------------------------------------

Triangle2* Dt2::insertOneVertex(Point2** ppVtx, Triangle2* pHint)
{
    LUMO_CHECK(pHint != nullptr, "pCurTriangle!=NULL");
    Point2* const pVtx = *ppVtx;
    int edge = -1;
    const int state = locateConflictTriangle(*pVtx, &pHint, &edge);
    if (state >= 0) return triangulateCoplanarOrDuplicate(ppVtx, pHint, state);
    insertAt(pVtx, pHint, edge);
    return pHint;
}

void Dt2::insertAt(Point2* pVtx, Triangle2* pT, int edge)
{
    starRepair.begin(pVtx);
    Triangle2* const pT1 = getNewTriangle();
    Triangle2* const pT2 = edge < 0 ? getNewTriangle() : pT->neighbor(edge);
    if (edge < 0) {
        split13(pT, pT1, pT2, pVtx);
    } else {
        Triangle2* const pT3 = getNewTriangle();
        const Point2* const b = pT->corner(TriangleLinks::next(edge));
        const Point2* const c = pT->corner(TriangleLinks::prev(edge));
        split24(pT, edge, pT1, pT3, pVtx);
        splitConstraintAt(b, c, pVtx);
        if (!bCutMode) starRepair.consider(pT3);
    }
    if (!bCutMode) {
        starRepair.consider(pT);
        starRepair.consider(pT1);
        starRepair.consider(pT2);
        runStarRepair(pVtx);
    }
}

/// Where the inlined filter can't tell: the exact test, or, in fast mode, the filter's own last word.
void Dt2::runStarRepair(const Point2* pVtx)
{
    const auto inCircleSlow = [this, pVtx](const Triangle2*, const Triangle2* pN) { return isInCircle(pN, pVtx); };
    if (pConstraintMgr->empty()) {
        starRepair.run(inCircleSlow);
    } else {
        starRepair.run(inCircleSlow, [this](const Triangle2* pT) {
            return pConstraintMgr->isConstraint(pT->corner(1), pT->corner(2));
        });
    }
}

bool Dt2::isInCircle(const Triangle2* pT, const Point2* q) const
{
    return (bFastMode ? orbiTest.circleIncFast(pT, q) : orbiTest.circleInc3state(pT, q)) == CINC2_INCIRCLE;
}

Triangle2* Dt2::triangulateCoplanarOrDuplicate(Point2** ppVtx, Triangle2* pT, int state)
{
    Point2* const pVtx = *ppVtx;
    if (state < 4) return insertVertexCH(pVtx, pT, state);
    LUMO_CHECK(state == 4, "intState==4");
    for (int i = 0; i < 3; ++i) {
        Point2* const pCorner = pT->corner(i);
        if (*pCorner != *pVtx) continue;
        vertexVault.registerDup(pVtx, pCorner);
        *ppVtx = pCorner;
        return pT;
    }
    msgError("triangulateCoplanarOrDuplicate()", "Proxy not found");
    LUMO_CHECK(false, "false");
}

// ---- at the convex hull ---------------------------------------------------------------------------------------------

Triangle2* Dt2::insertVertexCH(Point2* pVtx, Triangle2* pT, int ith)
{
    collectVisible(pVtx, pT, ith);
    starRepair.begin(pVtx);
    vFresh.clear();
    const HullEdge& edge = vVisible.front();
    const bool bOnEdge = vVisible.size() == 1 && orbiTest.orientationInRange(edge.pT->corner(incIndexBy1(edge.ith)),
                                                                             edge.pT->corner(incIndexBy2(edge.ith)),
                                                                             pVtx) == ORIENTATION2_COLLINEAR;
    Triangle2* const pLast = bOnEdge ? splitHullEdge(pVtx, edge.pT, edge.ith) : fanOverVisibleEdges(pVtx);
    LUMO_CHECK(pLast != nullptr, "lastTriangle!=NULL");
    if (bCutMode) {
        flipCollinearOnly(pVtx);
    } else {
        for (Triangle2* pFresh : vFresh) {
            starRepair.consider(pFresh);
        }
        runStarRepair(pVtx);
    }
    return pLast;
}

/// Fills vVisible with the hull edges that are visible from the vertex, counterclockwise along the hull. (pT, ith) is
/// one of them.
void Dt2::collectVisible(const Point2* pVtx, Triangle2* pT, int ith)
{
    using L = TriangleLinks;
    const auto isVisible = [this, pVtx](const Triangle2* t, int i) {
        return orbiTest.orientationInRange(t->corner(L::next(i)), t->corner(L::prev(i)), pVtx) == ORIENTATION2_CW;
    };
    LUMO_CHECK(pT->neighbor(ith) == nullptr, "pCurTriangle->getOppositeTriangle(ith)==NULL");
    vVisibleBefore.clear();
    vVisible.clear();
    for (HullEdge e = previousHullEdge({pT, ith}); isVisible(e.pT, e.ith); e = previousHullEdge(e)) {
        vVisibleBefore.push_back(e);
    }
    vVisible.assign(vVisibleBefore.rbegin(), vVisibleBefore.rend());
    vVisible.push_back({pT, ith});
    for (HullEdge e = nextHullEdge({pT, ith}); isVisible(e.pT, e.ith); e = nextHullEdge(e)) {
        vVisible.push_back(e);
    }
}

/// The hull edge that ends where this one starts: a turn around its source, through the fan of triangles there.
Dt2::HullEdge Dt2::previousHullEdge(HullEdge e)
{
    using L = TriangleLinks;
    int i = e.ith;
    Triangle2* pT = e.pT;
    while (Triangle2* const pN = pT->neighbor(L::prev(i))) {
        i = L::indexOf(pN, pT);
        pT = pN;
    }
    return {pT, L::prev(i)};
}

/// The hull edge that starts where this one ends.
Dt2::HullEdge Dt2::nextHullEdge(HullEdge e)
{
    using L = TriangleLinks;
    int i = e.ith;
    Triangle2* pT = e.pT;
    while (Triangle2* const pN = pT->neighbor(L::next(i))) {
        i = L::indexOf(pN, pT);
        pT = pN;
    }
    return {pT, L::next(i)};
}

/// The vertex lies on hull edge ith of pT = (a, b, c): pT becomes (v, a, b), and (v, c, a) is new.
Triangle2* Dt2::splitHullEdge(Point2* pVtx, Triangle2* pT, int ith)
{
    using L = TriangleLinks;
    Point2* const a = pT->corner(ith);
    Point2* const b = pT->corner(L::next(ith));
    Point2* const c = pT->corner(L::prev(ith));
    Triangle2* const pCA = pT->neighbor(L::next(ith));
    Triangle2* const pAB = pT->neighbor(L::prev(ith));
    const int backCA = pCA == nullptr ? 0 : L::indexOf(pCA, pT);
    const int backAB = pAB == nullptr ? 0 : L::indexOf(pAB, pT);
    splitConstraintAt(b, c, pVtx);
    pT->setProperties(pVtx, a, b);
    Triangle2* const pU = getNewTriangle(pVtx, c, a);
    connect(pT, 2, pU, 1);
    if (pCA != nullptr) connect(pU, 0, pCA, backCA);
    if (pAB != nullptr) connect(pT, 0, pAB, backAB);
    vFresh.push_back(pT);
    vFresh.push_back(pU);
    return pT;
}

/// One new triangle on each visible hull edge, linked to a fan around the vertex.
Triangle2* Dt2::fanOverVisibleEdges(Point2* pVtx)
{
    Triangle2* pLast = nullptr;
    for (const HullEdge& e : vVisible) {
        Point2* const pSrc = e.pT->corner(TriangleLinks::next(e.ith));
        Point2* const pTrg = e.pT->corner(TriangleLinks::prev(e.ith));
        Triangle2* const pU = getNewTriangle(pVtx, pTrg, pSrc);
        connect(pU, 0, e.pT, e.ith);
        if (pLast != nullptr) connect(pU, 1, pLast, 2);
        vFresh.push_back(pU);
        pLast = pU;
    }
    return pLast;
}

/// During a knife cut, only edges that the vertex lies on the line of are flipped, so that no triangle is degenerate.
void Dt2::flipCollinearOnly(const Point2* pVtx)
{
    while (!vFresh.empty()) {
        vNextFresh.clear();
        for (Triangle2* pT : vFresh) {
            Triangle2* const pN = pT->neighbor(0);
            if (pN == nullptr) continue;
            if (orbiTest.orientationInRange(pT->corner(1), pT->corner(2), pVtx) != ORIENTATION2_COLLINEAR) continue;
            if (!isInCircle(pN, pVtx) || pConstraintMgr->isConstraint(pT->corner(1), pT->corner(2))) continue;
            flip(pT, 0);
            vNextFresh.push_back(pT);
            vNextFresh.push_back(pN);
        }
        vFresh.swap(vNextFresh);
    }
}

// ---- repair of an existing star -------------------------------------------------------------------------------------

void Dt2::bfsFlipIncident(Point2* pVtx)
{
    std::deque<Edge2> queue;
    const auto enter = [&queue](Triangle2* pT, int i) {
        if (pT->neighbor(i) != nullptr) queue.emplace_back(pT, i);
    };
    std::vector<Triangle2*> vStar;
    getIncidentTriangles(pVtx, vStar);
    for (Triangle2* pT : vStar) {
        enter(pT, TriangleLinks::indexOf(pT, pVtx));
    }
    while (!queue.empty()) {
        const Edge2 edge = queue.front();
        queue.pop_front();
        Triangle2* const pT = edge.getTriangle();
        const int i = edge.getIndex();
        Triangle2* const pN = pT->neighbor(i);
        if (pN == nullptr) continue;
        const Point2* const d = pN->corner(TriangleLinks::indexOf(pN, pT));
        if (orbiTest.circleInc3state(pT, d) != CINC2_INCIRCLE || isConstraint(pT, i)) continue;
        LUMO_CHECK(canBeFlipped(pT, i), "canBeFlipped(pFromT,fromICI)");
        flip(pT, i);
        // The new diagonal lies opposite corner 1 of pT and corner 2 of pN.
        enter(pT, 0);
        enter(pT, 2);
        enter(pN, 0);
        enter(pN, 1);
    }
}

} // namespace ORBI_LUMO25D
