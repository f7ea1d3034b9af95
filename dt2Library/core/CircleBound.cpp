#include "core/CircleBound.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

namespace
{

/// Above every sum of the relative errors of one term: at most ten operations of 2^-53 each, with room to spare.
constexpr double termError = 4e-15;
/// Below this, products may have lost bits to underflow.
constexpr double safeSize = 1e-250;
constexpr double largestErrorOfRadius = 0.01;
constexpr double enlargement = 1.05;

} // namespace

CircleBound::CircleBound(const Triangle2& t)
{
    const double x0 = t.corner(0)->x(), y0 = t.corner(0)->y();
    const double bx = t.corner(1)->x() - x0, by = t.corner(1)->y() - y0;
    const double cdx = t.corner(2)->x() - x0, cdy = t.corner(2)->y() - y0;
    const double bLift = bx * bx + by * by;
    const double cLift = cdx * cdx + cdy * cdy;
    const double denominator = 2.0 * (bx * cdy - by * cdx);
    const double ux = (cdy * bLift - by * cLift) / denominator;
    const double uy = (bx * cLift - cdx * bLift) / denominator;
    const double r = std::hypot(ux, uy);

    const double size = std::fabs(denominator);
    const double numeratorTerms = (std::fabs(cdx) + std::fabs(cdy)) * bLift + (std::fabs(bx) + std::fabs(by)) * cLift;
    const double denominatorTerms = 2.0 * (std::fabs(bx * cdy) + std::fabs(by * cdx));
    const double offset = std::max(std::fabs(x0), std::fabs(y0));
    const double error =
        termError * ((numeratorTerms + (std::fabs(ux) + std::fabs(uy)) * denominatorTerms) / size + offset + r);

    cx = x0 + ux;
    cy = y0 + uy;
    radius = enlargement * r;
    // Written so that anything that is no number is not trusted.
    bTrusted = std::min(bLift, cLift) > safeSize && size > safeSize && error <= largestErrorOfRadius * r &&
               std::isfinite(cx) && std::isfinite(cy) && std::isfinite(radius);
}

bool CircleBound::meets(const Bbox2& box) const
{
    const double dx = std::max({box.get_minX() - cx, cx - box.get_maxX(), 0.0});
    const double dy = std::max({box.get_minY() - cy, cy - box.get_maxY(), 0.0});
    return dx * dx + dy * dy <= radius * radius;
}

void CircleBound::addTo(Bbox2& box) const
{
    box.add(Point2(cx - radius, cy - radius, 0.0));
    box.add(Point2(cx + radius, cy + radius, 0.0));
}

} // namespace ORBI_LUMO25D
