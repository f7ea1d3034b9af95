#include "Bbox2.h"
#include "freeFunctions.h"
#include "geometry/RandomPolygon.h"
#include "geometry/SplitMix64.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double PI = 3.14159265358979323846;
constexpr double EPSILON = std::numeric_limits<double>::epsilon();

struct Range2
{
    double minX = 0.0;
    double minY = 0.0;
    double maxX = 0.0;
    double maxY = 0.0;

    explicit Range2(const Bbox2& box) { box.getBounds(minX, minY, maxX, maxY); }

    bool isUsable() const
    {
        return std::isfinite(minX) && std::isfinite(minY) && std::isfinite(maxX) && std::isfinite(maxY) &&
               minX < maxX && minY < maxY;
    }
};

bool warnUnless(bool bGood, const char* function, const char* text)
{
    if (!bGood) msgWarning(function, text);
    return bGood;
}

/// The ends must be at most maxLen apart also after the rounding of this formula.
bool isWithin(const Point2& p, const Point2& q, double maxLen)
{
    const double dx = (q.x() - p.x()) / maxLen;
    const double dy = (q.y() - p.y()) / maxLen;
    return dx * dx + dy * dy <= 1.0 - 4.0 * EPSILON;
}

/// A random segment by rejection: at least one target in about 1.3 is near enough, unless the doubles are too coarse.
bool randomSegment(const Range2& range, double maxLen, SplitMix64& random, Segment2& segment)
{
    constexpr int MAX_ATTEMPTS = 1000;
    const double x = random.between(range.minX, range.maxX);
    const double y = random.between(range.minY, range.maxY);
    segment.src = Point2(x, y, 0.0);
    const double x0 = std::max(range.minX, x - maxLen);
    const double x1 = std::min(range.maxX, x + maxLen);
    const double y0 = std::max(range.minY, y - maxLen);
    const double y1 = std::min(range.maxY, y + maxLen);
    for (int i = 0; i < MAX_ATTEMPTS; ++i) {
        const double targetX = random.between(x0, x1);
        const double targetY = random.between(y0, y1);
        segment.trg = Point2(targetX, targetY, 0.0);
        if (segment.trg != segment.src && isWithin(segment.src, segment.trg, maxLen)) return true;
    }
    return false;
}

/// The i-th of num points on a circle. By quadrants, so that the axes are met exactly.
Point2 pointOnCircle(std::size_t i, std::size_t num, const Point2& center, double radius)
{
    const std::size_t quadrant = 4 * i / num;
    const std::size_t rest = 4 * i - quadrant * num;
    const double angle = 0.5 * PI * (static_cast<double>(rest) / static_cast<double>(num));
    double dx = radius * std::cos(angle);
    double dy = radius * std::sin(angle);
    for (std::size_t turn = 0; turn < quadrant; ++turn) {
        const double oldX = dx;
        dx = -dy;
        dy = oldX;
    }
    return Point2(center.x() + dx, center.y() + dy, center.z());
}

/// True when num points on this circle keep well apart after rounding, and are finite.
bool canHoldCircle(std::size_t num, const Point2& center, double radius)
{
    const double reach = center.getMaxAbs() + radius;
    const bool bFinite = std::isfinite(reach) && std::isfinite(center.y()) && std::isfinite(center.z());
    if (!(radius > 0.0) || !bFinite) return false;
    if (num < 2) return true;
    const double chord = 2.0 * radius * std::sin(PI / static_cast<double>(num));
    return chord > std::max(8.0 * EPSILON * reach, 16.0 * std::numeric_limits<double>::denorm_min());
}

} // namespace

void generateRandomPoints(std::size_t num, const Bbox2& box, std::uint64_t seed, std::vector<Point2>& vPoints)
{
    const Range2 range(box);
    if (!warnUnless(range.isUsable(), "generateRandomPoints()", "the box must be finite and have an area")) return;
    SplitMix64 random(seed);
    vPoints.reserve(vPoints.size() + num);
    for (std::size_t i = 0; i < num; ++i) {
        const double x = random.between(range.minX, range.maxX);
        const double y = random.between(range.minY, range.maxY);
        vPoints.emplace_back(x, y, 0.0);
    }
}

void generateRandomPoints3D(std::size_t num, const Bbox2& box, double minZ, double maxZ, std::uint64_t seed,
                            std::vector<Point2>& vPoints)
{
    constexpr const char* FUNCTION = "generateRandomPoints3D()";
    const Range2 range(box);
    if (!warnUnless(range.isUsable(), FUNCTION, "the box must be finite and have an area")) return;
    const bool bGoodZ = std::isfinite(minZ) && std::isfinite(maxZ) && minZ <= maxZ;
    if (!warnUnless(bGoodZ, FUNCTION, "the heights must be finite, minZ not above maxZ")) return;
    SplitMix64 random(seed);
    vPoints.reserve(vPoints.size() + num);
    for (std::size_t i = 0; i < num; ++i) {
        const double x = random.between(range.minX, range.maxX);
        const double y = random.between(range.minY, range.maxY);
        vPoints.emplace_back(x, y, random.between(minZ, maxZ));
    }
}

void generateRandomSegments(std::size_t num, const Bbox2& box, double maxLen, std::uint64_t seed,
                            std::vector<Segment2>& vSegments)
{
    constexpr const char* FUNCTION = "generateRandomSegments()";
    const Range2 range(box);
    if (!warnUnless(range.isUsable(), FUNCTION, "the box must be finite and have an area")) return;
    const bool bGoodLength = std::isfinite(maxLen) && maxLen > 0.0;
    if (!warnUnless(bGoodLength, FUNCTION, "the length must be finite and positive")) return;
    SplitMix64 random(seed);
    const std::size_t oldSize = vSegments.size();
    vSegments.reserve(oldSize + num);
    for (std::size_t i = 0; i < num; ++i) {
        Segment2 segment;
        if (!warnUnless(randomSegment(range, maxLen, random, segment), FUNCTION,
                        "the length or the box is too small for the spacing of doubles there")) {
            vSegments.resize(oldSize);
            return;
        }
        vSegments.push_back(segment);
    }
}

void generateRandomPolygon(std::size_t num, const Bbox2& box, std::uint64_t seed, std::vector<Segment2>& vSegments)
{
    constexpr const char* FUNCTION = "generateRandomPolygon()";
    const Range2 range(box);
    if (!warnUnless(range.isUsable(), FUNCTION, "the box must be finite and have an area")) return;
    if (!warnUnless(num >= 3, FUNCTION, "a polygon has 3 edges or more")) return;
    RandomPolygon polygon(num, range.minX, range.minY, range.maxX, range.maxY, seed);
    if (!warnUnless(polygon.run(), FUNCTION, "the box is too small for the spacing of doubles there")) return;
    const std::vector<Point2>& vCorners = polygon.vCorners;
    vSegments.reserve(vSegments.size() + num);
    for (std::size_t i = 0; i < num; ++i) {
        vSegments.emplace_back(vCorners[i], vCorners[i + 1 == num ? 0 : i + 1]);
    }
}

void generateCircle(std::size_t num, const Point2& center, double radius, std::vector<Point2>& vPoints)
{
    if (!warnUnless(canHoldCircle(num, center, radius), "generateCircle()",
                    "the circle must be finite and large enough for that many points")) {
        return;
    }
    vPoints.reserve(vPoints.size() + num);
    for (std::size_t i = 0; i < num; ++i) vPoints.push_back(pointOnCircle(i, num, center, radius));
}

void generateCircle(std::size_t num, const Point2& center, double radius, std::vector<Segment2>& vSegments)
{
    if (!warnUnless(num >= 3, "generateCircle()", "a polygon has 3 edges or more")) return;
    std::vector<Point2> vPoints;
    generateCircle(num, center, radius, vPoints);
    vSegments.reserve(vSegments.size() + vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        vSegments.emplace_back(vPoints[i], vPoints[i + 1 == num ? 0 : i + 1]);
    }
}

void generateSineSegments(std::size_t num, const Point2& start, double length, double amplitude, double periods,
                          std::vector<Segment2>& vSegments)
{
    const double n = static_cast<double>(num);
    const double endX = start.x() + length;
    const double maxAbsX = std::max(std::fabs(start.x()), std::fabs(endX));
    const bool bFinite = std::isfinite(endX) && std::isfinite(std::fabs(start.y()) + std::fabs(amplitude)) &&
                         std::isfinite(start.z()) && std::isfinite(periods);
    const bool bFine = length > std::max(4.0 * EPSILON * maxAbsX, 8.0 * std::numeric_limits<double>::denorm_min()) * n;
    if (!warnUnless(bFinite && length > 0.0 && bFine, "generateSineSegments()",
                    "the curve must be finite and long enough for that many segments")) {
        return;
    }
    vSegments.reserve(vSegments.size() + num);
    Point2 last = start;
    for (std::size_t i = 1; i <= num; ++i) {
        const double t = static_cast<double>(i) / n;
        const double turns = periods * t;
        const double phase = 2.0 * PI * (turns - std::floor(turns));
        const Point2 next(start.x() + t * length, start.y() + amplitude * std::sin(phase), start.z());
        vSegments.emplace_back(last, next);
        last = next;
    }
}

namespace
{

double shearedX(const Point2& p, double factor)
{
    return p.x() + factor * p.y();
}

} // namespace

void shear(std::vector<Point2>& vPoints, double factor)
{
    const bool bGood = std::all_of(vPoints.begin(), vPoints.end(),
                                   [factor](const Point2& p) { return std::isfinite(shearedX(p, factor)); });
    if (!warnUnless(bGood, "shear()", "the result would not be finite")) return;
    for (Point2& p : vPoints) p.setCoords(shearedX(p, factor), p.y(), p.z());
}

void shear(std::vector<Segment2>& vSegments, double factor)
{
    const bool bGood = std::all_of(vSegments.begin(), vSegments.end(), [factor](const Segment2& segment) {
        return std::isfinite(shearedX(segment.src, factor)) && std::isfinite(shearedX(segment.trg, factor));
    });
    if (!warnUnless(bGood, "shear()", "the result would not be finite")) return;
    for (Segment2& segment : vSegments) {
        segment.src.setCoords(shearedX(segment.src, factor), segment.src.y(), segment.src.z());
        segment.trg.setCoords(shearedX(segment.trg, factor), segment.trg.y(), segment.trg.z());
    }
}

} // namespace ORBI_LUMO25D
