#include "core/CurveSort.h"

#include "core/MTCtrl.h"
#include "orbi_tools/BlockMemory.h"
#include "support/check.h"

#include <algorithm>
#include <array>
#include <new>

// Radix sort, least significant digit first, three digits. It is stable, so that the order of what has equal keys is
// the order of the input, and it needs a quarter of the time of a sort by comparisons: D. E. Knuth, The Art of Computer
// Programming 3, 5.2.5. Small digits keep the places that are written to in the first-level cache.

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t minParallel = 10000;
constexpr std::size_t minRadix = 500; ///< below, clearing and summing the counters costs more than comparisons

std::uint32_t keyOf(const IdxPos& pair)
{
    return pair.idx();
}
std::uint32_t keyOf(const IdxVtxAct& item)
{
    return item.idx;
}
/// Width of a digit: three of them hold every key.
constexpr unsigned digitBits(const IdxPos*)
{
    return 10;
}
constexpr unsigned digitBits(const IdxVtxAct*)
{
    return 11;
}

/// Memory of the size of what is sorted.
template <class Record>
class Scratch
{
public:
    explicit Scratch(std::size_t n) : memory(n * sizeof(Record))
    {
        if (memory.data() == nullptr) throw std::bad_alloc();
    }
    Record* data() const { return reinterpret_cast<Record*>(memory.data()); }

private:
    BlockMemory memory;
};

/// Sorts [pFirst, pLast) by key, stable; pScratch has room for as many.
template <class Record>
void radixSort(Record* pFirst, Record* pLast, Record* pScratch)
{
    constexpr unsigned bits = digitBits(static_cast<Record*>(nullptr));
    constexpr std::uint32_t mask = (1u << bits) - 1;
    const std::size_t n = static_cast<std::size_t>(pLast - pFirst);
    if (n < minRadix) {
        std::stable_sort(pFirst, pLast, [](const Record& a, const Record& b) { return keyOf(a) < keyOf(b); });
        return;
    }
    std::array<std::array<std::size_t, 1u << bits>, 3> aaCounts{};
    for (const Record* p = pFirst; p != pLast; ++p) {
        const std::uint32_t key = keyOf(*p);
        ++aaCounts[0][key & mask];
        ++aaCounts[1][key >> bits & mask];
        ++aaCounts[2][key >> 2 * bits];
    }
    Record* pFrom = pFirst;
    Record* pTo = pScratch;
    for (unsigned digit = 0; digit < 3; ++digit) {
        auto& aCounts = aaCounts[digit];
        const unsigned shift = digit * bits;
        if (aCounts[keyOf(*pFirst) >> shift & mask] == n) continue; // the same digit everywhere
        std::size_t begin = 0;
        for (std::size_t& count : aCounts) {
            const std::size_t size = count;
            count = begin;
            begin += size;
        }
        for (const Record* p = pFrom; p != pFrom + n; ++p) {
            pTo[aCounts[keyOf(*p) >> shift & mask]++] = *p;
        }
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

/// The plain sort of pairs.
void sortStretch(IdxPos* pFirst, IdxPos* pLast, IdxPos* pScratch)
{
    const auto isLower = [](const IdxPos& a, const IdxPos& b) { return a.position() < b.position(); };
    if (std::is_sorted(pFirst, pLast, isLower)) {
        radixSort(pFirst, pLast, pScratch);
    } else {
        std::sort(pFirst, pLast);
    }
}

/// The plain sort of items.
void sortStretch(IdxVtxAct* pFirst, IdxVtxAct* pLast, IdxVtxAct* pScratch)
{
    IdxVtxAct* const pEndOfActive =
        partitionStable(pFirst, pLast, pScratch, [](const IdxVtxAct& item) { return item.bActive; });
    radixSort(pFirst, pEndOfActive, pScratch);
}

/// A stretch of the vector with as much scratch memory.
template <class Record>
struct Stretch
{
    void run() { sortStretch(pFirst, pLast, pScratch); }

    Record* pFirst;
    Record* pLast;
    Record* pScratch;
};
using SortTask = Stretch<IdxVtxAct>;
using SortTask2 = Stretch<IdxPos>;

bool goesFirst(const IdxPos& pair, std::uint32_t pivot)
{
    return pair.idx() < pivot;
}
bool goesFirst(const IdxVtxAct& item, std::uint32_t pivot)
{
    return item.idx < pivot || !item.bActive;
}

/// The mean of about a hundred samples.
template <class Record>
std::uint32_t meanIndex(const Record* pFirst, const Record* pLast)
{
    const std::size_t n = static_cast<std::size_t>(pLast - pFirst);
    if (n < 200) return n == 0 ? 0 : keyOf(*pFirst);
    const std::size_t stride = n / 100 - 1;
    double sum = 0.0;
    std::size_t numSamples = 0;
    for (std::size_t i = 0; i < n; i += stride, ++numSamples) {
        sum += static_cast<double>(keyOf(pFirst[i]));
    }
    return static_cast<std::uint32_t>(sum / static_cast<double>(numSamples));
}

/// Cuts at the mean, and each part at its own mean, and sorts the four stretches at the same time.
template <class Task, class Record>
void sortInFour(Record* pFirst, Record* pLast, Record* pScratch, int numCPU)
{
    const auto split = [pScratch](Record* pBegin, Record* pEnd) {
        const std::uint32_t pivot = meanIndex(pBegin, pEnd);
        return partitionStable(pBegin, pEnd, pScratch,
                               [pivot](const Record& record) { return goesFirst(record, pivot); });
    };
    Record* const pMiddle = split(pFirst, pLast);
    Record* const pQuarter = split(pFirst, pMiddle);
    Record* const pThreeQuarters = split(pMiddle, pLast);
    const auto scratchOf = [=](const Record* p) { return pScratch + (p - pFirst); };
    std::array<Task, 4> aTasks{Task{pFirst, pQuarter, scratchOf(pFirst)}, Task{pQuarter, pMiddle, scratchOf(pQuarter)},
                               Task{pMiddle, pThreeQuarters, scratchOf(pMiddle)},
                               Task{pThreeQuarters, pLast, scratchOf(pThreeQuarters)}};
    MTCtrl<Task> ctrl;
    for (Task& task : aTasks) {
        ctrl.add(&task);
    }
    ctrl.run(&Task::run, numCPU);
}

template <class Task, class Record>
void sortRecords(std::vector<Record>& vRecords, int numCPU)
{
    const std::size_t n = vRecords.size();
    // What was appended in curve order is in order already.
    if (std::is_sorted(vRecords.begin(), vRecords.end())) return;
    const Scratch<Record> scratch(n);
    if (numCPU >= 4 && n >= minParallel) {
        sortInFour<Task>(vRecords.data(), vRecords.data() + n, scratch.data(), numCPU);
    } else {
        sortStretch(vRecords.data(), vRecords.data() + n, scratch.data());
    }
}

} // namespace

void sortPairs(std::vector<IdxPos>& vPairs, int numCPU)
{
    LUMO_CHECK(vPairs.size() <= IdxPos::maxPositions, "vPairs.size()<=maxPositions");
    sortRecords<SortTask2>(vPairs, numCPU);
}

void sortItems(std::vector<IdxVtxAct>& vItems, int numCPU)
{
    sortRecords<SortTask>(vItems, numCPU);
}

} // namespace ORBI_LUMO25D
