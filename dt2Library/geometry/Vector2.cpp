#include "Vector2.h"

#include "Orientation2.h"
#include "Point2.h"
#include "freeFunctions.h"
#include "support/check.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <utility>

namespace ORBI_LUMO25D
{

double Vector2::length() const
{
    // Above this bound a square that vanished is less than the last digit of the sum.
    constexpr double SAFE_SQUARE = 1e-280;
    const double sq = sqLength();
    if (sq >= SAFE_SQUARE && sq <= std::numeric_limits<double>::max()) return std::sqrt(sq);

    const double maxAbs = std::max({std::fabs(valX), std::fabs(valY), std::fabs(valZ)});
    if (maxAbs == 0.0 || !std::isfinite(maxAbs)) return std::sqrt(sq);
    const int exponent = std::ilogb(maxAbs);
    const Vector2 scaled(std::scalbn(valX, -exponent), std::scalbn(valY, -exponent), std::scalbn(valZ, -exponent));
    return std::scalbn(std::sqrt(scaled.sqLength()), exponent);
}

Vector2 Vector2::orthogonalVector() const
{
    // The quotient of the smaller component by the larger one can't overflow.
    const bool bSwap = std::fabs(valX) > std::fabs(valY);
    double x = valX;
    double y = valY;
    if (bSwap) std::swap(x, y);
    if (y == 0.0) return Vector2();

    Vector2 candidate = normalize(Vector2(1.0, -x / y, 0.0));
    if (bSwap) candidate.set(candidate.y(), candidate.x(), 0.0);

    const Point2 origin(0.0, 0.0, 0.0);
    const Point2 tip(valX, valY, 0.0);
    const Point2 candidateTip(candidate.x(), candidate.y(), 0.0);
    const Orientation2 ori = getOrientation2_mt(&origin, &tip, &candidateTip);
    if (ori == ORIENTATION2_CCW) return candidate;
    LUMO_CHECK(ori == ORIENTATION2_CW, "false");
    return -candidate;
}

Vector2 normalize(const Vector2& other)
{
    const double len = other.length();
    if (std::isnormal(len)) return other / len;
    if (!(len > 0.0)) {
        std::cout << "\n** warning: normalize(const Vector2& other), Null length vector!" << std::endl;
        return Vector2();
    }
    // A length below the normal range has lost digits, and one beyond the largest double is infinite: scale by a
    // power of two first, which is exact.
    const Vector2 scaled = other * (len < 1.0 ? 0x1p600 : 0x1p-2);
    return scaled / scaled.length();
}

double getAngleDegree(const Vector2& v, const Vector2& w)
{
    constexpr double DEGREES_PER_RADIAN = 57.295779513082320877;
    constexpr double MAX_LENGTH_ERROR = 0.1;
    const double len1 = v.length();
    const double len2 = w.length();
    if (std::fabs(len1 - 1.0) >= MAX_LENGTH_ERROR || std::fabs(len2 - 1.0) >= MAX_LENGTH_ERROR) {
        std::cerr << "getAngleDegree has been called for vectors with length!=1.0:\n"
                  << "   len1=" << len1 << ", len2=" << len2 << std::endl;
    }
    return std::acos(std::clamp(v * w, -1.0, 1.0)) * DEGREES_PER_RADIAN;
}

std::ostream& operator<<(std::ostream& stream, const Vector2& v)
{
    return stream << "Vector2: " << v.x() << ", " << v.y() << ", " << v.z();
}

} // namespace ORBI_LUMO25D
