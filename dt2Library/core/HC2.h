#ifndef LUMO25D_CORE_HC2_H
#define LUMO25D_CORE_HC2_H

#include "orbi_tools/HilbertCurve2.h"

#include "support/check.h"

#include "Point2.h"

#include <cstdint>

namespace ORBI_LUMO25D
{

/// The Hilbert curve that orders the vertices of a triangulation: it gives each place of a rectangle a position, such
/// that places with close positions are close in the plane.
///
/// The order decides nothing: it gives hints, and any imprecision in it costs only time. Points with equal x and y have
/// equal indices. Reading is free for all threads.
class HC2
{
public:
    /// No range yet: getIndex is a failed condition.
    HC2() = default;
    /// numBits is the number of bits of an index: even, at most 32, otherwise an error and a failed condition.
    HC2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits);

    /// Takes another range. What is checked is the number of bits that this curve had up to now, not the new one.
    void setRange(double minX, double minY, double maxX, double maxY, std::uint32_t numBits);

    /// The position of p along the curve, below 2^numBits. Points outside of the range get some position too, and so do
    /// all points when the range is degenerate. A few nanoseconds.
    std::uint32_t getIndex(const Point2& p) const { return getIndex(p.x(), p.y()); }
    std::uint32_t getIndex(double x, double y) const
    {
        LUMO_CHECK(numBits > 0, "numBits>0");
        return curve.index(x, y);
    }

private:
    std::uint32_t numBits = 0; ///< 0 until a range is set
    HilbertCurve2 curve;
};

} // namespace ORBI_LUMO25D

#endif
