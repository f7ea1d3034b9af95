#include "core/CurveSort.h"

#include "core/Stretches.h"
#include "orbi_tools/BlockArray.h"
#include "support/check.h"

#include <algorithm>
#include <array>
#include <functional>

// Radix sort, least significant digit first, three digits. It is stable, so that the order of what has equal keys is
// the order of the input, and it needs a quarter of the time of a sort by comparisons: D. E. Knuth, The Art of Computer
// Programming 3, 5.2.5. Small digits keep the places that are written to in the first-level cache.

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t minParallel = 10000;
constexpr std::size_t minRadix = 500; ///< below, clearing and summing the counters costs more than comparisons

std::uint32_t keyOf(const KeyedPosition& pair)
{
    return pair.key();
}
std::uint32_t keyOf(const IdxVtxAct& item)
{
    return item.idx;
}
/// Width of a digit: three of them hold every key.
constexpr unsigned digitBits(const KeyedPosition*)
{
    return 10;
}
constexpr unsigned digitBits(const IdxVtxAct*)
{
    return 11;
}

/// Counts of the digits of a stretch; then, where the stretch puts its next record with that digit.
template <class Record>
using Digits = std::array<std::size_t, std::size_t(1) << digitBits(static_cast<Record*>(nullptr))>;

/// Turns the counts of all stretches into places: by digit, then by stretch, so that the order of equal digits is kept.
/// False when all digits are the same.
template <class Record>
bool countsToPlaces(std::vector<Digits<Record>>& vCounts, std::size_t n)
{
    std::size_t begin = 0;
    for (std::size_t digit = 0; digit < vCounts[0].size(); ++digit) {
        const std::size_t beginOfDigit = begin;
        for (Digits<Record>& aCounts : vCounts) {
            const std::size_t count = aCounts[digit];
            aCounts[digit] = begin;
            begin += count;
        }
        if (begin - beginOfDigit == n) return false;
    }
    return true;
}

/// Sorts [pFirst, pLast) by key, stable; pScratch has room for as many. Each thread counts and moves a stretch.
template <class Record>
void radixSort(Record* pFirst, Record* pLast, Record* pScratch, std::size_t numThreads)
{
    constexpr unsigned bits = digitBits(static_cast<Record*>(nullptr));
    constexpr std::uint32_t mask = (1u << bits) - 1;
    const std::size_t n = static_cast<std::size_t>(pLast - pFirst);
    if (n < minRadix) {
        std::stable_sort(pFirst, pLast, [](const Record& a, const Record& b) { return keyOf(a) < keyOf(b); });
        return;
    }
    Record* pFrom = pFirst;
    Record* pTo = pScratch;
    std::vector<Digits<Record>> vPlaces(numThreads);
    for (unsigned shift = 0; shift < 3 * bits; shift += bits) {
        forStretches(n, numThreads, [&](const Stretch& s) {
            Digits<Record> aCounts{}; // on the thread's own stack: no line of the cache is shared
            for (std::size_t i = s.begin; i < s.end; ++i) {
                ++aCounts[keyOf(pFrom[i]) >> shift & mask];
            }
            vPlaces[s.number] = aCounts;
        });
        if (!countsToPlaces<Record>(vPlaces, n)) continue;
        forStretches(n, numThreads, [&](const Stretch& s) {
            Digits<Record> aPlaces = vPlaces[s.number];
            for (std::size_t i = s.begin; i < s.end; ++i) {
                pTo[aPlaces[keyOf(pFrom[i]) >> shift & mask]++] = pFrom[i];
            }
        });
        std::swap(pFrom, pTo);
    }
    if (pFrom != pFirst) std::copy(pFrom, pFrom + n, pFirst);
}

/// Moves what satisfies the predicate to the front, both parts in their old order; returns where the other part begins.
template <class Record, class Predicate>
Record* partitionStable(Record* pFirst, Record* pLast, Record* pScratch, Predicate isInFront)
{
    Record* pBorder = pFirst;
    Record* pRest = pScratch;
    for (Record* p = pFirst; p != pLast; ++p) {
        // Written to both sides, kept on one: the outcome of the test can't be predicted.
        const Record record = *p;
        const bool bInFront = isInFront(record);
        *pBorder = record;
        *pRest = record;
        pBorder += bInFront;
        pRest += !bInFront;
    }
    std::copy(pScratch, pRest, pBorder);
    return pBorder;
}

/// The plain sort of items.
void sortStretch(IdxVtxAct* pFirst, IdxVtxAct* pLast, IdxVtxAct* pScratch)
{
    IdxVtxAct* const pEndOfActive =
        partitionStable(pFirst, pLast, pScratch, [](const IdxVtxAct& item) { return item.bActive; });
    radixSort(pFirst, pEndOfActive, pScratch, 1);
}

/// A stretch of the vault's items with as much scratch memory.
struct SortTask
{
    void run() { sortStretch(pFirst, pLast, pScratch); }

    IdxVtxAct* pFirst;
    IdxVtxAct* pLast;
    IdxVtxAct* pScratch;
};

bool goesFirst(const IdxVtxAct& item, std::uint32_t pivot)
{
    return item.idx < pivot || !item.bActive;
}

/// The mean of about a hundred samples.
std::uint32_t meanIndex(const IdxVtxAct* pFirst, const IdxVtxAct* pLast)
{
    const std::size_t n = static_cast<std::size_t>(pLast - pFirst);
    if (n < 200) return n == 0 ? 0 : pFirst->idx;
    const std::size_t stride = n / 100 - 1;
    double sum = 0.0;
    std::size_t numSamples = 0;
    for (std::size_t i = 0; i < n; i += stride, ++numSamples) {
        sum += static_cast<double>(pFirst[i].idx);
    }
    return static_cast<std::uint32_t>(sum / static_cast<double>(numSamples));
}

/// Cuts at the mean, and each part at its own mean, and sorts the four stretches at the same time.
void sortInFour(IdxVtxAct* pFirst, IdxVtxAct* pLast, IdxVtxAct* pScratch, int numCPU)
{
    const auto split = [pScratch](IdxVtxAct* pBegin, IdxVtxAct* pEnd) {
        const std::uint32_t pivot = meanIndex(pBegin, pEnd);
        return partitionStable(pBegin, pEnd, pScratch,
                               [pivot](const IdxVtxAct& item) { return goesFirst(item, pivot); });
    };
    IdxVtxAct* const pMiddle = split(pFirst, pLast);
    IdxVtxAct* const pQuarter = split(pFirst, pMiddle);
    IdxVtxAct* const pThreeQuarters = split(pMiddle, pLast);
    const auto scratchOf = [=](const IdxVtxAct* p) { return pScratch + (p - pFirst); };
    std::array<SortTask, 4> aTasks{SortTask{pFirst, pQuarter, scratchOf(pFirst)},
                                   SortTask{pQuarter, pMiddle, scratchOf(pQuarter)},
                                   SortTask{pMiddle, pThreeQuarters, scratchOf(pMiddle)},
                                   SortTask{pThreeQuarters, pLast, scratchOf(pThreeQuarters)}};
    MTCtrl<SortTask> ctrl;
    for (SortTask& task : aTasks) {
        ctrl.add(&task);
    }
    ctrl.run(&SortTask::run, numCPU);
}

/// True when [pFirst, pFirst + n) ascends.
template <class Record, class Less>
bool isSorted(const Record* pFirst, std::size_t n, int numCPU, const Less& less)
{
    return allStretches(n, threadsForScan(n, numCPU), [&](const Stretch& s) {
        return std::is_sorted(pFirst + s.begin, pFirst + std::min(s.end + 1, n), less); // with the next one's first
    });
}

} // namespace

void sortPairs(IdxPairs& vPairs, int numCPU)
{
    const std::size_t n = vPairs.size();
    LUMO_CHECK(n <= KeyedPosition::maxPositions, "vPairs.size()<=maxPositions");
    // What was appended in curve order is in order already.
    if (isSorted(vPairs.data(), n, numCPU, std::less<KeyedPosition>())) return;
    const auto isLower = [](const KeyedPosition& a, const KeyedPosition& b) { return a.position() < b.position(); };
    if (isSorted(vPairs.data(), n, numCPU, isLower)) {
        const BlockArray<KeyedPosition> scratch(n);
        radixSort(vPairs.data(), vPairs.data() + n, scratch.data(), threadsForScan(n, numCPU));
    } else {
        std::sort(vPairs.begin(), vPairs.end());
    }
}

void sortItems(IdxItems& vItems, int numCPU)
{
    const std::size_t n = vItems.size();
    if (isSorted(vItems.data(), n, numCPU, std::less<IdxVtxAct>())) return;
    const BlockArray<IdxVtxAct> scratch(n);
    if (numCPU >= 4 && n >= minParallel) {
        sortInFour(vItems.data(), vItems.data() + n, scratch.data(), numCPU);
    } else {
        sortStretch(vItems.data(), vItems.data() + n, scratch.data());
    }
}

} // namespace ORBI_LUMO25D
