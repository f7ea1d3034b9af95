#ifndef LUMO25D_CLOUD_CLOUDPREPAREIMPL_H
#define LUMO25D_CLOUD_CLOUDPREPAREIMPL_H

#include "CloudPrepare.h"
#include "cloud/Calc.h"

#include "core/PointBlocks.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class RangeSimplifier;
struct KeptHull;

/// What is behind CloudPrepare: points, their bounds, and the simplifications.
///
/// Cells are no objects: the points are sorted by the Morton codes of their cells, and a cell of any level is a stretch of
/// that order.
class CloudPrepareImpl
{
public:
    /// False, and nothing added, for a point that isn't finite.
    bool add(double x, double y, double z, std::int32_t customIndex);
    void clear();
    const PointBlocks& getPoints() const { return points; }
    /// Leaves the cloud empty.
    PointBlocks takePoints();

    /// The bounds of all points: only those that came since the last call are looked at.
    const CloudBounds& updateBounds();
    bool computeConvexHull(bool bAllPoints, std::vector<Point2>& vConvexHull) const;

    std::size_t uniformSimplifyGrid(double gridLength, SumStrategy sum, ConvexHullStrategy hull, bool bDryRun);
    std::size_t uniformSimplifyNum(std::ptrdiff_t numPoints, SumStrategy sum, ConvexHullStrategy hull);
    std::size_t adaptiveSimplify(double maxDiffZ, SumStrategy sum, ConvexHullStrategy hull, bool bDryRun);

private:
    KeptHull findKeptHull(ConvexHullStrategy strategy, const Calc& calc) const;
    template <class VisitRanges>
    std::size_t simplify(const Calc& calc, SumStrategy sum, ConvexHullStrategy hull, bool bDryRun,
                         const VisitRanges& visitRanges);

    PointBlocks points;
    CloudBounds bounds;
    std::size_t numPointsInBounds = 0; ///< how many points the bounds cover already
};

} // namespace ORBI_LUMO25D

#endif
