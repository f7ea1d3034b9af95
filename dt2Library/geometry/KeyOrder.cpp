#include "geometry/KeyOrder.h"

#include <algorithm>
#include <array>

namespace ORBI_LUMO25D
{

namespace
{

constexpr unsigned numDigits = 3;
constexpr unsigned digitBits = KeyedPosition::keyBits / numDigits;
static_assert(digitBits * numDigits == KeyedPosition::keyBits);
constexpr std::size_t numBuckets = std::size_t(1) << digitBits;
/// Below, the buckets would cost more than the comparisons.
constexpr std::size_t shortestRadixSort = 1024;

std::size_t digit(std::uint32_t key, unsigned i)
{
    return (key >> (i * digitBits)) & (numBuckets - 1);
}

} // namespace

void sortByKey(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n)
{
    if (n < shortestRadixSort) {
        std::stable_sort(pItems, pItems + n,
                         [](const KeyedPosition& a, const KeyedPosition& b) { return a.key() < b.key(); });
        return;
    }
    std::array<std::array<std::size_t, numBuckets>, numDigits> aaStart{};
    for (std::size_t i = 0; i < n; ++i) {
        for (unsigned d = 0; d < numDigits; ++d) ++aaStart[d][digit(pItems[i].key(), d)];
    }
    KeyedPosition* pFrom = pItems;
    KeyedPosition* pTo = pScratch;
    for (unsigned d = 0; d < numDigits; ++d) {
        std::size_t start = 0;
        for (std::size_t& entry : aaStart[d]) {
            const std::size_t count = entry;
            entry = start;
            start += count;
        }
        for (std::size_t i = 0; i < n; ++i) pTo[aaStart[d][digit(pFrom[i].key(), d)]++] = pFrom[i];
        std::swap(pFrom, pTo);
    }
    if (pFrom != pItems) std::copy(pFrom, pFrom + n, pItems);
}

} // namespace ORBI_LUMO25D
