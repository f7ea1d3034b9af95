#ifndef LUMO25D_CORE_INNERVTXMGR_H
#define LUMO25D_CORE_INNERVTXMGR_H

#include "core/SimplePool.h"

#include "Point2.h"

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// Knows the free vertices of refinements: those that were inserted at circumcentres. Those of the running refinement that
/// lie in the diametral circle of a segment that is split are taken out again (Ruppert 1995); those of earlier ones can be
/// told from the caller's own points.
///
/// A mark for each vertex of the pool, up to the last free one. Marks of vertices that the caller has removed since stay,
/// which does no harm: their memory isn't used again.
class InnerVtxMgr
{
public:
    explicit InnerVtxMgr(const SimplePool<Point2>& pool_) : pool(pool_) {}

    /// A vertex of the pool that the running refinement has made.
    void add(const Point2* pVtx);
    /// A vertex that was removed or became an end of a constraint isn't free any more. Nothing for one that isn't listed.
    void forget(const Point2* pVtx);
    /// The running refinement ends: its free vertices become those of an earlier one.
    void clear();
    bool isFree(const Point2* pVtx) const { return (mark(pVtx) & running) != 0; }
    bool isFromEarlierRefinement(const Point2* pVtx) const { return (mark(pVtx) & earlier) != 0; }

    /// Takes the free vertices of the running refinement whose squared distance from the vertex is below sqRadius off the
    /// list, and removes all of them but ends of constraints; returns them until the next call, and appends the triangles
    /// that arise. What is reached from the vertex along edges inside of the circle is looked at: in a Delaunay
    /// triangulation these are all, in a constrained one all that the vertex sees.
    const std::vector<Point2*>& removePreviouslyInsertedVertices(Dt2& dt2, Point2* pCenter, double sqRadius,
                                                                 std::vector<Triangle2*>& vArisen);

private:
    static constexpr std::uint8_t running = 1;
    static constexpr std::uint8_t earlier = 2;

    std::uint8_t mark(const Point2* pVtx) const
    {
        const std::size_t number = pool.indexOf(pVtx);
        return number < vMarks.size() ? vMarks[number] : std::uint8_t(0);
    }
    void collectWithin(const Point2& center, double sqRadius, Point2* pVtx);

    const SimplePool<Point2>& pool;
    std::vector<std::uint8_t> vMarks;     ///< by the vertices' numbers in the pool
    std::vector<std::size_t> vRunning;    ///< numbers that were marked as running
    std::vector<Point2*> vWork, vInside;  ///< scratch
    std::unordered_set<Point2*> sVisited; ///< scratch
};

} // namespace ORBI_LUMO25D

#endif
