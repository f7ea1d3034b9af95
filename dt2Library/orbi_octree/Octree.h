#ifndef LUMO25D_ORBI_OCTREE_OCTREE_H
#define LUMO25D_ORBI_OCTREE_OCTREE_H

#include "Point2.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace ORBI_OCTREE
{

class OctreeImpl;

/// An index of points in space to which points are added while it is in use: "is there a vertex here already?". For
/// boxes that are all there before the first question, ORBI_LOCATE3::RTree is smaller and faster.
///
/// Points are known by numbers of the caller's choice; points at one place, and equal numbers, may come any number of
/// times. Answers depend on what was added alone, not on the order.
///
/// One thread at a time; any number of threads may query while none adds.
class Octree
{
public:
    Octree();
    ~Octree();
    Octree(const Octree&) = delete;
    Octree& operator=(const Octree&) = delete;

    /// Logarithmic for points that are spread; for clusters within clusters at most linear in the number of halvings from
    /// the largest to the smallest distance. A coordinate of more than 1e300 in size, or that is no number, is a failed
    /// condition "coordinates are in range".
    void addPoint(std::size_t index, const ORBI_LUMO25D::Point2& p);
    std::size_t size() const;

    /// Appends the numbers of the points in the closed box, ascending. Bounds may be infinite; an inverted or NaN box
    /// holds nothing.
    void query(double xmin, double ymin, double zmin, double xmax, double ymax, double zmax,
               std::vector<std::size_t>& vIndices) const;

    /// The point closest to p, the one with the smallest number on ties, not further away than maxSqDistance, which is
    /// squared; false if there is none. Squares of more than a double holds count as equal.
    bool getClosest(const ORBI_LUMO25D::Point2& p, std::size_t& index, double& sqDistance,
                    double maxSqDistance = std::numeric_limits<double>::infinity()) const;

private:
    std::unique_ptr<OctreeImpl> pImpl;
};

} // namespace ORBI_OCTREE

#endif
