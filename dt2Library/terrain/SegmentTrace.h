#ifndef LUMO25D_TERRAIN_SEGMENTTRACE_H
#define LUMO25D_TERRAIN_SEGMENTTRACE_H

#include "Triangle2.h"

#include <cmath>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class OrbiTest;

/// Follows segments through a triangulation and tells what they meet, in order.
///
/// What is nearer to each other than a resolution, in the order of the doubles' distance, counts as meeting: a point at a
/// vertex, a point on an edge, a vertex on the segment. Who traces the edges of two triangulations through each other gets
/// the same answer from both sides. Otherwise crossings would be found whose places can't be told from the vertices beside
/// them, as between grids that are shifted by a tenth of a cell: their diagonals run along each other but for the last bit.
/// All other decisions are exact. Where features of the triangulation itself are as small as the resolution, the answers may
/// contradict each other, which is told or must be found by whoever uses them.
class SegmentTrace
{
public:
    /// Where a point lies: at a vertex; inside an edge, opposite corner `edge` of pT; inside pT; or, without any of them,
    /// outside of the hull.
    struct Place
    {
        Triangle2* pT = nullptr;
        int edge = -1;
        Point2* pVtx = nullptr;
    };

    /// What comes next on a segment, and the triangles on both sides of the way there: one and the same, two along an
    /// edge, null outside of the hull.
    struct Meeting
    {
        enum Kind
        {
            Vertex,   ///< pVtx, which isn't the segment's end
            Crossing, ///< the edge opposite corner ith of pT, inside
            End       ///< the segment's end
        };
        Kind kind;
        Point2* pVtx;
        Triangle2* pT;
        int ith;
        const Triangle2 *pLeft, *pRight;
    };

    /// The triangulation must have area, and the predicates must know the range of all points. The resolution isn't
    /// negative.
    SegmentTrace(Dt2& dt2_, const OrbiTest& orbiTest_, double resolution_)
        : dt2(dt2_), orbiTest(orbiTest_), resolution(resolution_)
    {
    }

    /// Fast when the points of successive calls are close to each other.
    Place locate(const Point2& p);
    /// Gives what the segment from a, which lies at that place, to another point b meets. It ends where the segment leaves
    /// the hull. False when the segment lost its way. O(k) for k meetings and the triangles around the vertices that are met.
    bool run(const Point2& a, const Place& from, const Point2& b, std::vector<Meeting>& vMeetings);

    /// True within the resolution between the ends, the neighbourhoods of which don't count. The same for both directions.
    bool isOnEdge(const Point2& p, const Point2& a, const Point2& b) const;
    /// True when the corner opposite an edge lies on it.
    bool isNeedle(const Triangle2& t, int longEdge) const;

private:
    void walkFromOutside();
    Point2* firstOnLine(Point2* pV) const;
    void walkFromVertex(Point2* pV);
    Point2* leaveAlongEdge(Point2* pV, Triangle2* pT, int ith);
    void walkFromEdge(Triangle2* pT, int ith);
    void walkFromInside(Triangle2* pT);
    void walkAcross(Triangle2* pT, int ith);
    bool leaveThroughEdge(Triangle2* pT, int ith);
    bool leaveThroughVertex(Point2* pV, const Triangle2* pLeft, const Triangle2* pRight);

    struct Edge
    {
        Triangle2* pT;
        int ith;
    };

    Place placeBeyondHull(const Point2& p, Edge edge) const;
    static Edge nextOnHull(Edge edge, bool bBack);
    Place snapped(const Point2& p, Place place) const;
    Place snappedInNeedle(const Point2& p, Triangle2* pT, int longEdge) const;
    bool areClose(const Point2& p, const Point2& q) const
    {
        return std::fabs(p.x() - q.x()) <= resolution && std::fabs(p.y() - q.y()) <= resolution;
    }
    int sideOf(const Point2& p) const;
    bool isAhead(const Point2& from, const Point2& p) const
    {
        return bAlongX ? (bForwards ? from.x() < p.x() : p.x() < from.x())
                       : (bForwards ? from.y() < p.y() : p.y() < from.y());
    }
    bool isAheadOfStart(const Point2& p) const { return isAhead(*pA, p) && !areClose(*pA, p); }

    Dt2& dt2;
    const OrbiTest& orbiTest;
    const double resolution;
    Triangle2* pHint = nullptr;
    const Point2 *pA = nullptr, *pB = nullptr;  ///< the segment
    const Point2* pLast = nullptr;              ///< the last vertex on it, or its start
    bool bAlongX = true, bForwards = true;      ///< the axis that it runs along, more or less, and in which direction
    double dx = 0.0, dy = 0.0, closeArea = 0.0; ///< vertices that make a larger area with it are not on it
    bool bLost = false;
    std::vector<Meeting>* pMeetings = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
