#ifndef LUMO25D_ORBI_LOCATE3_RTREE_H
#define LUMO25D_ORBI_LOCATE3_RTREE_H

#include "geometry/PackedBoxTree.h"

#include "Point2.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace ORBI_LOCATE3
{

/// An index of boxes and points in space, for data that is there before it is asked about. The octree is for points that
/// come and are asked about in turns.
///
/// Objects are known by numbers of the caller's choice; a number may come several times. The tree is packed at the first
/// query, and again at the first one after objects were added.
///
/// One thread at a time; after a build() any number of threads may query while none adds.
class RTree
{
public:
    using Box = ORBI_LUMO25D::BoxN<3>;

    void reserve(std::size_t n) { tree.reserve(n); }
    /// The box may be flat. The failed conditions are "xmin<=xmax", "ymin<=ymax", "zmin<=zmax" and, for a bound that is
    /// infinite, "the box is finite".
    void addObject(std::size_t index, double xmin, double ymin, double zmin, double xmax, double ymax, double zmax);
    /// A box that is a point.
    void addPoint(std::size_t index, const ORBI_LUMO25D::Point2& p)
    {
        addObject(index, p.x(), p.y(), p.z(), p.x(), p.y(), p.z());
    }
    /// The box of three points.
    void addTriangle(std::size_t index, const ORBI_LUMO25D::Point2& p0, const ORBI_LUMO25D::Point2& p1,
                     const ORBI_LUMO25D::Point2& p2);
    std::size_t size() const { return tree.size(); }
    /// Packs the tree now, if it is not: about 72 bytes an object, and as much again during the work.
    void build() const;

    /// Appends the numbers of all objects whose box shares a point with the given one, borders included, in no
    /// particular order but always the same. Bounds may be infinite; an inverted or NaN box meets nothing.
    void query(double xmin, double ymin, double zmin, double xmax, double ymax, double zmax,
               std::vector<std::size_t>& vIndices) const;

    /// The object whose box is closest to p (a point inside has distance 0), the one with the smallest number on ties,
    /// not further away than maxSqDistance, which is squared; false if there is none. p must be finite; squares of more
    /// than a double holds count as equal.
    bool getClosest(const ORBI_LUMO25D::Point2& p, std::size_t& index, double& sqDistance,
                    double maxSqDistance = std::numeric_limits<double>::infinity()) const
    {
        build();
        return tree.findClosest({p.x(), p.y(), p.z()}, maxSqDistance, index, sqDistance);
    }

private:
    mutable ORBI_LUMO25D::PackedBoxTree<3> tree;
};

} // namespace ORBI_LOCATE3

#endif
