#ifndef LUMO25D_EXAMPLES_LOCALMETRES_H
#define LUMO25D_EXAMPLES_LOCALMETRES_H

#include "Point2.h"

#include <cmath>

/// Degrees to metres on a plane that touches the ellipsoid (WGS 84) at a place, and back: x to the east, y to the north of
/// it. The lengths of a degree are the usual series in the latitude; over half a degree the plane is right to about 1 part
/// in 200 in x, which is enough for areas of the size of a map sheet.
class LocalMetres
{
public:
    LocalMetres(double longitude0_, double latitude0_, double latitudeMiddle)
        : longitude0(longitude0_), latitude0(latitude0_)
    {
        const double phi = latitudeMiddle * 3.14159265358979323846 / 180.0;
        metresPerDegreeX = 111412.84 * std::cos(phi) - 93.5 * std::cos(3 * phi) + 0.118 * std::cos(5 * phi);
        metresPerDegreeY = 111132.92 - 559.82 * std::cos(2 * phi) + 1.175 * std::cos(4 * phi);
    }
    ORBI_LUMO25D::Point2 operator()(const ORBI_LUMO25D::Point2& degrees) const
    {
        return {(degrees.x() - longitude0) * metresPerDegreeX, (degrees.y() - latitude0) * metresPerDegreeY,
                degrees.z()};
    }
    ORBI_LUMO25D::Point2 toDegrees(const ORBI_LUMO25D::Point2& metres) const
    {
        return {longitude0 + metres.x() / metresPerDegreeX, latitude0 + metres.y() / metresPerDegreeY, metres.z()};
    }

private:
    double longitude0;
    double latitude0;
    double metresPerDegreeX = 0.0;
    double metresPerDegreeY = 0.0;
};

#endif
