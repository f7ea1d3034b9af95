#ifndef LUMO25D_REPAIR_HOLEFILLERITEM_H
#define LUMO25D_REPAIR_HOLEFILLERITEM_H

#include <cstddef>

namespace ORBI_LUMO25D
{

/// A corner that waits to be cut off. Items of equal value are taken in the order in which they came.
struct HoleFillerItem
{
    /// By quality: sharp corners first, those that tilt by more than 80 degrees against the surface last, unless they are
    /// all but closed. Angles in degrees.
    static double qualityValue(double angle, double normalAngle)
    {
        double penalty = normalAngle > 80.0 ? 3000.0 : 0.0;
        if (angle < 3.0) penalty = penalty / 3.0 * angle;
        return angle + penalty;
    }

    double value;        ///< qualityValue(), or the length of the gap that cutting closes
    double angle;        ///< at the time when it was enqueued
    std::size_t arrival; ///< a running number
    std::size_t node;    ///< of the front

    /// For a queue whose top is the largest: the smallest value, the earliest arrival.
    bool operator<(const HoleFillerItem& other) const
    {
        return value != other.value ? value > other.value : arrival > other.arrival;
    }
};

} // namespace ORBI_LUMO25D

#endif
