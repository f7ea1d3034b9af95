#ifndef LUMO25D_REPAIR_GROWINGINDEX_H
#define LUMO25D_REPAIR_GROWINGINDEX_H

#include "orbi_locate3/RTree.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Boxes in space that come and go between the questions. The source tells what a Record is, its boxOf(record), and
/// whether it isAlive(record): once dead, a record stays dead.
///
/// After J. L. Bentley, J. B. Saxe: Decomposable searching problems. Journal of Algorithms 1 (1980): packed trees of
/// sizes that double; a new tree swallows those that aren't larger, and dead records are dropped then. Adding costs
/// O(log^2 n) amortised.
template <class Source>
class GrowingIndex
{
public:
    using Box = ORBI_LOCATE3::RTree::Box;
    using Record = typename Source::Record;

    explicit GrowingIndex(const Source& source_) : source(source_) {}

    void add(const Record& record)
    {
        vRecent.push_back(record);
        if (vRecent.size() >= maxRecent) pack();
    }
    /// Calls f(record) for the living records whose box shares a point with the given one, as often as they were added.
    template <class F>
    void forEach(const Box& box, const F& f) const
    {
        for (const Record& record : vRecent) {
            if (source.isAlive(record) && source.boxOf(record).intersects(box)) f(record);
        }
        for (const Level& level : vLevels) {
            vHits.clear();
            level.tree.query(box.lo[0], box.lo[1], box.lo[2], box.hi[0], box.hi[1], box.hi[2], vHits);
            for (const std::size_t i : vHits) {
                if (source.isAlive(level.vRecords[i])) f(level.vRecords[i]);
            }
        }
    }

private:
    static constexpr std::size_t maxRecent = 32;

    struct Level
    {
        std::vector<Record> vRecords;
        ORBI_LOCATE3::RTree tree; ///< of the records' boxes, known by their positions
    };

    void pack()
    {
        std::vector<Record> vRecords;
        vRecords.swap(vRecent);
        while (!vLevels.empty() && vLevels.back().vRecords.size() <= vRecords.size()) {
            vRecords.insert(vRecords.end(), vLevels.back().vRecords.begin(), vLevels.back().vRecords.end());
            vLevels.pop_back();
        }
        const auto isDead = [this](const Record& record) { return !source.isAlive(record); };
        vRecords.erase(std::remove_if(vRecords.begin(), vRecords.end(), isDead), vRecords.end());
        if (vRecords.empty()) return;

        vLevels.emplace_back();
        Level& level = vLevels.back();
        level.tree.reserve(vRecords.size());
        for (std::size_t i = 0; i < vRecords.size(); ++i) {
            const Box box = source.boxOf(vRecords[i]);
            level.tree.addObject(i, box.lo[0], box.lo[1], box.lo[2], box.hi[0], box.hi[1], box.hi[2]);
        }
        level.vRecords.swap(vRecords);
    }

    Source source;
    std::vector<Record> vRecent; ///< not in a tree yet
    std::vector<Level> vLevels;  ///< from large to small
    mutable std::vector<std::size_t> vHits;
};

} // namespace ORBI_LUMO25D

#endif
