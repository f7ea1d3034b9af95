#ifndef LUMO25D_CORE_COORDINATERANGE_H
#define LUMO25D_CORE_COORDINATERANGE_H

#include "Bbox2.h"
#include "Point2.h"

#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

/// What the engine has to know about coordinates before they come in.
struct CoordinateRange
{
    void add(const Point2& p)
    {
        box.add(p);
        for (const double size : {std::fabs(p.x()), std::fabs(p.y())}) {
            if (size > 0.0 && size < smallestSize) smallestSize = size;
        }
    }

    Bbox2 box;
    double smallestSize = std::numeric_limits<double>::max(); ///< of all that aren't 0
};

} // namespace ORBI_LUMO25D

#endif
