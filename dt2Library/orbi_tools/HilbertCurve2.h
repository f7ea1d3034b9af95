#ifndef LUMO25D_ORBI_TOOLS_HILBERTCURVE2_H
#define LUMO25D_ORBI_TOOLS_HILBERTCURVE2_H

#include <cmath>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// The automaton of the curve: it takes one bit of each coordinate a step, topmost first, as the quadrant
/// 2 * xbit + ybit.
struct HilbertStep2
{
    static constexpr std::uint8_t key[4][4] = {{0, 1, 3, 2}, {0, 3, 1, 2}, {2, 1, 3, 0}, {2, 3, 1, 0}};
    static constexpr std::uint8_t next[4][4] = {{1, 0, 2, 0}, {0, 3, 1, 1}, {2, 2, 0, 3}, {3, 1, 3, 2}};
};

/// Five steps of the automaton in one look-up.
struct HilbertTable2
{
    static constexpr unsigned steps = 5;
    static constexpr unsigned xyBits = 2 * steps;

    /// By state, 5 bits of x, 5 bits of y: the next state above 10 bits of the index.
    std::uint16_t aEntries[4u << xyBits] = {};

    constexpr HilbertTable2()
    {
        for (unsigned i = 0; i < 4u << xyBits; ++i) {
            unsigned state = i >> xyBits;
            unsigned key = 0;
            for (unsigned bit = steps; bit-- > 0;) {
                const unsigned quadrant = 2 * (i >> (steps + bit) & 1) + (i >> bit & 1);
                key = key << 2 | HilbertStep2::key[state][quadrant];
                state = HilbertStep2::next[state][quadrant];
            }
            aEntries[i] = static_cast<std::uint16_t>(state << xyBits | key);
        }
    }
};

inline constexpr HilbertTable2 hilbertTable2;

/// Position along a Hilbert curve over a rectangle: the arithmetic behind HC2 and GSS_HC2, without their checks.
class HilbertCurve2
{
public:
    HilbertCurve2() = default;
    /// 2^(numBits / 2) cells an axis, at most 2^16.
    HilbertCurve2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits);

    /// The position of (x, y), below 2^numBits. A point outside of the rectangle, at its upper borders too, wraps around;
    /// a coordinate that isn't a number, or far out, or of a rectangle without extent, counts as in cell 0.
    std::uint32_t index(double x, double y) const
    {
        return indexOfCell(cellOf(x, preScaleX, originX, scaleX), cellOf(y, preScaleY, originY, scaleY));
    }

private:
    static std::uint64_t cellOf(double coordinate, double preScale, double origin, double scale)
    {
        const double cell = (coordinate * preScale - origin) * scale;
        // Beyond 2^62 the conversion would be undefined; what isn't a number compares false.
        if (!(std::fabs(cell) < 4611686018427387904.0)) return 0;
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(cell));
    }
    std::uint32_t indexOfCell(std::uint64_t ix, std::uint64_t iy) const
    {
        constexpr unsigned steps = HilbertTable2::steps;
        constexpr unsigned xyBits = HilbertTable2::xyBits;
        std::uint32_t key = 0;
        std::uint32_t state = 0;
        std::uint32_t bit = bitsPerAxis;
        while (bit % steps != 0) { // the usual 15 bits have no odd ones
            --bit;
            const std::uint64_t quadrant = 2 * (ix >> bit & 1) + (iy >> bit & 1);
            key = key << 2 | HilbertStep2::key[state][quadrant];
            state = HilbertStep2::next[state][quadrant];
        }
        constexpr std::uint64_t mask = (1u << steps) - 1;
        while (bit != 0) {
            bit -= steps;
            const std::uint64_t xy = (ix >> bit & mask) << steps | (iy >> bit & mask);
            const std::uint32_t entry = hilbertTable2.aEntries[state << xyBits | xy];
            key = key << xyBits | (entry & ((1u << xyBits) - 1));
            state = entry >> xyBits;
        }
        return key;
    }

    double preScaleX = 1.0; ///< 0.25 when the extent isn't finite in doubles, otherwise 1
    double preScaleY = 1.0;
    double originX = 0.0; ///< pre-scaled
    double originY = 0.0;
    double scaleX = 0.0; ///< cells per pre-scaled unit
    double scaleY = 0.0;
    std::uint32_t bitsPerAxis = 0;
};

} // namespace ORBI_LUMO25D

#endif
