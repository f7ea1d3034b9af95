// Monotone chain: A. M. Andrew, "Another efficient algorithm for convex hulls in two dimensions", Information Processing
// Letters 9, 1979. Before it, a throw-away step: what lies inside the hull of a sample can't be on the hull.

#include "cloud/cloudHull.h"

#include "core/PointBlocks.h"
#include "geometry/OrbiTest.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t minSampleSize = 4000, maxSampleSize = 20000;
constexpr std::size_t numStrips = 2048;

/// Appends the lower hull of points that come in ascending order; of the upper one, when they descend.
template <class Iterator>
void appendChain(Iterator first, Iterator last, const std::vector<Point2>& vSorted, const OrbiTest& orbiTest,
                 bool bAllPoints, std::vector<std::size_t>& vChain)
{
    const std::size_t begin = vChain.size();
    for (; first != last; ++first) {
        while (vChain.size() >= begin + 2) {
            const Orientation2 turn = orbiTest.orientationInRange(&vSorted[vChain[vChain.size() - 2]],
                                                                  &vSorted[vChain.back()], &vSorted[*first]);
            if (turn == ORIENTATION2_CCW || (bAllPoints && turn == ORIENTATION2_COLLINEAR)) break;
            vChain.pop_back();
        }
        vChain.push_back(*first);
    }
    vChain.pop_back(); // the other chain begins with it
}

} // namespace

CloudHull hullOfSorted(const std::vector<Point2>& vSorted, bool bAllPoints)
{
    CloudHull hull;
    if (vSorted.size() < 3) {
        hull.vPositions.resize(vSorted.size());
        std::iota(hull.vPositions.begin(), hull.vPositions.end(), std::size_t(0));
        return hull;
    }
    OrbiTest orbiTest;
    for (const Point2& p : vSorted) orbiTest.ensureStaticBound(&p);
    hull.bHasArea = std::any_of(vSorted.begin() + 1, vSorted.end() - 1, [&](const Point2& p) {
        return orbiTest.orientationInRange(&vSorted.front(), &p, &vSorted.back()) != ORIENTATION2_COLLINEAR;
    });
    if (!hull.bHasArea) {
        hull.vPositions = {0, vSorted.size() - 1};
        return hull;
    }
    std::vector<std::size_t> vOrder(vSorted.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t(0));
    appendChain(vOrder.begin(), vOrder.end(), vSorted, orbiTest, bAllPoints, hull.vPositions);
    appendChain(vOrder.rbegin(), vOrder.rend(), vSorted, orbiTest, bAllPoints, hull.vPositions);
    return hull;
}

namespace
{

Point2 toPoint(const Coords& c)
{
    return Point2(c.x, c.y, c.z);
}

/// Positions by place, then by position; of points at one place only the first stays.
void sortByPlace(const PointBlocks& points, std::vector<std::size_t>& vPositions)
{
    std::sort(vPositions.begin(), vPositions.end(), [&points](std::size_t i, std::size_t j) {
        const Coords& a = points[i];
        const Coords& b = points[j];
        if (a.x != b.x) return a.x < b.x;
        return a.y != b.y ? a.y < b.y : i < j;
    });
    const auto isSamePlace = [&points](std::size_t i, std::size_t j) {
        return points[i].x == points[j].x && points[i].y == points[j].y;
    };
    vPositions.erase(std::unique(vPositions.begin(), vPositions.end(), isSamePlace), vPositions.end());
}

CloudHull hullOfPositions(const PointBlocks& points, std::vector<std::size_t>& vPositions, bool bAllPoints)
{
    sortByPlace(points, vPositions);
    std::vector<Point2> vSorted;
    vSorted.reserve(vPositions.size());
    for (const std::size_t i : vPositions) vSorted.push_back(toPoint(points[i]));
    CloudHull hull = hullOfSorted(vSorted, bAllPoints);
    for (std::size_t& i : hull.vPositions) i = vPositions[i];
    return hull;
}

/// What lies inside a convex polygon for certain, by vertical strips: in each the range of y that is inside over the
/// whole width of the strip and of those beside it, less what rounding may add.
class InnerStrips
{
public:
    InnerStrips(const PointBlocks& points, const std::vector<std::size_t>& vPolygon)
    {
        const auto [itMin, itMax] = std::minmax_element(
            vPolygon.begin(), vPolygon.end(), [&](std::size_t i, std::size_t j) { return points[i].x < points[j].x; });
        originX = points[*itMin].x;
        const double range = points[*itMax].x - originX;
        stripsPerX = static_cast<double>(numStrips) / range;
        const double infinite = std::numeric_limits<double>::infinity();
        vLow.assign(numStrips, -infinite);
        vHigh.assign(numStrips, infinite);
        if (!std::isfinite(range) || !std::isfinite(stripsPerX)) {
            vLow.assign(numStrips, infinite); // nothing is inside
            return;
        }
        const double width = range / static_cast<double>(numStrips);
        for (std::size_t e = 0; e < vPolygon.size(); ++e) {
            cutAlong(points[vPolygon[e]], points[vPolygon[(e + 1) % vPolygon.size()]], width);
        }
        // Beside the first and the last strip there is nothing.
        vLow.front() = vLow.back() = infinite;
    }

    bool contains(const Coords& p) const
    {
        const double strip = (p.x - originX) * stripsPerX;
        if (!(strip >= 0.0 && strip < static_cast<double>(numStrips))) return false;
        const auto s = static_cast<std::size_t>(strip);
        return p.y > vLow[s] && p.y < vHigh[s];
    }

private:
    /// An edge from left to right bounds the polygon from below, one from right to left from above.
    void cutAlong(const Coords& a, const Coords& b, double width)
    {
        const bool bLower = a.x < b.x;
        const double x0 = (bLower ? a.x : b.x) - originX, x1 = (bLower ? b.x : a.x) - originX;
        const double y0 = bLower ? a.y : b.y, y1 = bLower ? b.y : a.y;
        if (!(x0 < x1)) return;
        const double slack = 0x1p-48 * std::max(std::fabs(y0), std::fabs(y1));
        const auto first = static_cast<std::size_t>(std::max(0.0, x0 / width - 2.0));
        const auto last = static_cast<std::size_t>(std::min(static_cast<double>(numStrips - 1), x1 / width + 2.0));
        for (std::size_t s = first; s <= last; ++s) {
            const double left = (static_cast<double>(s) - 1.0) * width, right = left + 3.0 * width;
            const double t0 = std::clamp((left - x0) / (x1 - x0), 0.0, 1.0);
            const double t1 = std::clamp((right - x0) / (x1 - x0), 0.0, 1.0);
            const double ya = y0 * (1.0 - t0) + y1 * t0, yb = y0 * (1.0 - t1) + y1 * t1;
            if (bLower) {
                vLow[s] = std::max(vLow[s], std::max(ya, yb) + slack);
            } else {
                vHigh[s] = std::min(vHigh[s], std::min(ya, yb) - slack);
            }
        }
    }

    double originX = 0.0, stripsPerX = 0.0;
    std::vector<double> vLow, vHigh;
};

} // namespace

CloudHull findHull(const PointBlocks& points, bool bAllPoints)
{
    const std::size_t step = points.size() / std::clamp(points.size() / 500, minSampleSize, maxSampleSize);
    std::vector<std::size_t> vCandidates;
    if (step < 2) {
        vCandidates.resize(points.size());
        std::iota(vCandidates.begin(), vCandidates.end(), std::size_t(0));
        return hullOfPositions(points, vCandidates, bAllPoints);
    }
    std::vector<std::size_t> vSample;
    for (std::size_t i = 0; i < points.size(); i += step) vSample.push_back(i);
    const InnerStrips inner(points, hullOfPositions(points, vSample, false).vPositions);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!inner.contains(points[i])) vCandidates.push_back(i);
    }
    return hullOfPositions(points, vCandidates, bAllPoints);
}

// ---- what is outside ------------------------------------------------------------------------------------------------

namespace
{

class OutsideTest
{
public:
    OutsideTest(const PointBlocks& points, const CloudHull& hull) : inner(points, hull.vPositions)
    {
        for (const std::size_t i : hull.vPositions) {
            vLower.push_back(toPoint(points[i]));
            orbiTest.ensureStaticBound(&vLower.back());
        }
        const auto itLast = std::max_element(vLower.begin(), vLower.end());
        vUpper.assign(itLast, vLower.end());
        vUpper.push_back(vLower.front());
        std::reverse(vUpper.begin(), vUpper.end());
        vLower.erase(itLast + 1, vLower.end());
    }

    bool operator()(const Coords& c) const
    {
        return !inner.contains(c) && (side(vLower, c) == ORIENTATION2_CW || side(vUpper, c) == ORIENTATION2_CCW);
    }

private:
    /// Of the edge of an ascending chain that is above or below the place.
    Orientation2 side(const std::vector<Point2>& vChain, const Coords& c) const
    {
        if (vChain.size() < 2) return ORIENTATION2_COLLINEAR;
        const Point2 p = toPoint(c);
        const auto itEnd = std::upper_bound(vChain.begin() + 1, vChain.end() - 1, c.x,
                                            [](double x, const Point2& vertex) { return x < vertex.x(); });
        return orbiTest.orientationInRange(&*(itEnd - 1), &*itEnd, &p);
    }

    InnerStrips inner;
    std::vector<Point2> vLower, vUpper; ///< from the first point of the hull to the last one
    OrbiTest orbiTest;
};

} // namespace

std::function<bool(const Coords&)> outsideOf(const PointBlocks& points, const CloudHull& hull)
{
    const auto pTest = std::make_shared<OutsideTest>(points, hull);
    return [pTest](const Coords& c) { return (*pTest)(c); };
}

} // namespace ORBI_LUMO25D
