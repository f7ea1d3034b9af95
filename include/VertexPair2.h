#ifndef LUMO25D_VERTEXPAIR2_H
#define LUMO25D_VERTEXPAIR2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <functional>

namespace ORBI_LUMO25D
{

/// An undirected edge between two vertices by their identity, for use as a key.
///
/// The vertex with the lower address comes first, so that both directions of an edge make the same pair. Keep it so:
/// the members are for reading. Orders by address differ from run to run; let no result depend on them.
class LUMO25D_API VertexPair2
{
public:
    /// In either order.
    VertexPair2(Point2* pA, Point2* pB) : pP0(pA), pP1(pB)
    {
        if (std::less<Point2*>()(pB, pA)) {
            pP0 = pB;
            pP1 = pA;
        }
    }

    /// Squared length in the plane, in space.
    double getSqLen2D() const
    {
        const double dx = pP1->x() - pP0->x();
        const double dy = pP1->y() - pP0->y();
        return dx * dx + dy * dy;
    }
    double getSqLen25D() const
    {
        const double dz = pP1->z() - pP0->z();
        return getSqLen2D() + dz * dz;
    }

    /// By the addresses, the first, then the second.
    bool operator<(const VertexPair2& other) const
    {
        if (pP0 != other.pP0) return std::less<Point2*>()(pP0, other.pP0);
        return std::less<Point2*>()(pP1, other.pP1);
    }
    bool operator==(const VertexPair2& other) const { return pP0 == other.pP0 && pP1 == other.pP1; }
    bool operator!=(const VertexPair2& other) const { return !(*this == other); }

    Point2* pP0; ///< the vertex with the lower address
    Point2* pP1; ///< the other one
};

} // namespace ORBI_LUMO25D

#endif
