#ifndef LUMO25D_CORE_CURVEREFINEMENT_H
#define LUMO25D_CORE_CURVEREFINEMENT_H

#include "core/CurveSort.h"
#include "core/HC2.h"
#include "core/Stretches.h"

#include "Bbox2.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Orders the runs of equal curve index along a finer curve of their own.
///
/// One far outlier stretches the working box so that a dense cluster falls into a few cells of the curve; in input order
/// the points of such a cell would make walks as long as the cluster is wide. A long run is therefore ordered along a
/// Hilbert curve over its own box, and runs of equal index in that order once more. Equal points keep their order, which
/// is the input order.
///
/// position(i) gives the coordinates of input point i as a pair of doubles.
template <class Position>
class CurveRefinement
{
public:
    CurveRefinement(IdxPairs& vPairs_, const Position& position_) : vPairs(vPairs_), position(position_) {}

    /// On up to numCPU threads. The pairs must be sorted.
    void run(int numCPU) { refineAll(0, vPairs.size(), numCPU); }

private:
    static constexpr std::size_t longestPlainRun = 32;
    static constexpr unsigned numBits = 30;

    /// A run of more than half of a long stretch is shared by the threads; otherwise each thread takes runs of its own.
    void refineAll(std::size_t begin, std::size_t end, int numCPU)
    {
        const std::size_t numThreads = threadsForScan(end - begin, numCPU);
        if (numThreads <= 1) {
            refineRuns(begin, end);
            return;
        }
        const std::size_t runBegin = beginOfRunAt(begin + (end - begin) / 2, begin);
        const std::size_t runEnd = endOfRunAt(runBegin, end);
        if (runEnd - runBegin > (end - begin) / 2) {
            refine(runBegin, runEnd, numCPU);
            refineAll(begin, runBegin, numCPU);
            refineAll(runEnd, end, numCPU);
            return;
        }
        std::vector<std::size_t> vBorders;
        for (const Stretch& s : cutIntoStretches(end - begin, numThreads)) {
            vBorders.push_back(s.begin == 0 ? begin : endOfRunAt(begin + s.begin - 1, end));
        }
        vBorders.push_back(end);
        forStretches(end - begin, numThreads,
                     [&](const Stretch& s) { refineRuns(vBorders[s.number], vBorders[s.number + 1]); });
    }

    std::size_t beginOfRunAt(std::size_t i, std::size_t first) const
    {
        const auto isLower = [](const KeyedPosition& pair, std::uint32_t idx) { return pair.key() < idx; };
        const auto it = std::lower_bound(vPairs.begin() + static_cast<std::ptrdiff_t>(first),
                                         vPairs.begin() + static_cast<std::ptrdiff_t>(i), vPairs[i].key(), isLower);
        return static_cast<std::size_t>(it - vPairs.begin());
    }
    std::size_t endOfRunAt(std::size_t i, std::size_t last) const
    {
        const auto isLower = [](std::uint32_t idx, const KeyedPosition& pair) { return idx < pair.key(); };
        const auto it = std::upper_bound(vPairs.begin() + static_cast<std::ptrdiff_t>(i),
                                         vPairs.begin() + static_cast<std::ptrdiff_t>(last), vPairs[i].key(), isLower);
        return static_cast<std::size_t>(it - vPairs.begin());
    }

    void refineRuns(std::size_t first, std::size_t last)
    {
        for (std::size_t begin = first; begin < last;) {
            std::size_t end = begin + 1;
            while (end < last && vPairs[end].key() == vPairs[begin].key()) {
                ++end;
            }
            if (end - begin > longestPlainRun) refine(begin, end, 1);
            begin = end;
        }
    }

    /// Reorders the positions of one run; its key stays. Each level shrinks the box, so that the depth is bounded by the
    /// number of doubles' bits over 15, and all equal points end it.
    void refine(std::size_t begin, std::size_t end, int numCPU)
    {
        const std::size_t n = end - begin;
        const std::size_t numThreads = threadsForScan(n, numCPU);
        Bbox2 box = boxOf(begin, end, numThreads);
        if (box.get_minX() == box.get_maxX() && box.get_minY() == box.get_maxY()) return;
        // The upper border must not fall outside of the cells.
        box.inflateIfDegenerate(box.getMaxRange());
        box.enlargeRanges(1.0001);
        const HC2 curve(box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY(), numBits);

        IdxPairs vFine(n);
        forStretches(n, numThreads, [&](const Stretch& s) {
            for (std::size_t i = s.begin; i < s.end; ++i) {
                const auto xy = position(vPairs[begin + i].position());
                vFine[i] = KeyedPosition(curve.getIndex(xy.first, xy.second), vPairs[begin + i].position());
            }
        });
        sortPairs(vFine, numCPU);
        if (vFine.front().key() != vFine.back().key()) {
            CurveRefinement(vFine, position).run(numCPU);
        }
        const auto key = vPairs[begin].key();
        forStretches(n, numThreads, [&](const Stretch& s) {
            for (std::size_t i = s.begin; i < s.end; ++i) {
                vPairs[begin + i] = KeyedPosition(key, vFine[i].position());
            }
        });
    }

    Bbox2 boxOf(std::size_t begin, std::size_t end, std::size_t numThreads) const
    {
        std::vector<Bbox2> vBoxes(numThreads);
        forStretches(end - begin, numThreads, [&](const Stretch& s) {
            Bbox2 box(nullptr);
            for (std::size_t i = begin + s.begin; i < begin + s.end; ++i) {
                const auto xy = position(vPairs[i].position());
                box.add(Point2(xy.first, xy.second, 0.0));
            }
            vBoxes[s.number] = box;
        });
        Bbox2 box(nullptr);
        for (const Bbox2& part : vBoxes) {
            if (part.isValid()) box = box + part;
        }
        return box;
    }

    IdxPairs& vPairs;
    const Position& position;
};

template <class Position>
void refineEqualRuns(IdxPairs& vPairs, const Position& position, int numCPU)
{
    CurveRefinement<Position>(vPairs, position).run(numCPU);
}

} // namespace ORBI_LUMO25D

#endif
