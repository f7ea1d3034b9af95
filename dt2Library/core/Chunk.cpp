#include "core/Chunk.h"

#include "core/FilterWalk.h"
#include "core/MeshSurgery.h"
#include "core/StraightWalk.h"
#include "engine/Dt2.h"
#include "geometry/distances.h"

#include <limits>
#include <new>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::ptrdiff_t maxPlainRun = 10;
/// Triangles of a later batch; the first one is made for the whole chunk.
constexpr std::size_t laterBatch = 20;

} // namespace

Chunk::Chunk(Dt2* pDt2_, const Bbox2* pInputBox_, const IdxVtxAct* pRangeBegin_, const IdxVtxAct* pFirst_,
             const IdxVtxAct* pLast_)
    : pDt2(pDt2_), pInputBox(pInputBox_), pRangeBegin(pRangeBegin_), pFirst(pFirst_), pLast(pLast_)
{
}

Chunk::~Chunk()
{
    try {
        handBackTriangles();
    } catch (...) {
        // The second failure in a row: no memory, not even for a list of what is left over. These slots are lost.
    }
}

void Chunk::handBackTriangles()
{
    pDt2->handBackTriangles(pFresh, pFreshEnd);
    pFresh = pFreshEnd = nullptr;
}

// ---- the region -----------------------------------------------------------------------------------------------------

void Chunk::determineBox()
{
    for (const IdxVtxAct* pItem = pFirst; pItem != pLast; ++pItem) {
        if (!pItem->bActive) continue;
        box.add(*pItem->pVtx);
        if (!isToInsert(*pItem)) continue;
        ++numToInsert;
        if (pFirstPoint == nullptr) pFirstPoint = pItem->pVtx;
    }
}

void Chunk::determineExtBox()
{
    if (numToInsert == 0) return;
    Triangle2* const pStartT = chooseStartVertex();
    region.determine(*pDt2, *pInputBox, box, pStartT);
}

/// The corner of the coarse triangle around the first point that lies nearest to it; that triangle. The walk of the first
/// insertion starts there, so the box has to hold it.
Triangle2* Chunk::chooseStartVertex()
{
    const Point2& firstPoint = *pFirstPoint;
    Triangle2* pT = startTriangle();
    int edge = -1;
    pDt2->locateConflictTriangle(firstPoint, &pT, &edge);
    double sqNearest = std::numeric_limits<double>::infinity();
    pStartVtx = pT->corner(0);
    for (int i = 0; i < 3; ++i) {
        const double sqDist = sqDistance2D(*pT->corner(i), firstPoint);
        if (sqDist < sqNearest) {
            sqNearest = sqDist;
            pStartVtx = pT->corner(i);
        }
    }
    box.add(*pStartVtx);
    return pT;
}

/// A triangle at the vertex of the sample next before the chunk.
Triangle2* Chunk::startTriangle() const
{
    for (const IdxVtxAct* pItem = pFirst; pItem-- != pRangeBegin;) {
        if (pItem->bActive && pItem->pVtx->getIncidentTriangle() != nullptr) return pItem->pVtx->getIncidentTriangle();
    }
    return pDt2->vertexVault.getFakeBoxCorner(0)->getIncidentTriangle();
}

// ---- insertion ------------------------------------------------------------------------------------------------------

void Chunk::insertAll(StarRepair& repair)
{
    if (numToInsert == 0) return;
    pStarRepair = &repair;
    Point2* pHint = pStartVtx;
    insertRec(pFirst, pLast, pHint);
    if (!vDups.empty()) pDt2->vertexVault.registerDups(vDups);
    handBackTriangles();
}

/// Middle-first, like the engine's own recursion, but handing vertices on: a vertex stays where it is, whatever becomes of
/// the triangles around it.
void Chunk::insertRec(const IdxVtxAct* pBegin, const IdxVtxAct* pEnd, Point2*& pHint)
{
    const std::ptrdiff_t size = pEnd - pBegin;
    if (size <= maxPlainRun) {
        for (const IdxVtxAct* pItem = pBegin; pItem != pEnd; ++pItem) {
            if (isToInsert(*pItem)) insertOne(pItem->pVtx, pHint);
        }
        return;
    }
    const IdxVtxAct* const pMid = pBegin + size / 2;
    if (isToInsert(*pMid)) insertOne(pMid->pVtx, pHint);
    Point2* const pHintBehind = pHint;
    insertRec(pBegin, pMid, pHint);
    pHint = pHintBehind;
    insertRec(pMid + 1, pEnd, pHint);
}

/// Inserts a vertex; pHint becomes it, or the vertex that was there first.
///
/// A visibility walk is the fastest, but it may stray. It goes on as long as its triangles have a corner in the box: then
/// these and their neighbours may be read. Otherwise a straight walk does it, whose triangles meet the box all the way.
void Chunk::insertOne(Point2* pVtx, Point2*& pHint)
{
    haveTwoTriangles();
    const auto mayRead = [this](const Triangle2* pT) {
        return box.isInBox(*pT->corner(0)) || box.isInBox(*pT->corner(1)) || box.isInBox(*pT->corner(2));
    };
    FilterWalk filterWalk;
    Triangle2* pT = nullptr;
    int edgeIdx = -1;
    if (filterWalk.run(*pVtx, pDt2->orbiTest.filterBound(), pHint->getIncidentTriangle(), mayRead) ==
        FilterWalk::INSIDE) {
        pT = filterWalk.pT;
    } else {
        StraightWalk walk(pDt2->orbiTest, *pVtx);
        walk.run(pHint);
        if (walk.pEqual != nullptr) {
            vDups.emplace_back(pVtx, walk.pEqual);
            pHint = walk.pEqual;
            return;
        }
        pT = walk.pT;
        edgeIdx = walk.edgeIdx;
    }
    StarRepair& starRepair = *pStarRepair;
    starRepair.begin(pVtx);
    Triangle2* const pT1 = takeTriangle();
    Triangle2* const pT2 = takeTriangle();
    if (edgeIdx < 0) {
        split13(pT, pT1, pT2, pVtx);
    } else {
        Triangle2* const pN = pT->neighbor(edgeIdx);
        split24(pT, edgeIdx, pT1, pT2, pVtx);
        starRepair.consider(pN);
    }
    starRepair.consider(pT);
    starRepair.consider(pT1);
    starRepair.consider(pT2);
    starRepair.run([this, pVtx](const Triangle2*, const Triangle2* pN) { return pDt2->isInCircle(pN, pVtx); });
    pHint = pVtx;
}

/// Fetches triangles before anything is changed that would be left half done without them.
void Chunk::haveTwoTriangles()
{
    if (pFreshEnd - pFresh >= 2) return;
    const std::size_t n = pFresh == nullptr ? 2 * numToInsert : laterBatch;
    pFresh = pDt2->getFreshTriangles(n);
    pFreshEnd = pFresh + n;
}

Triangle2* Chunk::takeTriangle()
{
    return new (pFresh++) Triangle2();
}

} // namespace ORBI_LUMO25D
