#ifndef LUMO25D_REPAIR_FRONTINDEX_H
#define LUMO25D_REPAIR_FRONTINDEX_H

#include "orbi_locate3/RTree.h"
#include "repair/Front.h"
#include "repair/PatchSurface.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Finds the front's edges that meet a box while the front moves.
///
/// After J. L. Bentley, J. B. Saxe: Decomposable searching problems. Journal of Algorithms 1 (1980): packed trees of
/// sizes that double; a new tree swallows those that aren't larger. Edges that left the front are passed over by
/// queries, and dropped when their tree is packed anew. Adding costs O(log^2 n) amortised.
class FrontIndex
{
public:
    FrontIndex(const Front& front_, const PatchSurface& surface_) : front(front_), surface(surface_) {}

    /// Announces the edge from a node to the one that is its next at present.
    void add(std::size_t node);
    /// Calls f(node) for the edges of a ring whose box shares a point with the given one, each edge at least once.
    template <class F>
    void forEach(std::size_t ring, const ORBI_LOCATE3::RTree::Box& box, const F& f) const
    {
        for (const Record& record : vRecent) {
            if (isOf(record, ring) && boxOf(record).intersects(box)) f(record.node);
        }
        for (const Level& level : vLevels) {
            vHits.clear();
            level.tree.query(box.lo[0], box.lo[1], box.lo[2], box.hi[0], box.hi[1], box.hi[2], vHits);
            for (const std::size_t i : vHits) {
                if (isOf(level.vRecords[i], ring)) f(level.vRecords[i].node);
            }
        }
    }

private:
    /// An edge: still of the front as long as the two nodes are alive and next to each other.
    struct Record
    {
        std::size_t node;
        std::size_t next;
    };
    struct Level
    {
        std::vector<Record> vRecords;
        ORBI_LOCATE3::RTree tree; ///< of the records' boxes, known by their positions
    };

    bool isAlive(const Record& record) const
    {
        const Front::Node& node = front.node(record.node);
        return node.bAlive && node.next == record.next;
    }
    bool isOf(const Record& record, std::size_t ring) const
    {
        return front.node(record.node).ring == ring && isAlive(record);
    }
    ORBI_LOCATE3::RTree::Box boxOf(const Record& record) const;
    void pack();

    const Front& front;
    const PatchSurface& surface;
    std::vector<Record> vRecent; ///< not in a tree yet
    std::vector<Level> vLevels;  ///< from large to small
    mutable std::vector<std::size_t> vHits;
};

} // namespace ORBI_LUMO25D

#endif
