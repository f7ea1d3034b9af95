#include "terrain/PlanarPoint.h"

namespace ORBI_LUMO25D
{

double coordinateAtExtremes(double a, double b, double az, double bz, double height)
{
    using Long = long double;
    const Long la = Long(a), lz = Long(az);
    return static_cast<double>(la + (Long(b) - la) / (Long(bz) - lz) * (Long(height) - lz));
}

} // namespace ORBI_LUMO25D
