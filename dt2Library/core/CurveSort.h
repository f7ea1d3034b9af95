#ifndef LUMO25D_CORE_CURVESORT_H
#define LUMO25D_CORE_CURVESORT_H

#include "core/IdxVtxAct.h"
#include "geometry/KeyOrder.h"
#include "orbi_tools/UnsetAllocator.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Curve indices with positions in the input. sortPairs() checks the number of pairs.
using IdxPairs = std::vector<KeyedPosition, UnsetAllocator<KeyedPosition>>;
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
