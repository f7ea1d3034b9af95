#ifndef LUMO25D_GEOMETRY_BOXN_H
#define LUMO25D_GEOMETRY_BOXN_H

#include <algorithm>
#include <cstddef>
#include <limits>

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

} // namespace ORBI_LUMO25D

#endif
