#include "cloud/Calc.h"

#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace ORBI_LUMO25D
{

// ---- bounds ---------------------------------------------------------------------------------------------------------

CloudBounds::CloudBounds()
{
    minX = minY = minZ = std::numeric_limits<double>::max();
    maxX = maxY = maxZ = std::numeric_limits<double>::lowest();
}

void CloudBounds::add(double x, double y, double z)
{
    minX = std::min(minX, x);
    minY = std::min(minY, y);
    minZ = std::min(minZ, z);
    maxX = std::max(maxX, x);
    maxY = std::max(maxY, y);
    maxZ = std::max(maxZ, z);
}

double CloudBounds::maxAbs2D() const
{
    return std::max({std::fabs(minX), std::fabs(minY), std::fabs(maxX), std::fabs(maxY)});
}

// ---- the grid -------------------------------------------------------------------------------------------------------

Calc::Calc(double originX_, double originY_, double sideX_, double sideY_, int numLevels, double preScale_)
    : originX(originX_), originY(originY_), sideX(sideX_), sideY(sideY_), preScale(preScale_)
{
    LUMO_CHECK(numLevels <= MAXLEVELS, "numLevels<=MAXLEVELS");
    numCells = static_cast<std::uint64_t>(std::pow(2.0, numLevels));
    invCellX = static_cast<double>(numCells) / sideX;
    invCellY = static_cast<double>(numCells) / sideY;
}

namespace
{

constexpr int marginCells = 8; ///< half of them on each side

/// The power of two that coordinates up to maxAbs, and lengths down to smallest, are multiplied by.
double preScaleFor(double maxAbs, double smallest)
{
    if (maxAbs > 0x1p960) return 0x1p-128;
    if (smallest < 0x1p-900 && maxAbs < 0x1p300) return 0x1p600;
    return 1.0;
}

double scaledRange(const CloudBounds& b, double preScale)
{
    return std::max(b.maxX * preScale - b.minX * preScale, b.maxY * preScale - b.minY * preScale);
}

double gridScale(const CloudBounds& bounds, double gridLen)
{
    return preScaleFor(std::max(bounds.maxAbs2D(), gridLen), gridLen);
}

double requiredCells(const CloudBounds& bounds, double gridLen)
{
    const double preScale = gridScale(bounds, gridLen);
    // Without extent, whatever the length: it may have vanished by scaling.
    const double range = scaledRange(bounds, preScale);
    return (range > 0.0 ? std::ceil(range / (gridLen * preScale)) : 0.0) + marginCells;
}

void checkNotEmpty(const CloudBounds& bounds)
{
    LUMO_CHECK(!bounds.isEmpty(), "maxx!=-1.7976931348623158e+308");
}

} // namespace

bool isGridPossible(const CloudBounds& bounds, double gridLen)
{
    return requiredCells(bounds, gridLen) <= std::pow(2.0, MAXLEVELS);
}

Calc createCalc(const CloudBounds& bounds, double gridLen)
{
    checkNotEmpty(bounds);
    const double numReqC = requiredCells(bounds, gridLen);
    const double levels = std::floor(std::log(numReqC) / std::log(2.0)) + 1.0;
    const int numLevels = static_cast<int>(std::min(levels, 1e6)); // more than any quotient of doubles needs
    if (numLevels > MAXLEVELS) {
        msgWarning("CloudPrepareImpl::createCalc()", "BaseLevel out of range: " + std::to_string(numLevels));
    }
    const int usedLevels = std::min(numLevels, MAXLEVELS);
    const double numCReal = std::pow(2.0, usedLevels);
    LUMO_CHECK(numCReal >= numReqC, "numCReal>=numReqC");

    const double preScale = gridScale(bounds, gridLen);
    const double length = gridLen * preScale;
    const double offset = marginCells * 0.5 * length;
    const double side = numCReal * length;
    return Calc(bounds.minX * preScale - offset, bounds.minY * preScale - offset, side, side, usedLevels, preScale);
}

Calc createMaxCalc(const CloudBounds& bounds)
{
    constexpr int numLevels = MAXLEVELS - 1;
    checkNotEmpty(bounds);
    const double preScale = preScaleFor(bounds.maxAbs2D(), std::max(bounds.rangeX(), bounds.rangeY()));
    const double maxRange = scaledRange(bounds, preScale);
    const double margin = 4.0 * (maxRange / std::pow(2.0, numLevels));
    const double side = maxRange + 2.0 * margin;
    return Calc(bounds.minX * preScale - margin, bounds.minY * preScale - margin, side, side, numLevels, preScale);
}

CCD getFilterCCD(int numLowerZeros)
{
    if (numLowerZeros == 0) return ~CCD(0);
    if (numLowerZeros == 64) return 0;
    LUMO_CHECK(numLowerZeros > 0 && numLowerZeros < 64, "numLowerZeros>0 && numLowerZeros<64");
    return ~((CCD(1) << numLowerZeros) - 1);
}

} // namespace ORBI_LUMO25D
