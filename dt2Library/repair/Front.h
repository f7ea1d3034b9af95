#ifndef LUMO25D_REPAIR_FRONT_H
#define LUMO25D_REPAIR_FRONT_H

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// The border that is still open: rings of nodes, each node standing for a vertex of the patch. Knows links only, no
/// coordinates.
///
/// A ring runs along the edges that its triangles will have: the hole is on its left. Nodes are never reused; a vertex
/// at which a ring was split has a node in each part.
class Front
{
public:
    struct Node
    {
        std::size_t vertex;
        std::size_t prev;
        std::size_t next;
        std::size_t ring;
        bool bAlive;
    };
    /// A node of a ring and the number of its nodes.
    struct Ring
    {
        std::size_t first;
        std::size_t size;
    };

    const Node& node(std::size_t i) const { return vNodes[i]; }
    const Ring& ring(std::size_t i) const { return vRings[i]; }
    /// The vertices of the nodes before and after.
    std::size_t dec(std::size_t i) const { return vNodes[vNodes[i].prev].vertex; }
    std::size_t inc(std::size_t i) const { return vNodes[vNodes[i].next].vertex; }

    /// Returns the number of the new ring.
    std::size_t addRing(const std::vector<std::size_t>& vVertices);
    void remove(std::size_t i);
    /// Puts a new node for the vertex behind node i, and returns it.
    std::size_t insertBehind(std::size_t i, std::size_t vertex);
    /// Splits the ring of two nodes that are not next to each other: one part goes from a forward to b, the other from b
    /// forward to a, both with a node for each of the two. The larger part keeps the ring's number, the other one is a
    /// new ring, which is returned; bSecondIsNew tells whether that is the part from b to a. Linear in the smaller part.
    std::size_t split(std::size_t a, std::size_t b, bool& bSecondIsNew);

private:
    bool isForwardPartSmaller(std::size_t a, std::size_t b) const;

    std::vector<Node> vNodes;
    std::vector<Ring> vRings;
};

} // namespace ORBI_LUMO25D

#endif
