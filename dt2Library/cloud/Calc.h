#ifndef LUMO25D_CLOUD_CALC_H
#define LUMO25D_CLOUD_CALC_H

#include <cstdint>

namespace ORBI_LUMO25D
{

/// The code of a grid cell: the bits of its two numbers, interleaved (G. M. Morton, 1966), those of x above those of y.
using CCD = std::uint64_t;
static_assert(sizeof(CCD) == 8, "sizeof(CCD)==8");

/// A grid has at most 2^MAXLEVELS cells an axis.
constexpr int MAXLEVELS = 32;

/// The tight box of a cloud. Of an empty one: the largest double as minimum, the lowest as maximum.
struct CloudBounds
{
    CloudBounds();
    void add(double x, double y, double z);

    bool isEmpty() const { return maxX < minX; }
    /// Infinite where doubles have no such number; 0 for an empty cloud.
    double rangeX() const { return isEmpty() ? 0.0 : maxX - minX; }
    double rangeY() const { return isEmpty() ? 0.0 : maxY - minY; }
    double rangeZ() const { return isEmpty() ? 0.0 : maxZ - minZ; }
    /// No extent in the plane: all points stand at one place.
    bool isPoint() const { return minX == maxX && minY == maxY; }
    /// The largest size of a coordinate in the plane.
    double maxAbs2D() const;

    double minX, minY, minZ, maxX, maxY, maxZ;
};

/// The grid that cells are counted in.
///
/// Coordinates are scaled by a power of two before anything else: 1 but for clouds near the ends of what doubles can
/// hold, where a side or its reciprocal would be infinite otherwise.
class Calc
{
public:
    /// In scaled units. numLevels above MAXLEVELS: a failed condition.
    Calc(double originX, double originY, double sideX, double sideY, int numLevels, double preScale);

    std::uint64_t cellX(double x) const { return cell(x, originX, invCellX); }
    std::uint64_t cellY(double y) const { return cell(y, originY, invCellY); }
    CCD code(double x, double y) const { return spread(cellX(x)) << 1 | spread(cellY(y)); }
    /// Length of a cell, in units of the coordinates.
    double cellLength() const { return sideX / preScale / static_cast<double>(numCells); }

private:
    /// Rounding may lead beyond either end, by part of a cell; what isn't a number comes from cells without size.
    std::uint64_t cell(double coordinate, double origin, double invCell) const
    {
        constexpr double last = 4294967295.0;
        const double c = (coordinate * preScale - origin) * invCell;
        if (!(c > 0.0)) return 0;
        return c < last ? static_cast<std::uint64_t>(c) : static_cast<std::uint64_t>(last);
    }
    /// Moves bit i of 32 to bit 2 i.
    static std::uint64_t spread(std::uint64_t v)
    {
        v = (v | v << 16) & 0x0000ffff0000ffffu;
        v = (v | v << 8) & 0x00ff00ff00ff00ffu;
        v = (v | v << 4) & 0x0f0f0f0f0f0f0f0fu;
        v = (v | v << 2) & 0x3333333333333333u;
        return (v | v << 1) & 0x5555555555555555u;
    }

    double originX, originY;
    double sideX, sideY; ///< of the whole grid
    std::uint64_t numCells;
    double invCellX, invCellY;
    double preScale;
};

/// The grid of cells of the given length, above 0, with at least four empty cells to the left and below the cloud. More
/// cells an axis than 2^MAXLEVELS: a warning and a failed condition; an empty cloud is one, too.
Calc createCalc(const CloudBounds& bounds, double gridLen);
/// True when createCalc() has cells enough for that length.
bool isGridPossible(const CloudBounds& bounds, double gridLen);
/// The finest grid: 2^31 cells an axis, four of them empty on each side. An empty cloud is a failed condition.
Calc createMaxCalc(const CloudBounds& bounds);

/// A mask without the given number of lower bits, 0 to 64; another number is a failed condition. Two cells of level L,
/// which have 2^L base cells a side, are the same if their codes under getFilterCCD(2 * L) are.
CCD getFilterCCD(int numLowerZeros);

} // namespace ORBI_LUMO25D

#endif
