#ifndef LUMO25D_GEOMETRY_PACKEDBOXTREE_H
#define LUMO25D_GEOMETRY_PACKEDBOXTREE_H

#include "geometry/KeyOrder.h"

#include "geometry/midCoordinate.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

/// A closed axis-parallel box in Dim dimensions; lo <= hi in every axis.
template <std::size_t Dim>
struct BoxN
{
    double lo[Dim];
    double hi[Dim];

    bool intersects(const BoxN& other) const
    {
        // Not short-circuited: in a tree's node the outcome of each comparison is next to random.
        bool b = true;
        for (std::size_t d = 0; d < Dim; ++d) {
            b &= (lo[d] <= other.hi[d]) & (other.lo[d] <= hi[d]);
        }
        return b;
    }
    void add(const BoxN& other)
    {
        for (std::size_t d = 0; d < Dim; ++d) {
            lo[d] = std::min(lo[d], other.lo[d]);
            hi[d] = std::max(hi[d], other.hi[d]);
        }
    }
    /// Squared distance of p from the box, 0 inside. Of a box within this one it is not less, in rounded numbers either.
    double sqDistance(const double (&p)[Dim]) const
    {
        double sum = 0.0;
        for (std::size_t d = 0; d < Dim; ++d) {
            const double outside = std::max(0.0, std::max(lo[d] - p[d], p[d] - hi[d]));
            sum += outside * outside;
        }
        return sum;
    }
};

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
        if (bBuilt) {
            vBoxes.resize(vIndices.size());
            bBuilt = false;
        }
        vBoxes.push_back(box);
        vIndices.push_back(index);
    }
    void reserve(std::size_t n)
    {
        vBoxes.reserve(n + n / (fanOut - 1) + 64); // inner levels included
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

    /// Calls f(number) for each box that shares a point with q; when built. Independent of the order of add() but for the
    /// order of the calls.
    template <class F>
    void forEachIntersecting(const Box& q, const F& f) const
    {
        if (vIndices.empty()) return;
        visit(vLevels.size() - 1, 0, vLevels.back().count, q, f);
    }

    /// The number whose distance from p is smallest, the smallest one on ties, among those not further than
    /// maxSqDistance; when built. distanceOf(number, squared distance of its box) gives the squared distance of what the
    /// box holds, which is never less.
    template <class Distance>
    bool findClosest(const double (&p)[Dim], double maxSqDistance, const Distance& distanceOf, std::size_t& index,
                     double& sqDistance) const
    {
        Closest<Distance> closest{p, distanceOf, maxSqDistance, 0, false};
        if (!vIndices.empty()) approach(vLevels.size() - 1, 0, vLevels.back().count, closest);
        if (!closest.bFound) return false;
        index = closest.index;
        sqDistance = closest.sqDistance;
        return true;
    }

private:
    static constexpr std::size_t fanOut = 16;

    struct Level
    {
        std::size_t begin; ///< in vBoxes
        std::size_t count;
    };
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
    void visit(std::size_t level, std::size_t first, std::size_t last, const Box& q, const F& f) const
    {
        const Box* const pBoxes = vBoxes.data() + vLevels[level].begin;
        if (level == 0) {
            for (std::size_t i = first; i < last; ++i) {
                if (pBoxes[i].intersects(q)) f(vIndices[i]);
            }
            return;
        }
        const std::size_t numBelow = vLevels[level - 1].count;
        for (std::size_t i = first; i < last; ++i) {
            if (pBoxes[i].intersects(q)) visit(level - 1, i * fanOut, std::min((i + 1) * fanOut, numBelow), q, f);
        }
    }

    template <class Distance>
    void approach(std::size_t level, std::size_t first, std::size_t last, Closest<Distance>& closest) const;
    void centreOf(std::size_t position, double (&c)[Dim]) const
    {
        const Box& box = vBoxes[position];
        for (std::size_t d = 0; d < Dim; ++d) c[d] = midCoordinate(box.lo[d], box.hi[d]);
    }
    Box extentOfCentres(const KeyedPosition* pItems, std::size_t n) const;
    template <class MakeCurve>
    void order(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n, const MakeCurve& makeCurve) const;
    void stackLevels();

    std::vector<Box> vBoxes; ///< those added, and when built, those of the levels above
    std::vector<std::size_t> vIndices;
    std::vector<Level> vLevels;
    bool bBuilt = false;
};

template <std::size_t Dim>
template <class MakeCurve>
void PackedBoxTree<Dim>::build(const MakeCurve& makeCurve)
{
    if (bBuilt) return;
    const std::size_t n = vIndices.size();
    std::vector<KeyedPosition> vOrder(n);
    std::vector<KeyedPosition> vScratch(n);
    for (std::size_t i = 0; i < n; ++i) vOrder[i].position = i;
    order(vOrder.data(), vScratch.data(), n, makeCurve);

    std::vector<Box> vSortedBoxes;
    vSortedBoxes.reserve(n + n / (fanOut - 1) + 64);
    std::vector<std::size_t> vSortedIndices;
    vSortedIndices.reserve(n);
    for (const KeyedPosition& item : vOrder) {
        vSortedBoxes.push_back(vBoxes[item.position]);
        vSortedIndices.push_back(vIndices[item.position]);
    }
    vBoxes.swap(vSortedBoxes);
    vIndices.swap(vSortedIndices);
    stackLevels();
    bBuilt = true;
}

template <std::size_t Dim>
BoxN<Dim> PackedBoxTree<Dim>::extentOfCentres(const KeyedPosition* pItems, std::size_t n) const
{
    Box extent;
    std::fill(extent.lo, extent.lo + Dim, std::numeric_limits<double>::max());
    std::fill(extent.hi, extent.hi + Dim, std::numeric_limits<double>::lowest());
    for (std::size_t i = 0; i < n; ++i) {
        Box centre;
        centreOf(pItems[i].position, centre.lo);
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
        centreOf(pItems[i].position, centre);
        pItems[i].key = curve(centre);
    }
    sortByKey(pItems, pScratch, n);
    // Each level of refinement takes the extent down by a cell's size, so the depth is bounded by the exponents of
    // doubles over the bits of a cell. A stretch that no curve divides stays as it is.
    for (std::size_t begin = 0; begin < n;) {
        std::size_t end = begin + 1;
        while (end < n && pItems[end].key == pItems[begin].key) ++end;
        if (end - begin < n) order(pItems + begin, pScratch, end - begin, makeCurve);
        begin = end;
    }
}

template <std::size_t Dim>
void PackedBoxTree<Dim>::stackLevels()
{
    vLevels.assign(1, {0, vIndices.size()});
    while (vLevels.back().count > fanOut) {
        const Level below = vLevels.back();
        vLevels.push_back({vBoxes.size(), (below.count + fanOut - 1) / fanOut});
        for (std::size_t i = 0; i < below.count; i += fanOut) {
            Box box = vBoxes[below.begin + i];
            for (std::size_t j = i + 1; j < std::min(i + fanOut, below.count); ++j) box.add(vBoxes[below.begin + j]);
            vBoxes.push_back(box);
        }
    }
}

template <std::size_t Dim>
template <class Distance>
void PackedBoxTree<Dim>::approach(std::size_t level, std::size_t first, std::size_t last,
                                  Closest<Distance>& closest) const
{
    // Children in the order of their distances, so that the bound is small before the others are looked at.
    struct Child
    {
        double sqDistance;
        std::size_t i;
    };
    Child aChildren[fanOut];
    std::size_t numChildren = 0;
    for (std::size_t i = first; i < last; ++i) {
        const double sqDistance = vBoxes[vLevels[level].begin + i].sqDistance(closest.p);
        if (!(sqDistance <= closest.sqDistance)) continue;
        std::size_t j = numChildren++;
        for (; j > 0 && aChildren[j - 1].sqDistance > sqDistance; --j) aChildren[j] = aChildren[j - 1];
        aChildren[j] = {sqDistance, i};
    }
    for (std::size_t k = 0; k < numChildren && aChildren[k].sqDistance <= closest.sqDistance; ++k) {
        const std::size_t i = aChildren[k].i;
        if (level > 0) {
            approach(level - 1, i * fanOut, std::min((i + 1) * fanOut, vLevels[level - 1].count), closest);
            continue;
        }
        const std::size_t index = vIndices[i];
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
