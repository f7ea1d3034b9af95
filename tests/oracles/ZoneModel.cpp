#include "oracles/ZoneModel.h"

#include "oracles/ExactOracle.h"

#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

void require(bool bHolds, const char* what)
{
    if (!bHolds) throw std::runtime_error(what);
}

/// Positive: p lies on the left of the line from a to b.
mpq_class turn(const Point2& a, const Point2& b, const ExactPoint& p)
{
    return doubledArea(exact(a), exact(b), p);
}

/// The winding number of a ring about a point that is not on it, by crossings of the ray upwards in x.
int windingNumber(const std::vector<Point2>& vRing, const ExactPoint& p)
{
    int winding = 0;
    for (std::size_t i = 0; i < vRing.size(); ++i) {
        const Point2 &a = vRing[i], &b = vRing[(i + 1) % vRing.size()];
        const bool bAbove = mpq_class(a.y()) > p.y;
        if (bAbove == (mpq_class(b.y()) > p.y)) continue;
        if (bAbove && turn(b, a, p) > 0) --winding;
        if (!bAbove && turn(a, b, p) > 0) ++winding;
    }
    return winding;
}

/// The distance by which chains may stray from this ring: 3 times four units in the last place.
mpq_class straying(const std::vector<Point2>& vRing)
{
    double size = 0.0;
    for (const Point2& corner : vRing) size = std::max({size, std::fabs(corner.x()), std::fabs(corner.y())});
    return mpq_class(12.0 * std::max(size * 0x1p-52, 0x1p-1074));
}

bool isClose(const std::vector<Point2>& vRing, const ExactPoint& p)
{
    const mpq_class limit = straying(vRing);
    for (std::size_t i = 0; i < vRing.size(); ++i) {
        const Point2 &a = vRing[i], &b = vRing[(i + 1) % vRing.size()];
        const mpq_class det = turn(a, b, p), dx = mpq_class(b.x()) - mpq_class(a.x()),
                        dy = mpq_class(b.y()) - mpq_class(a.y());
        if (det * det <= limit * limit * (dx * dx + dy * dy)) return true;
    }
    return false;
}

} // namespace

std::set<Triangle2*> trianglesOf(const Zone2& zone)
{
    std::vector<Triangle2*> vT;
    zone.getTriangles(vT);
    const std::set<Triangle2*> sT(vT.begin(), vT.end());
    require(sT.size() == vT.size() && sT.count(nullptr) == 0, "a zone holds a triangle twice");
    return sT;
}

void ZoneModel::addInside(const std::vector<Point2>& vPoints)
{
    std::vector<Point2> vCorners;
    for (const Point2& p : vPoints) {
        if (std::find(vCorners.begin(), vCorners.end(), p) == vCorners.end()) vCorners.push_back(p);
    }
    if (vCorners.size() < 3 || !lumo.hasArea()) return;
    double x = 0.0, y = 0.0;
    for (const Point2& p : vCorners) {
        x += p.x() / static_cast<double>(vCorners.size());
        y += p.y() / static_cast<double>(vCorners.size());
    }
    std::sort(vCorners.begin(), vCorners.end(), [&](const Point2& a, const Point2& b) {
        return std::atan2(a.y() - y, a.x() - x) < std::atan2(b.y() - y, b.x() - x);
    });
    std::vector<Segment2> vSegments;
    pointsToPolyline(vCorners, true, vSegments);
    mpq_class area = 0;
    double length = 0.0;
    for (const Segment2& s : vSegments) {
        area += turn(s.src, s.trg, {0, 0});
        length += std::hypot(s.trg.x() - s.src.x(), s.trg.y() - s.src.y());
    }
    // The chains of a ring that is thinner than they may stray can fall together.
    if (!isSimplePolygon(vSegments) || area <= 8 * straying(vCorners) * mpq_class(std::min(length, 1e308))) return;
    ConstraintGraph2* const pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, true);
    lumo.applyConstraintsAndZones();
    Zone2* const pZone = lumo.createZone(pGraph, ZL_INSIDE);
    require(pZone != nullptr, "no zone inside of a ring");
    vRings.push_back({pZone, vCorners});
}

void ZoneModel::combine()
{
    if (vRings.size() < 2) return;
    Zone2 *const pA = vRings[vRings.size() - 2].pZone, *const pB = vRings.back().pZone;
    vCombinations.push_back(
        {pA,
         pB,
         {zoneUnion(pA, pB), zoneIntersection(pA, pB), zoneDifference(pA, pB), zoneSymmetricDifference(pA, pB)}});
    for (const Zone2* pResult : vCombinations.back().aResults) require(pResult != nullptr, "no combination of zones");
}

void ZoneModel::bound()
{
    if (vCombinations.empty()) return;
    Zone2* const pUnion = vCombinations.back().aResults[0];
    Zone2* const pBounded = pUnion->convertToBoundedZone();
    require(pBounded != nullptr && trianglesOf(*pBounded) == trianglesOf(*pUnion), "a bounded zone is another one");
}

void ZoneModel::getZones(std::vector<Zone2*>& vZones) const
{
    for (const Ring& ring : vRings) vZones.push_back(ring.pZone);
}

void ZoneModel::clear()
{
    vRings.clear();
    vCombinations.clear();
}

void ZoneModel::check() const
{
    std::vector<Triangle2*> vAll;
    lumo.getTrianglePointers(vAll);
    for (const Ring& ring : vRings) {
        const std::set<Triangle2*> sT = trianglesOf(*ring.pZone);
        for (Triangle2* pT : vAll) {
            const ExactPoint middle = middleOf(*pT);
            if ((windingNumber(ring.vCorners, middle) == 1) == (sT.count(pT) != 0)) continue;
            require(isClose(ring.vCorners, middle), "a zone lacks a triangle in its ring or has one outside");
        }
    }
    for (const Combination& c : vCombinations) {
        const std::set<Triangle2*> sA = trianglesOf(*c.pA), sB = trianglesOf(*c.pB);
        std::set<Triangle2*> aResults[4];
        for (int i = 0; i < 4; ++i) aResults[i] = trianglesOf(*c.aResults[i]);
        for (Triangle2* pT : vAll) {
            const bool bA = sA.count(pT) != 0, bB = sB.count(pT) != 0;
            const bool aExpected[4] = {bA || bB, bA && bB, bA && !bB, bA != bB};
            for (int i = 0; i < 4; ++i)
                require((aResults[i].count(pT) != 0) == aExpected[i], "a combination of zones is wrong");
        }
    }
}

} // namespace oracles
