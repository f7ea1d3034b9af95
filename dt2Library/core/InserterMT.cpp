#include "core/InserterMT.h"

#include "core/MTCtrl.h"
#include "engine/Dt2.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <thread>

namespace ORBI_LUMO25D
{

void InserterMT::go(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint)
{
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    // Many chunks find others to run beside; chunks that are too small don't pay for their regions.
    constexpr std::size_t smallestChunk = 400;
    const auto manyChunks = static_cast<std::size_t>(2.0 * std::sqrt(static_cast<double>(n)));
    const std::size_t numChunks = std::max<std::size_t>(std::min(manyChunks, n / smallestChunk), 2);
    const std::size_t numSamples = std::min(5 * numChunks, n / 2);
    sampleDistance = n / numSamples;
    insertSample(pFirst, pLast, pHint);
    makeChunks(pFirst, pLast, numChunks);
    determineRegions();
    startWork(pDt2->numCPU);
    vChunks.clear();
}

/// The sample is spread evenly along the curve, so that its triangulation has the density of the whole input.
void InserterMT::insertSample(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint)
{
    std::vector<IdxVtxAct> vSample;
    vSample.reserve(static_cast<std::size_t>(pLast - pFirst) / (sampleDistance + 1));
    for (const IdxVtxAct* pItem = pFirst + sampleDistance; pItem < pLast; pItem += sampleDistance + 1) {
        vSample.push_back(*pItem);
    }
    LUMO_CHECK(!vSample.empty(), "!vSparseVtx.empty()");
    pDt2->triangulateRec(vSample.data(), vSample.data() + vSample.size(), pHint);
}

void InserterMT::makeChunks(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t numChunks)
{
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    const std::size_t size = n / numChunks;
    for (std::size_t begin = 0; begin < n;) {
        std::size_t end = std::min(begin + size, n);
        if (n - end <= size / 3) end = n; // a small rest goes with the last chunk
        vChunks.push_back(std::make_unique<Chunk>(pDt2, pFirst, sampleDistance, pFirst + begin, pFirst + end));
        begin = end;
    }
}

void InserterMT::determineRegions()
{
    MTCtrl<Chunk> control;
    for (const auto& pChunk : vChunks) {
        control.add(pChunk.get());
    }
    control.run(&Chunk::determineExtBox, pDt2->numCPU);
    for (const auto& pChunk : vChunks) {
        for (std::size_t i = 0; i < pChunk->numBadAtBox(); ++i) {
            std::cout << "bad accuracy1, todo\n";
        }
        for (std::size_t i = 0; i < pChunk->numBadBeside(); ++i) {
            std::cout << "bad accuracy2, todo\n";
        }
    }
}

void InserterMT::startWork(int numThreads)
{
    LUMO_CHECK(vStartedChunks.empty(), "sStartedChunks.empty()");
    for (auto it = vChunks.rbegin(); it != vChunks.rend(); ++it) {
        vWaitingChunks.push_back(it->get());
    }
    std::vector<std::thread> vThreads;
    vThreads.reserve(static_cast<std::size_t>(numThreads));
    try {
        for (int i = 1; i < numThreads; ++i) {
            vThreads.emplace_back(&InserterMT::work, this);
        }
    } catch (const std::exception&) {
        // The threads at hand, this one at least, do the work.
    }
    work();
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    if (pException) std::rethrow_exception(pException);
}

void InserterMT::work()
{
    while (Chunk* const pChunk = getNextChunk()) {
        try {
            pChunk->insertAll();
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mtxChunks);
            if (!pException) pException = std::current_exception();
        }
        endChunk(pChunk);
    }
}

/// The first chunk along the curve that may run beside those that run now; waits as long as there is none. Null when
/// nothing waits any more, or a chunk has failed.
Chunk* InserterMT::getNextChunk()
{
    std::unique_lock<std::mutex> lock(mtxChunks);
    while (!vWaitingChunks.empty() && !pException) {
        const auto mayRun = [this](const Chunk* pChunk) {
            return std::all_of(vStartedChunks.begin(), vStartedChunks.end(),
                               [pChunk](const Chunk* pStarted) { return pChunk->mayRunBeside(*pStarted); });
        };
        const auto it = std::find_if(vWaitingChunks.rbegin(), vWaitingChunks.rend(), mayRun);
        if (it != vWaitingChunks.rend()) {
            Chunk* const pChunk = *it;
            vWaitingChunks.erase(std::next(it).base());
            vStartedChunks.push_back(pChunk);
            return pChunk;
        }
        chunkEnded.wait(lock);
    }
    return nullptr;
}

void InserterMT::endChunk(Chunk* pChunk)
{
    const std::lock_guard<std::mutex> lock(mtxChunks);
    vStartedChunks.erase(std::find(vStartedChunks.begin(), vStartedChunks.end(), pChunk));
    chunkEnded.notify_all();
}

} // namespace ORBI_LUMO25D
