// Read-only queries beside the walk: heights, neighbourhoods, the convex hull.

#include "engine/Dt2.h"

#include "geometry/RoundToNearest.h"
#include "geometry/TriangleLinks.h"
#include "geometry/aroundVertex.h"
#include "geometry/exactSums.h"
#include "geometry/finite.h"
#include "support/check.h"
#include "support/messages.h"

#include "Vector2.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

// ---- ownership ------------------------------------------------------------------------------------------------------

bool Dt2::isAliveTriangle(const Triangle2* pT) const
{
    return pT != nullptr && poolTriangles.contains(pT) && pT->corner(0) != nullptr;
}

bool Dt2::isMeshVertex(const Point2* pVtx) const
{
    return pVtx != nullptr && poolVertices.contains(pVtx) && pVtx->getIncidentTriangle() != nullptr;
}

// ---- heights --------------------------------------------------------------------------------------------------------

namespace
{

/// Slopes above this many degrees are interpolated exactly: there, a rounding error in the plane is a large one in height.
constexpr double maxPlainSlope = 89.9;
/// What interpolation may overshoot the corners' heights by and still be taken back to them.
constexpr double maxOvershoot = 0.001;

double slopeDegrees(const Triangle2& t)
{
    const Vector2 a = *t.corner(1) - *t.corner(0);
    const Vector2 b = *t.corner(2) - *t.corner(0);
    const Vector2 normal = crossProduct(a, b);
    const double nz = std::min(std::max(normal.z() / normal.length(), 0.0), 1.0);
    return std::acos(nz) * 180.0 / 3.14159265359;
}

/// Height of the triangle's plane at a position in it, by the weights of its corners; of thin triangles, plain products
/// would leave few digits. Not a number where doubles don't do.
double heightByWeights(const Triangle2& t, double x, double y)
{
    const Point2 &o = *t.corner(0), &b = *t.corner(1), &c = *t.corner(2);
    const double bx = b.x() - o.x(), by = b.y() - o.y(), cx = c.x() - o.x(), cy = c.y() - o.y();
    const double px = x - o.x(), py = y - o.y();
    double area = bx * cy - by * cx;
    double ofB = px * cy - py * cx;
    double ofC = bx * py - by * px;
    const double products = std::fabs(bx * cy) + std::fabs(by * cx) + std::fabs(px * cy) + std::fabs(py * cx) +
                            std::fabs(bx * py) + std::fabs(by * px);
    constexpr double maxLoss = 64.0; // of digits: the height is off by 2^-44 of the corners' difference at most
    if (!(products <= maxLoss * area)) {
        const Point2 p(x, y, 0.0);
        area = preciseDoubledArea(o, b, c);
        ofB = preciseDoubledArea(o, p, c);
        ofC = preciseDoubledArea(o, b, p);
        if (!(products * 0x1p-50 <= area)) return std::numeric_limits<double>::quiet_NaN();
    }
    constexpr double leastArea = 1e-250; // products below lack bits
    if (!(area >= leastArea)) return std::numeric_limits<double>::quiet_NaN();
    return o.z() + ofB / area * (b.z() - o.z()) + ofC / area * (c.z() - o.z());
}

double exactHeight(const Triangle2& t, double x, double y)
{
    return OrbiTest::getPlaneHeightExact(t.corner(0), t.corner(1), t.corner(2), x, y);
}

/// Height of the triangle at a position that it holds.
double heightOnTriangle(const Triangle2& t, double x, double y)
{
    for (int i = 0; i < 3; ++i) {
        if (t.corner(i)->x() == x && t.corner(i)->y() == y) return t.corner(i)->z();
    }
    const auto [minZ, maxZ] = std::minmax({t.corner(0)->z(), t.corner(1)->z(), t.corner(2)->z()});
    if (minZ == maxZ) return minZ;
    if (!(slopeDegrees(t) <= maxPlainSlope)) {
        const double height = exactHeight(t, x, y);
        LUMO_CHECK(height <= maxZ + .0001, "height<=maxZ+.0001");
        LUMO_CHECK(height >= minZ - .0001, "height>=minZ-.0001");
        return std::min(std::max(height, minZ), maxZ);
    }
    double height = heightByWeights(t, x, y);
    if (height > maxZ && height - maxZ < maxOvershoot) height = maxZ;
    if (height < minZ && minZ - height < maxOvershoot) height = minZ;
    if (!(height >= minZ && height <= maxZ)) height = exactHeight(t, x, y);
    LUMO_CHECK(height <= maxZ, "height<=maxZ");
    LUMO_CHECK(height >= minZ, "height>=minZ");
    return height;
}

} // namespace

double Dt2::heightOn(const Triangle2& t, double x, double y)
{
    return heightOnTriangle(t, x, y);
}

bool Dt2::getHeight(double x, double y, double& height, Triangle2* pApproxT, double tolerance)
{
    if (!bFullDimensional || !std::isfinite(x) || !std::isfinite(y)) return false;
    const RoundToNearest rounding;
    const Point2 p(x, y, 0.0);
    if (pApproxT != nullptr && !isAliveTriangle(pApproxT)) {
        msgWarning("Dt2::getHeight()", "the triangle does not belong to the triangulation, it is ignored");
        pApproxT = nullptr;
    }
    Triangle2* const pT = pApproxT == nullptr ? locate(p) : locateFrom(p, pApproxT);
    if (pT == nullptr) return tolerance > 0.0 && getNearbyHeight(x, y, height, tolerance);
    height = heightOnTriangle(*pT, x, y);
    return true;
}

namespace
{

/// The vector from one point to another in the plane, (x, y) * 2^exponent with components of at most 1: products of two
/// of them neither overflow nor vanish, whatever the coordinates.
struct ScaledVector
{
    ScaledVector(const Point2& from, const Point2& to)
    {
        const double half = std::max(from.getMaxAbs(), to.getMaxAbs()) > 1e300 ? 0.5 : 1.0;
        x = to.x() * half - from.x() * half;
        y = to.y() * half - from.y() * half;
        std::frexp(std::max(std::fabs(x), std::fabs(y)), &exponent);
        x = std::ldexp(x, -exponent);
        y = std::ldexp(y, -exponent);
        if (half < 1.0) ++exponent;
    }
    double x = 0.0, y = 0.0;
    int exponent = 0;
};

/// Foot of the perpendicular from a point on an edge.
struct Foot
{
    Foot(const Point2& p, const Point2& a, const Point2& b)
    {
        const ScaledVector edge(a, b);
        const ScaledVector toP(a, p);
        const double sqLen = edge.x * edge.x + edge.y * edge.y;
        const double t = std::ldexp((toP.x * edge.x + toP.y * edge.y) / sqLen, toP.exponent - edge.exponent);
        // Where two edges meet in a straight line, rounding must not put the foot on neither of them.
        const Point2 foot(a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y()), 0.0);
        bOnEdge = (t >= 0.0 && t <= 1.0) || foot == a || foot == b;
        height = a.z() + t * (b.z() - a.z());
        distance = std::ldexp(std::fabs(edge.x * toP.y - edge.y * toP.x) / std::sqrt(sqLen), toP.exponent);
    }
    bool bOnEdge = false;
    double height = 0.0; ///< on the straight line between the ends
    double distance = 0.0;
};

} // namespace

bool Dt2::getNearbyHeight(double x, double y, double& height, double tolerance)
{
    if (!bFullDimensional || !std::isfinite(x) || !std::isfinite(y)) return false;
    const RoundToNearest rounding;
    const Point2 p(x, y, 0.0);
    orbiTest.ensureStaticBound(&p);
    Triangle2* pT = vertexVault.getCloseTriangle(hilbertCurve.getIndex(p));
    int edge = -1;
    const int state = locateConflictTriangle(p, &pT, &edge);
    LUMO_CHECK(state > -1 && state < 4, "intState>-1 && intState<4");
    LUMO_CHECK(pT != nullptr, "pCurTriangle!=0");

    const auto tryEdge = [&](const HullEdge& e, bool& bResult) {
        const Point2& a = *e.pT->corner(L::next(e.ith));
        const Point2& b = *e.pT->corner(L::prev(e.ith));
        const Foot foot(p, a, b);
        if (!foot.bOnEdge) return false;
        bResult = foot.distance <= tolerance;
        if (bResult) height = foot.height;
        return true;
    };
    bool bResult = false;
    if (tryEdge({pT, state}, bResult)) return bResult;
    collectVisible(&p, pT, state);
    for (const HullEdge& e : vVisible) {
        if (tryEdge(e, bResult)) return bResult;
    }
    return false;
}

// ---- neighbourhoods -------------------------------------------------------------------------------------------------

Triangle2* Dt2::getAdjacentTriangle(Point2* p0, Point2* p1) const
{
    LUMO_CHECK(p0 != nullptr, "p0!=0");
    LUMO_CHECK(p1 != nullptr, "p1!=0");
    LUMO_CHECK(p0 != p1, "p0!=p1");
    Triangle2* pFound = nullptr;
    anyTriangleAround(p0, [p0, p1, &pFound](Triangle2* pT) {
        if (pT->corner(L::next(L::indexOf(pT, p0))) == p1) pFound = pT;
        return pFound != nullptr;
    });
    return pFound;
}

void Dt2::getIncidentTriangles(const Point2* pVtx, std::vector<Triangle2*>& vT) const
{
    forEachTriangleAround(pVtx, [&vT](Triangle2* pT) { vT.push_back(pT); });
}

void Dt2::getIncidentVertices(const Point2* pVtx, std::vector<Point2*>& vVtx) const
{
    std::vector<Point2*> vFound;
    forEachTriangleAround(pVtx, [pVtx, &vFound](const Triangle2* pT) {
        const int i = L::indexOf(pT, pVtx);
        vFound.push_back(pT->corner(L::next(i)));
        vFound.push_back(pT->corner(L::prev(i)));
    });
    std::sort(vFound.begin(), vFound.end(), std::less<Point2*>());
    vFound.erase(std::unique(vFound.begin(), vFound.end()), vFound.end());
    vVtx.insert(vVtx.end(), vFound.begin(), vFound.end());
}

// ---- the convex hull ------------------------------------------------------------------------------------------------

Dt2::HullEdge Dt2::someHullEdge() const
{
    HullEdge edge{nullptr, 0};
    poolTriangles.forEach([&edge](Triangle2* pT) {
        if (pT->corner(0) == nullptr) return;
        for (int i = 0; i < 3; ++i) {
            if (pT->neighbor(i) == nullptr) edge = {pT, i};
        }
    });
    LUMO_CHECK(edge.pT != nullptr, "pStartT!=0");
    return edge;
}

void Dt2::getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHull) const
{
    if (!bFullDimensional) {
        msgWarning("Dt2::getConvexHull()", "the triangulation has no area yet");
        return;
    }
    const HullEdge start = someHullEdge();
    std::vector<Point2*> vHull;
    HullEdge e = start;
    do {
        vHull.push_back(e.pT->corner(L::next(e.ith)));
        e = nextHullEdge(e);
    } while (e.pT != start.pT || e.ith != start.ith);

    const auto itFirst =
        std::min_element(vHull.begin(), vHull.end(), [](const Point2* a, const Point2* b) { return *a < *b; });
    std::rotate(vHull.begin(), itFirst, vHull.end());
    if (bAllVertices) {
        vConvexHull.insert(vConvexHull.end(), vHull.begin(), vHull.end());
        return;
    }
    // The first vertex is an extreme one, so that it is kept whatever its neighbours are.
    for (std::size_t i = 0; i < vHull.size(); ++i) {
        const Point2* const pBefore = i == 0 ? vHull.back() : vHull[i - 1];
        const Point2* const pBehind = vHull[(i + 1) % vHull.size()];
        if (orbiTest.orientationInRange(pBefore, vHull[i], pBehind) != ORIENTATION2_COLLINEAR) {
            vConvexHull.push_back(vHull[i]);
        }
    }
}

namespace
{

/// True when h lies on the closed segment from src to trg; the three are collinear.
bool isBetweenCollinear(const Point2& src, const Point2& trg, const Point2& h)
{
    const bool bX = std::min(src.x(), trg.x()) <= h.x() && h.x() <= std::max(src.x(), trg.x());
    const bool bY = std::min(src.y(), trg.y()) <= h.y() && h.y() <= std::max(src.y(), trg.y());
    return bX && bY;
}

} // namespace

/// The hull edge that the line from src to trg enters through, or one at a vertex on the line (bAtVertex: its source).
/// A null triangle when there is none.
Dt2::HullEdge Dt2::entryEdge(const Point2& src, const Point2& trg, HullEdge e, bool& bAtVertex) const
{
    bAtVertex = false;
    const auto sideOf = [&](const Point2* h) { return orbiTest.orientationInRange(&src, &trg, h); };
    const auto sees = [&](const HullEdge& edge) {
        return orbiTest.orientationInRange(edge.pT->corner(L::next(edge.ith)), edge.pT->corner(L::prev(edge.ith)),
                                           &src) == ORIENTATION2_CW;
    };
    const Orientation2 startSide = sideOf(e.pT->corner(L::next(e.ith)));
    if (startSide == ORIENTATION2_COLLINEAR) {
        bAtVertex = true;
        return e;
    }
    // Seen from src, the visible chain runs from left to right, counterclockwise along the hull.
    if (startSide == ORIENTATION2_CCW) {
        while (sees(e) && sideOf(e.pT->corner(L::prev(e.ith))) == ORIENTATION2_CCW) {
            e = nextHullEdge(e);
        }
    } else {
        do {
            e = previousHullEdge(e);
        } while (sees(e) && sideOf(e.pT->corner(L::next(e.ith))) == ORIENTATION2_CW);
    }
    return sees(e) ? e : HullEdge{nullptr, 0};
}

/// How the segment from src, which lies outside, gets into the hull. To touch an edge from outside is not to get in. Both
/// ends must be known to the predicates.
Dt2::HullEntry Dt2::enterHull(const Point2& src, const Point2& trg)
{
    Triangle2* pT = vertexVault.getCloseTriangle(hilbertCurve.getIndex(src));
    int edge = -1;
    const int state = locateConflictTriangle(src, &pT, &edge);
    LUMO_CHECK(state > -1 && state < 3, "intState>-1 && intState<3");
    HullEntry entry{nullptr, {nullptr, 0}};
    bool bAtVertex = false;
    const HullEdge e = entryEdge(src, trg, {pT, state}, bAtVertex);
    if (e.pT == nullptr) return entry;
    Point2* const p = e.pT->corner(L::next(e.ith));
    if (bAtVertex) {
        if (isBetweenCollinear(src, trg, *p)) entry.pVtx = p;
    } else if (orbiTest.orientationInRange(p, e.pT->corner(L::prev(e.ith)), &trg) == ORIENTATION2_CCW) {
        entry.edge = e;
    }
    return entry;
}

/// Rounding may have put the point just outside of hull edge e: steps towards the far corner, doubled each time, bring it
/// back. Near an end of the edge it may then still be outside of the next one, which the far corner may lie on: so the
/// last steps go towards the middle of the triangle. False when that doesn't help.
bool Dt2::pullInside(const HullEdge& e, Point2& p)
{
    const Point2* const a = e.pT->corner(L::next(e.ith));
    const Point2* const b = e.pT->corner(L::prev(e.ith));
    const auto pull = [&p](const Point2& target, const auto& isOutside) {
        const Point2 start(p);
        const Vector2 way = target - start;
        for (double step = 1e-15; isOutside(); step *= 2.0) {
            if (step >= 1.0) return false;
            p = start + Vector2(way.x() * step, way.y() * step, 0.0);
        }
        return true;
    };
    return pull(*e.pT->corner(e.ith), [&] { return orbiTest.orientationInRange(a, b, &p) == ORIENTATION2_CW; }) &&
           pull(e.pT->getBarycenter(), [&] { return locateFrom(p, e.pT) == nullptr; });
}

Point2 Dt2::cutLineAtCH(const Point2& src, const Point2& trg, bool& bOK)
{
    bOK = false;
    if (!bFullDimensional || !isFinite2D(src) || !isFinite2D(trg)) return Point2();
    const RoundToNearest rounding;
    orbiTest.ensureStaticBound(&src);
    orbiTest.ensureStaticBound(&trg);
    Triangle2* pT = vertexVault.getCloseTriangle(hilbertCurve.getIndex(src));
    int edge = -1;
    const int state = locateConflictTriangle(src, &pT, &edge);
    LUMO_CHECK(state > -1 && state < 3, "intState>-1 && intState<3");
    LUMO_CHECK(pT->neighbor(state) == nullptr, "pCurTriangle->getOppositeTriangle(intState)==0");

    bool bAtVertex = false;
    const HullEdge e = entryEdge(src, trg, {pT, state}, bAtVertex);
    if (e.pT == nullptr) return Point2();
    const Point2* const a = e.pT->corner(L::next(e.ith));
    const Point2* const b = e.pT->corner(L::prev(e.ith));
    if (bAtVertex) {
        bOK = isBetweenCollinear(src, trg, *a);
        return bOK ? *a : Point2();
    }
    if (orbiTest.orientationInRange(a, b, &src) == orbiTest.orientationInRange(a, b, &trg)) return Point2();
    double x = 0.0, y = 0.0;
    orbiTest.getIntersectionCoords_gmp_MT(&src, &trg, a, b, x, y);
    Point2 cut(x, y, 0.0);
    bOK = pullInside(e, cut);
    return bOK ? cut : Point2();
}

} // namespace ORBI_LUMO25D
