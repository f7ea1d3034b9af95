#ifndef LUMO25D_GEOMETRY_PACKEDBOXTREE_H
#define LUMO25D_GEOMETRY_PACKEDBOXTREE_H

#include "geometry/BoxNode.h"
#include "geometry/KeyOrder.h"
#include "geometry/midCoordinate.h"
#include "support/check.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Boxes with numbers, packed into a tree without pointers: the core of the indexes in the plane and in space.
///
/// After I. Kamel, C. Faloutsos: On Packing R-trees. CIKM 1993: the boxes are sorted by the position of their centres
/// along a Hilbert curve, successive ones form a node, successive nodes a node of the next level. Particular here: a
/// node is its place in an array; and a stretch of boxes that share a cell of the curve is sorted along a curve of its
/// own extent, so that outliers don't spoil the order of the rest.
///
/// Boxes are added, then build() is called; a later add() undoes that. Bounds must be finite numbers.
template <std::size_t Dim>
class PackedBoxTree
{
public:
    using Box = BoxN<Dim>;

    void add(std::size_t index, const Box& box)
    {
        if (bBuilt) unpack();
        vBoxes.push_back(box);
        vIndices.push_back(index);
    }
    void reserve(std::size_t n)
    {
        vBoxes.reserve(n);
        vIndices.reserve(n);
    }

    bool isBuilt() const { return bBuilt; }
    std::size_t size() const { return vIndices.size(); }
    /// The numbers along the curve; when built. Successive ones lie close to each other.
    const std::vector<std::size_t>& indicesInOrder() const { return vIndices; }

    /// makeCurve(box) gives a functor that gives the position of a point (const double (&)[Dim]) of the box along a curve
    /// through it. O(n), or n times the number of refinements in clustered data.
    template <class MakeCurve>
    void build(const MakeCurve& makeCurve);

    /// Calls f(number) for each box that shares a point with q; when built. Always in the same order.
    template <class F>
    void forEachIntersecting(const Box& q, const F& f) const
    {
        if (!vNodes.empty()) visit(vLevels.size() - 1, 0, q, f);
    }

    /// The number whose distance from p is smallest, the smallest one on ties, among those not further than
    /// maxSqDistance; when built. distanceOf(number, squared distance of its box) gives the squared distance of what the
    /// box holds, which is never less.
    template <class Distance>
    bool findClosest(const double (&p)[Dim], double maxSqDistance, const Distance& distanceOf, std::size_t& index,
                     double& sqDistance) const
    {
        Closest<Distance> closest{p, distanceOf, maxSqDistance, 0, false};
        if (!vNodes.empty()) approach(vLevels.size() - 1, 0, closest);
        if (!closest.bFound) return false;
        index = closest.index;
        sqDistance = closest.sqDistance;
        return true;
    }

private:
    using Node = BoxNode<Dim>;
    static constexpr std::size_t fanOut = Node::fanOut;

    template <class Distance>
    struct Closest
    {
        const double (&p)[Dim];
        const Distance& distanceOf;
        double sqDistance;
        std::size_t index;
        bool bFound;
    };

    template <class F>
    void visit(std::size_t level, std::size_t i, const Box& q, const F& f) const
    {
        for (unsigned mask = vNodes[vLevels[level] + i].hits(q); mask != 0; mask &= mask - 1) {
            const std::size_t child = i * fanOut + static_cast<unsigned>(__builtin_ctz(mask));
            if (level == 0) {
                f(vIndices[child]);
            } else {
                visit(level - 1, child, q, f);
            }
        }
    }

    template <class Distance>
    void approach(std::size_t level, std::size_t i, Closest<Distance>& closest) const;
    void centreOf(std::size_t position, double (&c)[Dim]) const
    {
        const Box& box = vBoxes[position];
        for (std::size_t d = 0; d < Dim; ++d) c[d] = midCoordinate(box.lo[d], box.hi[d]);
    }
    Box extentOfCentres(const KeyedPosition* pItems, std::size_t n) const;
    template <class MakeCurve>
    void order(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n, const MakeCurve& makeCurve) const;
    void stackNodes(const std::vector<KeyedPosition>& vOrder);
    void unpack();

    std::vector<Box> vBoxes;           ///< of the numbers in vIndices; empty when built
    std::vector<std::size_t> vIndices; ///< as added; when built, as the lowest level's children
    std::vector<Node> vNodes;          ///< level by level from the lowest one; the last one is the root
    std::vector<std::size_t> vLevels;  ///< where each begins in vNodes
    bool bBuilt = false;
};

template <std::size_t Dim>
template <class MakeCurve>
void PackedBoxTree<Dim>::build(const MakeCurve& makeCurve)
{
    if (bBuilt) return;
    const std::size_t n = vIndices.size();
    LUMO_CHECK(n < KeyedPosition::maxPositions, "n<KeyedPosition::maxPositions");
    std::vector<KeyedPosition> vOrder(n);
    {
        std::vector<KeyedPosition> vScratch(n);
        for (std::size_t i = 0; i < n; ++i) vOrder[i] = KeyedPosition(0, i);
        order(vOrder.data(), vScratch.data(), n, makeCurve);
    }
    stackNodes(vOrder);
    std::vector<std::size_t> vSortedIndices;
    vSortedIndices.reserve(n);
    for (const KeyedPosition& item : vOrder) vSortedIndices.push_back(vIndices[item.position()]);
    vIndices.swap(vSortedIndices);
    vBoxes = std::vector<Box>();
    bBuilt = true;
}

template <std::size_t Dim>
BoxN<Dim> PackedBoxTree<Dim>::extentOfCentres(const KeyedPosition* pItems, std::size_t n) const
{
    Box extent = Box::nothing();
    for (std::size_t i = 0; i < n; ++i) {
        Box centre;
        centreOf(pItems[i].position(), centre.lo);
        std::copy(centre.lo, centre.lo + Dim, centre.hi);
        extent.add(centre);
    }
    return extent;
}

template <std::size_t Dim>
template <class MakeCurve>
void PackedBoxTree<Dim>::order(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n,
                               const MakeCurve& makeCurve) const
{
    if (n <= fanOut) return;
    const Box extent = extentOfCentres(pItems, n);
    if (std::equal(extent.lo, extent.lo + Dim, extent.hi)) return;
    const auto curve = makeCurve(extent);
    for (std::size_t i = 0; i < n; ++i) {
        double centre[Dim];
        centreOf(pItems[i].position(), centre);
        pItems[i] = KeyedPosition(curve(centre), pItems[i].position());
    }
    sortByKey(pItems, pScratch, n);
    // Each level of refinement takes the extent down by a cell's size, so the depth is bounded by the exponents of
    // doubles over the bits of a cell. A stretch that no curve divides stays as it is.
    for (std::size_t begin = 0; begin < n;) {
        std::size_t end = begin + 1;
        while (end < n && pItems[end].key() == pItems[begin].key()) ++end;
        if (end - begin < n) order(pItems + begin, pScratch, end - begin, makeCurve);
        begin = end;
    }
}

template <std::size_t Dim>
void PackedBoxTree<Dim>::stackNodes(const std::vector<KeyedPosition>& vOrder)
{
    vLevels.clear();
    vNodes.clear();
    std::size_t numChildren = vOrder.size();
    vNodes.reserve(numChildren / (fanOut - 1) + 64);
    std::vector<Box> vBoxesOfNodes;
    for (bool bLowest = true; bLowest ? numChildren > 0 : numChildren > 1; bLowest = false) {
        vLevels.push_back(vNodes.size());
        for (std::size_t begin = 0; begin < numChildren; begin += fanOut) {
            Node node;
            Box boxOfNode = Box::nothing();
            for (std::size_t i = 0; i < fanOut; ++i) {
                if (begin + i >= numChildren) {
                    node.setEmpty(i);
                    continue;
                }
                const Box& box = bLowest ? vBoxes[vOrder[begin + i].position()] : vBoxesOfNodes[begin + i];
                node.set(i, box);
                boxOfNode.add(box);
            }
            vNodes.push_back(node);
            // In place: nodes are fewer than children, and those up to here are done with.
            if (bLowest) {
                vBoxesOfNodes.push_back(boxOfNode);
            } else {
                vBoxesOfNodes[begin / fanOut] = boxOfNode;
            }
        }
        numChildren = (numChildren + fanOut - 1) / fanOut;
    }
}

/// Takes the boxes back out of the lowest level.
template <std::size_t Dim>
void PackedBoxTree<Dim>::unpack()
{
    vBoxes.reserve(vIndices.size() + 1);
    for (std::size_t i = 0; i < vIndices.size(); ++i) vBoxes.push_back(vNodes[i / fanOut].get(i % fanOut));
    vNodes.clear();
    vLevels.clear();
    bBuilt = false;
}

template <std::size_t Dim>
template <class Distance>
void PackedBoxTree<Dim>::approach(std::size_t level, std::size_t i, Closest<Distance>& closest) const
{
    // Children in the order of their distances, so that the bound is small before the others are looked at.
    struct Child
    {
        double sqDistance;
        std::size_t i;
    };
    Child aChildren[fanOut];
    std::size_t numChildren = 0;
    const Node& node = vNodes[vLevels[level] + i];
    for (std::size_t j = 0; j < fanOut && !node.isEmpty(j); ++j) {
        const double sqDistance = node.get(j).sqDistance(closest.p);
        if (!(sqDistance <= closest.sqDistance)) continue;
        std::size_t k = numChildren++;
        for (; k > 0 && aChildren[k - 1].sqDistance > sqDistance; --k) aChildren[k] = aChildren[k - 1];
        aChildren[k] = {sqDistance, i * fanOut + j};
    }
    for (std::size_t k = 0; k < numChildren && aChildren[k].sqDistance <= closest.sqDistance; ++k) {
        if (level > 0) {
            approach(level - 1, aChildren[k].i, closest);
            continue;
        }
        const std::size_t index = vIndices[aChildren[k].i];
        const double sqDistance = closest.distanceOf(index, aChildren[k].sqDistance);
        const bool bCloser = sqDistance < closest.sqDistance ||
                             (sqDistance == closest.sqDistance && (!closest.bFound || index < closest.index));
        if (!bCloser) continue;
        closest.sqDistance = sqDistance;
        closest.index = index;
        closest.bFound = true;
    }
}

} // namespace ORBI_LUMO25D

#endif
