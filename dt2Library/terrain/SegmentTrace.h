#ifndef LUMO25D_TERRAIN_SEGMENTTRACE_H
#define LUMO25D_TERRAIN_SEGMENTTRACE_H

#include "Triangle2.h"

#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class OrbiTest;

/// Follows segments through a triangulation and tells what they meet, in order. Every decision is exact.
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

    /// The triangulation must have area, and the predicates must know the range of all points.
    SegmentTrace(Dt2& dt2_, const OrbiTest& orbiTest_) : dt2(dt2_), orbiTest(orbiTest_) {}

    /// Fast when the points of successive calls are close to each other.
    Place locate(const Point2& p);
    /// Gives what the segment from a, which lies at that place, to another point b meets. It ends where the segment leaves
    /// the hull. O(k) for k meetings and the triangles around the vertices that are met.
    void run(const Point2& a, const Place& from, const Point2& b, std::vector<Meeting>& vMeetings);

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

    int sideOf(const Point2& p) const;
    bool isAhead(const Point2& from, const Point2& p) const { return bUpwards ? from < p : p < from; }

    Dt2& dt2;
    const OrbiTest& orbiTest;
    Triangle2* pHint = nullptr;
    const Point2 *pA = nullptr, *pB = nullptr; ///< the segment
    bool bUpwards = true;                      ///< *pA < *pB
    std::vector<Meeting>* pMeetings = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
