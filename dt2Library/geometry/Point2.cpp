#include "Point2.h"

#include "Vector2.h"
#include "geometry/midCoordinate.h"

#include <iostream>

namespace ORBI_LUMO25D
{

Point2 Point2::operator+(const Vector2& v) const
{
    return Point2(coordX + v.x(), coordY + v.y(), coordZ + v.z());
}

Point2 Point2::operator-(const Vector2& v) const
{
    return Point2(coordX - v.x(), coordY - v.y(), coordZ - v.z());
}

Vector2 Point2::operator-(const Point2& other) const
{
    return Vector2(coordX - other.coordX, coordY - other.coordY, coordZ - other.coordZ);
}

void Point2::print() const
{
    std::cout << coordX << " " << coordY << " " << coordZ << std::endl;
}

Point2 centerWithShift(const Point2& p0, const Point2& p1)
{
    return Point2(midCoordinate(p0.x(), p1.x()), midCoordinate(p0.y(), p1.y()), midCoordinate(p0.z(), p1.z()));
}

std::ostream& operator<<(std::ostream& stream, const Point2& p)
{
    return stream << "Point2 (" << static_cast<const void*>(&p) << "," << p.getCustomIndex() << "): " << p.x() << ", "
                  << p.y() << ", " << p.z();
}

} // namespace ORBI_LUMO25D
