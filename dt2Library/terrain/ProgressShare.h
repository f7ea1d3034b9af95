#ifndef LUMO25D_TERRAIN_PROGRESSSHARE_H
#define LUMO25D_TERRAIN_PROGRESSSHARE_H

#include "support/Progress.h"

#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// Spreads some units of a step's work evenly over items.
class ProgressShare
{
public:
    ProgressShare(Progress& progress_, std::uint64_t units_, std::size_t numItems_)
        : progress(progress_), units(units_), numItems(numItems_)
    {
    }
    /// One item is done.
    void next()
    {
        for (due += units; due >= numItems; due -= numItems) progress.step(1);
    }

private:
    Progress& progress;
    const std::uint64_t units, numItems;
    std::uint64_t due = 0; ///< units times items that aren't told yet
};

} // namespace ORBI_LUMO25D

#endif
