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

} // namespace

CircleBound::CircleBound(const Triangle2& t, double margin)
{
    const double x0 = t.corner(0)->x(), y0 = t.corner(0)->y();
    const double bx = t.corner(1)->x() - x0, by = t.corner(1)->y() - y0;
    const double cdx = t.corner(2)->x() - x0, cdy = t.corner(2)->y() - y0;
    const double bLift = bx * bx + by * by;
    const double cLift = cdx * cdx + cdy * cdy;
    const double denominator = 2.0 * (bx * cdy - by * cdx);
    const double ux = (cdy * bLift - by * cLift) / denominator;
    const double uy = (bx * cLift - cdx * bLift) / denominator;
    const double r = std::sqrt(ux * ux + uy * uy);

    const double size = std::fabs(denominator);
    const double numeratorTerms = (std::fabs(cdx) + std::fabs(cdy)) * bLift + (std::fabs(bx) + std::fabs(by)) * cLift;
    const double denominatorTerms = 2.0 * (std::fabs(bx * cdy) + std::fabs(by * cdx));
    const double offset = std::max(std::fabs(x0), std::fabs(y0));
    const double error =
        termError * ((numeratorTerms + (std::fabs(ux) + std::fabs(uy)) * denominatorTerms) / size + offset + r);

    cx = x0 + ux;
    cy = y0 + uy;
    radius = (1.0 + margin) * r + 2.0 * error;
    // Written so that anything that is no number is not trusted.
    bTrusted = std::min(bLift, cLift) > safeSize && size > safeSize && error <= largestErrorOfRadius * r &&
               std::isfinite(cx) && std::isfinite(cy) && std::isfinite(radius);
}

namespace
{

/// Distance of a coordinate from an interval, 0 within it.
double distance(double c, double min, double max)
{
    return std::max({min - c, c - max, 0.0});
}

} // namespace

bool CircleBound::meetsBorder(const Bbox2& box) const
{
    const double margin = std::min(std::min(cx - box.get_minX(), box.get_maxX() - cx),
                                   std::min(cy - box.get_minY(), box.get_maxY() - cy));
    if (margin > radius) return false; // inside
    const double dx = distance(cx, box.get_minX(), box.get_maxX());
    const double dy = distance(cy, box.get_minY(), box.get_maxY());
    return dx * dx + dy * dy <= radius * radius;
}

bool CircleBound::contains(const Point2& p) const
{
    const double dx = p.x() - cx;
    const double dy = p.y() - cy;
    return dx * dx + dy * dy <= radius * radius;
}

void CircleBound::addTo(Bbox2& box, const Bbox2& limits) const
{
    const double dx = distance(cx, limits.get_minX(), limits.get_maxX());
    const double dy = distance(cy, limits.get_minY(), limits.get_maxY());
    if (dx > radius || dy > radius) return;
    // Of a disk whose centre lies beside the limits, a segment is left. What is lost to rounding here is far less than
    // what the radius has been enlarged by.
    const double halfWidth = std::sqrt((radius - dy) * (radius + dy));
    const double halfHeight = std::sqrt((radius - dx) * (radius + dx));
    const double minX = std::max(cx - halfWidth, limits.get_minX());
    const double minY = std::max(cy - halfHeight, limits.get_minY());
    const double maxX = std::min(cx + halfWidth, limits.get_maxX());
    const double maxY = std::min(cy + halfHeight, limits.get_maxY());
    if (minX > maxX || minY > maxY) return;
    box.add(Point2(minX, minY, 0.0));
    box.add(Point2(maxX, maxY, 0.0));
}

} // namespace ORBI_LUMO25D
