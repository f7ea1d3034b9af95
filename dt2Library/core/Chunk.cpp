#include "core/Chunk.h"

#include "core/CircleBound.h"
#include "core/MeshSurgery.h"
#include "core/StraightWalk.h"
#include "engine/Dt2.h"
#include "support/check.h"

#include <algorithm>
#include <limits>
#include <new>
#include <unordered_set>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::ptrdiff_t maxPlainRun = 10;
/// Triangles of a later batch; the first one is made for the whole chunk.
constexpr std::size_t laterBatch = 20;
/// More coarse triangles than this at one box are not worth the looking: the chunk runs alone.
constexpr std::size_t maxTrianglesAtBox = 300;

} // namespace

Chunk::Chunk(Dt2* pDt2_, const IdxVtxAct* pRangeBegin_, std::size_t sampleDistance_, const IdxVtxAct* pFirst_,
             const IdxVtxAct* pLast_)
    : pDt2(pDt2_), pRangeBegin(pRangeBegin_), sampleDistance(sampleDistance_), pFirst(pFirst_), pLast(pLast_),
      starRepair(pDt2->emptyStarRepair())
{
}

Chunk::~Chunk()
{
    pDt2->handBackTriangles(pFresh, pFreshEnd);
}

// ---- the region -----------------------------------------------------------------------------------------------------

void Chunk::determineExtBox()
{
    for (const IdxVtxAct* pItem = pFirst; pItem != pLast; ++pItem) {
        if (isToInsert(pItem)) box.add(*pItem->pVtx);
    }
    if (!box.isValid()) return;
    Triangle2* const pStartT = chooseStartVertex();
    box.inflateIfDegenerate(0.001);
    extBox = box;

    std::vector<Triangle2*> vAtBox;
    collectDisksAtBox(pStartT, vAtBox);
    for (const Triangle2* pT : vAtBox) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN == nullptr) continue;
            const CircleBound disk(*pN);
            if (disk.isTrusted()) {
                disk.addTo(extBox);
            } else {
                ++numBad2;
            }
        }
    }
    bWholePlane = bWholePlane || numBad1 + numBad2 > 0;
}

/// The corner of the coarse triangle around the first point that lies nearest to it; that triangle. The walk of the first
/// insertion starts there, so the box has to hold it.
Triangle2* Chunk::chooseStartVertex()
{
    const IdxVtxAct* const pItem =
        std::find_if(pFirst, pLast, [this](const IdxVtxAct& item) { return isToInsert(&item); });
    const Point2& p = *pItem->pVtx;
    Triangle2* pT = startTriangle();
    int edge = -1;
    pDt2->locateConflictTriangle(p, &pT, &edge);
    double sqNearest = std::numeric_limits<double>::infinity();
    pStartVtx = pT->corner(0);
    for (int i = 0; i < 3; ++i) {
        const double dx = pT->corner(i)->x() - p.x();
        const double dy = pT->corner(i)->y() - p.y();
        if (dx * dx + dy * dy < sqNearest) {
            sqNearest = dx * dx + dy * dy;
            pStartVtx = pT->corner(i);
        }
    }
    box.add(*pStartVtx);
    return pT;
}

/// A triangle at the sample next before the chunk.
Triangle2* Chunk::startTriangle() const
{
    for (const IdxVtxAct* pItem = pFirst; pItem-- != pRangeBegin;) {
        if (isSample(pItem) && pItem->bActive && pItem->pVtx->getIncidentTriangle() != nullptr) {
            return pItem->pVtx->getIncidentTriangle();
        }
    }
    return pDt2->vertexVault.getFakeBoxCorner(0)->getIncidentTriangle();
}

/// Fills vAtBox with the coarse triangles whose disks meet the box. They are connected: those in conflict with one point
/// are, and they change one by one as the point moves through the box.
void Chunk::collectDisksAtBox(Triangle2* pStartT, std::vector<Triangle2*>& vAtBox)
{
    std::unordered_set<const Triangle2*> sSeen{pStartT};
    vAtBox.push_back(pStartT);
    for (std::size_t k = 0; k < vAtBox.size(); ++k) {
        const CircleBound disk(*vAtBox[k]);
        if (disk.isTrusted()) {
            disk.addTo(extBox);
        } else {
            ++numBad1;
        }
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = vAtBox[k]->neighbor(i);
            if (pN == nullptr || sSeen.count(pN) > 0) continue;
            const CircleBound neighborDisk(*pN);
            if (neighborDisk.isTrusted() && !neighborDisk.meets(box)) continue;
            sSeen.insert(pN);
            vAtBox.push_back(pN);
        }
        bWholePlane = vAtBox.size() > maxTrianglesAtBox;
        if (bWholePlane) return;
    }
}

bool Chunk::mayRunBeside(const Chunk& other) const
{
    if (!box.isValid() || !other.box.isValid()) return true;
    return !bWholePlane && !other.bWholePlane && !extBox.doIntersect(other.extBox);
}

// ---- insertion ------------------------------------------------------------------------------------------------------

void Chunk::insertAll()
{
    if (!box.isValid()) return;
    Point2* pHint = pStartVtx;
    insertRec(pFirst, pLast, pHint);
}

/// Middle-first, like the engine's own recursion, but handing vertices on: a vertex stays where it is, whatever becomes of
/// the triangles around it.
void Chunk::insertRec(const IdxVtxAct* pBegin, const IdxVtxAct* pEnd, Point2*& pHint)
{
    const std::ptrdiff_t size = pEnd - pBegin;
    if (size <= maxPlainRun) {
        for (const IdxVtxAct* pItem = pBegin; pItem != pEnd; ++pItem) {
            if (isToInsert(pItem)) insertOne(pItem->pVtx, pHint);
        }
        return;
    }
    const IdxVtxAct* const pMid = pBegin + size / 2;
    if (isToInsert(pMid)) insertOne(pMid->pVtx, pHint);
    Point2* const pHintBehind = pHint;
    insertRec(pBegin, pMid, pHint);
    pHint = pHintBehind;
    insertRec(pMid + 1, pEnd, pHint);
}

/// Inserts a vertex; pHint becomes it, or the vertex that was there first.
void Chunk::insertOne(Point2* pVtx, Point2*& pHint)
{
    StraightWalk walk(pDt2->orbiTest, *pVtx);
    walk.run(pHint);
    if (walk.pEqual != nullptr) {
        pDt2->vertexVault.registerDup(pVtx, walk.pEqual);
        pHint = walk.pEqual;
        return;
    }
    starRepair.begin(pVtx);
    Triangle2* const pT = walk.pT;
    Triangle2* const pT1 = takeTriangle();
    if (walk.edgeIdx < 0) {
        Triangle2* const pT2 = takeTriangle();
        split13(pT, pT1, pT2, pVtx);
        starRepair.consider(pT2);
    } else {
        Triangle2* const pN = pT->neighbor(walk.edgeIdx);
        LUMO_CHECK(pN != nullptr, "pStartTriangle->getOppositeTriangle(ith)!=0");
        Triangle2* const pT3 = takeTriangle();
        split24(pT, walk.edgeIdx, pT1, pT3, pVtx);
        starRepair.consider(pN);
        starRepair.consider(pT3);
    }
    starRepair.consider(pT);
    starRepair.consider(pT1);
    starRepair.run([this, pVtx](const Triangle2*, const Triangle2* pN) { return pDt2->isInCircle(pN, pVtx); });
    pHint = pVtx;
}

Triangle2* Chunk::takeTriangle()
{
    if (pFresh == pFreshEnd) {
        const bool bFirstBatch = pFresh == nullptr;
        const std::size_t n = bFirstBatch ? 2 * static_cast<std::size_t>(pLast - pFirst) : laterBatch;
        pFresh = pDt2->getFreshTriangles(n);
        pFreshEnd = pFresh + n;
    }
    return new (pFresh++) Triangle2();
}

} // namespace ORBI_LUMO25D
