#ifndef LUMO25D_CLOUD_CELLSORT_H
#define LUMO25D_CLOUD_CELLSORT_H

#include "cloud/Calc.h"

#include "core/PointBlocks.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// A point by its position in the cloud, with the code of its cell.
struct CellEntry
{
    CCD ccd;
    std::size_t position;

    bool operator<(const CellEntry& other) const
    {
        return ccd != other.ccd ? ccd < other.ccd : position < other.position;
    }
};

/// The points of a cloud by cell, those of a cell in the order in which they came: the points of any cell of any coarser
/// level lie in one contiguous stretch, too. Linear in practice; 16 bytes a point, and no scratch memory.
std::vector<CellEntry> sortByCell(const PointBlocks& points, const Calc& calc);

/// The same order for entries as they come: all different.
void sortEntries(std::vector<CellEntry>& vEntries);

} // namespace ORBI_LUMO25D

#endif
