#ifndef LUMO25D_FUNC_ROT3D_H
#define LUMO25D_FUNC_ROT3D_H

#include "Lumo25DApi.h"
#include "Point2.h"
#include "Vector2.h"

#include <vector>

namespace ORBI_LUMO25D
{

/// The rotation about the origin that takes a direction to the z axis: a problem on a steep surface becomes one in the
/// plane.
///
/// It is exact up to the rounding of its nine entries, except near the z axis. For directions within 2.6 degrees of it
/// (z > 0.999) it is the identity, since they need no help. For those straight below (x and y within 0.001 of 0), where
/// the axis to turn about can't be told, it is half a turn about the y axis, which leaves the direction that much off.
class LUMO25D_API Func_Rot3D
{
public:
    /// nnv must have length 1: between 0.99 and 1.01, otherwise there is a warning and the rotation is the identity. The
    /// null vector is a failed condition. bSilent suppresses the warning about an (almost) vertical nnv, for which no
    /// rotation takes place.
    explicit Func_Rot3D(const Vector2& nnv, bool bSilent = false);

    /// True when points stay where they are.
    bool isIdentity() const { return bIdentity; }
    /// The rotated point, without the custom index.
    Point2 operator()(const Point2& p) const;

private:
    double aM[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}; ///< row by row
    bool bIdentity = true;
};

/// The unit normal of the plane that fits the points best, by least squares along the axis in which the fit is
/// conditioned best; its component along that axis is positive. At least 3 points, a failed condition otherwise. The
/// null vector, with a warning, for points on one line. Translations don't matter: the points' mean is taken off first.
LUMO25D_API Vector2 estimateNNV(const std::vector<Point2*>& vP);

} // namespace ORBI_LUMO25D

#endif
