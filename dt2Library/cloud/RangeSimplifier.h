#ifndef LUMO25D_CLOUD_RANGESIMPLIFIER_H
#define LUMO25D_CLOUD_RANGESIMPLIFIER_H

#include "CloudPrepare.h"
#include "cloud/CellSort.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Turns the points of a cell into one point, or into those of its points that are on the hull.
class RangeSimplifier
{
public:
    /// points and hullMarks (a mark for each point; may be empty: no hull is kept) must outlive the object. Results are
    /// appended to pResult; NULL: they are counted only. An unknown strategy is a failed condition.
    RangeSimplifier(const PointBlocks& points, const std::vector<CellEntry>& vEntries, SumStrategy strategy,
                    const std::vector<bool>& hullMarks, const CloudBounds& bounds, PointBlocks* pResult);

    /// Simplifies a range of the entries. An empty one is a failed condition.
    void simplifyRange(const CellEntry* pFirst, const CellEntry* pLast);

    /// Number of points that the ranges so far have become.
    std::size_t numResults() const { return count; }

private:
    bool keepHullPoints(const CellEntry* pFirst, const CellEntry* pLast);
    double representativeZ(const CellEntry* pFirst, const CellEntry* pLast);
    Coords getAvgXYforZ(const CellEntry* pFirst, const CellEntry* pLast, double z) const;
    Coords average(const CellEntry* pFirst, const CellEntry* pLast) const;
    const Coords& pointOf(const CellEntry* p) const;

    const PointBlocks& points;
    const CellEntry* pEntriesEnd;
    SumStrategy strategy;
    const std::vector<bool>& hullMarks;
    double scaleXY, scaleZ; ///< of sums, so that they are finite
    PointBlocks* pResult;
    std::size_t count = 0;
    std::vector<double> vMedianGroup;
};

} // namespace ORBI_LUMO25D

#endif
