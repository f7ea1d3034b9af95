#include "oracles/QueryTwins.h"

#include "oracles/ExactOracle.h"

#include <cmath>

namespace oracles
{

using namespace ORBI_LUMO25D;

int sideOf(const Point2& a, const Point2& b, const Point2& c)
{
    // Shewchuk, "Adaptive precision floating-point arithmetic and fast robust geometric predicates", 1997, stage A.
    const double left = (a.x() - c.x()) * (b.y() - c.y());
    const double right = (a.y() - c.y()) * (b.x() - c.x());
    const double det = left - right;
    const double bound = 4e-16 * (std::fabs(left) + std::fabs(right)) + 1e-280;
    if (det > bound) return 1;
    if (-det > bound) return -1;
    return orientationSign(a, b, c);
}

mpq_class planeHeight(const Triangle2& t, const Point2& p)
{
    const Point2 &a = *t.corner(0), &b = *t.corner(1), &c = *t.corner(2);
    const mpq_class wa = orientationDet(b, c, p), wb = orientationDet(c, a, p), wc = orientationDet(a, b, p);
    return (wa * mpq_class(a.z()) + wb * mpq_class(b.z()) + wc * mpq_class(c.z())) / orientationDet(a, b, c);
}

QueryTwin::QueryTwin(const std::vector<Triangle2*>& vT_) : vT(vT_)
{
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const BorderEdge edge = {pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3)};
            if (pT->getOppositeTriangle(i) == nullptr) vBorder.push_back(edge);
        }
    }
}

std::vector<Triangle2*> QueryTwin::trianglesAt(const Point2& p) const
{
    std::vector<Triangle2*> vFound;
    for (Triangle2* pT : vT) {
        const Point2 &a = *pT->corner(0), &b = *pT->corner(1), &c = *pT->corner(2);
        if (sideOf(a, b, p) >= 0 && sideOf(b, c, p) >= 0 && sideOf(c, a, p) >= 0) vFound.push_back(pT);
    }
    return vFound;
}

Triangle2* QueryTwin::triangleLeftOf(const Point2* p0, const Point2* p1) const
{
    for (Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            if (pT->corner(i) == p0 && pT->corner((i + 1) % 3) == p1) return pT;
        }
    }
    return nullptr;
}

std::set<Triangle2*> QueryTwin::trianglesAround(const Point2* pVtx) const
{
    std::set<Triangle2*> sFound;
    for (Triangle2* pT : vT) {
        if (pT->hasVertex(pVtx)) sFound.insert(pT);
    }
    return sFound;
}

std::set<Point2*> QueryTwin::neighboursOf(const Point2* pVtx) const
{
    std::set<Point2*> sFound;
    for (const Triangle2* pT : trianglesAround(pVtx)) sFound.insert({pT->corner(0), pT->corner(1), pT->corner(2)});
    sFound.erase(const_cast<Point2*>(pVtx));
    return sFound;
}

NearestOnHull QueryTwin::nearestOnHull(const Point2& p) const
{
    // On a convex border at most one place (which two edges may share) is met by a perpendicular from outside.
    NearestOnHull result;
    const mpq_class px(p.x()), py(p.y()), almost(1e-6);
    for (const BorderEdge& e : vBorder) {
        if (sideOf(*e.first, *e.second, p) >= 0) continue;
        const mpq_class ax(e.first->x()), ay(e.first->y());
        const mpq_class dx = mpq_class(e.second->x()) - ax, dy = mpq_class(e.second->y()) - ay;
        const mpq_class wx = px - ax, wy = py - ay, sqLen = dx * dx + dy * dy;
        const mpq_class t = (wx * dx + wy * dy) / sqLen;
        if (abs(t) < almost || abs(t - 1) < almost || wx * wx + wy * wy > sqLen * 1e16) result.bDoubtful = true;
        if (t < 0 || t > 1) continue;
        const mpq_class fx = ax + t * dx - px, fy = ay + t * dy - py;
        result.bOnEdge = true;
        result.sqDistance = fx * fx + fy * fy;
        result.height = mpq_class(e.first->z()) + t * (mpq_class(e.second->z()) - mpq_class(e.first->z()));
    }
    return result;
}

bool QueryTwin::entry(const Point2& src, const Point2& trg, mpq_class& x, mpq_class& y) const
{
    // Cyrus and Beck, 1978: the segment is cut at each edge's half-plane.
    mpq_class tIn = 0, tOut = 1;
    for (const BorderEdge& e : vBorder) {
        const mpq_class atSrc = orientationDet(*e.first, *e.second, src);
        const mpq_class atTrg = orientationDet(*e.first, *e.second, trg);
        if (atSrc < 0 && atTrg < 0) return false;
        if (atSrc >= 0 && atTrg >= 0) continue;
        const mpq_class t = atSrc / (atSrc - atTrg);
        if (atSrc < 0 && t > tIn) tIn = t;
        if (atSrc >= 0 && t < tOut) tOut = t;
    }
    if (tIn > tOut) return false;
    x = mpq_class(src.x()) + tIn * (mpq_class(trg.x()) - mpq_class(src.x()));
    y = mpq_class(src.y()) + tIn * (mpq_class(trg.y()) - mpq_class(src.y()));
    return true;
}

} // namespace oracles
