#ifndef LUMO25D_ORBI_TOOLS_GSS_HC3_H
#define LUMO25D_ORBI_TOOLS_GSS_HC3_H

#include <cstdint>

namespace ORBI_LUMO25D
{

/// A Hilbert curve through a cube, which orders points in space so that successive ones lie close to each other.
///
/// The range is meant to be a cube: all three coordinates are compared with the halved extent in x. In a box that isn't
/// one every point still has a position, only the order is worse.
class GSS_HC3
{
public:
    /// numBits is the number of bits of an index. One that is above 32 or no multiple of 3 is a failed condition and ends
    /// the process with exit code 1.
    GSS_HC3(double minX, double minY, double minZ, double maxX, double maxY, double maxZ, std::uint32_t numBits);

    /// The position of (x, y, z) along the curve, below 2^numBits; any point, in the range or not, has one.
    std::uint32_t getIndex(double x, double y, double z) const;

private:
    double minX;
    double minY;
    double minZ;
    double rangeX;
    double rangeY;
    double rangeZ;
    std::uint32_t numBits;
};

} // namespace ORBI_LUMO25D

#endif
