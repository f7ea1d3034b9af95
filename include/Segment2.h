#ifndef LUMO25D_SEGMENT2_H
#define LUMO25D_SEGMENT2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <iosfwd>
#include <utility>

namespace ORBI_LUMO25D
{

/// A directed segment between two points, which it holds by value. The ends may be equal.
class LUMO25D_API Segment2
{
public:
    /// Both ends at the most negative finite double.
    Segment2() = default;

    /// From source to target.
    Segment2(const Point2& source, const Point2& target) : src(source), trg(target) {}

    /// Copies of the ends.
    Point2 getSrc() const { return src; }
    Point2 getTrg() const { return trg; }

    /// Turns the direction round.
    void swapSrcTrg() { std::swap(src, trg); }

    /// Squared length in the plane, in space.
    double getSqLen2D() const
    {
        const double dx = trg.x() - src.x();
        const double dy = trg.y() - src.y();
        return dx * dx + dy * dy;
    }
    double getSqLen25D() const
    {
        const double dz = trg.z() - src.z();
        return getSqLen2D() + dz * dz;
    }

    /// True when the ends are the same or exchanged; heights are ignored.
    bool operator==(const Segment2& other) const
    {
        return (src == other.src && trg == other.trg) || (src == other.trg && trg == other.src);
    }
    bool operator!=(const Segment2& other) const { return !(*this == other); }

    Point2 src; ///< where the segment starts
    Point2 trg; ///< where it ends
};

/// Strict order of segments by source, then by target (x, then y); the direction counts, heights don't.
struct LUMO25D_API Func_compareSegment
{
    /// True when A comes before B. NULL isn't allowed.
    bool operator()(const Segment2* pA, const Segment2* pB) const
    {
        if (pA->src < pB->src) return true;
        if (pA->src > pB->src) return false;
        return pA->trg < pB->trg;
    }
};

/// "Segment2 (address): source,target" without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const Segment2& segment);

} // namespace ORBI_LUMO25D

#endif
