#include "orbi_tools/HilbertCurve2.h"

#include <algorithm>

namespace ORBI_LUMO25D
{

namespace
{

void scaleAxis(double min, double max, double cells, double& preScale, double& origin, double& scale)
{
    // Rectangles of nearly the whole range of doubles have an extent that overflows; a quarter of it doesn't.
    preScale = std::isfinite(max - min) ? 1.0 : 0.25;
    origin = min * preScale;
    // Infinite for a degenerate range: all of it is one cell then.
    scale = cells / (max * preScale - origin);
}

} // namespace

HilbertCurve2::HilbertCurve2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits)
    : bitsPerAxis(std::min(numBits / 2, 16u))
{
    const double cells = std::ldexp(1.0, static_cast<int>(bitsPerAxis));
    scaleAxis(minX, maxX, cells, preScaleX, originX, scaleX);
    scaleAxis(minY, maxY, cells, preScaleY, originY, scaleY);
}

} // namespace ORBI_LUMO25D
