#ifndef LUMO25D_CLOUD_CLOUDHULL_H
#define LUMO25D_CLOUD_CLOUDHULL_H

#include "Point2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class PointBlocks;

/// The convex hull of a cloud, by positions.
struct CloudHull
{
    /// False when all points lie on one line: the hull is its two ends then, or one point.
    bool bHasArea = false;
    /// Counterclockwise from the leftmost point, of several the lowest. Of points at one place the first one counts.
    std::vector<std::size_t> vPositions;
};

/// Exact. bAllPoints: those in the middle of a straight side too, if there is area. Points well inside the hull of a
/// sample are passed over at a few instructions each; only what is left is sorted.
CloudHull findHull(const PointBlocks& points, bool bAllPoints);

/// The same for points that ascend and are all different. Linear.
CloudHull hullOfSorted(const std::vector<Point2>& vSorted, bool bAllPoints);

} // namespace ORBI_LUMO25D

#endif
