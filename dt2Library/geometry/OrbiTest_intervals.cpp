// Compiled with -frounding-math, so that no arithmetic is done at compile time or simplified as if in round-to-nearest.
// That does not keep the compilers from moving arithmetic across a change of the mode; the barriers below do.

#include "geometry/OrbiTest_intervals.h"

#if defined(__SSE2__)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace ORBI_LUMO25D::intervals
{

namespace
{

/// Makes the value unknown to the compiler, and keeps its place among other barriers and changes of the mode.
inline double pin(double v)
{
    asm volatile("" : "+m"(v) : : "memory");
    return v;
}

/// The mode of double arithmetic in this thread, given back at the end of the scope.
class RoundingMode
{
public:
#if defined(__SSE2__)
    // Without a call, and without the other unit's control word, which doubles don't use.
    enum Direction : unsigned
    {
        upward = _MM_ROUND_UP,
        downward = _MM_ROUND_DOWN,
        towardZero = _MM_ROUND_TOWARD_ZERO
    };
    RoundingMode() : saved(_mm_getcsr()) {}
    ~RoundingMode()
    {
        _mm_setcsr(saved);
    }
    void set(Direction d)
    {
        _mm_setcsr((saved & ~static_cast<unsigned>(_MM_ROUND_MASK)) | d);
    }

private:
    const unsigned saved;
#else
    enum Direction : int
    {
        upward = FE_UPWARD,
        downward = FE_DOWNWARD,
        towardZero = FE_TOWARDZERO
    };
    RoundingMode() : saved(std::fegetround()) {}
    ~RoundingMode()
    {
        std::fesetround(saved);
    }
    void set(Direction d)
    {
        std::fesetround(d);
    }

private:
    const int saved;
#endif

public:
    RoundingMode(const RoundingMode&) = delete;
    RoundingMode& operator=(const RoundingMode&) = delete;
};

/// Four doubles that stand for the product (a - b)(c - d).
struct Product
{
    double a, b, c, d;

    bool isNegativeOrZero() const { return (b > a) != (d > c); }

    /// Rounded away from zero: differences of the larger minus the smaller, and their product, all upward. The sign
    /// comes from the comparisons.
    double outward(RoundingMode& mode) const
    {
        mode.set(RoundingMode::upward);
        const double pa = pin(a), pb = pin(b), pc = pin(c), pd = pin(d);
        const double size = pin((pb > pa ? pb - pa : pa - pb) * (pd > pc ? pd - pc : pc - pd));
        return isNegativeOrZero() ? -size : size;
    }
    double inward(RoundingMode& mode) const
    {
        mode.set(RoundingMode::towardZero);
        const double pa = pin(a), pb = pin(b), pc = pin(c), pd = pin(d);
        return pin((pa - pb) * (pc - pd));
    }

    double upper(RoundingMode& mode) const { return isNegativeOrZero() ? inward(mode) : outward(mode); }
    double lower(RoundingMode& mode) const { return isNegativeOrZero() ? outward(mode) : inward(mode); }
};

Product left(const Point2* p0, const Point2* p1, const Point2* p2)
{
    return {p0->x(), p2->x(), p1->y(), p2->y()};
}

Product right(const Point2* p0, const Point2* p1, const Point2* p2)
{
    return {p0->y(), p2->y(), p1->x(), p2->x()};
}

double difference(double minuend, double subtrahend, RoundingMode& mode, RoundingMode::Direction direction)
{
    mode.set(direction);
    const double m = pin(minuend), s = pin(subtrahend);
    return pin(m - s);
}

} // namespace

double orientationUpperBound(const Point2* p0, const Point2* p1, const Point2* p2)
{
    RoundingMode mode;
    const double upper = left(p0, p1, p2).upper(mode);
    const double lower = right(p0, p1, p2).lower(mode);
    return difference(upper, lower, mode, RoundingMode::upward);
}

double orientationLowerBound(const Point2* p0, const Point2* p1, const Point2* p2)
{
    RoundingMode mode;
    const double lower = left(p0, p1, p2).lower(mode);
    const double upper = right(p0, p1, p2).upper(mode);
    return difference(lower, upper, mode, RoundingMode::downward);
}

} // namespace ORBI_LUMO25D::intervals
