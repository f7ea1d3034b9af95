// The cubes only steer where points go; what a query may leave out is told by the box of the points that a node really
// holds. So the rounding of a cube's centre can't make a point vanish.

#include "orbi_octree/Octree.h"

#include "geometry/BoxN.h"
#include "orbi_tools/OrbiPool.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace ORBI_OCTREE
{

using ORBI_LUMO25D::OrbiPool;
using ORBI_LUMO25D::Point2;

namespace
{

using Box = ORBI_LUMO25D::BoxN<3>;

/// A leaf with more points is divided, if it can be.
constexpr std::size_t leafCapacity = 16;
constexpr double largestCoordinate = 1e300;

struct Item
{
    double p[3];
    std::size_t index;
    Item* pNext;
};

struct Cube
{
    double centre[3];
    double half; ///< half of the edge

    unsigned octantOf(const double (&p)[3]) const
    {
        return unsigned(p[0] >= centre[0]) | unsigned(p[1] >= centre[1]) << 1U | unsigned(p[2] >= centre[2]) << 2U;
    }
    Cube octant(unsigned i) const
    {
        Cube cube{{0.0, 0.0, 0.0}, 0.5 * half};
        for (unsigned d = 0; d < 3; ++d) cube.centre[d] = centre[d] + ((i >> d & 1U) != 0 ? cube.half : -cube.half);
        return cube;
    }
    /// Doubled towards p until it holds it; this cube is an octant of an octant ... of the result.
    Cube grownTo(const double (&p)[3]) const
    {
        Cube cube = *this;
        while (!cube.contains(p)) {
            for (unsigned d = 0; d < 3; ++d) cube.centre[d] += p[d] >= cube.centre[d] ? cube.half : -cube.half;
            cube.half *= 2.0;
        }
        return cube;
    }
    bool contains(const double (&p)[3]) const
    {
        return std::fabs(p[0] - centre[0]) <= half && std::fabs(p[1] - centre[1]) <= half &&
               std::fabs(p[2] - centre[2]) <= half;
    }
};

/// A leaf has items, an inner node has children; both have a box. A child's cube may be much smaller than its octant:
/// levels at which all points went the same way are left out.
struct Node
{
    Box box;
    Cube cube;
    std::size_t numItems; ///< of a leaf
    Item* pItems;
    Node* aChildren[8];
    bool bLeaf;
};

} // namespace

class OctreeImpl
{
public:
    OctreeImpl()
    {
        nodes.init(64, -1);
        items.init(256, -1);
    }

    void add(Item* pItem);
    template <class F>
    void forEachIn(const Node* pNode, const Box& q, const F& f) const;
    void approach(const Node* pNode, const double (&p)[3], const Item*& pBest, double& sqBest) const;

    OrbiPool<Node> nodes;
    OrbiPool<Item> items;
    Node* pRoot = nullptr;
    std::size_t numPoints = 0;

private:
    Node* makeLeaf(const Cube& cube, const double (&p)[3]);
    void growTo(Node*& pNode, const double (&p)[3]);
    void insert(Node* pNode, Item* pItem);
    void divide(Node* pLeaf);
};

Node* OctreeImpl::makeLeaf(const Cube& cube, const double (&p)[3])
{
    Node* const pNode = new (nodes.alloc()) Node{};
    std::copy(p, p + 3, pNode->box.lo);
    std::copy(p, p + 3, pNode->box.hi);
    pNode->cube = cube;
    pNode->bLeaf = true;
    return pNode;
}

void OctreeImpl::add(Item* pItem)
{
    if (pRoot == nullptr) {
        // The first cube is as small as makes sense: growing costs less than the levels of one that is too large.
        double half = std::numeric_limits<double>::min();
        for (const double v : pItem->p) half = std::max(half, std::fabs(v) * 0x1p-40);
        pRoot = makeLeaf({{pItem->p[0], pItem->p[1], pItem->p[2]}, half}, pItem->p);
    }
    growTo(pRoot, pItem->p);
    insert(pRoot, pItem);
    ++numPoints;
}

/// Makes pNode's cube hold p, by a node above it if there are children.
void OctreeImpl::growTo(Node*& pNode, const double (&p)[3])
{
    if (pNode->cube.contains(p)) return;
    const Cube larger = pNode->cube.grownTo(p);
    if (pNode->bLeaf) {
        pNode->cube = larger;
        return;
    }
    // Rounding may have put both into one octant, where a new node would tell nothing.
    const unsigned octant = larger.octantOf(pNode->cube.centre);
    if (octant == larger.octantOf(p)) return;
    Node* const pAbove = makeLeaf(larger, p);
    pAbove->box = pNode->box;
    pAbove->bLeaf = false;
    pAbove->aChildren[octant] = pNode;
    pNode = pAbove;
}

void OctreeImpl::insert(Node* pNode, Item* pItem)
{
    const auto extend = [pItem](Node* p) {
        for (unsigned d = 0; d < 3; ++d) {
            p->box.lo[d] = std::min(p->box.lo[d], pItem->p[d]);
            p->box.hi[d] = std::max(p->box.hi[d], pItem->p[d]);
        }
    };
    extend(pNode);
    while (!pNode->bLeaf) {
        const unsigned octant = pNode->cube.octantOf(pItem->p);
        Node*& pChild = pNode->aChildren[octant];
        if (pChild == nullptr) pChild = makeLeaf(pNode->cube.octant(octant), pItem->p);
        if (!pChild->bLeaf) growTo(pChild, pItem->p);
        pNode = pChild;
        extend(pNode);
    }
    pItem->pNext = pNode->pItems;
    pNode->pItems = pItem;
    if (++pNode->numItems > leafCapacity) divide(pNode);
}

/// Makes an inner node of a leaf, unless in every axis the points agree or the cube is too small for a centre of its own:
/// such a leaf holds any number of points.
void OctreeImpl::divide(Node* pLeaf)
{
    Cube cube = pLeaf->cube;
    for (;;) {
        const Cube lower = cube.octant(0);
        bool bDivisible = false;
        for (unsigned d = 0; d < 3; ++d) {
            if (pLeaf->box.lo[d] < pLeaf->box.hi[d] && lower.centre[d] < cube.centre[d]) bDivisible = true;
        }
        if (!bDivisible) return;
        const unsigned octant = cube.octantOf(pLeaf->box.lo);
        if (octant != cube.octantOf(pLeaf->box.hi)) break;
        cube = cube.octant(octant);
    }
    pLeaf->cube = cube;
    Item* pItem = pLeaf->pItems;
    pLeaf->bLeaf = false;
    pLeaf->pItems = nullptr;
    pLeaf->numItems = 0;
    while (pItem != nullptr) {
        Item* const pNext = pItem->pNext;
        insert(pLeaf, pItem);
        pItem = pNext;
    }
}

template <class F>
void OctreeImpl::forEachIn(const Node* pNode, const Box& q, const F& f) const
{
    if (pNode == nullptr || !pNode->box.intersects(q)) return;
    for (const Item* pItem = pNode->pItems; pItem != nullptr; pItem = pItem->pNext) {
        const double(&p)[3] = pItem->p;
        if (q.intersects({{p[0], p[1], p[2]}, {p[0], p[1], p[2]}})) f(*pItem);
    }
    for (const Node* pChild : pNode->aChildren) forEachIn(pChild, q, f);
}

void OctreeImpl::approach(const Node* pNode, const double (&p)[3], const Item*& pBest, double& sqBest) const
{
    for (const Item* pItem = pNode->pItems; pItem != nullptr; pItem = pItem->pNext) {
        const double dx = pItem->p[0] - p[0], dy = pItem->p[1] - p[1], dz = pItem->p[2] - p[2];
        const double sqDistance = dx * dx + dy * dy + dz * dz;
        const bool bCloser =
            sqDistance < sqBest || (sqDistance == sqBest && (pBest == nullptr || pItem->index < pBest->index));
        if (!bCloser) continue;
        sqBest = sqDistance;
        pBest = pItem;
    }
    if (pNode->bLeaf) return;
    struct Child
    {
        double sqDistance;
        const Node* p;
    };
    Child aChildren[8];
    unsigned numChildren = 0;
    for (const Node* pChild : pNode->aChildren) {
        if (pChild == nullptr) continue;
        const double sqDistance = pChild->box.sqDistance(p);
        unsigned i = numChildren++;
        for (; i > 0 && aChildren[i - 1].sqDistance > sqDistance; --i) aChildren[i] = aChildren[i - 1];
        aChildren[i] = {sqDistance, pChild};
    }
    for (unsigned i = 0; i < numChildren && aChildren[i].sqDistance <= sqBest; ++i) {
        approach(aChildren[i].p, p, pBest, sqBest);
    }
}

Octree::Octree() : pImpl(std::make_unique<OctreeImpl>()) {}
Octree::~Octree() = default;

void Octree::addPoint(std::size_t index, const Point2& p)
{
    // Written so that NaN fails.
    const bool bInRange = std::fabs(p.x()) <= largestCoordinate && std::fabs(p.y()) <= largestCoordinate &&
                          std::fabs(p.z()) <= largestCoordinate;
    LUMO_CHECK(bInRange, "coordinates are in range");
    pImpl->add(new (pImpl->items.alloc()) Item{{p.x(), p.y(), p.z()}, index, nullptr});
}

std::size_t Octree::size() const
{
    return pImpl->numPoints;
}

void Octree::query(double xmin, double ymin, double zmin, double xmax, double ymax, double zmax,
                   std::vector<std::size_t>& vIndices) const
{
    if (!(xmin <= xmax && ymin <= ymax && zmin <= zmax)) return;
    const auto numBefore = static_cast<std::ptrdiff_t>(vIndices.size());
    pImpl->forEachIn(pImpl->pRoot, {{xmin, ymin, zmin}, {xmax, ymax, zmax}},
                     [&vIndices](const Item& item) { vIndices.push_back(item.index); });
    std::sort(vIndices.begin() + numBefore, vIndices.end());
}

bool Octree::getClosest(const Point2& p, std::size_t& index, double& sqDistance, double maxSqDistance) const
{
    if (pImpl->pRoot == nullptr) return false;
    const Item* pBest = nullptr;
    double sqBest = maxSqDistance;
    pImpl->approach(pImpl->pRoot, {p.x(), p.y(), p.z()}, pBest, sqBest);
    if (pBest == nullptr) return false;
    index = pBest->index;
    sqDistance = sqBest;
    return true;
}

} // namespace ORBI_OCTREE
