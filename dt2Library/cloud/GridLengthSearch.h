#ifndef LUMO25D_CLOUD_GRIDLENGTHSEARCH_H
#define LUMO25D_CLOUD_GRIDLENGTHSEARCH_H

#include "cloud/Calc.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class PointBlocks;

/// Looks for the cell length that leaves a wanted number of points: an estimate from the area that the cloud fills, then
/// bisection over exact counts.
class GridLengthSearch
{
public:
    /// Both must outlive the object; the cloud isn't empty.
    GridLengthSearch(const PointBlocks& points, const CloudBounds& bounds);

    /// The best length found for numPoints, 1 or more.
    double searchGridLen(std::size_t numPoints);

    /// The estimate. 0 points: a warning, and twice the cloud's extent.
    double theoreticGridLen(std::size_t numDesiredPoints) const;
    /// Number of cells with points. 8 bytes a point at most.
    std::size_t countCells(double gridLen) const;

private:
    /// A number of points, and the length that leaves it.
    using Test = std::pair<std::size_t, double>;

    std::size_t testNumPointsForGridLen(double gridLen);
    void bracket(std::size_t numPoints, double gridLen, std::size_t count, double& lower, double& upper);
    void bisect(std::size_t numPoints, double lower, double upper);

    const PointBlocks& points;
    const CloudBounds& bounds;
    std::vector<Test> vResults;
};

} // namespace ORBI_LUMO25D

#endif
