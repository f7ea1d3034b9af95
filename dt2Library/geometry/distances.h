#ifndef LUMO25D_GEOMETRY_DISTANCES_H
#define LUMO25D_GEOMETRY_DISTANCES_H

#include "Point2.h"

#include <cmath>

namespace ORBI_LUMO25D
{

// The squared ones overflow for distances above 1e154 and vanish for those below 1e-162.

inline double sqDistance2D(const Point2& p, const Point2& q)
{
    const double dx = p.x() - q.x();
    const double dy = p.y() - q.y();
    return dx * dx + dy * dy;
}

inline double sqDistance25D(const Point2& p, const Point2& q)
{
    const double dz = p.z() - q.z();
    return sqDistance2D(p, q) + dz * dz;
}

/// Right at every magnitude.
inline double distance2D(const Point2& p, const Point2& q)
{
    return std::hypot(p.x() - q.x(), p.y() - q.y());
}

} // namespace ORBI_LUMO25D

#endif
