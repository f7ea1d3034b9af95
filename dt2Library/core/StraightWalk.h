#ifndef LUMO25D_CORE_STRAIGHTWALK_H
#define LUMO25D_CORE_STRAIGHTWALK_H

namespace ORBI_LUMO25D
{

class OrbiTest;
class Point2;
class Triangle2;

/// A walk along the segment from a vertex to a point, through the triangles that the segment meets and no others.
///
/// Every step is decided exactly. It needs neither a counter nor randomness, and ends in any triangulation. The point
/// must lie strictly inside the hull and within the predicates' range. O(k) for k triangles met, and the triangles around
/// the vertex on one side of the segment.
class StraightWalk
{
public:
    StraightWalk(const OrbiTest& orbiTest_, const Point2& p_) : orbiTest(orbiTest_), p(p_) {}

    /// Walks from a vertex with triangles.
    void run(const Point2* pFrom_);

    Triangle2* pT = nullptr;  ///< the triangle that holds the point
    Point2* pEqual = nullptr; ///< its corner at the point, or null
    int edgeIdx = -1;         ///< the edge that the point lies on, or -1 when it lies strictly inside

private:
    void turnTowardsPoint();
    bool endsHere();
    bool crossToPoint();
    bool isBeyond(int i) const;
    void finishInside(int i, int j);
    bool finishAtCorner();

    const OrbiTest& orbiTest;
    const Point2& p;
    const Point2* pFrom = nullptr;
    int from = 0; ///< index of the vertex in pT, while the walk turns around it
};

} // namespace ORBI_LUMO25D

#endif
