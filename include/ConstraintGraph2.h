#ifndef LUMO25D_CONSTRAINTGRAPH2_H
#define LUMO25D_CONSTRAINTGRAPH2_H

#include "ConstraintSegment2.h"
#include "Lumo25DApi.h"

#include <map>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Color;
class Dt2;
class Visualizer2;

/// A polyline or polygon of constraint segments: what createConstraint() returns, valid while its segments are split.
///
/// The graph keeps the segments that were given, in their order, and which way it runs along each of them and along
/// everything below them. If the segments close to one simple ring, the graph is a polygon: its segments are kept in ring
/// order from the leftmost vertex (of several the lowest), counterclockwise unless their directions were given.
///
/// Graphs belong to the triangulation.
class LUMO25D_API ConstraintGraph2
{
public:
    /// Two vertices, the one with the lower address first.
    using VertexPair = std::pair<Point2*, Point2*>;
    /// Whether the caller's direction runs against that of the segment with these ends, lower address first.
    using Directions = std::map<VertexPair, bool>;

    /// For the registry only. The graph chooses the directions: counterclockwise for a ring, else those of the segments.
    ConstraintGraph2(Dt2* pDt_, const std::vector<ConstraintSegment2*>& vSegments, ConstraintInsertionStrategy cis_);
    /// For the registry only. The caller gives the directions, of every segment.
    ConstraintGraph2(Dt2* pDt_, const std::vector<ConstraintSegment2*>& vSegments, const Directions& mPPReverse,
                     ConstraintInsertionStrategy cis_);
    ConstraintGraph2(const ConstraintGraph2&) = delete;
    ConstraintGraph2& operator=(const ConstraintGraph2&) = delete;
    ~ConstraintGraph2() = default;

    /// True when the segments close to one simple ring.
    bool isPolygon() const { return bPolygon; }
    /// True when the graph has an inside, on the left of its segments: for a polygon, and for directions that were given.
    bool isOriented() const { return bOriented; }
    /// As it was asked for at createConstraint().
    ConstraintInsertionStrategy getInsertionStrategy() const { return cis; }
    Dt2* getDelaunayTriangulation() const { return pDt; }

    /// Sets vSegments to the segments that were given; a split doesn't change them.
    void getOriginalConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const { vSegments = vCSegParents; }
    /// Sets vSegments to the alive segments below them, in the order and direction of the graph. Linear in the size of the
    /// hierarchy.
    void getChildConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    /// Appends source and target, in the graph's direction, of each alive segment: inner vertices of a chain come twice.
    void getPolygonVertices(std::vector<Point2*>& vVertices) const;
    /// The children of a dead segment, the one at its directed start first; NULL for an alive one.
    void getDirectChildren(ConstraintSegment2* pParent, ConstraintSegment2*& pChild0,
                           ConstraintSegment2*& pChild1) const;
    /// Whether the graph runs from getTrg() to getSrc(). The segment must be one of the graph's.
    bool isReverse(ConstraintSegment2* pCSeg) const;
    /// Whether an alive segment of this graph joins two vertices; whether a segment is one of them.
    bool isConstraint(Point2* pA, Point2* pB) const;
    bool isConstraint(ConstraintSegment2* pCSeg) const;

    /// Splits the alive segments that are no Delaunay edges until all are. A segment whose length in space is below
    /// discretizationLength, which must be positive for this to end, isn't split any more. False when one was left.
    bool makeDelaunay(double discretizationLength);

    /// Draws the alive segments into a PostScript file; adds them to a drawing.
    void show(const char* filename) const;
    void show(Visualizer2* pVisualizer, const Color& color) const;

private:
    friend class ConstraintSegment2;

    void takeSegments(const std::vector<ConstraintSegment2*>& vSegments);
    void setDirection(ConstraintSegment2* pCSeg, bool bReverse);
    void setDirectionsRecursive(const std::vector<ConstraintSegment2*>& vSegments);
    void updateSplittedConstraintSegment(ConstraintSegment2* pParent);
    bool isDelaunay(const ConstraintSegment2* pCSeg, Point2& splitPoint) const;

    Dt2* pDt;
    ConstraintMgr* pConstraintMgr;
    ConstraintInsertionStrategy cis;
    std::vector<ConstraintSegment2*> vCSegParents;
    bool bPolygon = false;
    bool bOriented = false;
};

} // namespace ORBI_LUMO25D

#endif
