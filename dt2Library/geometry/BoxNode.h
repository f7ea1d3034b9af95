#ifndef LUMO25D_GEOMETRY_BOXNODE_H
#define LUMO25D_GEOMETRY_BOXNODE_H

#include "geometry/BoxN.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ORBI_LUMO25D
{

/// A node of a tree of boxes: its children's boxes in cells of a grid over their common box. That is 8 bytes a child in
/// the plane instead of 32, and one instruction compares eight bounds.
///
/// Cells can't tell whether boxes meet whose bounds are close to each other, so they are asked two ways: meeting<mayMeet>
/// misses no child that meets a query, meeting<mustMeet> has none that doesn't. That holds in any rounding mode, be it
/// another one than when the node was made: a bound's cell is off by one at most.
template <std::size_t Dim>
class alignas(64) BoxNode
{
public:
    static constexpr std::size_t fanOut = 32;
    using Mask = std::uint32_t;
    static constexpr int mayMeet = 1, mustMeet = -2; ///< slacks of meeting()
#if defined(__SSE2__)
    using Lanes = __m128i; ///< one cell eight times
#else
    using Lanes = int;
#endif

    /// A query in cells of one node's grid, ready to be compared.
    struct Cells
    {
        Lanes lo[Dim];
        Lanes hi[Dim];
    };

    /// No children yet; they will lie in the given box.
    explicit BoxNode(const BoxN<Dim>& common)
    {
        constexpr double largest = std::numeric_limits<double>::max();
        for (std::size_t d = 0; d < Dim; ++d) {
            origin[d] = common.lo[d];
            // Positive and finite in any case, so that no product is NaN. (Rounding downward, x - x is -0.) Differences
            // that overflow end up within the last cell, whether they are rounded to infinity or to the largest double.
            const double extent = std::fabs(common.hi[d] - common.lo[d]);
            cellsPerUnit[d] =
                extent < 0.5 * largest ? std::min(numCells / extent, largest) : (numCells + beyond) / largest;
            std::fill(lo[d], lo[d] + fanOut, std::numeric_limits<std::int16_t>::max());
            std::fill(hi[d], hi[d] + fanOut, std::numeric_limits<std::int16_t>::min());
        }
    }
    void set(std::size_t i, const BoxN<Dim>& box)
    {
        for (std::size_t d = 0; d < Dim; ++d) {
            lo[d][i] = static_cast<std::int16_t>(cellOf(box.lo[d], d));
            hi[d][i] = static_cast<std::int16_t>(cellOf(box.hi[d], d));
        }
    }
    /// Bounds may be infinite.
    Cells cellsOf(const BoxN<Dim>& box) const
    {
        Cells cells;
#if defined(__SSE2__)
        for (std::size_t d = 0; d < Dim; d += 2) {
            const __m128i los = cellPair(&box.lo[d], d), his = cellPair(&box.hi[d], d);
            cells.lo[d] = spread<0>(los);
            cells.hi[d] = spread<0>(his);
            if (d + 1 == Dim) break;
            cells.lo[d + 1] = spread<1>(los);
            cells.hi[d + 1] = spread<1>(his);
        }
#else
        for (std::size_t d = 0; d < Dim; ++d) {
            cells.lo[d] = cellOf(box.lo[d], d);
            cells.hi[d] = cellOf(box.hi[d], d);
        }
#endif
        return cells;
    }

    void prefetch() const
    {
        for (std::size_t i = 0; i < sizeof(*this); i += 64) __builtin_prefetch(reinterpret_cast<const char*>(this) + i);
    }

    /// Bit i: child i and q overlap by their cells when q is widened by so many of them on all sides. Without a branch,
    /// because in a node each comparison's outcome is next to random.
    template <int slack>
    Mask meeting(const Cells& q) const
    {
        Mask apart = 0;
#if defined(__SSE2__)
        for (unsigned i = 0; i < fanOut; i += 16) {
            const __m128i first = apartByEights<slack>(i, q), second = apartByEights<slack>(i + 8, q);
            apart |= Mask(static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(first, second)))) << i;
        }
#else
        for (unsigned i = 0; i < fanOut; ++i) {
            unsigned bit = 0;
            for (std::size_t d = 0; d < Dim; ++d) {
                bit |= unsigned(lo[d][i] > q.hi[d] + slack) | unsigned(hi[d][i] < q.lo[d] - slack);
            }
            apart |= Mask(bit) << i;
        }
#endif
        return ~apart;
    }

private:
    // The cells of 16 bits, but for a few at both ends: some for what lies beyond the grid, the others so that a slack
    // doesn't overflow and places without a child are met by nothing.
    static constexpr double numCells = 65500.0;
    static constexpr double beyond = 4.0;
    static constexpr int lowest = std::numeric_limits<std::int16_t>::min() + 8;

    int cellOf(double v, std::size_t d) const
    {
        return static_cast<int>(std::clamp((v - origin[d]) * cellsPerUnit[d], -beyond, numCells + beyond)) + lowest;
    }

#if defined(__SSE2__)
    /// The same for the axes d and d + 1, if there is one, in the lower half.
    __m128i cellPair(const double* pBounds, std::size_t d) const
    {
        const __m128d bounds = d + 1 < Dim ? _mm_loadu_pd(pBounds) : _mm_load_sd(pBounds);
        __m128d cells = _mm_mul_pd(_mm_sub_pd(bounds, _mm_load_pd(&origin[d])), _mm_load_pd(&cellsPerUnit[d]));
        cells = _mm_max_pd(_mm_min_pd(cells, _mm_set1_pd(numCells + beyond)), _mm_set1_pd(-beyond));
        return _mm_add_epi32(_mm_cvttpd_epi32(cells), _mm_set1_epi32(lowest));
    }
    /// The cell of one axis of a pair in all eight lanes.
    template <int axis>
    static Lanes spread(__m128i pair)
    {
        const __m128i fourfold = _mm_shuffle_epi32(pair, 0x55 * axis);
        return _mm_packs_epi32(fourfold, fourfold);
    }
    /// 16 bits of ones for each of 8 children that are not met.
    template <int slack>
    __m128i apartByEights(std::size_t i, const Cells& q) const
    {
        __m128i apart = _mm_setzero_si128();
        for (std::size_t d = 0; d < Dim; ++d) {
            const __m128i lows = _mm_load_si128(reinterpret_cast<const __m128i*>(&lo[d][i]));
            const __m128i highs = _mm_load_si128(reinterpret_cast<const __m128i*>(&hi[d][i]));
            const __m128i above = _mm_add_epi16(q.hi[d], _mm_set1_epi16(slack));
            const __m128i below = _mm_sub_epi16(q.lo[d], _mm_set1_epi16(slack));
            apart = _mm_or_si128(apart, _mm_or_si128(_mm_cmpgt_epi16(lows, above), _mm_cmpgt_epi16(below, highs)));
        }
        return apart;
    }
#endif

    static constexpr std::size_t dimPaired = Dim + Dim % 2;
    double origin[dimPaired] = {};
    double cellsPerUnit[dimPaired] = {};
    std::int16_t lo[Dim][fanOut];
    std::int16_t hi[Dim][fanOut];
};

} // namespace ORBI_LUMO25D

#endif
