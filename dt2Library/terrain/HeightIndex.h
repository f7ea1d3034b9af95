#ifndef LUMO25D_TERRAIN_HEIGHTINDEX_H
#define LUMO25D_TERRAIN_HEIGHTINDEX_H

#include "Triangle2.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Finds the triangles that a horizontal plane meets.
///
/// A tree of height ranges over the triangles in the order of a Hilbert curve: neighbours in the plane have similar
/// heights, so that few nodes are entered in vain, and what a query reads lies together in memory. The tree has no
/// pointers: the nodes of each level are an array, node i being the parent of the nodes i * fanOut and on.
class HeightIndex
{
public:
    /// A triangle.
    using Corners = std::array<const Point2*, 3>;

    /// Copies the pointers. Triangles that are NULL, dead or not finite are left out with a warning, repeated ones silently.
    explicit HeightIndex(const std::vector<Triangle2*>& vT);

    bool empty() const { return vCorners.empty(); }
    /// The range of all; not without triangles.
    double minZ() const { return vvLevels.back().front().minZ; }
    double maxZ() const { return vvLevels.back().front().maxZ; }
    /// The largest |x| or |y| of a corner.
    double maxAbs() const { return largestCoordinate; }

    /// Calls visit(corners) for each triangle whose closed range holds the height, in the order of the curve, until it says false.
    /// False when it did.
    template <class Visit>
    bool forEachAt(double height, const Visit& visit) const
    {
        return empty() || descend(vvLevels.size() - 1, 0, height, visit);
    }

private:
    static constexpr std::size_t fanOut = 16;

    struct Range
    {
        double minZ, maxZ;
        bool holds(double z) const { return minZ <= z && z <= maxZ; }
    };

    void sortAlongCurve(const std::vector<const Triangle2*>& vTriangles);
    void buildTree();

    template <class Visit>
    bool descend(std::size_t level, std::size_t i, double height, const Visit& visit) const
    {
        if (!vvLevels[level][i].holds(height)) return true;
        if (level == 0) return visit(vCorners[i]);
        const std::size_t end = std::min((i + 1) * fanOut, vvLevels[level - 1].size());
        if (level == 1) { // memory is asked for ahead
            for (std::size_t child = i * fanOut; child < end; ++child) {
                if (!vvLevels[0][child].holds(height)) continue;
                for (const Point2* p : vCorners[child]) __builtin_prefetch(p);
            }
        }
        for (std::size_t child = i * fanOut; child < end; ++child) {
            if (!descend(level - 1, child, height, visit)) return false;
        }
        return true;
    }

    std::vector<Corners> vCorners;            ///< along the curve
    std::vector<std::vector<Range>> vvLevels; ///< of single triangles first, of all last
    double largestCoordinate = 0.0;
};

} // namespace ORBI_LUMO25D

#endif
