#include "zones/SurfaceOptimizer.h"

#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "support/Progress.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include "Vector2.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

/// Each triangle once, without those that belong elsewhere.
std::vector<Triangle2*> cleanSet(const Dt2& dt2, const std::vector<Triangle2*>& vT, const char* function)
{
    PoolMarks<Triangle2> marks(dt2.poolTriangles);
    std::vector<Triangle2*> vClean;
    bool bForeign = false;
    for (Triangle2* pT : vT) {
        if (!dt2.isAliveTriangle(pT)) {
            bForeign = true;
        } else if (marks.set(pT, 1)) {
            vClean.push_back(pT);
        }
    }
    if (bForeign) msgWarning(function, "triangles that don't belong to the triangulation are ignored");
    return vClean;
}

/// The two triangles at an edge: (a, b, c) and, beyond the edge from b to c, (d, c, b).
struct Quad
{
    Quad(const Triangle2* pT_, int ith) : pT(pT_), pN(pT_->neighbor(ith))
    {
        const int j = L::indexOf(pN, pT);
        a = pT->corner(ith);
        b = pT->corner(L::next(ith));
        c = pT->corner(L::prev(ith));
        d = pN->corner(j);
        aOuter[0] = farCorner(pT, L::prev(ith));
        aOuter[1] = farCorner(pN, L::next(j));
        aOuter[2] = farCorner(pN, L::prev(j));
        aOuter[3] = farCorner(pT, L::next(ith));
    }

    static const Point2* farCorner(const Triangle2* pFrom, int i)
    {
        const Triangle2* const pFar = pFrom->neighbor(i);
        return pFar == nullptr ? nullptr : pFar->corner(L::indexOf(pFar, pFrom));
    }

    const Triangle2* pT;
    const Triangle2* pN;
    const Point2 *a, *b, *c, *d;
    const Point2* aOuter[4]; ///< what lies beyond the edges a b, b d, d c, c a; null on the hull
};

// ---- valleys and ridges ---------------------------------------------------------------------------------------------

/// The same to the last bit, whichever corner comes first: else, with slivers, a flip and the way back might both pay.
Vector2 normalOf(const Point2& p, const Point2& q, const Point2& r)
{
    if (q < p && q < r) return crossProduct(r - q, p - q);
    if (r < p && r < q) return crossProduct(p - r, q - r);
    return crossProduct(q - p, r - p);
}

/// The angle between two normals, without a loss of digits where it is small.
double angleBetween(const Vector2& n0, const Vector2& n1)
{
    const double dot = n0.x() * n1.x() + n0.y() * n1.y() + n0.z() * n1.z();
    return std::atan2(crossProduct(n0, n1).length(), dot);
}

/// The angle at an edge whose triangle has the normal n, towards the triangle with the given far corner.
double angleAtOuterEdge(const Vector2& n, const Point2& src, const Point2& trg, const Point2* pFar)
{
    return pFar == nullptr ? 0.0 : angleBetween(n, normalOf(trg, src, *pFar));
}

/// How much smoother a flip makes the surface.
double gainOfFlip(const Quad& q)
{
    const Vector2 abc = normalOf(*q.a, *q.b, *q.c);
    const Vector2 dcb = normalOf(*q.d, *q.c, *q.b);
    const Vector2 abd = normalOf(*q.a, *q.b, *q.d);
    const Vector2 adc = normalOf(*q.a, *q.d, *q.c);
    const double before = angleBetween(abc, dcb) + angleAtOuterEdge(abc, *q.a, *q.b, q.aOuter[0]) +
                          angleAtOuterEdge(dcb, *q.b, *q.d, q.aOuter[1]) +
                          angleAtOuterEdge(dcb, *q.d, *q.c, q.aOuter[2]) +
                          angleAtOuterEdge(abc, *q.c, *q.a, q.aOuter[3]);
    const double after = angleBetween(abd, adc) + angleAtOuterEdge(abd, *q.a, *q.b, q.aOuter[0]) +
                         angleAtOuterEdge(abd, *q.b, *q.d, q.aOuter[1]) +
                         angleAtOuterEdge(adc, *q.d, *q.c, q.aOuter[2]) +
                         angleAtOuterEdge(adc, *q.c, *q.a, q.aOuter[3]);
    return before - after;
}

/// What a flip has to fulfil besides.
struct FlipLimits
{
    double minHeight2D = 0.0;
    double minDifference25D = 0.0;

    bool allow(const Quad& q) const
    {
        if (minHeight2D > 0.0 && !isHigh(*q.a, *q.b, *q.d)) return false;
        if (minHeight2D > 0.0 && !isHigh(*q.a, *q.d, *q.c)) return false;
        return !(minDifference25D > 0.0) || heightDifference(q) > minDifference25D;
    }

private:
    /// Whether the least height of a triangle in the plane suffices.
    bool isHigh(const Point2& p, const Point2& q, const Point2& r) const
    {
        const double longest =
            std::max({std::hypot(q.x() - p.x(), q.y() - p.y()), std::hypot(r.x() - q.x(), r.y() - q.y()),
                      std::hypot(p.x() - r.x(), p.y() - r.y())});
        return normalOf(p, q, r).z() >= minHeight2D * longest;
    }

    /// Of the two diagonals, where they cross.
    static double heightDifference(const Quad& q)
    {
        const double ofA = normalOf(*q.a, *q.b, *q.c).z();
        const double ofD = normalOf(*q.d, *q.c, *q.b).z();
        const double ofB = normalOf(*q.a, *q.b, *q.d).z();
        const double ofC = normalOf(*q.a, *q.d, *q.c).z();
        const double onAD = q.a->z() + (q.d->z() - q.a->z()) * (ofA / (ofA + ofD));
        const double onBC = q.b->z() + (q.c->z() - q.b->z()) * (ofB / (ofB + ofC));
        return std::fabs(onAD - onBC);
    }
};

/// An edge between two triangles of a set, as that of the triangle in which its first end is the one further left. It knows
/// its ends, so that a flip that puts another edge in its place is noticed.
class InnerEdge
{
public:
    InnerEdge(const Dt2& dt2, Triangle2* pT_, int ith_) : pT(pT_), ith(ith_)
    {
        if (*pT->corner(L::prev(ith)) < *pT->corner(L::next(ith))) {
            pT = pT_->neighbor(ith_);
            ith = L::indexOf(pT, pT_);
        }
        pSrc = pT->corner(L::next(ith));
        pTrg = pT->corner(L::prev(ith));
        curveIndex = dt2.hilbertCurve.getIndex(*pSrc);
    }

    bool isStale() const { return pT->corner(L::next(ith)) != pSrc || pT->corner(L::prev(ith)) != pTrg; }
    bool operator==(const InnerEdge& other) const { return pSrc == other.pSrc && pTrg == other.pTrg; }
    /// By place, along the curve.
    bool operator<(const InnerEdge& other) const
    {
        if (curveIndex != other.curveIndex) return curveIndex < other.curveIndex;
        return pSrc != other.pSrc ? *pSrc < *other.pSrc : *pTrg < *other.pTrg;
    }

    Triangle2* pT;
    int ith;

private:
    const Point2* pSrc;
    const Point2* pTrg;
    std::uint32_t curveIndex;
};

/// Sets of triangles come in the order of their addresses, which differs from run to run; what the order decides must not.
void sortByPlace(std::vector<InnerEdge>& vEdges)
{
    std::sort(vEdges.begin(), vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
}

/// The edges with a triangle of the set on both sides, each once, by place.
std::vector<InnerEdge> innerEdges(const Dt2& dt2, const std::vector<Triangle2*>& vT, const PoolMarks<Triangle2>& marks)
{
    std::vector<InnerEdge> vEdges;
    for (Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            const bool bOnce = *pT->corner(L::next(i)) < *pT->corner(L::prev(i));
            if (bOnce && pN != nullptr && marks[pN] != 0) vEdges.emplace_back(dt2, pT, i);
        }
    }
    sortByPlace(vEdges);
    return vEdges;
}

/// Lawson's local optimisation: flips as long as one pays, in rounds over the edges around the flips of the last one.
class EdgeFlipper
{
public:
    EdgeFlipper(Dt2& dt2_, const std::vector<Triangle2*>& vT, const FlipLimits& limits_)
        : dt2(dt2_), limits(limits_), marks(dt2_.poolTriangles, vT, 1), vWork(innerEdges(dt2, vT, marks))
    {
    }

    void run(const char* name, Progress& progress)
    {
        progress.start(name, vWork.size());
        while (!vWork.empty()) {
            std::vector<InnerEdge> vRound;
            vRound.swap(vWork);
            for (const InnerEdge& edge : vRound) {
                progress.step(1);
                // What isn't there any more was looked at again when its quadrilateral was flipped.
                if (!edge.isStale() && pays(edge)) flip(edge);
            }
            sortByPlace(vWork);
            progress.addToTotal(vWork.size());
        }
        progress.finish();
    }

private:
    /// Below, the sum of angles would be rounding: with it, each flip takes a part of a sum that is finite.
    static constexpr double minGain = 1e-9;

    bool pays(const InnerEdge& edge) const
    {
        const Quad quad(edge.pT, edge.ith);
        return gainOfFlip(quad) > minGain && dt2.canBeFlipped(edge.pT, edge.ith) && limits.allow(quad);
    }

    void flip(const InnerEdge& edge)
    {
        Triangle2* const pT = edge.pT;
        Triangle2* const pN = pT->neighbor(edge.ith);
        dt2.flip(pT, edge.ith);
        // The gain of an edge depends on the triangles around its quadrilateral: those of the neighbours count, too.
        for (Triangle2* pNear : {pT, pN}) {
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pFar = pNear->neighbor(i);
                if (!isMember(pFar)) continue;
                vWork.emplace_back(dt2, pNear, i);
                for (int j = 0; j < 3; ++j) {
                    if (pFar->neighbor(j) != pNear && isMember(pFar->neighbor(j))) vWork.emplace_back(dt2, pFar, j);
                }
            }
        }
    }

    bool isMember(const Triangle2* pT) const { return pT != nullptr && marks[pT] != 0; }

    Dt2& dt2;
    const FlipLimits limits;
    const PoolMarks<Triangle2> marks;
    std::vector<InnerEdge> vWork;
};

} // namespace

void slopeValleyRidgeOptimization(Dt2& dt2, const std::vector<Triangle2*>& vT, Progress& progress)
{
    const char* const name = "slopeValleyRidgeOptimization()";
    EdgeFlipper(dt2, cleanSet(dt2, vT, name), FlipLimits()).run(name, progress);
}

void optimizeValleysAndRidges(Dt2& dt2, const std::vector<Triangle2*>& vT, double tolerance2D, double lowerThreshold25D,
                              Progress& progress)
{
    const char* const name = "optimizeValleysAndRidges()";
    if (!(tolerance2D >= 0.0) || !(lowerThreshold25D >= 0.0) || std::isinf(tolerance2D) ||
        std::isinf(lowerThreshold25D)) {
        msgWarning(name, "the limits must be finite and not negative, nothing changed");
        return;
    }
    EdgeFlipper(dt2, cleanSet(dt2, vT, name), {tolerance2D, lowerThreshold25D}).run(name, progress);
}

// ---- smoothing ------------------------------------------------------------------------------------------------------

namespace
{

/// The vertices of a set that may move: no corner of an edge of its border, no end of a constraint.
std::vector<Point2*> freeVertices(const Dt2& dt2, const std::vector<Triangle2*>& vT)
{
    PoolMarks<Point2> marks(dt2.poolVertices);
    std::vector<Edge2> vBorder;
    getBorderEdges(dt2, vT, vBorder);
    for (const Edge2& edge : vBorder) {
        marks.set(edge.getSrc(), 1);
        marks.set(edge.getTrg(), 1);
    }
    std::vector<Point2*> vFree;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            Point2* const p = pT->corner(i);
            if (marks.set(p, 1) && !dt2.isConstraint(p)) vFree.push_back(p);
        }
    }
    return vFree;
}

/// The mean of a vertex' height and that of its neighbourhood there, which is weighted by mean value coordinates.
double smoothHeight(const Dt2& dt2, const Point2* pVtx, std::vector<Triangle2*>& vStar)
{
    vStar.clear();
    dt2.getIncidentTriangles(pVtx, vStar);
    double sum = 0.0;
    double sumOfWeights = 0.0;
    double lo = pVtx->z();
    double hi = pVtx->z();
    for (const Triangle2* pT : vStar) {
        const int i = L::indexOf(pT, pVtx);
        const Point2& q = *pT->corner(L::next(i));
        const Point2& r = *pT->corner(L::prev(i));
        const double qx = q.x() - pVtx->x(), qy = q.y() - pVtx->y();
        const double rx = r.x() - pVtx->x(), ry = r.y() - pVtx->y();
        const double lengthQ = std::hypot(qx, qy);
        const double lengthR = std::hypot(rx, ry);
        const double tanOfHalf = (qx * ry - qy * rx) / (lengthQ * lengthR + qx * rx + qy * ry);
        sum += tanOfHalf * (q.z() / lengthQ + r.z() / lengthR);
        sumOfWeights += tanOfHalf * (1.0 / lengthQ + 1.0 / lengthR);
        lo = std::min(lo, q.z());
        hi = std::max(hi, q.z());
    }
    const double mean = 0.5 * (sum / sumOfWeights) + 0.5 * pVtx->z();
    return std::isfinite(mean) ? std::min(std::max(mean, lo), hi) : pVtx->z();
}

} // namespace

void smoothing(Dt2& dt2, const std::vector<Triangle2*>& vT, int numIterations, Progress& progress)
{
    if (numIterations < 0) {
        msgWarning("smoothing()", "negative number of iterations, nothing changed");
        return;
    }
    const std::vector<Point2*> vFree = freeVertices(dt2, cleanSet(dt2, vT, "smoothing()"));
    std::vector<double> vHeights(vFree.size());
    std::vector<Triangle2*> vStar;
    constexpr double totalUnits = 100.0;
    progress.start("smoothing()", static_cast<std::uint64_t>(totalUnits));
    double unitsDone = 0.0;
    for (int round = 0; round < numIterations; ++round) {
        for (std::size_t i = 0; i < vFree.size(); ++i) {
            vHeights[i] = smoothHeight(dt2, vFree[i], vStar);
        }
        for (std::size_t i = 0; i < vFree.size(); ++i) {
            vFree[i]->setHeight(vHeights[i]);
        }
        const double units = std::floor(totalUnits * (round + 1) / numIterations);
        progress.step(static_cast<std::uint64_t>(units - unitsDone));
        unitsDone = units;
    }
    progress.finish();
}

// ---- grids ----------------------------------------------------------------------------------------------------------

namespace
{

/// Whether a quadrilateral is a rectangle, up to the tolerance: its diagonals are alike and bisect each other.
bool isCell(const Quad& q, double tolerance)
{
    const double lengthBC = std::hypot(q.c->x() - q.b->x(), q.c->y() - q.b->y());
    const double lengthAD = std::hypot(q.d->x() - q.a->x(), q.d->y() - q.a->y());
    const double mx = (q.a->x() / 2.0 + q.d->x() / 2.0) - (q.b->x() / 2.0 + q.c->x() / 2.0);
    const double my = (q.a->y() / 2.0 + q.d->y() / 2.0) - (q.b->y() / 2.0 + q.c->y() / 2.0);
    return std::fabs(lengthBC - lengthAD) <= tolerance && std::hypot(mx, my) <= tolerance;
}

/// Whether the diagonal a d is the one that all cells shall have.
bool isOtherDiagonalWanted(const Quad& q)
{
    const double bcX = q.c->x() - q.b->x(), bcY = q.c->y() - q.b->y();
    const double adX = q.d->x() - q.a->x(), adY = q.d->y() - q.a->y();
    const double riseBC = bcX * bcY;
    const double riseAD = adX * adY;
    const double unclear = 1e-6 * (bcX * bcX + bcY * bcY);
    if (std::fabs(riseAD - riseBC) > unclear) return riseAD > riseBC;
    return std::fabs(adX) > std::fabs(bcX);
}

} // namespace

void unifyGrid(Dt2& dt2, const std::vector<Triangle2*>& vT, double tolerance, Progress& progress)
{
    if (!(tolerance >= 0.0)) {
        msgWarning("unifyGrid()", "the tolerance must not be negative, nothing changed");
        return;
    }
    const std::vector<Triangle2*> vClean = cleanSet(dt2, vT, "unifyGrid()");
    const PoolMarks<Triangle2> marks(dt2.poolTriangles, vClean, 1);
    const std::vector<InnerEdge> vEdges = innerEdges(dt2, vClean, marks);
    progress.start("unifyGrid()", vEdges.size());
    for (const InnerEdge& edge : vEdges) {
        progress.step(1);
        if (edge.isStale()) continue; // of a cell that is done
        const Quad quad(edge.pT, edge.ith);
        if (!isCell(quad, tolerance) || !isOtherDiagonalWanted(quad)) continue;
        if (dt2.canBeFlipped(edge.pT, edge.ith)) dt2.flip(edge.pT, edge.ith);
    }
    progress.finish();
}

} // namespace ORBI_LUMO25D
