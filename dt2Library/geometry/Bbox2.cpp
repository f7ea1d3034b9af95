#include "Bbox2.h"

#include "geometry/OrbiTest.h"
#include "geometry/midCoordinate.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double MAX_DOUBLE = std::numeric_limits<double>::max();

/// The nearest finite double; NaN stays NaN.
double clampToFinite(double value)
{
    return std::clamp(value, -MAX_DOUBLE, MAX_DOUBLE);
}

/// Half of hi - lo, finite even where the difference overflows.
double halfRange(double lo, double hi)
{
    const double range = hi - lo;
    return std::isfinite(range) ? 0.5 * range : 0.5 * hi - 0.5 * lo;
}

/// Moves both ends outwards by d; a negative d that would turn them round leaves them at the centre.
void widen(double& lo, double& hi, double d)
{
    const double center = midCoordinate(lo, hi);
    lo = clampToFinite(lo - d);
    hi = clampToFinite(hi + d);
    if (lo > hi) lo = hi = center;
}

void inflateRange(double& lo, double& hi, double d)
{
    hi = clampToFinite(hi + d);
    if (hi > lo) return;
    hi = std::nextafter(lo, MAX_DOUBLE);
    if (hi == lo) lo = std::nextafter(lo, -MAX_DOUBLE); // hi is the largest double there is
}

} // namespace

void Bbox2::treatPointForInvalidBox(const Point2& p)
{
    // Single bounds may have been set before: those stay.
    if (minX == MAX_DOUBLE) minX = p.x();
    if (minY == MAX_DOUBLE) minY = p.y();
    if (maxX == -MAX_DOUBLE) maxX = p.x();
    if (maxY == -MAX_DOUBLE) maxY = p.y();
    bValid = true;
}

bool Bbox2::add(std::size_t n, const double* coords)
{
    bool bChanged = false;
    for (std::size_t i = 0; i < n; ++i) {
        if (add(Point2(coords[3 * i], coords[3 * i + 1], coords[3 * i + 2]))) bChanged = true;
    }
    return bChanged;
}

Point2 Bbox2::computeCenter() const
{
    if (!bValid) msgWarning("Bbox2::computeCenter()", "Bbox2 is invalid");
    return Point2(midCoordinate(minX, maxX), midCoordinate(minY, maxY), 0.0);
}

bool Bbox2::doIntersect(const Bbox2& other) const
{
    if (!bValid || !other.bValid) {
        msgWarning("Bbox2::doIntersect()", "bbox invalid");
        return false;
    }
    return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
}

Bbox2 Bbox2::operator+(const Bbox2& other)
{
    if (!other.bValid) {
        msgWarning("Box2::operator+()", "trying to add an invalid Bbox2");
    } else if (!bValid) {
        minX = other.minX;
        minY = other.minY;
        maxX = other.maxX;
        maxY = other.maxY;
        bValid = true;
    } else {
        minX = std::min(minX, other.minX);
        minY = std::min(minY, other.minY);
        maxX = std::max(maxX, other.maxX);
        maxY = std::max(maxY, other.maxY);
    }
    return *this;
}

void Bbox2::getCorners(std::vector<Point2>& vCorners) const
{
    getOffsetCorners(0.0, vCorners);
}

void Bbox2::getOffsetCorners(double d, std::vector<Point2>& vCorners) const
{
    if (!bValid) {
        msgWarning("Bbox2::getOffsetCorners()", "bbox invalid");
        return;
    }
    const double x0 = clampToFinite(minX - d);
    const double y0 = clampToFinite(minY - d);
    const double x1 = clampToFinite(maxX + d);
    const double y1 = clampToFinite(maxY + d);
    vCorners.emplace_back(x0, y0, 0.0);
    vCorners.emplace_back(x1, y0, 0.0);
    vCorners.emplace_back(x1, y1, 0.0);
    vCorners.emplace_back(x0, y1, 0.0);
}

void Bbox2::inflateIfDegenerate(double d)
{
    if (!bValid) return;
    if (minX == maxX) inflateRange(minX, maxX, d);
    if (minY == maxY) inflateRange(minY, maxY, d);
}

void Bbox2::doubleTheBox()
{
    if (!bValid) return;
    widen(minX, maxX, halfRange(minX, maxX));
    widen(minY, maxY, halfRange(minY, maxY));
    // The maxima count with their sign here.
    if (pOrbiTest != nullptr) {
        pOrbiTest->setStaticBound_MT(std::max({std::fabs(minX), maxX, std::fabs(minY), maxY}));
    }
}

void Bbox2::enlargeRanges(double factor)
{
    if (!bValid) return;
    if (!(factor >= 0.0) || factor > MAX_DOUBLE) {
        msgWarning("Bbox2::enlargeRanges()", "the factor must be a finite number and not negative");
        return;
    }
    // Moving the bounds, not scaling about a rounded centre: a factor of 1 or more can't lose a point.
    widen(minX, maxX, halfRange(minX, maxX) * (factor - 1.0));
    widen(minY, maxY, halfRange(minY, maxY) * (factor - 1.0));
    if (pOrbiTest != nullptr) {
        pOrbiTest->setStaticBound_MT(std::max({std::fabs(minX), std::fabs(maxX), std::fabs(minY), std::fabs(maxY)}));
    }
}

} // namespace ORBI_LUMO25D
