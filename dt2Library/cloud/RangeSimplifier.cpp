#include "cloud/RangeSimplifier.h"

#include "support/check.h"

#include <algorithm>
#include <cmath>

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

/// Where a sum leaves the doubles, its numbers are made smaller by that power of two: no range has more of them. Never
/// before: small numbers would lose digits.
constexpr double smallerSums = 0x1p-72;

} // namespace

RangeSimplifier::RangeSimplifier(const PointBlocks& points_, const std::vector<CellEntry>& vEntries,
                                 SumStrategy strategy_, const KeptHull& hull, PointBlocks* pResult_)
    : points(points_), pEntriesEnd(vEntries.data() + vEntries.size()), strategy(strategy_),
      pNextOfHull(hull.vEntries.data()), pHullEnd(hull.vEntries.data() + hull.vEntries.size()),
      isOutside(hull.isOutside), pResult(pResult_)
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
    if (keepHullPoints(pLast)) return;
    ++count;
    if (pResult == nullptr) return;
    if (pLast - pFirst == 1) {
        pResult->push_back(pointOf(pFirst));
    } else if (strategy == SMS_AVERAGE) {
        pResult->push_back(mean(pFirst, pLast, nullptr, 1.0));
    } else {
        const double z = representativeZ(pFirst, pLast);
        pResult->push_back(mean(pFirst, pLast, &z, 1.0));
    }
}

/// Those up to the end of the range. False when there are none.
bool RangeSimplifier::keepHullPoints(const CellEntry* pLast)
{
    const CellEntry* const pBefore = pNextOfHull;
    for (; pNextOfHull != pHullEnd && !(*(pLast - 1) < *pNextOfHull); ++pNextOfHull) {
        ++count;
        if (pResult != nullptr) pResult->push_back(points[pNextOfHull->position]);
    }
    return pNextOfHull != pBefore;
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

/// The mean of a range; with pOnlyZ, of those of its points that have this z.
Coords RangeSimplifier::mean(const CellEntry* pFirst, const CellEntry* pLast, const double* pOnlyZ, double scale) const
{
    Mean meanX, meanY, meanZ;
    const Coords* pSingle = nullptr;
    std::size_t num = 0;
    for (const CellEntry* p = pFirst; p != pLast; ++p) {
        const Coords& c = pointOf(p);
        if (pOnlyZ != nullptr && c.z != *pOnlyZ) continue;
        pSingle = &c;
        ++num;
        meanX.add(c.x * scale);
        meanY.add(c.y * scale);
        meanZ.add(c.z * scale);
    }
    LUMO_CHECK(num > 0, "num>0");
    if (num == 1) return *pSingle;
    const auto n = static_cast<double>(num);
    Coords c = {meanX.over(n) / scale, meanY.over(n) / scale, pOnlyZ != nullptr ? *pOnlyZ : meanZ.over(n) / scale, -1};
    if (!std::isfinite(c.x) || !std::isfinite(c.y) || !std::isfinite(c.z)) {
        const Coords smaller = mean(pFirst, pLast, pOnlyZ, scale * smallerSums);
        if (!std::isfinite(c.x)) c.x = smaller.x;
        if (!std::isfinite(c.y)) c.y = smaller.y;
        if (!std::isfinite(c.z)) c.z = smaller.z;
    }
    if (isOutside && isOutside(c)) { // of the hull, by rounding
        c.x = pSingle->x;
        c.y = pSingle->y;
    }
    return c;
}

} // namespace ORBI_LUMO25D
