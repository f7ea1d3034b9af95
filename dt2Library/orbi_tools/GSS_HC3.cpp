#include "orbi_tools/GSS_HC3.h"

#include "LumoException.h"
#include "support/check.h"
#include "support/messages.h"

#include <cstdlib>

namespace ORBI_LUMO25D
{

namespace
{

/// The automaton of 12 states: by octant 4 * xbit + 2 * ybit + zbit, then by state.
constexpr std::uint8_t key3[8][12] = {
    {0, 0, 0, 2, 4, 6, 4, 6, 2, 2, 4, 6}, {1, 7, 3, 3, 3, 5, 7, 7, 5, 1, 5, 1}, {3, 1, 7, 1, 5, 1, 3, 5, 3, 5, 7, 7},
    {2, 6, 4, 0, 2, 2, 0, 4, 4, 6, 6, 0}, {7, 3, 1, 5, 7, 7, 5, 1, 1, 3, 3, 5}, {6, 4, 2, 4, 0, 4, 6, 0, 6, 0, 2, 2},
    {4, 2, 6, 6, 6, 0, 2, 2, 0, 4, 0, 4}, {5, 5, 5, 7, 1, 3, 1, 3, 7, 7, 1, 3},
};
constexpr std::uint8_t next3[8][12] = {
    {1, 2, 0, 6, 11, 4, 5, 6, 10, 4, 7, 10}, {2, 6, 9, 0, 11, 4, 7, 1, 3, 4, 2, 3},
    {3, 0, 10, 6, 0, 8, 5, 6, 1, 8, 11, 2},  {2, 7, 9, 11, 7, 8, 3, 10, 1, 8, 2, 6},
    {4, 8, 1, 9, 5, 0, 1, 9, 10, 2, 7, 10},  {5, 8, 1, 0, 9, 6, 1, 4, 3, 7, 5, 3},
    {3, 0, 11, 9, 0, 10, 11, 9, 5, 2, 8, 4}, {5, 7, 11, 8, 7, 6, 11, 10, 9, 3, 5, 4},
};

} // namespace

GSS_HC3::GSS_HC3(double minX_, double minY_, double minZ_, double maxX, double maxY, double maxZ,
                 std::uint32_t numBits_)
    : minX(minX_), minY(minY_), minZ(minZ_), rangeX(maxX - minX_), rangeY(maxY - minY_), rangeZ(maxZ - minZ_),
      numBits(numBits_)
{
    if (numBits > 32 || numBits % 3 != 0) {
        printLine("GSS_HC3::GSS_HC3(..): invalid bitlength");
        try {
            LUMO_CHECK(false, "false");
        } catch (const LumoException&) {
            // The condition is reported. A wrong bit length is a mistake in the program, not in its input.
        }
        std::exit(1);
    }
}

std::uint32_t GSS_HC3::getIndex(double x, double y, double z) const
{
    double dx = x - minX;
    double dy = y - minY;
    double dz = z - minZ;
    double hx = rangeX;
    double hy = rangeY;
    double hz = rangeZ;
    std::uint32_t key = 0;
    unsigned state = 0;
    for (std::uint32_t bits = 0; bits < numBits; bits += 3) {
        hx /= 2.0;
        hy /= 2.0;
        hz /= 2.0;
        // All three against hx: positions depend on it.
        const bool bx = dx >= hx;
        const bool by = dy >= hx;
        const bool bz = dz >= hx;
        const unsigned octant = 4u * bx + 2u * by + bz;
        if (bx) dx -= hx;
        if (by) dy -= hy;
        if (bz) dz -= hz;
        key = key << 3 | key3[octant][state];
        state = next3[octant][state];
    }
    return key;
}

} // namespace ORBI_LUMO25D
