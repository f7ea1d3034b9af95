#ifndef LUMO25D_CLOUD_RANGESIMPLIFIER_H
#define LUMO25D_CLOUD_RANGESIMPLIFIER_H

#include "CloudPrepare.h"
#include "cloud/CellSort.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace ORBI_LUMO25D
{

/// What is to be kept of a hull. Both empty: nothing.
struct KeptHull
{
    std::vector<CellEntry> vEntries; ///< its points, sorted as those of the cloud are
    std::function<bool(const Coords&)> isOutside;
};

/// Turns the points of a cell into one point, or into those of its points that are on the hull.
class RangeSimplifier
{
public:
    /// points and hull must outlive the object. Results are appended to pResult; NULL: they are counted only. An unknown
    /// strategy is a failed condition.
    RangeSimplifier(const PointBlocks& points, const std::vector<CellEntry>& vEntries, SumStrategy strategy,
                    const KeptHull& hull, PointBlocks* pResult);

    /// Simplifies a range of the entries, which must come in their order. An empty one is a failed condition.
    void simplifyRange(const CellEntry* pFirst, const CellEntry* pLast);

    /// Number of points that the ranges so far have become.
    std::size_t numResults() const { return count; }

private:
    bool keepHullPoints(const CellEntry* pLast);
    double representativeZ(const CellEntry* pFirst, const CellEntry* pLast);
    Coords mean(const CellEntry* pFirst, const CellEntry* pLast, const double* pOnlyZ, double scale) const;
    const Coords& pointOf(const CellEntry* p) const;

    const PointBlocks& points;
    const CellEntry* pEntriesEnd;
    SumStrategy strategy;
    const CellEntry* pNextOfHull; ///< the first one that no range had so far
    const CellEntry* pHullEnd;
    const std::function<bool(const Coords&)>& isOutside;
    PointBlocks* pResult;
    std::size_t count = 0;
    std::vector<double> vMedianGroup;
};

} // namespace ORBI_LUMO25D

#endif
