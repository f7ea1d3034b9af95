#include "zones/triangleSets.h"

#include "engine/Dt2.h"
#include "geometry/RoundToNearest.h"
#include "geometry/exactSums.h"
#include "zones/PoolMarks.h"

#include "Vector2.h"
#include "Zone2.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::uint8_t member = 1;
constexpr std::uint8_t done = 2;

/// Calls f(pT, i, neighbor) for each side of each triangle, once, in the order of vT. The mark of the neighbour tells
/// whether it is a member, and whether its sides have come already; beyond the hull it is 0.
template <class F>
void forEachSide(const Dt2& dt2, const std::vector<Triangle2*>& vT, const F& f)
{
    PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, member);
    for (Triangle2* pT : vT) {
        if (!marks.set(pT, done)) continue;
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            f(pT, i, pN == nullptr ? std::uint8_t{0} : marks[pN]);
        }
    }
}

} // namespace

std::vector<Triangle2*> trianglesByAge(const Zone2& zone)
{
    std::vector<Triangle2*> vT;
    zone.getTriangles(vT);
    // They come by address, but for zones with several start points; and a run of the pool is in order in itself.
    const std::less<Triangle2*> before;
    if (!std::is_sorted(vT.begin(), vT.end(), before)) std::sort(vT.begin(), vT.end(), before);
    std::vector<Triangle2*> vByAge;
    vByAge.reserve(vT.size());
    zone.getDelaunayTriangulation()->poolTriangles.forEachRun([&](Triangle2* pFirst, std::size_t n) {
        const auto itFirst = std::lower_bound(vT.begin(), vT.end(), pFirst, before);
        vByAge.insert(vByAge.end(), itFirst, std::lower_bound(itFirst, vT.end(), pFirst + n, before));
    });
    return vByAge;
}

// ---- sets -----------------------------------------------------------------------------------------------------------

void getConnectedComponents(const Dt2& dt2, const std::vector<Triangle2*>& vT,
                            std::vector<std::vector<Triangle2*>>& vvT)
{
    PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, member);
    for (Triangle2* pFirst : vT) {
        if (!marks.set(pFirst, done)) continue;
        std::vector<Triangle2*> vComponent{pFirst};
        for (std::size_t i = 0; i < vComponent.size(); ++i) {
            const Triangle2* const pT = vComponent[i];
            for (int ith = 0; ith < 3; ++ith) {
                Triangle2* const pN = pT->neighbor(ith);
                if (pN == nullptr || marks[pN] != member) continue;
                marks.set(pN, done);
                vComponent.push_back(pN);
            }
        }
        vvT.push_back(std::move(vComponent));
    }
}

void getUndirectedEdges(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Edge2>& vEdges)
{
    forEachSide(dt2, vT, [&vEdges](Triangle2* pT, int i, std::uint8_t neighbor) {
        if ((neighbor & done) == 0) vEdges.emplace_back(pT, i);
    });
}

void getBorderEdges(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Edge2>& vEdges)
{
    forEachSide(dt2, vT, [&vEdges](Triangle2* pT, int i, std::uint8_t neighbor) {
        if ((neighbor & member) == 0) vEdges.emplace_back(pT, i);
    });
}

void getCorners(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Point2*>& vV)
{
    PoolMarks<Point2> marks(dt2.poolVertices);
    const std::size_t first = vV.size();
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            if (marks.set(pT->corner(i), member)) vV.push_back(pT->corner(i));
        }
    }
    marks.takeByAddress(vV, first, member);
}

// ---- areas ----------------------------------------------------------------------------------------------------------

namespace
{

/// Twice the area in the plane. Heron's formula won't do: of a needle it keeps but half of the digits.
double doubledArea2D(const Triangle2& t)
{
    const Point2 &a = *t.corner(0), &b = *t.corner(1), &c = *t.corner(2);
    const double l = (b.x() - a.x()) * (c.y() - a.y());
    const double r = (b.y() - a.y()) * (c.x() - a.x());
    const double area = l - r;
    // Each product is off by three roundings at most.
    if (area >= (std::fabs(l) + std::fabs(r)) * 0x1p-7) return area;
    const double precise = preciseDoubledArea(a, b, c);
    return std::isfinite(precise) ? std::max(precise, 0.0) : area;
}

/// Compensated summation (Neumaier 1974).
template <class Value>
double sumOver(const std::vector<Triangle2*>& vT, const Value& valueOf)
{
    const RoundToNearest rounding;
    double sum = 0.0;
    double rest = 0.0;
    for (const Triangle2* pT : vT) {
        const double value = valueOf(*pT);
        const double next = sum + value;
        rest += std::fabs(sum) >= std::fabs(value) ? (sum - next) + value : (value - next) + sum;
        sum = next;
    }
    return std::isfinite(rest) ? sum + rest : sum;
}

} // namespace

double sumArea2D(const std::vector<Triangle2*>& vT)
{
    return 0.5 * sumOver(vT, doubledArea2D);
}

double sumArea25D(const std::vector<Triangle2*>& vT)
{
    return 0.5 * sumOver(vT, [](const Triangle2& t) {
               return crossProduct(*t.corner(1) - *t.corner(0), *t.corner(2) - *t.corner(0)).length();
           });
}

} // namespace ORBI_LUMO25D
