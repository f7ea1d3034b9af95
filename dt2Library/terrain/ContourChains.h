#ifndef LUMO25D_TERRAIN_CONTOURCHAINS_H
#define LUMO25D_TERRAIN_CONTOURCHAINS_H

#include "Segment2.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// A segment of a contour, without its height: what is looked at often is small.
struct PlanarSegment
{
    double aX[2], aY[2]; ///< of both ends
};

/// Joins segments of one height, given in any order and direction, into polylines and polygons. Ends count as one point
/// when they are equal in x and y.
///
/// Points become numbers by a hash table, so that the time is linear but for the sort of the chains by their starts.
class ContourChains
{
public:
    explicit ContourChains(const std::vector<PlanarSegment>& vSegments);

    /// True when more than two segments end at one point: then there are no chains to be had.
    bool isBranching() const { return bBranching; }
    /// Appends the chains: open ones by their starts, each from the smaller end; then closed ones by their starts, each
    /// counterclockwise from its smallest point. All points get that height.
    void append(double height, std::vector<std::vector<Segment2>>& vvContours);

private:
    static constexpr std::uint32_t none = 0xffffffffU;

    struct Node
    {
        double x, y;
        std::uint32_t aSegments[2]; ///< in the order of the segments; none where there is no second one

        bool isAt(double px, double py) const { return x == px && y == py; }
        bool operator<(const Node& other) const { return x < other.x || (x == other.x && y < other.y); }
        Point2 pointAt(double height) const { return Point2(x, y, height); }
    };

    /// A closed chain with its smallest point, where it is entered counterclockwise.
    struct Ring
    {
        std::uint32_t start, segment;
        std::size_t size;
    };

    std::uint32_t nodeOf(double x, double y);
    void addEnd(std::uint32_t segment, int end, double x, double y);
    std::uint32_t farNode(std::uint32_t segment, std::uint32_t node) const
    {
        return vEnds[2 * segment] == node ? vEnds[2 * segment + 1] : vEnds[2 * segment];
    }
    std::uint32_t otherSegment(std::uint32_t node, std::uint32_t segment) const
    {
        const std::uint32_t* const aAtNode = vNodes[node].aSegments;
        return aAtNode[0] == segment ? aAtNode[1] : aAtNode[0];
    }
    Ring goRound(std::uint32_t segment);
    std::uint32_t counterclockwiseSegment(std::uint32_t start) const;
    std::vector<Segment2> walk(std::uint32_t start, std::uint32_t segment, std::size_t expectedSize, double height);

    std::size_t numSegments;
    std::vector<Node> vNodes;
    std::vector<std::uint32_t> vTable; ///< numbers of nodes, by the hash of their points; its size is a power of two
    std::vector<std::uint32_t> vEnds;  ///< the nodes of segment i are 2 i and 2 i + 1
    std::vector<bool> vDone;           ///< segments that are in a chain
    bool bBranching = false;
};

} // namespace ORBI_LUMO25D

#endif
