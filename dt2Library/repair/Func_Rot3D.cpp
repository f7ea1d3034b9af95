// Rotation: O. Rodrigues's formula for an axis and an angle. Plane fit: linear least squares over the covariance of the
// points, solved for the axis whose 2 by 2 determinant is largest.

#include "Func_Rot3D.h"

#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ORBI_LUMO25D
{

Func_Rot3D::Func_Rot3D(const Vector2& nnv, bool bSilent)
{
    LUMO_CHECK(!nnv.isDegenerate(), "!(nnv.x()==0 && nnv.y()==0 && nnv.z()==0)");
    const double len = nnv.length();
    if (!(len >= 0.99 && len <= 1.01)) {
        msgWarning("Func_Rot3D", "expects a normalized vector, invalid!");
        return;
    }
    if (nnv.z() > 0.999) {
        if (!bSilent) msgWarning("Func_Rot3D", "Rotation for (almost) vertical nnv skipped");
        return;
    }
    bIdentity = false;
    if (std::fabs(nnv.x()) < 0.001 && std::fabs(nnv.y()) < 0.001 && nnv.z() < -0.99) {
        aM[0][0] = aM[2][2] = -1.0; // half a turn about the y axis: there is no unique axis to turn about
        return;
    }
    const Vector2 axis = normalize(crossProduct(nnv, Vector2(0.0, 0.0, 1.0)));
    const double c = std::clamp(nnv.z(), -1.0, 1.0);
    const double s = std::sin(std::acos(c));
    const double x = axis.x(), y = axis.y(); // the axis is horizontal
    const double aRows[3][3] = {{c + x * x * (1.0 - c), x * y * (1.0 - c), y * s},
                                {x * y * (1.0 - c), c + y * y * (1.0 - c), -x * s},
                                {-y * s, x * s, c}};
    std::copy(&aRows[0][0], &aRows[0][0] + 9, &aM[0][0]);
}

Point2 Func_Rot3D::operator()(const Point2& p) const
{
    if (bIdentity) return Point2(p.x(), p.y(), p.z());
    return Point2(aM[0][0] * p.x() + aM[0][1] * p.y() + aM[0][2] * p.z(),
                  aM[1][0] * p.x() + aM[1][1] * p.y() + aM[1][2] * p.z(),
                  aM[2][0] * p.x() + aM[2][1] * p.y() + aM[2][2] * p.z());
}

Vector2 estimateNNV(const std::vector<Point2*>& vP)
{
    const std::size_t n = vP.size();
    LUMO_CHECK(n >= 3, "n>=3");
    // Relative to the first point: a sum of survey coordinates would lose the digits that tell them apart.
    Vector2 mean;
    for (const Point2* p : vP) mean = mean + (*p - *vP[0]) / static_cast<double>(n);

    double xx = 0.0, xy = 0.0, xz = 0.0, yy = 0.0, yz = 0.0, zz = 0.0;
    for (const Point2* p : vP) {
        const Vector2 dev = (*p - *vP[0]) - mean;
        xx += dev.x() * dev.x();
        xy += dev.x() * dev.y();
        xz += dev.x() * dev.z();
        yy += dev.y() * dev.y();
        yz += dev.y() * dev.z();
        zz += dev.z() * dev.z();
    }
    const double detX = yy * zz - yz * yz;
    const double detY = xx * zz - xz * xz;
    const double detZ = xx * yy - xy * xy;
    const double spread = xx + yy + zz;
    constexpr double LINE = 1e-24; // squares of deviations across a line that are no more than rounding
    if (!(std::max({detX, detY, detZ}) > LINE * spread * spread)) {
        msgWarning("estimateNNV()", "the points are on one line");
        return Vector2();
    }
    if (detX >= detY && detX >= detZ)
        return normalize(Vector2(1.0, (xz * yz - xy * zz) / detX, (xy * yz - xz * yy) / detX));
    if (detY >= detZ) return normalize(Vector2((yz * xz - xy * zz) / detY, 1.0, (xy * xz - yz * xx) / detY));
    LUMO_CHECK(detZ >= detX && detZ >= detY, "detZ>=detX && detZ>=detY");
    return normalize(Vector2((yz * xy - xz * yy) / detZ, (xz * xy - yz * xx) / detZ, 1.0));
}

} // namespace ORBI_LUMO25D
