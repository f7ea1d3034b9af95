#ifndef LUMO25D_ORBI_LOCATE2_RTREE_H
#define LUMO25D_ORBI_LOCATE2_RTREE_H

#include "geometry/PackedBoxTree.h"

#include <cstddef>
#include <vector>

namespace ORBI_LOCATE2
{

/// An index of boxes in the plane: which of many boxes meet a given one.
///
/// Objects are known by numbers of the caller's choice; a number may come several times. The tree is packed at the first
/// query, and again at the first one after objects were added: add first, query then.
///
/// One thread at a time; after a build() any number of threads may query while none adds.
///
///     ORBI_LOCATE2::RTree tree;
///     tree.addObject(7, 0.0, 0.0, 2.0, 1.0);
///     std::vector<std::size_t> vHits;
///     tree.query(1.0, 1.0, 5.0, 5.0, vHits); // borders belong to a box: 7
class RTree
{
public:
    /// Room for n objects.
    void reserve(std::size_t n) { tree.reserve(n); }
    /// The box may be flat or a point. The failed conditions are "xmin<=xmax", "ymin<=ymax" and, for a bound that is
    /// infinite, "the box is finite".
    void addObject(std::size_t index, double xmin, double ymin, double xmax, double ymax);
    std::size_t size() const { return tree.size(); }

    /// Packs the tree now, if it is not: about 52 bytes an object, and as much again during the work. Linear, but for
    /// clusters within clusters, of which each costs a sort of its own. More than 2^34 objects are a failed condition.
    void build() const;

    /// Appends the numbers of all objects whose box shares a point with the given one, borders included, in no
    /// particular order but always the same. Bounds may be infinite; an inverted or NaN box meets nothing.
    void query(double xmin, double ymin, double xmax, double ymax, std::vector<std::size_t>& vIndices) const
    {
        forEach(xmin, ymin, xmax, ymax, [&vIndices](std::size_t index) { vIndices.push_back(index); });
    }
    /// Calls f(number) for each of them instead.
    template <class F>
    void forEach(double xmin, double ymin, double xmax, double ymax, const F& f) const
    {
        if (!(xmin <= xmax && ymin <= ymax)) return;
        if (!tree.isBuilt()) build();
        tree.forEachIntersecting({{xmin, ymin}, {xmax, ymax}}, f);
    }

    /// All numbers in an order in which successive ones lie close to each other. Valid until the next addObject().
    /// Queries in this order find most of what they read in the processor's cache.
    const std::vector<std::size_t>& inSpatialOrder() const
    {
        build();
        return tree.indicesInOrder();
    }

private:
    mutable ORBI_LUMO25D::PackedBoxTree<2> tree; // packed by queries, which change nothing that a caller can see
};

} // namespace ORBI_LOCATE2

#endif
