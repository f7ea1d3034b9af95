#ifndef LUMO25D_ORBI_TOOLS_GSS_HC2_H
#define LUMO25D_ORBI_TOOLS_GSS_HC2_H

#include "orbi_tools/HilbertCurve2.h"

#include <cstdint>

namespace ORBI_LUMO25D
{

/// The plane's Hilbert curve for tools that do without the engine. The same curve as HC2.
class GSS_HC2
{
public:
    /// numBits is the number of bits of an index. One that is odd or above 32 ends the process with exit code 1.
    GSS_HC2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits);

    /// The position of (x, y) along the curve, below 2^numBits. Points outside of the range get some position too.
    std::uint32_t getIndex(double x, double y) const { return curve.index(x, y); }

private:
    HilbertCurve2 curve;
};

} // namespace ORBI_LUMO25D

#endif
