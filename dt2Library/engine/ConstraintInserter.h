#ifndef LUMO25D_ENGINE_CONSTRAINTINSERTER_H
#define LUMO25D_ENGINE_CONSTRAINTINSERTER_H

#include "ConstraintSegment2.h"
#include "Point2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintMgr;
class Dt2;
class OrbiTest;

/// Makes constraint segments stand in the mesh, as chains of edges.
///
/// The zone of a segment is the triangles that it crosses. If no vertex and no other constraint is in its way, the zone
/// is emptied, the two polygons on either side of the segment are triangulated, and flips make them Delaunay: the result
/// is the constrained Delaunay triangulation (Chew 1989; Sloan 1993). A vertex on the way splits the segment; another
/// constraint on the way is split together with it where they cross.
///
/// Crossings are rounded to doubles, so that a vertex may be a little off the segments that it splits. For this to end,
/// and for chains to stay where their segments were:
/// - A vertex within snapDistance() of the given segment (four units in the last place of its largest coordinate) counts
///   as on it, and a crossing within that distance of an end of one of the two segments is that end.
/// - Crossings are computed on the segments as they were given (their carriers), not on the parts.
/// So the vertices of a chain lie within snapDistance() of the given segment. The one exception are crossings of parts
/// whose carriers don't cross at that place: they are computed on the parts and add one rounding each.
/// - A call makes a number of steps that is bounded by the size of the triangulation. No input is known that comes near.
///
/// A conforming segment is made to stand first; then parts that are no Delaunay edges are split: in the middle, or, at an
/// end where another constraint meets it at an acute angle, at a power of two from that end, so that the parts of both
/// match (Ruppert 1995, "concentric shells"). This ends when the parts are short against the distance to the vertices
/// around. Segments that run side by side at the distance of rounding would need parts as short as that: parts below a
/// thousand units in the last place, and all parts after a number of splits that is bounded by the size of the
/// triangulation, are left as they are, with a message.
class ConstraintInserter
{
public:
    explicit ConstraintInserter(Dt2& dt2_);

    /// From now on, no vertex counts as on a segment that isn't, to the last bit: for segments that are known to meet nothing
    /// but at their ends.
    void setExact() { bExact = true; }
    /// To be called before a run of establish(): allows as many splits for the sake of Delaunay edges as any sound input
    /// needs.
    void beginRun();
    /// After it: tells, once, if that was not enough.
    void endRun();
    /// Makes an alive segment, or the alive segments that it is split into, stand; those with a conforming strategy as
    /// Delaunay edges. False when a bound on the steps was met; the mesh is valid, and what does not stand stays alive.
    bool establish(ConstraintSegment2* pCSeg);
    /// Splits a segment that stands, opposite corner ith of pT, at a point that lies on it but for rounding, and makes the
    /// parts stand. Returns the vertex; null when there is none inside the segment, which then stands as it did.
    Point2* splitStanding(ConstraintSegment2* pCSeg, const Point2& p, Triangle2* pT, int ith);
    /// Flips until the neighbourhood of an edge that is no constraint any more is Delaunay. Nothing without the edge.
    void repairReleasedEdge(Point2* pA, Point2* pB);

private:
    /// What a walk from one end of a segment to the other meets first.
    struct Way
    {
        enum Kind
        {
            Stands,
            Vertex,
            Crossing,
            Clear
        };
        Kind kind = Stands;
        Point2* pVertex = nullptr;            ///< that the segment has to be split at
        ConstraintSegment2* pOther = nullptr; ///< that crosses
        Triangle2* pT = nullptr; ///< with the constraint that crosses opposite corner ith; or the first of the zone
        int ith = 0;
    };

    /// The segment being walked along, directed so that the result doesn't depend on addresses.
    struct Track
    {
        Point2* a = nullptr;
        Point2* b = nullptr;
        const ConstraintSegment2* pCarrier = nullptr;
        double dx = 0.0, dy = 0.0; ///< from a to b
        double bound =
            0.0; ///< a cross product that is larger, and larger than its rounding, belongs to a vertex that is not near
        double snap = 0.0;
    };

    enum Side
    {
        OnTheRight,
        OnTheLine,
        OnTheLeft,
        Near
    };

    /// A turn around an end of the segment in search of the triangle that it leaves through.
    struct Turn
    {
        Point2* pCenter = nullptr;
        Point2* pGoal = nullptr;
        Triangle2* pStart = nullptr;
        Triangle2* pT = nullptr; ///< the next to look at
        bool bBackward = false;  ///< the hull was met: now the other way round
        bool bDone = false;
    };

    /// A vertex of the border of the zone and the edge from the vertex before it: what lies beyond, where the index of
    /// this edge there is back; or the number of the twin, for an edge whose both sides are in the zone.
    struct BorderLink
    {
        Point2* pVtx;
        Triangle2* pOuter;
        int back;
        int twin;
    };
    /// A new triangle at an edge whose other side is to be linked when both are known.
    struct TwinSide
    {
        Triangle2* pT;
        int ith;
        Point2* pSrc;
        Point2* pTrg;
    };
    struct EdgeRef
    {
        Triangle2* pT;
        int ith;
    };

    // ---- one segment ----
    void allowSteps();
    bool workOff();
    static bool isConforming(const ConstraintSegment2* pCSeg);
    bool establishAsEdge(ConstraintSegment2* pCSeg);
    void pushParts(ConstraintSegment2* pCSeg);
    bool splitAtVertex(ConstraintSegment2* pCSeg, Point2* pVtx);
    Point2* sharedSplit(Point2* pVtx) const;
    Point2* nextOnTrack(const Point2* pVtx) const;
    bool splitAtCrossing(ConstraintSegment2* pCSeg, const Way& way);
    bool splitOther(ConstraintSegment2* pOther, Point2* pVtx);
    bool crossingPoint(const Track& t, const ConstraintSegment2& other, Point2& crossing) const;
    Point2* insertOnEdge(ConstraintSegment2* pOnEdge, ConstraintSegment2* pOther, const Point2& p, Triangle2* pT,
                         int ith);
    bool canSplit(const Point2& p, const Triangle2* pT, int ith) const;

    // ---- the walk ----
    void setTrack(const ConstraintSegment2* pCSeg);
    Side sideOf(const Point2* pVtx) const;
    Side sideOfDoubtful(const Point2* pVtx) const;
    Way findWay();
    Way leave();
    bool step(Turn& turn, Way& way) const;
    bool isEdge(Point2* pA, Point2* pB) const;
    void reverseTrack();
    Way walk(Triangle2* pT, int ith);
    void collect(std::vector<BorderLink>& vBorder, Point2* pVtx, const Triangle2* pT, int ith);

    // ---- the zone ----
    void rebuildZone();
    void findTwins(std::vector<BorderLink>& vBorder, int& numTwins);
    EdgeRef triangulate(const std::vector<BorderLink>& vBorder, bool bLeft);
    void attach(Triangle2* pT, int ith, const BorderLink& link, Point2* pBefore);
    void linkTwins();
    void repairEdges();

    // ---- conforming ----
    bool makeConforming(ConstraintSegment2* pCSeg);
    bool isDelaunayEdge(const ConstraintSegment2* pCSeg, EdgeRef& edge) const;
    bool conformingSplitPoint(const ConstraintSegment2* pCSeg, Point2& p) const;
    bool hasAcuteNeighbor(const Point2* pVtx, const Point2* pEnd) const;

    Dt2& dt2;
    ConstraintMgr& manager;
    const OrbiTest& orbiTest;
    std::size_t numStepsLeft = 0;
    std::size_t numConformingSplitsLeft = 0;
    bool bExact = false;
    bool bLeftAsItIs = false; ///< a part was not made a Delaunay edge

    // Scratch, kept so that nothing is allocated for every segment.
    Track track;
    std::vector<ConstraintSegment2*> vWork;
    std::vector<Triangle2*> vZone;
    std::vector<BorderLink> vLeft, vRight, vChain;
    std::vector<TwinSide> vTwins;
    std::vector<EdgeRef> vCheck;
    std::size_t numUsed = 0; ///< triangles of the zone that are in use again
};

} // namespace ORBI_LUMO25D

#endif
