#include "cloud/RangeSimplifier.h"

#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

/// A mean that is right but for its last rounding, however many numbers there are and however far they lie from zero: the
/// sum is kept in two doubles (D. E. Knuth, The Art of Computer Programming 2, 4.2.2).
class Mean
{
public:
    void add(double value)
    {
        const double newSum = sum + value;
        const double part = newSum - sum;
        rest += (sum - (newSum - part)) + (value - part);
        sum = newSum;
    }
    double over(double n) const
    {
        const double quotient = sum / n;
        if (rest == 0.0) return quotient;
        return quotient + (std::fma(-quotient, n, sum) + rest) / n;
    }

private:
    double sum = 0.0;
    double rest = 0.0;
};

/// A power of two that keeps any number of values finite in a sum.
double scaleForSums(double maxAbs)
{
    return maxAbs > 0x1p950 ? 0x1p-72 : 1.0;
}

} // namespace

RangeSimplifier::RangeSimplifier(const PointBlocks& points_, const std::vector<CellEntry>& vEntries,
                                 SumStrategy strategy_, const std::vector<bool>& hullMarks_, const CloudBounds& bounds,
                                 PointBlocks* pResult_)
    : points(points_), pEntriesEnd(vEntries.data() + vEntries.size()), strategy(strategy_), hullMarks(hullMarks_),
      pResult(pResult_)
{
    switch (strategy) {
    case SMS_MINIMUM:
    case SMS_MAXIMUM:
    case SMS_MEDIAN:
    case SMS_AVERAGE:
        break;
    default:
        LUMO_CHECK(false, "false");
    }
    scaleXY = scaleForSums(bounds.maxAbs2D());
    scaleZ = scaleForSums(std::max(std::fabs(bounds.minZ), std::fabs(bounds.maxZ)));
}

/// Entries are read one after another, points wherever they are: those to come are asked for in time.
const Coords& RangeSimplifier::pointOf(const CellEntry* p) const
{
    constexpr std::ptrdiff_t ahead = 16;
    if (pEntriesEnd - p > ahead) __builtin_prefetch(&points[p[ahead].position]);
    return points[p->position];
}

void RangeSimplifier::simplifyRange(const CellEntry* pFirst, const CellEntry* pLast)
{
    LUMO_CHECK(pFirst != pLast, "num>0");
    if (!hullMarks.empty() && keepHullPoints(pFirst, pLast)) return;
    ++count;
    if (pResult == nullptr) return;
    if (pLast - pFirst == 1) {
        pResult->push_back(pointOf(pFirst));
    } else if (strategy == SMS_AVERAGE) {
        pResult->push_back(average(pFirst, pLast));
    } else {
        pResult->push_back(getAvgXYforZ(pFirst, pLast, representativeZ(pFirst, pLast)));
    }
}

/// False when there are none.
bool RangeSimplifier::keepHullPoints(const CellEntry* pFirst, const CellEntry* pLast)
{
    bool bSeen = false;
    for (const CellEntry* p = pFirst; p != pLast; ++p) {
        if (!hullMarks[p->position]) continue;
        bSeen = true;
        ++count;
        if (pResult != nullptr) pResult->push_back(points[p->position]);
    }
    return bSeen;
}

double RangeSimplifier::representativeZ(const CellEntry* pFirst, const CellEntry* pLast)
{
    if (strategy == SMS_MEDIAN) {
        vMedianGroup.clear();
        for (const CellEntry* p = pFirst; p != pLast; ++p) vMedianGroup.push_back(pointOf(p).z);
        LUMO_CHECK(!vMedianGroup.empty(), "!vMedianGroup.empty()");
        const auto itMedian = vMedianGroup.begin() + static_cast<std::ptrdiff_t>(vMedianGroup.size() / 2);
        std::nth_element(vMedianGroup.begin(), itMedian, vMedianGroup.end());
        return *itMedian;
    }
    double z = pointOf(pFirst).z;
    for (const CellEntry* p = pFirst + 1; p != pLast; ++p) {
        const double other = pointOf(p).z;
        z = strategy == SMS_MINIMUM ? std::min(z, other) : std::max(z, other);
    }
    return z;
}

Coords RangeSimplifier::getAvgXYforZ(const CellEntry* pFirst, const CellEntry* pLast, double z) const
{
    Mean meanX, meanY;
    const Coords* pSingle = nullptr;
    std::size_t num = 0;
    for (const CellEntry* p = pFirst; p != pLast; ++p) {
        const Coords& c = points[p->position];
        if (c.z != z) continue;
        pSingle = &c;
        ++num;
        meanX.add(c.x * scaleXY);
        meanY.add(c.y * scaleXY);
    }
    LUMO_CHECK(num > 0, "num>0");
    if (num == 1) return *pSingle;
    const auto n = static_cast<double>(num);
    return {meanX.over(n) / scaleXY, meanY.over(n) / scaleXY, z, -1};
}

Coords RangeSimplifier::average(const CellEntry* pFirst, const CellEntry* pLast) const
{
    Mean meanX, meanY, meanZ;
    for (const CellEntry* p = pFirst; p != pLast; ++p) {
        const Coords& c = pointOf(p);
        meanX.add(c.x * scaleXY);
        meanY.add(c.y * scaleXY);
        meanZ.add(c.z * scaleZ);
    }
    const auto n = static_cast<double>(pLast - pFirst);
    return {meanX.over(n) / scaleXY, meanY.over(n) / scaleXY, meanZ.over(n) / scaleZ, -1};
}

} // namespace ORBI_LUMO25D
