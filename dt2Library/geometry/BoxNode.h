#ifndef LUMO25D_GEOMETRY_BOXNODE_H
#define LUMO25D_GEOMETRY_BOXNODE_H

#include <algorithm>
#include <cstddef>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ORBI_LUMO25D
{

/// A closed axis-parallel box in Dim dimensions; lo <= hi in every axis.
template <std::size_t Dim>
struct BoxN
{
    double lo[Dim];
    double hi[Dim];

    bool intersects(const BoxN& other) const
    {
        for (std::size_t d = 0; d < Dim; ++d) {
            if (lo[d] > other.hi[d] || other.lo[d] > hi[d]) return false;
        }
        return true;
    }
    void add(const BoxN& other)
    {
        for (std::size_t d = 0; d < Dim; ++d) {
            lo[d] = std::min(lo[d], other.lo[d]);
            hi[d] = std::max(hi[d], other.hi[d]);
        }
    }
    /// Squared distance of p from the box, 0 inside. Of a box within this one it is not less, in rounded numbers either.
    double sqDistance(const double (&p)[Dim]) const
    {
        double sum = 0.0;
        for (std::size_t d = 0; d < Dim; ++d) {
            const double outside = std::max(0.0, std::max(lo[d] - p[d], p[d] - hi[d]));
            sum += outside * outside;
        }
        return sum;
    }
    /// The box of nothing: it meets no box, and add() makes it a copy.
    static BoxN nothing()
    {
        BoxN box;
        std::fill(box.lo, box.lo + Dim, std::numeric_limits<double>::infinity());
        std::fill(box.hi, box.hi + Dim, -std::numeric_limits<double>::infinity());
        return box;
    }
};

/// A node: the boxes of its children, bound by bound, so that several are compared at once. In places without a child,
/// which are the last ones, the bounds are no numbers: they meet nothing, not even a box without bounds.
template <std::size_t Dim>
struct alignas(64) BoxNode
{
    static constexpr std::size_t fanOut = 8;

    double lo[Dim][fanOut];
    double hi[Dim][fanOut];

    void set(std::size_t i, const BoxN<Dim>& box)
    {
        for (std::size_t d = 0; d < Dim; ++d) {
            lo[d][i] = box.lo[d];
            hi[d][i] = box.hi[d];
        }
    }
    void setEmpty(std::size_t i)
    {
        for (std::size_t d = 0; d < Dim; ++d) lo[d][i] = hi[d][i] = std::numeric_limits<double>::quiet_NaN();
    }
    bool isEmpty(std::size_t i) const { return !(lo[0][i] <= hi[0][i]); }
    BoxN<Dim> get(std::size_t i) const
    {
        BoxN<Dim> box;
        for (std::size_t d = 0; d < Dim; ++d) {
            box.lo[d] = lo[d][i];
            box.hi[d] = hi[d][i];
        }
        return box;
    }

    /// Bit i: child i's box shares a point with q. Without a branch, because in a node each comparison's outcome is next
    /// to random.
    unsigned hits(const BoxN<Dim>& q) const
    {
        unsigned mask = 0;
#if defined(__SSE2__)
        for (unsigned i = 0; i < fanOut; i += 2) {
            __m128d both = _mm_cmple_pd(_mm_load_pd(&lo[0][i]), _mm_set1_pd(q.hi[0]));
            both = _mm_and_pd(both, _mm_cmpge_pd(_mm_load_pd(&hi[0][i]), _mm_set1_pd(q.lo[0])));
            for (std::size_t d = 1; d < Dim; ++d) {
                both = _mm_and_pd(both, _mm_cmple_pd(_mm_load_pd(&lo[d][i]), _mm_set1_pd(q.hi[d])));
                both = _mm_and_pd(both, _mm_cmpge_pd(_mm_load_pd(&hi[d][i]), _mm_set1_pd(q.lo[d])));
            }
            mask |= static_cast<unsigned>(_mm_movemask_pd(both)) << i;
        }
#else
        for (unsigned i = 0; i < fanOut; ++i) {
            unsigned bit = 1;
            for (std::size_t d = 0; d < Dim; ++d) {
                bit &= unsigned(lo[d][i] <= q.hi[d]) & unsigned(hi[d][i] >= q.lo[d]);
            }
            mask |= bit << i;
        }
#endif
        return mask;
    }
};

} // namespace ORBI_LUMO25D

#endif
