#ifndef LUMO25D_CORE_INSERTERMT_H
#define LUMO25D_CORE_INSERTERMT_H

#include "core/Chunk.h"
#include "core/IdxVtxAct.h"

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
/// a coarse triangulation, then the rest in chunks along the curve. Two chunks whose regions intersect never run at the
/// same time, so that no lock is needed for triangles (Chunk tells why the regions suffice).
///
/// The fake box must be in force, and the triangulation must have no constraints. All threads are joined when go()
/// returns or throws; the first exception of a worker comes out of go().
class InserterMT
{
public:
    explicit InserterMT(Dt2* pDt2_) : pDt2(pDt2_) {}

    /// pHint: any triangle, where the search for the first sample starts.
    void go(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint);

private:
    void insertSample(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint);
    void makeChunks(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t numChunks);
    void determineRegions();
    void startWork(int numThreads);
    void work();
    Chunk* getNextChunk();
    void endChunk(Chunk* pChunk);

    Dt2* pDt2;
    std::size_t sampleDistance = 0; ///< items between two samples
    std::vector<std::unique_ptr<Chunk>> vChunks;

    std::mutex mtxChunks; ///< guards what follows
    std::condition_variable chunkEnded;
    std::vector<Chunk*> vWaitingChunks; ///< in reverse curve order
    std::vector<Chunk*> vStartedChunks;
    std::exception_ptr pException;
};

} // namespace ORBI_LUMO25D

#endif
