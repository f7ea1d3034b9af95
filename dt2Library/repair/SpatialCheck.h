#ifndef LUMO25D_REPAIR_SPATIALCHECK_H
#define LUMO25D_REPAIR_SPATIALCHECK_H

#include "geometry/OrbiTest.h"
#include "repair/Front.h"
#include "repair/FrontIndex.h"
#include "repair/PatchSurface.h"

#include "Point2.h"
#include "Vector2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Asks whether something new would run into the front. A question is turned so that it lies in the plane and answered
/// there, exactly for the turned coordinates; what is further than the border's median edge length above or below
/// doesn't count. Rotations are about the corner at hand, so that large coordinates lose no digits.
///
/// Borrows everything; nothing is kept between the calls.
class SpatialCheck
{
public:
    SpatialCheck(const Front& front_, const FrontIndex& index_, const PatchSurface& surface_, double medianEdgeLength)
        : front(front_), index(index_), surface(surface_), reach(medianEdgeLength)
    {
    }

    /// Whether the triangle of a node and its neighbours may be made. 0: yes. 1 or 2: it is degenerate, or an end of an
    /// edge of the node's ring lies in it. 3: an edge crosses it. 4: a triangle of the patch, or of the mesh at the
    /// border, does.
    int getSpatialQuality(std::size_t node) const;
    /// Whether the fan of new triangles from a node's previous neighbour over the tips to the next one has room: its edges
    /// cross none of the node's ring, and leave into the hole, between the node's neighbours, seen along nnv.
    bool isRoomForFan(std::size_t node, const std::vector<Point2>& vTips, const Vector2& nnv) const;
    /// Whether the segment between two nodes of a ring crosses none of its edges, and leaves one into the hole and arrives
    /// out of it at the other. Edges at the nodes don't count.
    bool isVisible(std::size_t node, std::size_t target, const Vector2& nnv) const;

private:
    /// An edge in turned coordinates.
    struct TurnedEdge
    {
        Point2 src;
        Point2 trg;
    };

    bool isAcross(const TurnedEdge& e, const Point2& p, const Point2& q) const;
    bool isInOpening(const Point2& base, const Point2& dec, const Point2& inc, const Point2& p) const;
    bool crossesNothing(std::size_t ring, const Point2& p, std::size_t pVertex, const Point2& q, std::size_t qVertex,
                        const Vector2& nnv) const;
    bool isLeft(const Point2& p, const Point2& q, const Point2& r) const;

    const Front& front;
    const FrontIndex& index;
    const PatchSurface& surface;
    double reach;
    mutable OrbiTest orbiTest;
};

} // namespace ORBI_LUMO25D

#endif
