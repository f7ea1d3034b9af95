#ifndef LUMO25D_CORE_INSERTERMT_H
#define LUMO25D_CORE_INSERTERMT_H

#include "core/Chunk.h"
#include "core/IdxVtxAct.h"

#include "Bbox2.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// Inserts a range of the vault's items on several threads: first an even sample of it on the calling thread, which gives
/// a coarse triangulation, then the rest in chunks along the curve. Two chunks whose regions overlap never run at the
/// same time, so that no lock is needed for triangles (ChunkRegion tells why the regions suffice).
///
/// The fake box must be in force, and the triangulation must have no constraints. All threads are joined when go()
/// returns or throws; the first exception of a worker comes out of go(), when the other workers have ended the chunks
/// that they had begun.
class InserterMT
{
public:
    explicit InserterMT(Dt2* pDt2_) : pDt2(pDt2_) {}

    /// pHint: any triangle, where the search for the first sample starts.
    ///
    /// False when threads don't pay: when the range is short, or when the regions show that the threads would mostly wait
    /// for one another, as with points that all lie on one circle. Then nothing but the sample has been inserted, and its
    /// duplicates are forgotten. That depends on the points and the number of threads alone.
    bool go(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint);

private:
    void insertSample(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t stride, Triangle2* pHint);
    void makeChunks(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t numChunks);
    void runOnChunks(void (Chunk::*memberFunction)());
    void determineBoxes(const IdxVtxAct* pFirst, const IdxVtxAct* pLast);
    void determineRegions();
    bool pays() const;
    void startWork();
    void work(std::size_t place);
    Chunk* getNextChunk(std::size_t& place);
    std::size_t middleOfLongestRun() const;
    bool mayRun(const Chunk* pChunk) const;
    void endChunk(const Chunk* pChunk);

    Dt2* pDt2;
    Bbox2 dtBox;                                 ///< of all vertices but the corners of the fake box
    std::vector<std::unique_ptr<Chunk>> vChunks; ///< along the curve

    std::mutex mtxChunks; ///< guards what follows
    std::condition_variable chunkEnded;
    std::vector<bool> vIsWaiting; ///< by position in vChunks
    std::size_t numWaiting = 0;
    std::vector<const Chunk*> vStartedChunks;
    std::exception_ptr pException;
};

} // namespace ORBI_LUMO25D

#endif
