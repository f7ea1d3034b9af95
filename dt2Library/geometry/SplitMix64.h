#ifndef LUMO25D_GEOMETRY_SPLITMIX64_H
#define LUMO25D_GEOMETRY_SPLITMIX64_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// A small random source that gives the same numbers on every platform, unlike the standard distributions.
///
/// G. L. Steele, D. Lea, C. H. Flood: Fast Splittable Pseudorandom Number Generators. OOPSLA 2014.
class SplitMix64
{
public:
    explicit SplitMix64(std::uint64_t seed) : state(seed) {}

    /// 64 random bits.
    std::uint64_t next()
    {
        state += 0x9e3779b97f4a7c15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31U);
    }

    /// In [0, 1), a multiple of 2^-53.
    double unit() { return static_cast<double>(next() >> 11U) * 0x1p-53; }

    /// In [lo, hi]; both finite, lo <= hi. Their difference may overflow.
    double between(double lo, double hi)
    {
        const double t = unit();
        const double range = hi - lo;
        const double value = std::isfinite(range) ? lo + t * range : (1.0 - t) * lo + t * hi;
        return std::clamp(value, lo, hi);
    }

    /// In 0 to n-1, for n > 0. The bias is below n / 2^64.
    std::size_t index(std::size_t n) { return static_cast<std::size_t>(next() % n); }

private:
    std::uint64_t state;
};

} // namespace ORBI_LUMO25D

#endif
