#ifndef LUMO25D_TERRAIN_HEIGHTINDEX_H
#define LUMO25D_TERRAIN_HEIGHTINDEX_H

#include "Triangle2.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Finds the triangles that a horizontal plane meets.
///
/// A tree of height ranges over the triangles along a curve through the plane: neighbours have similar heights, so that few
/// nodes are entered in vain, and what a query reads lies together in memory. The tree has no pointers: the nodes of each
/// level are an array, node i being the parent of the nodes i * fanOut and on.
///
/// Ranges are of floats. Rounding keeps the order, so that a height that is rounded too is in each range that held it; the
/// few triangles that are found in vain are for the caller to leave out.
class HeightIndex
{
public:
    static constexpr std::uint32_t none = 0xffffffffU;

    /// What a search has found, and the memory for it, which is kept from search to search.
    struct Found
    {
        std::vector<std::uint32_t> vNumbers, vParents; ///< they only grow: what lies behind the counted is rubbish
        std::size_t size = 0;                          ///< so many of the numbers count
    };

    /// Copies the pointers. Triangles that are NULL, dead or not finite are left out with a warning, repeated ones silently.
    /// Linear where the triangles lie in memory along a curve, as a triangulation's do; with a sort elsewhere.
    explicit HeightIndex(const std::vector<Triangle2*>& vT);

    bool empty() const { return vTriangles.empty(); }
    /// The range of all; not without triangles.
    double minZ() const { return lowest; }
    double maxZ() const { return highest; }
    /// The largest |x| or |y| of a corner.
    double maxAbs() const { return largestCoordinate; }

    /// Triangles are numbered by their addresses.
    std::size_t size() const { return vTriangles.size(); }
    const Triangle2* triangle(std::uint32_t number) const { return vTriangles[number]; }
    /// The number of a triangle, none of one that isn't here; it is only looked up, never read. Constant time where the
    /// triangles between it and the near one are all here, else a logarithm of their distance.
    std::uint32_t numberOf(const Triangle2* pT, std::uint32_t near) const
    {
        const std::ptrdiff_t guess = static_cast<std::ptrdiff_t>(near) + distanceInMemory(vTriangles[near], pT);
        if (guess >= 0 && guess < static_cast<std::ptrdiff_t>(size()) &&
            vTriangles[static_cast<std::size_t>(guess)] == pT) {
            return static_cast<std::uint32_t>(guess);
        }
        return searchNumberOf(pT, near, guess);
    }

    /// The numbers of all triangles whose closed range holds the height, and of a few whose range ends just beside it.
    void findAt(double height, Found& found) const;

private:
    static constexpr std::size_t fanOut = 16;

    struct Range
    {
        float minZ, maxZ;
        bool holds(float z) const { return static_cast<int>(minZ <= z) & static_cast<int>(z <= maxZ); }
    };

    /// In triangles.
    static std::ptrdiff_t distanceInMemory(const Triangle2* pFrom, const Triangle2* pTo)
    {
        const auto bytes = reinterpret_cast<std::uintptr_t>(pTo) - reinterpret_cast<std::uintptr_t>(pFrom);
        return static_cast<std::ptrdiff_t>(bytes) / static_cast<std::ptrdiff_t>(sizeof(Triangle2));
    }
    std::uint32_t searchNumberOf(const Triangle2* pT, std::uint32_t near, std::ptrdiff_t guess) const;

    class Extent;
    Extent keepUsable();
    void sortAlongCurve(const Extent& extent);
    void buildTree();

    std::vector<const Triangle2*> vTriangles; ///< by address
    std::vector<std::uint32_t> vAlongCurve;   ///< their numbers along the curve; empty where that is the same order
    std::vector<std::vector<Range>> vvLevels; ///< of single triangles along the curve first, of all last
    double lowest = 0.0, highest = 0.0;
    double largestCoordinate = 0.0;
};

} // namespace ORBI_LUMO25D

#endif
