#ifndef LUMO25D_CORE_CHUNK_H
#define LUMO25D_CORE_CHUNK_H

#include "core/ChunkRegion.h"
#include "core/IdxVtxAct.h"
#include "core/StarRepair.h"
#include "core/VertexVault.h"

#include "Bbox2.h"
#include "Point2.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// A stretch of the curve that one thread inserts into its own region (ChunkRegion). Points of the sample, which are in the
/// triangulation already, are passed over.
///
/// When a point can't be inserted for want of memory, the exception comes before the triangulation is changed for it.
class Chunk
{
public:
    /// Items [pFirst, pLast) of the vault, in a range that begins at pRangeBegin. pInputBox must hold all vertices, those
    /// to come too, by the time of determineExtBox().
    Chunk(Dt2* pDt2_, const Bbox2* pInputBox_, const IdxVtxAct* pRangeBegin_, const IdxVtxAct* pFirst_,
          const IdxVtxAct* pLast_);
    ~Chunk();
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    /// Looks at the points.
    void determineBox();
    /// Computes the region from the coarse triangulation, which it only reads.
    void determineExtBox();
    /// Inserts the points, and hands the triangles that were not used back to the engine. repair is the worker's own.
    void insertAll(StarRepair& repair);

    bool mayRunBeside(const Chunk& other) const
    {
        return numToInsert == 0 || other.numToInsert == 0 || !region.overlaps(other.region);
    }
    std::size_t size() const { return numToInsert; }
    /// The box of all its points, those of the sample too; invalid when there are none.
    const Bbox2& getBox() const { return box; }
    const ChunkRegion& getRegion() const { return region; }

private:
    /// Vertices of the sample have triangles; nobody else inserts those of this chunk.
    static bool isToInsert(const IdxVtxAct& item)
    {
        return item.bActive && item.pVtx->getIncidentTriangle() == nullptr;
    }
    Triangle2* startTriangle() const;
    Triangle2* chooseStartVertex();
    void insertRec(const IdxVtxAct* pBegin, const IdxVtxAct* pEnd, Point2*& pHint);
    void insertOne(Point2* pVtx, Point2*& pHint);
    void haveTwoTriangles();
    Triangle2* takeTriangle();
    void handBackTriangles();

    Dt2* pDt2;
    const Bbox2* pInputBox;
    const IdxVtxAct* pRangeBegin;
    const IdxVtxAct* pFirst;
    const IdxVtxAct* pLast;
    std::size_t numToInsert = 0;
    Bbox2 box; ///< from determineExtBox() on, it holds the vertex where the first walk starts, too
    const Point2* pFirstPoint = nullptr;
    ChunkRegion region;
    Point2* pStartVtx = nullptr;
    Triangle2* pFresh = nullptr; ///< triangles fetched and not yet used: [pFresh, pFreshEnd)
    Triangle2* pFreshEnd = nullptr;
    VertexVault::Dups vDups;
    StarRepair* pStarRepair = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
