#ifndef LUMO25D_GEOMETRY_FINITE_H
#define LUMO25D_GEOMETRY_FINITE_H

#include "Point2.h"
#include "Segment2.h"

#include <cmath>

namespace ORBI_LUMO25D
{

// Whether all coordinates are finite numbers: in the plane, in space.

inline bool isFinite2D(const Point2& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y());
}

inline bool isFinite25D(const Point2& p)
{
    return isFinite2D(p) && std::isfinite(p.z());
}

inline bool isFinite2D(const Segment2& s)
{
    return isFinite2D(s.src) && isFinite2D(s.trg);
}

inline bool isFinite25D(const Segment2& s)
{
    return isFinite25D(s.src) && isFinite25D(s.trg);
}

} // namespace ORBI_LUMO25D

#endif
