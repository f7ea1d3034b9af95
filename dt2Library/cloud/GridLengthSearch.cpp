#include "cloud/GridLengthSearch.h"

#include "core/PointBlocks.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

std::size_t difference(std::size_t a, std::size_t b)
{
    return a < b ? b - a : a - b;
}

/// The level at which two cells are divided: the highest at which their codes have different bits.
int dividingLevel(CCD a, CCD b)
{
    int level = -1;
    for (CCD bits = a ^ b; bits != 0; bits >>= 2) ++level;
    return level;
}

std::size_t numDifferent(const std::vector<CCD>& vSorted, int shift)
{
    std::size_t num = 1;
    for (std::size_t i = 1; i < vSorted.size(); ++i) {
        if (vSorted[i - 1] >> shift != vSorted[i] >> shift) ++num;
    }
    return num;
}

std::vector<CCD> sortedCodes(const PointBlocks& points, const Calc& calc)
{
    std::vector<CCD> vCodes(points.size());
    for (std::size_t i = 0; i < vCodes.size(); ++i) vCodes[i] = calc.code(points[i].x, points[i].y);
    std::sort(vCodes.begin(), vCodes.end());
    return vCodes;
}

/// A level just above that at which most neighbours are divided: there, cells with points fill the cloud's area.
int fillingLevel(const std::vector<CCD>& vSorted)
{
    double sum = 0.0, count = 0.0;
    for (std::size_t i = 1; i < vSorted.size(); ++i) {
        const int level = dividingLevel(vSorted[i - 1], vSorted[i]);
        if (level <= 1) continue;
        sum += level;
        count += 1.0;
    }
    // All in next to one cell: any level tells the same.
    const int level = count > 0.0 ? static_cast<int>(sum / count + 0.5) + 2 : 2;
    return std::min(level, MAXLEVELS - 1);
}

} // namespace

GridLengthSearch::GridLengthSearch(const PointBlocks& points_, const CloudBounds& bounds_)
    : points(points_), bounds(bounds_)
{
}

double GridLengthSearch::theoreticGridLen(std::size_t numDesiredPoints) const
{
    const double rangeX = bounds.rangeX(), rangeY = bounds.rangeY();
    if (numDesiredPoints == 0) {
        msgWarning("CloudPrepareImpl::theoreticGridLen()",
                   "theoreticGridLen() has been called with numDesiredPoints=0");
        return 2.0 * std::max(rangeX, rangeY);
    }
    const auto numDesired = static_cast<double>(numDesiredPoints);
    const Calc calc = createMaxCalc(bounds);
    const std::vector<CCD> vCodes = sortedCodes(points, calc);
    const int level = fillingLevel(vCodes);
    const auto numOccupied = static_cast<double>(numDifferent(vCodes, 2 * level));
    const double len = std::pow(2.0, level) * calc.cellLength();
    const double area = len * len;
    // Half of the border cells counts as empty. A cloud that is hardly more than a line is all border.
    const double inner = numOccupied * area - (2.0 * rangeX / len + 2.0 * rangeY / len) * area / 2.0;
    const double estimated = inner > 0.0 ? inner : numOccupied * area;
    const double a = estimated / numDesired;
    const double l = std::sqrt(a);
    const double withBorder = estimated + (2.0 * rangeX / l + 2.0 * rangeY / l) * a / 2.0;
    return std::sqrt(withBorder / numDesired);
}

std::size_t GridLengthSearch::countCells(double gridLen) const
{
    const Calc calc = createCalc(bounds, gridLen);
    const std::uint64_t firstX = calc.cellX(bounds.minX), firstY = calc.cellY(bounds.minY);
    const std::uint64_t numX = calc.cellX(bounds.maxX) - firstX + 1, numY = calc.cellY(bounds.maxY) - firstY + 1;
    // A bit for each cell, if that takes no more memory than codes do.
    if (static_cast<double>(numX) * static_cast<double>(numY) > 64.0 * static_cast<double>(points.size())) {
        return numDifferent(sortedCodes(points, calc), 0);
    }
    std::vector<bool> vOccupied(numX * numY, false);
    std::size_t count = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        auto bit = vOccupied[(calc.cellX(points[i].x) - firstX) * numY + (calc.cellY(points[i].y) - firstY)];
        if (!bit) ++count;
        bit = true;
    }
    return count;
}

std::size_t GridLengthSearch::testNumPointsForGridLen(double gridLen)
{
    if (gridLen == 0.0) {
        msgWarning("CloudPrepareImpl::testNumPointsForGridLen()", "parameter gridLen==0");
        return points.size();
    }
    const std::size_t count = countCells(gridLen);
    vResults.emplace_back(count, gridLen);
    return count;
}

double GridLengthSearch::searchGridLen(std::size_t numPoints)
{
    if (bounds.isPoint()) return 1.0; // one point whatever the length
    double gridLen = theoreticGridLen(numPoints);
    // An area that is no double, or too fine for any grid.
    const double range = std::max(bounds.rangeX(), bounds.rangeY());
    if (!std::isfinite(gridLen)) gridLen = std::min(range, 1e300);
    while (!isGridPossible(bounds, gridLen)) gridLen = gridLen > 0.0 ? 2.0 * gridLen : range * 0x1p-31;

    vResults.clear();
    const std::size_t count = testNumPointsForGridLen(gridLen);
    if (count == numPoints) return gridLen;
    double lower = gridLen, upper = gridLen;
    bracket(numPoints, gridLen, count, lower, upper);
    bisect(numPoints, lower, upper);

    std::sort(vResults.begin(), vResults.end());
    return std::min_element(vResults.begin(), vResults.end(),
                            [numPoints](const Test& a, const Test& b) {
                                return difference(a.first, numPoints) < difference(b.first, numPoints);
                            })
        ->second;
}

/// Finds two lengths between which the wanted one lies, unless it is out of reach.
void GridLengthSearch::bracket(std::size_t numPoints, double gridLen, std::size_t count, double& lower, double& upper)
{
    if (count > numPoints) {
        upper = 2.0 * gridLen;
        while (testNumPointsForGridLen(upper) > numPoints && 1025.0 * gridLen > upper) {
            lower = upper;
            upper *= 2.0;
        }
        return;
    }
    const auto halve = [this, &lower] {
        if (!isGridPossible(bounds, 0.5 * lower)) return false;
        lower *= 0.5;
        return true;
    };
    if (!halve()) return;
    while (testNumPointsForGridLen(lower) < numPoints && lower > gridLen / 10000.0) {
        upper = lower;
        if (!halve()) return;
        std::ostringstream text;
        text << "***lb=" << lower;
        printLine(text.str());
    }
}

void GridLengthSearch::bisect(std::size_t numPoints, double lower, double upper)
{
    constexpr int maxSteps = 30;
    for (int step = 1; step <= maxSteps; ++step) {
        const double mid = (lower + upper) / 2.0;
        const std::size_t count = testNumPointsForGridLen(mid);
        const std::size_t err = difference(count, numPoints);
        if (err == 0 || (step > 5 && err < numPoints / 100000) || (step > 10 && err < numPoints / 10000)) return;
        (numPoints > count ? upper : lower) = mid;
    }
}

} // namespace ORBI_LUMO25D
