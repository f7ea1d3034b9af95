#ifndef LUMO25D_ENGINE_SIDELINKER_H
#define LUMO25D_ENGINE_SIDELINKER_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Triangle2;

/// Links triangles in a row as neighbours, by the numbers of their vertices, while they come.
///
/// A side waits in a small table, at the place that its edge is hashed to, for the triangle on its other side. Where
/// another side comes to that place first, the older one is put aside. So most pairs, whose triangles come soon after each
/// other, are found in the cache; the rest are sorted at the end. Time is that of a sort in the worst order, however many
/// edges meet at one vertex. Whether a side finds its partner can't be predicted, so nothing branches on it.
class SideLinker
{
public:
    using Index = std::int32_t;
    using Edge = std::pair<Index, Index>;

    explicit SideLinker(Triangle2* aTriangles_);

    /// Links the next n triangles, of which the corners are given by three numbers each. Their neighbours get a value.
    void add(const Index* aCorners, std::size_t n);
    /// To be called after the last one: appends the sides without a neighbour, which have their triangle on the left. False
    /// when two triangles that wait are on one side of an edge.
    bool close(std::size_t numVertices, std::vector<Edge>& vBorder);

private:
    /// Side i of triangle t, opposite its corner i.
    struct Side
    {
        /// The lower number, the higher one, and a bit that tells whether it leads from the higher to the lower; 0 for none.
        std::uint64_t edge = 0;
        std::uint64_t place = 0; ///< 4 t + i

        std::size_t triangle() const { return static_cast<std::size_t>(place >> 2); }
        int index() const { return static_cast<int>(place & 3); }
        std::size_t lower() const { return static_cast<std::size_t>(edge >> 32); }
        Edge ends() const
        {
            const auto low = static_cast<Index>(edge >> 32);
            const auto high = static_cast<Index>(edge >> 1 & 0x7FFFFFFFU);
            return (edge & 1) != 0 ? Edge(high, low) : Edge(low, high);
        }
        bool operator<(const Side& other) const { return edge < other.edge; }
    };
    static Side sideOf(std::size_t t, int i, Index src, Index trg);
    Side* link(Side side, Side* pAside);
    void linkPair(const Side& a, const Side& b);
    void sortAside(std::size_t numVertices);

    Triangle2* aTriangles;
    std::size_t numAdded = 0;
    std::vector<Side> vTable;
    std::vector<Side> vAside;
};

} // namespace ORBI_LUMO25D

#endif
