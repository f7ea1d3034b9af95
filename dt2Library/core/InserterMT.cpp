#include "core/InserterMT.h"

#include "core/MTCtrl.h"
#include "core/Stretches.h"
#include "engine/Dt2.h"
#include "support/check.h"

#include <algorithm>
#include <iostream>
#include <thread>

namespace ORBI_LUMO25D
{

namespace
{

/// A chunk of this many points takes about a millisecond: long enough to pay for its region, short enough for the
/// threads to end at nearly the same time.
constexpr std::size_t chunkSize = 4000;
/// Where that gives too few chunks for all threads to find disjoint ones, chunks are smaller, down to this size.
constexpr std::size_t chunksPerThread = 32;
constexpr std::size_t smallestChunk = 300;
/// With fewer chunks, most of them would be neighbours.
constexpr std::size_t fewestChunks = 32;
/// The denser the sample is, the smaller are the regions, and the longer the threads wait for it.
constexpr std::size_t samplesPerChunk = 16;

void unite(Bbox2& box, const Bbox2& other)
{
    if (other.isValid()) box = box + other;
}

Bbox2 boxOfItems(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, int numCPU)
{
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    std::vector<Bbox2> vParts(threadsForScan(n, numCPU));
    forStretches(n, vParts.size(), [&](const Stretch& s) {
        Bbox2 box;
        for (std::size_t i = s.begin; i < s.end; ++i) {
            if (pFirst[i].bActive) box.add(*pFirst[i].pVtx);
        }
        vParts[s.number] = box;
    });
    Bbox2 box;
    for (const Bbox2& part : vParts) {
        unite(box, part);
    }
    return box;
}

} // namespace

bool InserterMT::go(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint)
{
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    const std::size_t wanted = chunksPerThread * static_cast<std::size_t>(pDt2->numCPU);
    const std::size_t numChunks = std::max(n / chunkSize, std::min(n / smallestChunk, wanted));
    if (numChunks < fewestChunks) return false;
    const std::size_t numDups = pDt2->vertexVault.numDups();
    insertSample(pFirst, pLast, n / (samplesPerChunk * numChunks), pHint);
    pDt2->vertexVault.forgetDups(numDups); // they are found once more, by whoever inserts the rest
    makeChunks(pFirst, pLast, numChunks);
    determineBoxes(pFirst, pLast);
    determineRegions();
    const bool bPays = pays();
    if (bPays) startWork();
    return bPays;
}

/// The sample is spread evenly along the curve, so that its triangulation has the density of the whole input.
void InserterMT::insertSample(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t stride, Triangle2* pHint)
{
    std::vector<IdxVtxAct> vSample;
    vSample.reserve(static_cast<std::size_t>(pLast - pFirst) / stride + 1);
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    for (std::size_t i = stride / 2; i < n; i += stride) {
        vSample.push_back(pFirst[i]);
    }
    LUMO_CHECK(!vSample.empty(), "!vSparseVtx.empty()");
    pDt2->triangulateRec(vSample.data(), vSample.data() + vSample.size(), pHint);
}

void InserterMT::makeChunks(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, std::size_t numChunks)
{
    const auto n = static_cast<std::size_t>(pLast - pFirst);
    for (std::size_t i = 0; i < numChunks; ++i) {
        vChunks.push_back(std::make_unique<Chunk>(pDt2, &dtBox, pFirst, pFirst + n * i / numChunks,
                                                  pFirst + n * (i + 1) / numChunks));
    }
}

void InserterMT::runOnChunks(void (Chunk::*memberFunction)())
{
    MTCtrl<Chunk> control;
    for (const auto& pChunk : vChunks) {
        control.add(pChunk.get());
    }
    control.run(memberFunction, pDt2->numCPU);
}

void InserterMT::determineBoxes(const IdxVtxAct* pFirst, const IdxVtxAct* pLast)
{
    runOnChunks(&Chunk::determineBox);
    dtBox = boxOfItems(pDt2->vertexVault.begin(), pFirst, pDt2->numCPU);
    unite(dtBox, boxOfItems(pLast, pDt2->vertexVault.end(), pDt2->numCPU));
    for (const auto& pChunk : vChunks) {
        unite(dtBox, pChunk->getBox());
    }
}

void InserterMT::determineRegions()
{
    runOnChunks(&Chunk::determineExtBox);
    for (const auto& pChunk : vChunks) {
        for (std::size_t i = 0; i < pChunk->getRegion().numBadAtBox(); ++i) {
            std::cout << "bad accuracy1, todo\n";
        }
        for (std::size_t i = 0; i < pChunk->getRegion().numBadBeside(); ++i) {
            std::cout << "bad accuracy2, todo\n";
        }
    }
}

/// True when more than half of the points are in chunks that may run beside more than half of the others. Looks at some
/// of the chunks when there are many.
bool InserterMT::pays() const
{
    const std::size_t stride = vChunks.size() / 256 + 1;
    std::size_t numLookedAt = 0;
    std::size_t numFree = 0;
    for (std::size_t i = 0; i < vChunks.size(); i += stride) {
        std::size_t numBeside = 0;
        std::size_t numOthers = 0;
        for (std::size_t j = 0; j < vChunks.size(); ++j) {
            if (i == j) continue;
            numOthers += vChunks[j]->size();
            if (vChunks[i]->mayRunBeside(*vChunks[j])) numBeside += vChunks[j]->size();
        }
        numLookedAt += vChunks[i]->size();
        if (2 * numBeside > numOthers) numFree += vChunks[i]->size();
    }
    return 2 * numFree > numLookedAt;
}

void InserterMT::startWork()
{
    LUMO_CHECK(vStartedChunks.empty(), "sStartedChunks.empty()");
    vIsWaiting.assign(vChunks.size(), true);
    numWaiting = vChunks.size();
    const std::size_t numThreads = std::min(static_cast<std::size_t>(pDt2->numCPU), vChunks.size());
    vStartedChunks.reserve(numThreads);
    std::vector<std::thread> vThreads;
    vThreads.reserve(numThreads);
    try {
        for (std::size_t i = 1; i < numThreads; ++i) {
            vThreads.emplace_back(&InserterMT::work, this, i * vChunks.size() / numThreads);
        }
    } catch (const std::exception&) {
        // The threads at hand, this one at least, do the work.
    }
    work(0);
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    if (pException) std::rethrow_exception(pException);
}

/// Works along the curve from a chunk on: what a thread has just written is what it goes on with, and no other thread
/// works there.
void InserterMT::work(std::size_t place)
{
    try {
        StarRepair repair = pDt2->emptyStarRepair();
        while (Chunk* const pChunk = getNextChunk(place)) {
            pChunk->insertAll(repair);
            endChunk(pChunk);
        }
    } catch (...) {
        // The chunk that has failed stays among the started ones: nothing may run beside what it has left.
        const std::lock_guard<std::mutex> lock(mtxChunks);
        if (!pException) pException = std::current_exception();
        chunkEnded.notify_all();
    }
}

/// The chunk at the place, or the next one behind it, in a circle, that may run beside those that run now; waits as long
/// as there is none. The place moves on behind it. Null when nothing waits any more, or a chunk has failed.
Chunk* InserterMT::getNextChunk(std::size_t& place)
{
    std::unique_lock<std::mutex> lock(mtxChunks);
    const std::size_t n = vChunks.size();
    while (numWaiting > 0 && !pException) {
        // Where another thread has been already, this one looks for a long way of its own.
        if (place >= n || !vIsWaiting[place]) place = middleOfLongestRun();
        for (std::size_t k = 0; k < n; ++k) {
            const std::size_t i = (place + k) % n;
            if (!vIsWaiting[i] || !mayRun(vChunks[i].get())) continue;
            vIsWaiting[i] = false;
            --numWaiting;
            vStartedChunks.push_back(vChunks[i].get());
            place = i + 1;
            return vChunks[i].get();
        }
        chunkEnded.wait(lock);
    }
    return nullptr;
}

std::size_t InserterMT::middleOfLongestRun() const
{
    std::size_t middle = 0;
    std::size_t longest = 0;
    std::size_t run = 0;
    for (std::size_t i = 0; i < vIsWaiting.size(); ++i) {
        run = vIsWaiting[i] ? run + 1 : 0;
        if (run <= longest) continue;
        longest = run;
        middle = i - run / 2;
    }
    return middle;
}

bool InserterMT::mayRun(const Chunk* pChunk) const
{
    return std::all_of(vStartedChunks.begin(), vStartedChunks.end(),
                       [pChunk](const Chunk* pStarted) { return pChunk->mayRunBeside(*pStarted); });
}

void InserterMT::endChunk(const Chunk* pChunk)
{
    const std::lock_guard<std::mutex> lock(mtxChunks);
    vStartedChunks.erase(std::find(vStartedChunks.begin(), vStartedChunks.end(), pChunk));
    chunkEnded.notify_all();
}

} // namespace ORBI_LUMO25D
