#ifndef LUMO25D_CONSTRAINTS_CONSTRAINTMGR_H
#define LUMO25D_CONSTRAINTS_CONSTRAINTMGR_H

#include "constraints/SegmentTable.h"
#include "core/SimplePool.h"

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"

#include <cstddef>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Edge2;
class Segment2;

/// The registry of all constraints of one triangulation: it makes and owns segments and graphs, and finds the segment
/// between two vertices in constant time.
///
/// Every segment ever made is found by its ends, dead or alive, so that graphs that share an edge share its segment; the
/// strategy of the first creation stays. What keeps the question "is this edge a constraint?" away from the table is a mark
/// in the vertices that are ends of segments: most edges have an end without it.
class ConstraintMgr
{
public:
    using VertexPair = ConstraintGraph2::VertexPair;

    explicit ConstraintMgr(Dt2* pDt_);
    ~ConstraintMgr();
    ConstraintMgr(const ConstraintMgr&) = delete;
    ConstraintMgr& operator=(const ConstraintMgr&) = delete;

    /// Takes a segment out of force for its scope, unless it has children by then, which makes it dead for good.
    class OutOfForce
    {
    public:
        explicit OutOfForce(ConstraintSegment2& segment_) : segment(segment_) { segment.deactivate(); }
        ~OutOfForce()
        {
            if (!segment.isDead()) segment.activate();
        }
        OutOfForce(const OutOfForce&) = delete;
        OutOfForce& operator=(const OutOfForce&) = delete;

    private:
        ConstraintSegment2& segment;
    };

    // ---- creation ---------------------------------------------------------------------------------------------------

    /// Inserts the ends and makes a graph of the segments; those whose ends are one vertex are skipped with a warning.
    /// NULL for an empty sequence.
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                       bool bApply);
    ConstraintGraph2* createConstraint(const std::vector<Edge2>& vEdges, ConstraintInsertionStrategy cis, bool bApply);
    ConstraintGraph2* createConstraint(const std::vector<VertexPair>& vPairs, ConstraintInsertionStrategy cis,
                                       bool bApply);
    /// Directed from first to second, and not established: for a zone's border, which stands in the mesh already.
    ConstraintGraph2* createConstraint(const std::set<VertexPair>& sPairs, ConstraintInsertionStrategy cis);
    /// Keeps the directions of the segments.
    ConstraintGraph2* createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                ConstraintInsertionStrategy cis);
    /// The same from edges that stand in the mesh already; the order of a graph that is no ring is that of the pairs.
    ConstraintGraph2* createConstraint_oriented(const std::vector<VertexPair>& vPairs, ConstraintInsertionStrategy cis);
    ConstraintSegment2* addConstraintSegment(Point2* pA, Point2* pB, ConstraintInsertionStrategy cis);

    // ---- into the mesh ----------------------------------------------------------------------------------------------

    /// Establishes a segment, or what is alive below it; nothing without area. False when that took more steps than any
    /// sound input needs.
    bool applyOne(ConstraintSegment2* pCSeg);
    /// Establishes all, again and again until a round changes nothing: a later constraint may have displaced an earlier
    /// one. After 500 rounds, or when one segment takes more steps than any input needs, a warning, and the rest stays
    /// out of the mesh.
    void apply();

    /// For good: the segment stays in the registry, dead and without children.
    void takeOutOfForce(ConstraintSegment2* pCSeg) { pCSeg->deactivate(); }

    // ---- questions --------------------------------------------------------------------------------------------------

    bool empty() const { return poolSegments.size() == 0; }
    bool isConstraintVertex(const Point2* pVtx) const { return pVtx->bConstraintEnd; }
    /// Whether an alive segment joins two vertices.
    bool isConstraint(const Point2* pA, const Point2* pB) const { return getCSeg(pA, pB) != nullptr; }
    /// The alive segment between two vertices, or null.
    ConstraintSegment2* getCSeg(const Point2* pA, const Point2* pB) const
    {
        return pA->bConstraintEnd && pB->bConstraintEnd ? findAlive(pA, pB) : nullptr;
    }
    /// The same, alive or dead.
    ConstraintSegment2* find(const Point2* pA, const Point2* pB) const;
    /// To be called a while before segments at a vertex are made or asked for.
    void prefetch(const Point2* pVtx) const { table.prefetch(pVtx); }
    /// Append the segments in the order in which they were made.
    void getAliveSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    void getAllSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    std::size_t numSegments() const { return poolSegments.size(); }
    std::size_t bytes() const;

    // ---- files ------------------------------------------------------------------------------------------------------

    /// One file for each graph, with its alive segments: baseName + "_c" + number + ".con", a line "x y z x y z" for each;
    /// or "_con.bin", a binary segment file. False when a file can't be written.
    bool writeConstraints(const char* baseName) const;
    bool writeConstraintsBIN(const char* baseName) const;

private:
    friend class ConstraintSegment2;

    ConstraintSegment2* findAlive(const Point2* pA, const Point2* pB) const;
    void makeRoom(std::size_t numMore);
    ConstraintSegment2* findOrAdd(Point2* pA, Point2* pB, ConstraintInsertionStrategy cis, bool& bNew);
    ConstraintSegment2::Owner* newOwner() { return new (poolOwners.alloc()) ConstraintSegment2::Owner(); }
    ConstraintGraph2* addGraph(std::unique_ptr<ConstraintGraph2> pGraph);
    std::pair<ConstraintGraph2*, std::vector<ConstraintSegment2*>>
    addOriented(const std::vector<VertexPair>& vPairs, ConstraintInsertionStrategy cis, const char* function, int form);
    static void reportDegenerate(const char* function, int form, const Point2* pA, const Point2* pB);
    void establish(const std::vector<ConstraintSegment2*>& vCSegs);
    bool applyRound(const std::vector<ConstraintSegment2*>& vCSegs, bool& bStable);
    template <class Write>
    bool writeGraphs(const char* function, const char* baseName, const char* ending, const Write& write) const;

    Dt2* pDt;
    SimplePool<ConstraintSegment2> poolSegments;
    SimplePool<ConstraintSegment2::Owner> poolOwners; ///< of the segments with more than one
    SegmentTable table;
    std::vector<std::unique_ptr<ConstraintGraph2>> vConstraintGraphs;
    bool bLongChildren = false; ///< some child isn't clearly shorter than its parent
};

} // namespace ORBI_LUMO25D

#endif
