#ifndef LUMO25D_CIRCLE2_H
#define LUMO25D_CIRCLE2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <cmath>
#include <iosfwd>

namespace ORBI_LUMO25D
{

/// A circle in the plane, given by its centre (z 0) and its SQUARED radius.
class LUMO25D_API Circle2
{
public:
    /// The height of the centre is dropped. A squared radius below 0 has no radius: getRadius() gives NaN.
    Circle2(double x, double y, double sqRadius_) : center(x, y, 0.0), sqRadius(sqRadius_) {}
    Circle2(const Point2& center_, double sqRadius_) : center(center_.x(), center_.y(), 0.0), sqRadius(sqRadius_) {}

    /// In the unit of the coordinates; its square.
    double getRadius() const { return std::sqrt(sqRadius); }
    double getSqRadius() const { return sqRadius; }
    /// With z 0.
    Point2 getCenter() const { return center; }

private:
    Point2 center;
    double sqRadius;
};

/// "Circle2: centre, r=radius" without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const Circle2& circle);

} // namespace ORBI_LUMO25D

#endif
