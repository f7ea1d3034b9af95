#ifndef LUMO25D_ORBI_LOCATE3_RTREE_H
#define LUMO25D_ORBI_LOCATE3_RTREE_H

#include "geometry/PackedBoxTree.h"

#include <cstddef>
#include <vector>

namespace ORBI_LOCATE3
{

/// An index of boxes in space, for data that is there before it is asked about. The octree is for points that come and are
/// asked about in turns.
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
    std::size_t size() const { return tree.size(); }
    /// Packs the tree now, if it is not: about 72 bytes an object, and as much again during the work.
    void build() const;

    /// Appends the numbers of all objects whose box shares a point with the given one, borders included, in no
    /// particular order but always the same. Bounds may be infinite; an inverted or NaN box meets nothing.
    void query(double xmin, double ymin, double zmin, double xmax, double ymax, double zmax,
               std::vector<std::size_t>& vIndices) const;

private:
    mutable ORBI_LUMO25D::PackedBoxTree<3> tree;
};

} // namespace ORBI_LOCATE3

#endif
