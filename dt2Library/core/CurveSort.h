#ifndef LUMO25D_CORE_CURVESORT_H
#define LUMO25D_CORE_CURVESORT_H

#include "core/IdxVtxAct.h"
#include "orbi_tools/UnsetAllocator.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// A curve index of at most 30 bits with a position in the input, below 2^34, in 64 bits.
class IdxPos
{
public:
    static constexpr unsigned positionBits = 34;
    static constexpr std::uint64_t maxPositions = std::uint64_t(1) << positionBits;

    IdxPos() = default;
    /// Both in their ranges, which isn't checked: sortPairs() checks the number of pairs.
    IdxPos(std::uint32_t idx, std::size_t position) : packed(std::uint64_t(idx) << positionBits | position) {}

    std::uint32_t idx() const { return static_cast<std::uint32_t>(packed >> positionBits); }
    std::size_t position() const { return static_cast<std::size_t>(packed & (maxPositions - 1)); }

    /// By index, then by position.
    bool operator<(const IdxPos& other) const { return packed < other.packed; }

private:
    std::uint64_t packed = 0;
};

using IdxPairs = std::vector<IdxPos, UnsetAllocator<IdxPos>>;
using IdxItems = std::vector<IdxVtxAct, UnsetAllocator<IdxVtxAct>>;

/// Sorts by index, then by position; the result is the same for every numCPU. Linear when the positions ascend in the
/// input. More than 2^34 pairs are a failed condition.
///
/// Long vectors are sorted on up to numCPU threads. Takes as much memory again as the vector has, for the time of the
/// sort.
void sortPairs(IdxPairs& vPairs, int numCPU);

/// Sorts the vault's items: active ones by index, and behind them, in their old order, the inactive ones. Linear,
/// and stable. Memory as above.
///
/// From 10000 entries and numCPU 4 on, four stretches are sorted, whose active items follow one another in order, and
/// each stretch has its inactive items at its own end.
void sortItems(IdxItems& vItems, int numCPU);

} // namespace ORBI_LUMO25D

#endif
