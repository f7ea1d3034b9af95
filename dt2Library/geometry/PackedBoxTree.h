#ifndef LUMO25D_GEOMETRY_PACKEDBOXTREE_H
#define LUMO25D_GEOMETRY_PACKEDBOXTREE_H

#include "geometry/BoxNode.h"
#include "geometry/KeyOrder.h"
#include "geometry/midCoordinate.h"
#include "support/check.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Boxes with numbers, packed into a tree without pointers: the core of the indexes in the plane and in space.
///
/// After I. Kamel, C. Faloutsos: On Packing R-trees. CIKM 1993: the boxes are sorted by the position of their centres
/// along a Hilbert curve, successive ones form a node, successive nodes a node of the next level. Particular here: a
/// node is its place in an array; a stretch of boxes that share a cell of the curve is sorted along a curve of its own
/// extent, so that outliers don't spoil the order of the rest; and nodes hold their children's boxes rounded, so that a
/// query touches little memory. The boxes themselves are there for the few cases that those can't tell.
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

    /// Calls f(number) for each box that shares a point with q, whose bounds may be infinite; when built. Always in the
    /// same order.
    template <class F>
    void forEachIntersecting(const Box& q, const F& f) const;

private:
    using Node = BoxNode<Dim>;
    using Mask = typename Node::Mask;
    static constexpr std::size_t fanOut = Node::fanOut;
    static constexpr std::size_t maxLevels = 7;
    static_assert(KeyedPosition::maxPositions <= std::uint64_t(1) << 5 * maxLevels && fanOut == 1U << 5U);

    static std::size_t lowestBit(Mask mask) { return static_cast<unsigned>(__builtin_ctz(mask)); }
    Mask hitsOfLeaf(std::size_t i, const Box& q) const;
    void centreOf(std::size_t position, double (&c)[Dim]) const
    {
        const Box& box = vBoxes[position];
        for (std::size_t d = 0; d < Dim; ++d) c[d] = midCoordinate(box.lo[d], box.hi[d]);
    }
    Box extentOfCentres(const KeyedPosition* pItems, std::size_t n) const;
    template <class MakeCurve>
    void order(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n, const MakeCurve& makeCurve) const;
    void stackNodes();
    void unpack();

    std::vector<std::size_t> vIndices; ///< as added; when built, along the curve
    std::vector<Box> vBoxes;           ///< of the numbers in vIndices; when built, those of the nodes in vNodes follow
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
    const std::size_t mostNodes = n / (fanOut - 1) + maxLevels;
    std::vector<std::size_t> vSortedIndices;
    std::vector<Box> vSortedBoxes;
    vSortedIndices.reserve(n);
    vSortedBoxes.reserve(n + mostNodes);
    for (const KeyedPosition& item : vOrder) {
        vSortedIndices.push_back(vIndices[item.position()]);
        vSortedBoxes.push_back(vBoxes[item.position()]);
    }
    vNodes.reserve(mostNodes);
    vLevels.reserve(maxLevels);
    // From here on nothing can fail.
    vIndices.swap(vSortedIndices);
    vBoxes.swap(vSortedBoxes);
    stackNodes();
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

/// The children of each level's nodes are successive boxes, and so are the nodes' own boxes, which become the children of
/// the next level.
template <std::size_t Dim>
void PackedBoxTree<Dim>::stackNodes()
{
    std::size_t firstChild = 0;
    while (firstChild == 0 ? !vBoxes.empty() : vBoxes.size() - firstChild > 1) {
        vLevels.push_back(vNodes.size());
        const std::size_t endOfChildren = vBoxes.size();
        for (std::size_t begin = firstChild; begin < endOfChildren; begin += fanOut) {
            const std::size_t end = std::min(begin + fanOut, endOfChildren);
            Box common = Box::nothing();
            for (std::size_t i = begin; i < end; ++i) common.add(vBoxes[i]);
            Node& node = vNodes.emplace_back(common);
            for (std::size_t i = begin; i < end; ++i) node.set(i - begin, vBoxes[i]);
            vBoxes.push_back(common);
        }
        firstChild = endOfChildren;
    }
}

template <std::size_t Dim>
void PackedBoxTree<Dim>::unpack()
{
    vBoxes.resize(vIndices.size());
    vNodes.clear();
    vLevels.clear();
    bBuilt = false;
}

template <std::size_t Dim>
template <class F>
void PackedBoxTree<Dim>::forEachIntersecting(const Box& q, const F& f) const
{
    if (vNodes.empty()) return;
    // Nodes still to be looked at. Of each level they are children of one node.
    struct Place
    {
        std::size_t level, i;
    };
    Place aOpen[maxLevels * fanOut];
    std::size_t numOpen = 0;
    aOpen[numOpen++] = {vLevels.size() - 1, 0};
    while (numOpen > 0) {
        const Place at = aOpen[--numOpen];
        if (at.level == 0) {
            for (Mask mask = hitsOfLeaf(at.i, q); mask != 0; mask &= mask - 1) {
                f(vIndices[at.i * fanOut + lowestBit(mask)]);
            }
            continue;
        }
        const Node& node = vNodes[vLevels[at.level] + at.i];
        for (Mask mask = node.template meeting<Node::mayMeet>(node.cellsOf(q)); mask != 0; mask &= mask - 1) {
            const std::size_t child = at.i * fanOut + lowestBit(mask);
            vNodes[vLevels[at.level - 1] + child].prefetch(); // the others are looked at meanwhile
            aOpen[numOpen++] = {at.level - 1, child};
        }
    }
}

/// Bit j: the box of child j of the lowest level's node i shares a point with q.
template <std::size_t Dim>
typename PackedBoxTree<Dim>::Mask PackedBoxTree<Dim>::hitsOfLeaf(std::size_t i, const Box& q) const
{
    const Node& node = vNodes[i];
    const typename Node::Cells cells = node.cellsOf(q);
    Mask hits = node.template meeting<Node::mayMeet>(cells);
    for (Mask unsure = hits & ~node.template meeting<Node::mustMeet>(cells); unsure != 0; unsure &= unsure - 1) {
        const std::size_t child = lowestBit(unsure);
        if (!vBoxes[i * fanOut + child].intersects(q)) hits &= ~(Mask(1) << child);
    }
    return hits;
}

} // namespace ORBI_LUMO25D

#endif
