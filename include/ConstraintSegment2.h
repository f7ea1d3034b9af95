#ifndef LUMO25D_CONSTRAINTSEGMENT2_H
#define LUMO25D_CONSTRAINTSEGMENT2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintGraph2;
class ConstraintMgr;

/// How a constraint gets into a triangulation.
enum ConstraintInsertionStrategy
{
    /// Split at points of its present parts until every part is a Delaunay edge.
    CIS_CONFORMING_DELAUNAY = 0,
    /// Forced in as it is: edges that cross it go, and it is split only at vertices and other constraints in its way.
    CIS_CONSTRAINED_DELAUNAY = 1,
    /// As CIS_CONFORMING_DELAUNAY, with the split points and their heights taken from the segment as it was given.
    CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL = 2
};

/// A straight constraint between two vertices of a triangulation.
///
/// A segment is never changed: where a vertex comes to lie on it, it dies and gets two children that cover it, which may
/// die in their turn. So the edge that was given can be followed down to the alive segments that stand in the mesh now.
///
/// Laws
/// 1. The ends are ordered by address: getSrc() < getTrg(). The direction that a graph follows is the graph's business.
/// 2. Alive segments have no children; dead ones have two, or none if they were taken out of force.
/// 3. The hierarchy has no cycle: a segment is never its own descendant. Two segments may share a descendant.
/// 4. Every graph that holds a segment owns it and all its descendants.
///
/// Segments belong to the triangulation and stay valid as memory until it is destroyed.
class LUMO25D_API ConstraintSegment2
{
public:
    /// For the registry only. The ends must be different and ordered by address.
    ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_);
    ConstraintSegment2(const ConstraintSegment2&) = delete;
    ConstraintSegment2& operator=(const ConstraintSegment2&) = delete;
    ~ConstraintSegment2() = default;

    /// The end with the lower address, with the higher one.
    Point2* getSrc() const { return p0; }
    Point2* getTrg() const { return p1; }
    /// How the segment got in; children have the strategy of their parent.
    ConstraintInsertionStrategy getCIS() const { return cis; }
    /// True while the segment itself stands in the mesh, or waits to.
    bool isAlive() const { return bAlive && aChildren[0] == nullptr; }
    /// How many graphs hold it.
    unsigned int getNumberOfOwners() const;

    /// An area that belongs to the segment; the largest double when it wasn't computed.
    double getAdjacentArea() const { return adjacentArea; }
    void setAdjacentArea(double area) { adjacentArea = area; }

    /// Inserts the point into the triangulation and splits this segment there; the parts are established. Returns the
    /// vertex, an older one if there is one at this place. NULL, with a warning and the segment as it was, when the point
    /// is one of its ends. The segment must be alive and owned, the coordinates finite.
    Point2* insertAndSplit(const Point2& splitPoint);
    /// The same, and takes those vertices out again that an earlier refinement inserted within the circle around the new
    /// vertex through getSrc(). False when nothing was split.
    bool splitAndRemovePrev(const Point2& splitPoint);
    /// Splits at a vertex of the triangulation without touching the mesh. False, and nothing done, when that would make
    /// the segment its own descendant, which takes a vertex that lies off the segment.
    bool split_combinatorialOnly(Point2* pSplit);

    /// Appends the alive segments below a dead one, child 0 first. Linear in the size of the hierarchy below.
    void getChildrenRec(std::vector<ConstraintSegment2*>& vChildren);
    /// The two children, in the order of getSrc() and getTrg(), and their common vertex. An alive segment has none: a
    /// warning, and the arguments stay as they are.
    void getChildrenAndSplitPoint(ConstraintSegment2*& pChild0, ConstraintSegment2*& pChild1, Point2*& pSplit);

    /// Prints whether it is alive and who owns it; false if an owner doesn't know its direction.
    bool check() const;

    /// By the addresses of the ends.
    bool operator<(const ConstraintSegment2& other) const;

private:
    friend class ConcentricShells;
    friend class ConstraintGraph2;
    friend class ConstraintMgr;
    friend class ConstraintInserter;
    friend class RefinementLimits;
    friend LUMO25D_API std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment);

    /// A graph that holds the segment, and which way it runs along it. The first is kept in the segment itself, because
    /// most have but one.
    struct Owner
    {
        ConstraintGraph2* pGraph = nullptr;
        Owner* pNext = nullptr;
        bool bHasDirection = false; ///< false only while a graph takes its segments
        bool bReverse = false;
    };

    void activate() { bAlive = true; }
    void deactivate() { bAlive = false; }
    bool isDead() const { return aChildren[0] != nullptr; }
    Owner* findOwner(const ConstraintGraph2* pGraph);
    void addOwnerRecursive(ConstraintGraph2* pGraph, bool bBeingMade);
    bool addOwner(ConstraintGraph2* pGraph, bool bBeingMade);
    void inheritOwners(const ConstraintSegment2& parent, bool bAgainst);
    bool linkChildren(Point2* pSplit);
    bool isReachableFrom(ConstraintSegment2* pStart) const;
    ConstraintMgr& manager() const;

    Point2* p0;
    Point2* p1;
    ConstraintSegment2* aChildren[2] = {nullptr, nullptr};
    std::int32_t label;
    ConstraintInsertionStrategy cis : 8;
    bool bAlive = true;
    Owner owner;
    /// The segment that was given, of which this one is a part; itself for one that was given, and for the parts of
    /// a split by a vertex that lies off it. Crossings are computed on carriers, so that rounding doesn't pile up over
    /// generations.
    const ConstraintSegment2* pCarrier = this;
    double adjacentArea = std::numeric_limits<double>::max();
};

/// "ConstraintSegment2 label 7: (..., ...) [alive]length=..." or "[DEAD, numChildren=2]" without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment);

} // namespace ORBI_LUMO25D

#endif
