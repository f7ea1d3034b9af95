#ifndef LUMO25D_TERRAIN_HEIGHTINDEX_H
#define LUMO25D_TERRAIN_HEIGHTINDEX_H

#include "Triangle2.h"

#include <array>
#include <cstddef>
#include <cstdint>
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

    /// Calls visit(corners) for each triangle whose closed range holds the height, in the order of the index, until it says
    /// false. False when it did.
    template <class Visit>
    bool forEachAt(double height, const Visit& visit) const
    {
        // What a triangle's corners are is somewhere, and they are somewhere else: both are asked for in time.
        constexpr std::size_t ahead = 12;
        const std::vector<std::uint32_t> vFound = trianglesAt(height);
        for (std::size_t i = 0; i < vFound.size(); ++i) {
            if (i + 2 * ahead < vFound.size()) __builtin_prefetch(&vCorners[vFound[i + 2 * ahead]]);
            if (i + ahead < vFound.size()) {
                for (const Point2* p : vCorners[vFound[i + ahead]]) __builtin_prefetch(p);
            }
            if (!visit(vCorners[vFound[i]])) return false;
        }
        return true;
    }

private:
    static constexpr std::size_t fanOut = 16;

    struct Range
    {
        double minZ, maxZ;
        bool holds(double z) const { return static_cast<int>(minZ <= z) & static_cast<int>(z <= maxZ); }
    };

    void sortAlongCurve(const std::vector<const Triangle2*>& vTriangles);
    void buildTree();
    std::vector<std::uint32_t> trianglesAt(double height) const;

    std::vector<Corners> vCorners;            ///< along the curve
    std::vector<std::vector<Range>> vvLevels; ///< of single triangles first, of all last
    double largestCoordinate = 0.0;
};

} // namespace ORBI_LUMO25D

#endif
