#ifndef LUMO25D_VECTOR2_H
#define LUMO25D_VECTOR2_H

#include "Lumo25DApi.h"

#include <cmath>
#include <iosfwd>

namespace ORBI_LUMO25D
{

/// A vector in space: the difference of two points. The default is the null vector.
///
/// Operations work on all three components unless their comment says otherwise.
class LUMO25D_API Vector2
{
public:
    /// The null vector, or one by its components.
    Vector2() = default;
    Vector2(double x, double y, double z) : valX(x), valY(y), valZ(z) {}

    /// The components.
    double x() const { return valX; }
    double y() const { return valY; }
    double z() const { return valZ; }
    /// Sets all three.
    void set(double x, double y, double z)
    {
        valX = x;
        valY = y;
        valZ = z;
    }

    /// The square of the length; overflows and vanishes where the squares of the components do.
    double sqLength() const { return valX * valX + valY * valY + valZ * valZ; }
    /// Right at every magnitude: squares that would overflow or vanish are avoided. Infinite only when the length is.
    double length() const;

    /// True when all three components are exactly 0.
    bool isDegenerate() const { return valX == 0.0 && valY == 0.0 && valZ == 0.0; }
    /// Index (0, 1 or 2) of the component with the largest magnitude; the lower index on ties.
    int getMaxIndex() const
    {
        const double ax = std::fabs(valX);
        const double ay = std::fabs(valY);
        const double az = std::fabs(valZ);
        if (ax >= ay && ax >= az) return 0;
        return ay >= az ? 1 : 2;
    }

    /// The unit normal to the left of the vector, seen from above; x and y alone count and the result's z is 0. The
    /// null vector when x and y are 0. The side is decided exactly. The components must be finite.
    Vector2 orthogonalVector() const;

    /// Scalar product.
    double operator*(const Vector2& other) const { return valX * other.valX + valY * other.valY + valZ * other.valZ; }
    /// By components.
    Vector2 operator*(double factor) const { return Vector2(valX * factor, valY * factor, valZ * factor); }
    Vector2 operator/(double divisor) const { return Vector2(valX / divisor, valY / divisor, valZ / divisor); }
    Vector2 operator+(const Vector2& other) const
    {
        return Vector2(valX + other.valX, valY + other.valY, valZ + other.valZ);
    }
    Vector2 operator-(const Vector2& other) const
    {
        return Vector2(valX - other.valX, valY - other.valY, valZ - other.valZ);
    }
    Vector2 operator-() const { return Vector2(-valX, -valY, -valZ); }

private:
    double valX = 0.0;
    double valY = 0.0;
    double valZ = 0.0;
};

/// As v * factor.
inline Vector2 operator*(double factor, const Vector2& v)
{
    return v * factor;
}

/// The right-handed vector product.
inline Vector2 crossProduct(const Vector2& v, const Vector2& w)
{
    return Vector2(v.y() * w.z() - v.z() * w.y(), v.z() * w.x() - v.x() * w.z(), v.x() * w.y() - v.y() * w.x());
}

/// The vector of length 1 in the direction of other. A null vector has none: it is returned as it is, with a warning
/// on the standard output.
LUMO25D_API Vector2 normalize(const Vector2& other);

/// The angle between two vectors of length 1, in degrees from 0 to 180. Lengths that are off by 0.1 or more are
/// reported on the error stream; the result has no meaning then.
LUMO25D_API double getAngleDegree(const Vector2& v, const Vector2& w);

/// "Vector2: x, y, z" without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const Vector2& v);

} // namespace ORBI_LUMO25D

#endif
