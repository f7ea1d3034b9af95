#ifndef LUMO25D_TESTS_ORACLES_QUERYTWINS_H
#define LUMO25D_TESTS_ORACLES_QUERYTWINS_H

#include "Point2.h"
#include "Triangle2.h"

#include <gmpxx.h>

#include <set>
#include <vector>

namespace oracles
{

/// 1: c lies to the left of the line from a to b; -1: to the right; 0: on it. In doubles where a forward error bound
/// allows it, else in rationals.
int sideOf(const ORBI_LUMO25D::Point2& a, const ORBI_LUMO25D::Point2& b, const ORBI_LUMO25D::Point2& c);

/// The height of the triangle's plane at p, exactly.
mpq_class planeHeight(const ORBI_LUMO25D::Triangle2& t, const ORBI_LUMO25D::Point2& p);

/// The point of a convex hull's border that is nearest to a point outside.
struct NearestOnHull
{
    bool bOnEdge = false;   ///< a foot of a perpendicular; else a corner that no perpendicular meets
    bool bDoubtful = false; ///< a foot so near to an edge's end, or so far from the point, that rounding may decide
    mpq_class sqDistance;
    mpq_class height; ///< on the straight line between the edge's ends
};

/// Queries of a triangulation answered by looking at every triangle and every hull edge, exactly.
///
///     std::vector<Triangle2*> vT;
///     lumo.getTrianglePointers(vT);
///     EXPECT_EQ(lumo.locate(p) == nullptr, QueryTwin(vT).trianglesAt(p).empty());
class QueryTwin
{
public:
    explicit QueryTwin(const std::vector<ORBI_LUMO25D::Triangle2*>& vT_);

    /// All triangles that hold p, inside or on the border.
    std::vector<ORBI_LUMO25D::Triangle2*> trianglesAt(const ORBI_LUMO25D::Point2& p) const;
    /// The triangle with the edge from p0 to p1 on its counterclockwise way, or null.
    ORBI_LUMO25D::Triangle2* triangleLeftOf(const ORBI_LUMO25D::Point2* p0, const ORBI_LUMO25D::Point2* p1) const;
    /// The triangles at a vertex, and its neighbours.
    std::set<ORBI_LUMO25D::Triangle2*> trianglesAround(const ORBI_LUMO25D::Point2* pVtx) const;
    std::set<ORBI_LUMO25D::Point2*> neighboursOf(const ORBI_LUMO25D::Point2* pVtx) const;

    /// Border edges: the triangle lies to the left of first -> second.
    struct BorderEdge
    {
        ORBI_LUMO25D::Point2* first;
        ORBI_LUMO25D::Point2* second;
    };
    const std::vector<BorderEdge>& border() const { return vBorder; }
    /// p must lie strictly outside the hull.
    NearestOnHull nearestOnHull(const ORBI_LUMO25D::Point2& p) const;
    /// Where the closed segment from src, strictly outside, to trg first meets the hull. False when it doesn't.
    bool entry(const ORBI_LUMO25D::Point2& src, const ORBI_LUMO25D::Point2& trg, mpq_class& x, mpq_class& y) const;

private:
    std::vector<ORBI_LUMO25D::Triangle2*> vT;
    std::vector<BorderEdge> vBorder;
};

} // namespace oracles

#endif
