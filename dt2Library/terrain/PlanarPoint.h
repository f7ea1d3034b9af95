#ifndef LUMO25D_TERRAIN_PLANARPOINT_H
#define LUMO25D_TERRAIN_PLANARPOINT_H

#include "Point2.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

/// A point of a contour, without the height that all of them have: what is looked at often is small.
struct PlanarPoint
{
    double x, y;

    bool operator==(const PlanarPoint& other) const { return x == other.x && y == other.y; }
    bool operator!=(const PlanarPoint& other) const { return !(*this == other); }
    /// Lexicographic.
    bool operator<(const PlanarPoint& other) const { return x < other.x || (x == other.x && y < other.y); }
    Point2 at(double height) const { return Point2(x, y, height); }
};

/// The coordinate at a height on an edge from a to b, where az < height < bz, in long double, whose exponents suffice for
/// differences beyond the largest double and for heights that almost coincide.
double coordinateAtExtremes(double a, double b, double az, double bz, double height);

/// The coordinate at a height on an edge from a to b, where az < height < bz; never beyond its ends.
inline double coordinateAt(double a, double b, double az, double bz, double height)
{
    const double slope = (b - a) / (bz - az);
    double result = a + slope * (height - az);
    if (!std::isfinite(slope) || !std::isfinite(result)) result = coordinateAtExtremes(a, b, az, bz, height);
    const auto [low, high] = std::minmax(a, b);
    return std::clamp(result, low, high);
}

/// Where the edge from a vertex below the height to one above it has the height. In this direction, whoever asks: both
/// triangles of an edge get the same point.
inline PlanarPoint placeAt(const Point2& low, const Point2& high, double height)
{
    return {coordinateAt(low.x(), high.x(), low.z(), high.z(), height),
            coordinateAt(low.y(), high.y(), low.z(), high.z(), height)};
}

} // namespace ORBI_LUMO25D

#endif
