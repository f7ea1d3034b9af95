#ifndef LUMO25D_REPAIR_BORDERWALK_H
#define LUMO25D_REPAIR_BORDERWALK_H

#include "Edge2.h"
#include "Vector2.h"

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

namespace ORBI_LUMO25D
{

/// Puts the border edges of a mesh together to the rims of its holes.
///
/// Where a vertex has several fans of triangles with gaps between them, a rim crosses from fan to fan: the edge that
/// ends at a gap is followed by the one that begins on the gap's other side. Which fan that is only geometry can tell:
/// they are sorted around the vertex's normal.
class BorderWalk
{
public:
    /// turn: from a border edge through the fan at its target to the border edge that leaves there; false if there is
    /// none. normalAt: the surface's normal at a vertex.
    BorderWalk(const std::vector<Edge2>& vBorder_, const std::function<bool(Edge2&)>& turn_,
               const std::function<Vector2(const Point2*)>& normalAt_);

    /// Appends closed chains that visit no vertex twice; chains that don't close are left out.
    void getRings(std::vector<std::vector<Edge2>>& vRings);

private:
    std::vector<std::size_t>& outgoingOf(const Edge2& edge) { return mVertexToOutgoing[edge.getTrg()]; }
    bool findNext(const Edge2& edge, std::size_t& next);
    void sortAround(const Point2* pVertex, std::vector<std::size_t>& vOutgoing) const;

    const std::vector<Edge2>& vBorder;
    const std::function<bool(Edge2&)> turn;
    const std::function<Vector2(const Point2*)> normalAt;
    /// Positions of the border edges that begin at a vertex, counterclockwise around its normal.
    std::unordered_map<const Point2*, std::vector<std::size_t>> mVertexToOutgoing;
};

} // namespace ORBI_LUMO25D

#endif
