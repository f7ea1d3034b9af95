#ifndef LUMO25D_CORE_CHUNK_H
#define LUMO25D_CORE_CHUNK_H

#include "core/IdxVtxAct.h"
#include "core/StarRepair.h"

#include "Bbox2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// A stretch of the curve that one thread inserts, and the region that this work can touch.
///
/// Why the region suffices. Let S be the vertices of the coarse triangulation, and let D be an open disk without a point
/// of S in it. Blow D up about the vertex s nearest to its centre, till the centre reaches the border of the Voronoi cell
/// of s: there it lies between two Voronoi vertices, and the disk is covered by the circumdisks of two adjacent coarse
/// triangles. So every disk that is free of S and has a point in the chunk's box lies in the circumdisks of two adjacent
/// coarse triangles, one of which meets the box. extBox holds all coarse circumdisks that meet the box, and those of
/// their neighbours. Hence, whatever other chunks have inserted meanwhile:
/// 1. A triangle that a new point of the chunk puts out has the point in its disk, which is free of S: it lies in extBox.
/// 2. A triangle that meets the box lies in extBox, because its disk does. A straight walk between two points of the box
///    meets no others.
/// 3. A triangle beside those of 1 shares two corners in extBox with them. Were it written by a chunk whose extBox is
///    disjoint from this one, it would have two corners there, too; but it has three corners only.
/// So two chunks with disjoint regions neither write nor read what the other writes. The disks are computed with a proven
/// margin (CircleBound); where that fails the region is the whole plane, and the chunk runs alone. In fast mode a disk
/// may hold a point of S within the error of the filter, which is far below that margin.
class alignas(64) Chunk
{
public:
    /// Items [pFirst, pLast) of the vault. Counted from pRangeBegin, the last of every sampleDistance + 1 items is in the
    /// coarse triangulation already.
    Chunk(Dt2* pDt2_, const IdxVtxAct* pRangeBegin_, std::size_t sampleDistance_, const IdxVtxAct* pFirst_,
          const IdxVtxAct* pLast_);
    /// Hands the triangles that were not used back to the engine.
    ~Chunk();
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    /// Computes the region from the coarse triangulation, which it only reads.
    void determineExtBox();
    /// Inserts the points.
    void insertAll();

    bool mayRunBeside(const Chunk& other) const;
    /// Circumcircles that couldn't be trusted, of triangles at the box and of their neighbours.
    std::size_t numBadAtBox() const { return numBad1; }
    std::size_t numBadBeside() const { return numBad2; }

private:
    bool isSample(const IdxVtxAct* pItem) const
    {
        return static_cast<std::size_t>(pItem - pRangeBegin) % (sampleDistance + 1) == sampleDistance;
    }
    bool isToInsert(const IdxVtxAct* pItem) const { return pItem->bActive && !isSample(pItem); }
    Triangle2* startTriangle() const;
    Triangle2* chooseStartVertex();
    void collectDisksAtBox(Triangle2* pStartT, std::vector<Triangle2*>& vAtBox);
    void insertRec(const IdxVtxAct* pBegin, const IdxVtxAct* pEnd, Point2*& pHint);
    void insertOne(Point2* pVtx, Point2*& pHint);
    Triangle2* takeTriangle();

    Dt2* pDt2;
    const IdxVtxAct* pRangeBegin;
    std::size_t sampleDistance;
    const IdxVtxAct* pFirst;
    const IdxVtxAct* pLast;
    Bbox2 box;    ///< of the chunk's points and of the vertex where the first walk starts
    Bbox2 extBox; ///< invalid when there is nothing to insert
    bool bWholePlane = false;
    std::size_t numBad1 = 0, numBad2 = 0;
    Point2* pStartVtx = nullptr;
    StarRepair starRepair;
    Triangle2* pFresh = nullptr; ///< triangles fetched and not yet used: [pFresh, pFreshEnd)
    Triangle2* pFreshEnd = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
