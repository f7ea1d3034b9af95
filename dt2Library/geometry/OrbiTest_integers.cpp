#include "geometry/OrbiTest_integers.h"

#include "geometry/FixedInt.h"

#include <algorithm>
#include <cstring>

namespace ORBI_LUMO25D::integers
{

namespace
{

/// A finite double as mantissa * 2^exponent. Zero is without bits, and any exponent will do.
struct Decoded
{
    std::uint64_t mantissa; ///< odd, below 2^53; or 0
    int exponent;
    bool bNegative;
};

constexpr int noExponent = 1 << 20; ///< beyond every exponent

/// The window of bits that a set of coordinates occupies.
struct Window
{
    int lowest = noExponent;   ///< exponent of the last bit in use
    int highest = -noExponent; ///< an exponent above the first bit in use
    bool bFinite = true;

    /// Wide enough for Int128 with a bit left for differences and one for the sign.
    bool fits() const { return bFinite && highest - lowest <= 125; }
};

Decoded decode(double v, Window& window)
{
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    const int biased = static_cast<int>((bits >> 52U) & 0x7ffU);
    std::uint64_t mantissa = bits & 0xfffffffffffffU;
    if (biased == 0x7ff) window.bFinite = false;
    if (biased != 0) mantissa |= std::uint64_t{1} << 52U;
    if (mantissa == 0) return {0, noExponent, false};

    const int exponent = (biased != 0 ? biased : 1) - 1075;
    const int numZeros = __builtin_ctzll(mantissa);
    window.lowest = std::min(window.lowest, exponent + numZeros);
    window.highest = std::max(window.highest, exponent + 53);
    return {mantissa >> static_cast<unsigned>(numZeros), exponent + numZeros, (bits >> 63U) != 0};
}

/// In units of the window's last bit; below 2^125 in size.
Int128 align(const Decoded& d, const Window& window)
{
    if (d.mantissa == 0) return 0;
    const Int128 size = static_cast<Int128>(d.mantissa) << (d.exponent - window.lowest);
    return d.bNegative ? -size : size;
}

/// Whether the differences are so small that Int128 holds determinants of them.
template <std::size_t N>
bool areSmall(const Int128 (&aDiff)[N])
{
    const Int128 limit = Int128{1} << 62;
    bool bSmall = true;
    for (const Int128 d : aDiff) bSmall &= d < limit && d > -limit;
    return bSmall;
}

FixedInt<2> widen(Int128 v)
{
    return toFixedInt(v);
}
const FixedInt<4>& widen(const FixedInt<4>& v)
{
    return v;
}

/// From the differences adx, ady, bdx, bdy, cdx, cdy. With d bits for those, minors and lifts have 2d + 1, and the sum
/// of the three products has 4d + 4: that is 252 of 256 for small differences, 508 of 512 for others.
template <class Int>
int inCircleSignOf(const Int (&d)[6])
{
    const auto term = [&d](std::size_t i, std::size_t j, std::size_t k) {
        return widen(d[2 * j] * d[2 * k + 1] - d[2 * k] * d[2 * j + 1]) *
               widen(d[2 * i] * d[2 * i] + d[2 * i + 1] * d[2 * i + 1]);
    };
    return (term(0, 1, 2) + term(1, 2, 0) + term(2, 0, 1)).sign();
}

} // namespace

bool orientationSign(const Point2* p0, const Point2* p1, const Point2* p2, int& sign)
{
    // Each axis has a unit of its own: the unit's sign is all that a product loses.
    Window windowX, windowY;
    const Decoded x0 = decode(p0->x(), windowX), x1 = decode(p1->x(), windowX), x2 = decode(p2->x(), windowX);
    const Decoded y0 = decode(p0->y(), windowY), y1 = decode(p1->y(), windowY), y2 = decode(p2->y(), windowY);
    if (!windowX.fits() || !windowY.fits()) return false;

    const Int128 alignedX2 = align(x2, windowX), alignedY2 = align(y2, windowY);
    const Int128 aDiff[4] = {align(x0, windowX) - alignedX2, align(y1, windowY) - alignedY2,
                             align(y0, windowY) - alignedY2, align(x1, windowX) - alignedX2};
    if (areSmall(aDiff)) {
        const Int128 left = aDiff[0] * aDiff[1], right = aDiff[2] * aDiff[3];
        sign = (left > right) - (left < right);
    } else {
        sign = (toFixedInt(aDiff[0]) * toFixedInt(aDiff[1]) - toFixedInt(aDiff[2]) * toFixedInt(aDiff[3])).sign();
    }
    return true;
}

bool inCircleSign(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q, int& sign)
{
    Window window;
    const Decoded aCoords[6] = {decode(p0->x(), window), decode(p0->y(), window), decode(p1->x(), window),
                                decode(p1->y(), window), decode(p2->x(), window), decode(p2->y(), window)};
    const Decoded qx = decode(q->x(), window), qy = decode(q->y(), window);
    if (!window.fits()) return false;

    const Int128 aOrigin[2] = {align(qx, window), align(qy, window)};
    Int128 aDiff[6];
    for (std::size_t i = 0; i < 6; ++i) aDiff[i] = align(aCoords[i], window) - aOrigin[i % 2];
    if (areSmall(aDiff)) {
        sign = inCircleSignOf(aDiff);
    } else {
        FixedInt<2> aWide[6];
        for (std::size_t i = 0; i < 6; ++i) aWide[i] = toFixedInt(aDiff[i]);
        sign = inCircleSignOf(aWide);
    }
    return true;
}

} // namespace ORBI_LUMO25D::integers
