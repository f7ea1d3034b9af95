#include "cloud/CloudPrepareImpl.h"

#include "cloud/GridLengthSearch.h"
#include "cloud/RangeSimplifier.h"
#include "cloud/cloudHull.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORBI_LUMO25D
{

// ---- points and bounds ----------------------------------------------------------------------------------------------

bool CloudPrepareImpl::add(double x, double y, double z, std::int32_t customIndex)
{
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z)) return false;
    points.push_back({x, y, z, customIndex});
    return true;
}

void CloudPrepareImpl::clear()
{
    takePoints();
}

PointBlocks CloudPrepareImpl::takePoints()
{
    bounds = CloudBounds();
    numPointsInBounds = 0;
    return std::exchange(points, PointBlocks());
}

const CloudBounds& CloudPrepareImpl::updateBounds()
{
    if (numPointsInBounds == 0) bounds = CloudBounds();
    for (; numPointsInBounds < points.size(); ++numPointsInBounds) {
        const Coords& c = points[numPointsInBounds];
        bounds.add(c.x, c.y, c.z);
    }
    return bounds;
}

// ---- the hull -------------------------------------------------------------------------------------------------------

bool CloudPrepareImpl::computeConvexHull(bool bAllPoints, std::vector<Point2>& vConvexHull) const
{
    if (points.empty()) {
        msgWarning("CloudPrepare::computeConvexHull()", "No area");
        return false;
    }
    const RoundToNearest rounding;
    const CloudHull hull = findHull(points, bAllPoints);
    if (!hull.bHasArea) return false;
    for (const std::size_t i : hull.vPositions) {
        const Coords& c = points[i];
        vConvexHull.emplace_back(c.x, c.y, c.z);
        vConvexHull.back().setCustomIndex(c.customIndex);
    }
    return true;
}

KeptHull CloudPrepareImpl::findKeptHull(ConvexHullStrategy strategy, const Calc& calc) const
{
    KeptHull kept;
    if (strategy == CHS_NOHULL) return kept;
    LUMO_CHECK(strategy == CHS_MAXHULL || strategy == CHS_MINHULL, "false");
    const CloudHull hull = findHull(points, strategy == CHS_MAXHULL);
    for (const std::size_t i : hull.vPositions) kept.vEntries.push_back({calc.code(points[i].x, points[i].y), i});
    sortEntries(kept.vEntries);
    kept.isOutside = outsideOf(points, hull);
    return kept;
}

// ---- simplification -------------------------------------------------------------------------------------------------

/// visitRanges(entries, simplifier) hands the ranges of the sorted entries to the simplifier.
template <class VisitRanges>
std::size_t CloudPrepareImpl::simplify(const Calc& calc, SumStrategy sum, ConvexHullStrategy hull, bool bDryRun,
                                       const VisitRanges& visitRanges)
{
    const KeptHull keptHull = findKeptHull(hull, calc);
    const std::vector<CellEntry> vEntries = sortByCell(points, calc);
    PointBlocks result;
    RangeSimplifier simplifier(points, vEntries, sum, keptHull, bDryRun ? nullptr : &result);
    visitRanges(vEntries, simplifier);
    if (!bDryRun) {
        points = std::move(result);
        numPointsInBounds = 0;
    }
    return simplifier.numResults();
}

namespace
{

/// The first entry behind pFirst in another cell, by the bits of the mask.
const CellEntry* endOfCell(const CellEntry* pFirst, const CellEntry* pLast, CCD mask)
{
    const CCD code = pFirst->ccd & mask;
    do {
        ++pFirst;
    } while (pFirst != pLast && (pFirst->ccd & mask) == code);
    return pFirst;
}

} // namespace

std::size_t CloudPrepareImpl::uniformSimplifyGrid(double gridLength, SumStrategy sum, ConvexHullStrategy hull,
                                                  bool bDryRun)
{
    if (!(gridLength > 0.0)) {
        msgWarning("CloudPrepare::uniformSimplifyGrid()", "parameter gridLength<=0, returning");
        return 0;
    }
    if (std::isinf(gridLength)) {
        msgWarning("CloudPrepare::uniformSimplifyGrid()", "parameter gridLength is infinite, returning");
        return 0;
    }
    const RoundToNearest rounding;
    return simplify(createCalc(updateBounds(), gridLength), sum, hull, bDryRun,
                    [](const std::vector<CellEntry>& vEntries, RangeSimplifier& simplifier) {
                        const CellEntry* const pLast = vEntries.data() + vEntries.size();
                        for (const CellEntry* p = vEntries.data(); p != pLast;) {
                            const CellEntry* const pEnd = endOfCell(p, pLast, getFilterCCD(0));
                            simplifier.simplifyRange(p, pEnd);
                            p = pEnd;
                        }
                    });
}

std::size_t CloudPrepareImpl::uniformSimplifyNum(std::ptrdiff_t numPoints, SumStrategy sum, ConvexHullStrategy hull)
{
    double gridLen = -1.0; // refused below
    if (numPoints >= 1 && static_cast<std::size_t>(numPoints) < points.size()) {
        const RoundToNearest rounding;
        gridLen = GridLengthSearch(points, updateBounds()).searchGridLen(static_cast<std::size_t>(numPoints));
    }
    return uniformSimplifyGrid(gridLen, sum, hull, false);
}

namespace
{

/// A stretch of the sorted entries that lies in one cell of that level.
struct CubeRange
{
    int level;
    const CellEntry* first;
    const CellEntry* last; ///< one behind
};

/// Divides cells as long as their heights differ too much.
class AdaptiveDivision
{
public:
    AdaptiveDivision(const PointBlocks& points_, double maxDiffZ_, RangeSimplifier& simplifier_)
        : points(points_), maxDiffZ(maxDiffZ_), simplifier(simplifier_)
    {
    }

    void treatRange(const CubeRange& range)
    {
        if (range.level == 0 || !hasBigDiff(range)) {
            simplifier.simplifyRange(range.first, range.last);
            return;
        }
        const int level = range.level - 1;
        for (const CellEntry* p = range.first; p != range.last;) {
            const CellEntry* const pEnd = endOfCell(p, range.last, getFilterCCD(2 * level));
            treatRange({getCommonLevel(level, *p, *(pEnd - 1)), p, pEnd});
            p = pEnd;
        }
    }

private:
    bool hasBigDiff(const CubeRange& range) const
    {
        double minZ = points[range.first->position].z;
        double maxZ = minZ;
        for (const CellEntry* p = range.first + 1; p < range.last; ++p) {
            const double z = points[p->position].z;
            minZ = std::min(minZ, z);
            maxZ = std::max(maxZ, z);
            if (maxZ - minZ > maxDiffZ) return true;
        }
        return false;
    }

    /// The lowest level, from the given one down, at which both are still in one cell: levels at which nothing is divided
    /// are passed over.
    static int getCommonLevel(int level, const CellEntry& first, const CellEntry& last)
    {
        while (level > 0 && ((first.ccd ^ last.ccd) & getFilterCCD(2 * (level - 1))) == 0) --level;
        return level;
    }

    const PointBlocks& points;
    double maxDiffZ;
    RangeSimplifier& simplifier;
};

} // namespace

std::size_t CloudPrepareImpl::adaptiveSimplify(double maxDiffZ, SumStrategy sum, ConvexHullStrategy hull, bool bDryRun)
{
    if (std::isnan(maxDiffZ)) {
        msgWarning("CloudPrepare::adaptiveSimplify()", "parameter maxDiffZ is not a number, returning");
        return 0;
    }
    const RoundToNearest rounding;
    return simplify(createMaxCalc(updateBounds()), sum, hull, bDryRun,
                    [&](const std::vector<CellEntry>& vEntries, RangeSimplifier& simplifier) {
                        AdaptiveDivision(points, maxDiffZ, simplifier)
                            .treatRange({MAXLEVELS - 1, vEntries.data(), vEntries.data() + vEntries.size()});
                    });
}

} // namespace ORBI_LUMO25D
