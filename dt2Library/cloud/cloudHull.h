#ifndef LUMO25D_CLOUD_CLOUDHULL_H
#define LUMO25D_CLOUD_CLOUDHULL_H

#include "Point2.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace ORBI_LUMO25D
{

class PointBlocks;
struct Coords;

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

/// A test whether places, none further out than the points are, lie outside a hull. Exact; well inside it costs a few
/// instructions. The points may go before the test does.
std::function<bool(const Coords&)> outsideOf(const PointBlocks& points, const CloudHull& hull);

/// The hull of points that ascend and are all different. Linear.
CloudHull hullOfSorted(const std::vector<Point2>& vSorted, bool bAllPoints);

} // namespace ORBI_LUMO25D

#endif
