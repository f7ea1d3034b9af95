// American flag sort: a radix sort in place, topmost digit first (P. M. McIlroy, K. Bostic, M. D. McIlroy, "Engineering
// radix sort", Computing Systems 6, 1993). It isn't stable; the position is a part of the key instead, and costs nothing
// unless many points share a cell: buckets become small after two or three digits.

#include "cloud/CellSort.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t smallBucket = 48; ///< sorted by comparisons
constexpr unsigned digitBits = 8;
constexpr std::size_t numBuckets = std::size_t(1) << digitBits;

unsigned numDigits(std::uint64_t maxValue)
{
    unsigned n = 0;
    for (; maxValue != 0; maxValue >>= digitBits) ++n;
    return n;
}

class FlagSort
{
public:
    FlagSort(CCD maxCode, std::size_t maxPosition)
        : codeDigits(numDigits(maxCode)), allDigits(codeDigits + numDigits(maxPosition))
    {
    }

    void sort(CellEntry* pFirst, std::size_t n, unsigned d) const
    {
        std::array<std::size_t, numBuckets> aEnds;
        for (; n > smallBucket && d < allDigits; ++d) {
            if (!countDigits(pFirst, n, d, aEnds)) continue; // all in one bucket
            permute(pFirst, d, aEnds);
            std::size_t begin = 0;
            for (const std::size_t end : aEnds) {
                if (end - begin > 1) sort(pFirst + begin, end - begin, d + 1);
                begin = end;
            }
            return;
        }
        std::sort(pFirst, pFirst + n);
    }

private:
    /// Digit d, from the top: those of the code, then those of the position.
    std::size_t digit(const CellEntry& e, unsigned d) const
    {
        const std::uint64_t value = d < codeDigits ? e.ccd : e.position;
        const unsigned below = (d < codeDigits ? codeDigits : allDigits) - 1 - d;
        return value >> (digitBits * below) & (numBuckets - 1);
    }

    /// Where each bucket ends; false when there is only one.
    bool countDigits(const CellEntry* pFirst, std::size_t n, unsigned d,
                     std::array<std::size_t, numBuckets>& aEnds) const
    {
        aEnds.fill(0);
        for (const CellEntry* p = pFirst; p != pFirst + n; ++p) ++aEnds[digit(*p, d)];
        if (aEnds[digit(*pFirst, d)] == n) return false;
        std::size_t end = 0;
        for (std::size_t& count : aEnds) {
            end += count;
            count = end;
        }
        return true;
    }

    /// Moves every entry to its bucket: one is taken out, put where it belongs, the one that was there is next.
    void permute(CellEntry* pFirst, unsigned d, const std::array<std::size_t, numBuckets>& aEnds) const
    {
        std::array<std::size_t, numBuckets> aNext; // the first place of each bucket that isn't settled
        aNext[0] = 0;
        std::copy(aEnds.begin(), aEnds.end() - 1, aNext.begin() + 1);
        for (std::size_t bucket = 0; bucket < numBuckets; ++bucket) {
            while (aNext[bucket] < aEnds[bucket]) {
                CellEntry e = pFirst[aNext[bucket]];
                for (std::size_t target = digit(e, d); target != bucket; target = digit(e, d)) {
                    std::swap(e, pFirst[aNext[target]++]);
                }
                pFirst[aNext[bucket]++] = e;
            }
        }
    }

    unsigned codeDigits;
    unsigned allDigits;
};

} // namespace

void sortEntries(std::vector<CellEntry>& vEntries)
{
    CCD allBits = 0;
    std::size_t maxPosition = 0;
    for (const CellEntry& e : vEntries) {
        allBits |= e.ccd;
        maxPosition = std::max(maxPosition, e.position);
    }
    FlagSort(allBits, maxPosition).sort(vEntries.data(), vEntries.size(), 0);
}

std::vector<CellEntry> sortByCell(const PointBlocks& points, const Calc& calc)
{
    std::vector<CellEntry> vEntries(points.size());
    for (std::size_t i = 0; i < vEntries.size(); ++i) {
        vEntries[i] = {calc.code(points[i].x, points[i].y), i};
    }
    sortEntries(vEntries);
    return vEntries;
}

} // namespace ORBI_LUMO25D
