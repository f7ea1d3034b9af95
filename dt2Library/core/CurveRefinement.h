#ifndef LUMO25D_CORE_CURVEREFINEMENT_H
#define LUMO25D_CORE_CURVEREFINEMENT_H

#include "core/CurveSort.h"
#include "core/HC2.h"

#include "Bbox2.h"

#include <cstddef>
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
    CurveRefinement(std::vector<IdxPos>& vPairs_, const Position& position_) : vPairs(vPairs_), position(position_) {}

    void run()
    {
        forEachRun(vPairs, [this](std::size_t begin, std::size_t end) { refine(begin, end); });
    }

private:
    static constexpr std::size_t longestPlainRun = 32;
    static constexpr unsigned numBits = 30;

    template <class Action>
    static void forEachRun(const std::vector<IdxPos>& v, const Action& action)
    {
        for (std::size_t begin = 0; begin < v.size();) {
            std::size_t end = begin + 1;
            while (end < v.size() && v[end].idx() == v[begin].idx()) {
                ++end;
            }
            if (end - begin > longestPlainRun) action(begin, end);
            begin = end;
        }
    }

    /// Reorders the positions of one run; its key stays. Each level shrinks the box, so that the depth is bounded by the
    /// number of doubles' bits over 15, and all equal points end it.
    void refine(std::size_t begin, std::size_t end)
    {
        Bbox2 box(nullptr);
        for (std::size_t i = begin; i < end; ++i) {
            const auto xy = position(vPairs[i].position());
            box.add(Point2(xy.first, xy.second, 0.0));
        }
        if (box.get_minX() == box.get_maxX() && box.get_minY() == box.get_maxY()) return;
        // The upper border must not fall outside of the cells.
        box.inflateIfDegenerate(box.getMaxRange());
        box.enlargeRanges(1.0001);
        const HC2 curve(box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY(), numBits);

        std::vector<IdxPos> vFine;
        vFine.reserve(end - begin);
        for (std::size_t i = begin; i < end; ++i) {
            const auto xy = position(vPairs[i].position());
            vFine.emplace_back(curve.getIndex(xy.first, xy.second), vPairs[i].position());
        }
        sortPairs(vFine, 1);
        if (vFine.front().idx() != vFine.back().idx()) {
            CurveRefinement(vFine, position).run();
        }
        const auto key = vPairs[begin].idx();
        for (std::size_t i = begin; i < end; ++i) {
            vPairs[i] = IdxPos(key, vFine[i - begin].position());
        }
    }

    std::vector<IdxPos>& vPairs;
    const Position& position;
};

template <class Position>
void refineEqualRuns(std::vector<IdxPos>& vPairs, const Position& position)
{
    CurveRefinement<Position>(vPairs, position).run();
}

} // namespace ORBI_LUMO25D

#endif
