#ifndef LUMO25D_POINT2_H
#define LUMO25D_POINT2_H

#include "Lumo25DApi.h"

#include <cmath>
#include <cstdint>
#include <iosfwd>
#include <limits>

namespace ORBI_LUMO25D
{

class Triangle2;
class Vector2;

/// A point with a height, and, inside a triangulation, a vertex.
///
/// Laws
/// 1. Equality and order look at x and y alone: two points at one place with different heights are equal, and a
///    triangulation keeps only the first of them. samePoint() compares the height too.
/// 2. A copy is a plain point: it takes the coordinates and the custom index, never the incident triangle.
///
/// A vertex is owned by its triangulation. Its address is its identity and stays valid as memory until the
/// triangulation is destroyed; never delete it.
class LUMO25D_API Point2
{
public:
    /// All three coordinates are the most negative finite double.
    Point2() = default;

    /// A plain point without a custom index.
    Point2(double x, double y, double z) : coordX(x), coordY(y), coordZ(z) {}
    /// By law 2.
    Point2(const Point2& other)
        : coordX(other.coordX), coordY(other.coordY), coordZ(other.coordZ), customIndex(other.customIndex)
    {
    }
    Point2& operator=(const Point2& other)
    {
        set(other);
        return *this;
    }
    ~Point2() = default;

    /// Takes the coordinates and the custom index of other; this point belongs to no triangle afterwards.
    void set(const Point2& other) { set(other.coordX, other.coordY, other.coordZ, other.customIndex); }
    /// The same from numbers.
    void set(double x, double y, double z, std::int32_t customIndex_)
    {
        coordX = x;
        coordY = y;
        coordZ = z;
        pAssociatedTriangle = nullptr;
        customIndex = customIndex_;
    }

    /// Changes the coordinates only. Moving a vertex of a triangulation in x or y breaks the triangulation.
    void setCoords(double x, double y, double z)
    {
        coordX = x;
        coordY = y;
        coordZ = z;
    }
    /// Changes the height only; this is safe for a vertex of a triangulation.
    void setHeight(double z) { coordZ = z; }
    void setZ(double z) { coordZ = z; }

    /// The coordinates; the height is z.
    double x() const { return coordX; }
    double y() const { return coordY; }
    double z() const { return coordZ; }
    void xy(double& x, double& y) const
    {
        x = coordX;
        y = coordY;
    }
    void xyz(double& x, double& y, double& z) const
    {
        x = coordX;
        y = coordY;
        z = coordZ;
    }

    /// One of the triangles around a vertex; NULL for a plain point and for a vertex without triangles.
    Triangle2* getIncidentTriangle() const { return pAssociatedTriangle; }
    /// For the triangulation's use.
    void setIncidentTriangle(Triangle2* pT) { pAssociatedTriangle = pT; }

    /// A number of the caller's own, -1 by default. It survives copies; the library never reads a meaning into it.
    std::int32_t getCustomIndex() const { return customIndex; }
    void setCustomIndex(std::int32_t index) { customIndex = index; }

    /// Exact equality of x and y.
    bool operator==(const Point2& other) const { return coordX == other.coordX && coordY == other.coordY; }
    bool operator!=(const Point2& other) const { return !(*this == other); }
    /// Exact equality of x, y and z.
    bool samePoint(const Point2& other) const { return *this == other && coordZ == other.coordZ; }
    /// Lexicographic by x, then y.
    bool operator<(const Point2& other) const
    {
        return coordX < other.coordX || (coordX == other.coordX && coordY < other.coordY);
    }
    bool operator>(const Point2& other) const { return other < *this; }

    /// The larger of |x| and |y|; the height plays no part.
    double getMaxAbs() const
    {
        const double ax = std::fabs(coordX);
        const double ay = std::fabs(coordY);
        return ax < ay ? ay : ax;
    }

    /// The point moved by v in all three coordinates; a plain point.
    Point2 operator+(const Vector2& v) const;
    Point2 operator-(const Vector2& v) const;
    /// The vector from other to this point.
    Vector2 operator-(const Point2& other) const;

    /// Writes "x y z" and a line end to the standard output.
    void print() const;

private:
    friend class ConstraintMgr;

    double coordX = std::numeric_limits<double>::lowest();
    double coordY = std::numeric_limits<double>::lowest();
    double coordZ = std::numeric_limits<double>::lowest();
    Triangle2* pAssociatedTriangle = nullptr;
    std::int32_t customIndex = -1;
    bool bConstraintEnd = false; ///< some constraint segment ends here; belongs to the vertex, never copied
};

/// Order by x, then y, then z.
struct LUMO25D_API Func_ltPointXYZ
{
    /// True when a comes before b. NULL isn't allowed.
    bool operator()(const Point2& a, const Point2& b) const
    {
        if (a.x() != b.x()) return a.x() < b.x();
        if (a.y() != b.y()) return a.y() < b.y();
        return a.z() < b.z();
    }
    bool operator()(const Point2* pA, const Point2* pB) const { return (*this)(*pA, *pB); }
};

/// The midpoint of two points in x, y and z.
LUMO25D_API Point2 centerWithShift(const Point2& p0, const Point2& p1);

/// "Point2 (address,customIndex): x, y, z" without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const Point2& p);

} // namespace ORBI_LUMO25D

#endif
