#ifndef LUMO25D_REPAIR_FRONTINDEX_H
#define LUMO25D_REPAIR_FRONTINDEX_H

#include "repair/Front.h"
#include "repair/GrowingIndex.h"
#include "repair/PatchSurface.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

/// The edges that are or were in the front.
struct FrontEdges
{
    /// Of the front as long as the two nodes are alive and next to each other.
    struct Record
    {
        std::size_t node;
        std::size_t next;
    };

    bool isAlive(const Record& record) const
    {
        const Front::Node& node = pFront->node(record.node);
        return node.bAlive && node.next == record.next;
    }
    ORBI_LOCATE3::RTree::Box boxOf(const Record& record) const
    {
        ORBI_LOCATE3::RTree::Box box = ORBI_LOCATE3::RTree::Box::nothing();
        for (const std::size_t node : {record.node, record.next})
            addPoint(box, pSurface->point(pFront->node(node).vertex));
        return box;
    }

    const Front* pFront;
    const PatchSurface* pSurface;
};

/// Finds the front's edges that meet a box while the front moves.
class FrontIndex
{
public:
    FrontIndex(const Front& front_, const PatchSurface& surface) : front(front_), index(FrontEdges{&front_, &surface})
    {
    }

    /// Announces the edge from a node to the one that is its next at present.
    void add(std::size_t node) { index.add({node, front.node(node).next}); }
    /// Calls f(node) for the edges of a ring whose box shares a point with the given one, each edge at least once.
    template <class F>
    void forEach(std::size_t ring, const ORBI_LOCATE3::RTree::Box& box, const F& f) const
    {
        index.forEach(box, [&](const FrontEdges::Record& record) {
            if (front.node(record.node).ring == ring) f(record.node);
        });
    }

private:
    const Front& front;
    GrowingIndex<FrontEdges> index;
};

} // namespace ORBI_LUMO25D

#endif
