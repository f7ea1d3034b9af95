#ifndef LUMO25D_GEOMETRY_MIDCOORDINATE_H
#define LUMO25D_GEOMETRY_MIDCOORDINATE_H

#include <cmath>

namespace ORBI_LUMO25D
{

/// The mean of two finite doubles; finite even where their sum overflows.
inline double midCoordinate(double a, double b)
{
    const double sum = a + b;
    return std::isfinite(sum) ? 0.5 * sum : 0.5 * a + 0.5 * b;
}

} // namespace ORBI_LUMO25D

#endif
