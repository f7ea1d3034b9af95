#ifndef LUMO25D_CORE_STARREPAIR_H
#define LUMO25D_CORE_STARREPAIR_H

#include "geometry/TriangleLinks.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

/// Delaunay repair of the star of a newly inserted vertex (Lawson's flips, depth first).
///
/// Every triangle of the star has the new vertex at corner 0, so the edge to check is the one opposite corner 0. A flip
/// there puts both triangles into the star, with one new outer edge each. Whether an outer edge is flipped depends
/// only on the triangle beyond it, so that the result does not depend on the order of the flips.
///
/// Two things make this fast. The in-circle filter is evaluated as soon as an outer edge comes up, both edges of a flip
/// together, and an edge that stays is dropped by arithmetic instead of a branch: the processor never waits for one
/// test before it starts the next. And differences, lifts and cross products relative to the new vertex are handed on
/// from one test to the next, because two of the three corners are shared.
class StarRepair
{
public:
    StarRepair() { vStack.resize(64); }

    /// Notes a coordinate that is about to come in.
    ///
    /// The filter's bound covers rounding, not underflow. As long as every coordinate is 0 or at least 1e-50, all are
    /// multiples of a unit above 1e-67, and so are their differences, rounded or not: every product that the filter
    /// forms is 0 or far above the smallest normal double. With smaller coordinates the filter is switched off: an
    /// infinite bound sends every test to the predicates. Overflow gives an infinite bound or no number, which nothing
    /// exceeds.
    void admit(double coordinate)
    {
        const double a = std::fabs(coordinate);
        if (a < 1e-50 && a > 0.0) inCircleFactor = std::numeric_limits<double>::infinity();
    }
    /// In fast mode, what is decided here has to clear the filter that the mode is defined by.
    void setFastMode(bool bFast)
    {
        if (inCircleFactor < 1.0) inCircleFactor = bFast ? 3.33e-15 : 1.12e-15;
    }

    /// Drops the work list.
    void clear() { depth = 0; }

    void begin(const Point2* pVtx)
    {
        vx = pVtx->x();
        vy = pVtx->y();
        depth = 0;
    }

    /// Enters the outer edge of a triangle of the star, corner 0 of which is the new vertex.
    void consider(Triangle2* pT)
    {
        Triangle2* const pN = pT->neighbor(0);
        if (pN == nullptr) return;
        const Spoke b = spokeTo(pT->corner(1));
        const Spoke c = spokeTo(pT->corner(2));
        reserveTwo();
        evaluate(pT, pN, TriangleLinks::indexOf(pN, pT), b, c, b.x * c.y - b.y * c.x);
    }

    /// Flips until every outer edge is settled. inCircleSlow(pT, pN) decides where the filter can't: whether the new
    /// vertex lies strictly inside the circumcircle of pN. An outer edge for which isFixed(pT) stays in any case.
    template <class InCircleSlow>
    void run(const InCircleSlow& inCircleSlow)
    {
        run(inCircleSlow, [](const Triangle2*) { return false; });
    }
    template <class InCircleSlow, class IsFixed>
    void run(const InCircleSlow& inCircleSlow, const IsFixed& isFixed)
    {
        while (depth != 0) {
            const OuterEdge& e = vStack[--depth];
            if ((e.value > e.bound || inCircleSlow(e.pT, e.pN)) && !isFixed(e.pT)) flip(OuterEdge(e));
        }
    }

private:
    /// A corner relative to the new vertex, and its squared distance (the lift).
    struct Spoke
    {
        double x, y, lift;
    };

    /// An outer edge (b, c) of the star triangle pT = (v, b, c), the triangle pN beyond it, whose far corner d has index
    /// j, and the in-circle value of pN and v with its error bound.
    struct OuterEdge
    {
        Triangle2* pT;
        Triangle2* pN;
        double value, bound;
        Spoke b, c, d;
        double bXd, dXc;
        int j;
    };

    Spoke spokeTo(const Point2* p) const
    {
        const double x = p->x() - vx;
        const double y = p->y() - vy;
        return {x, y, x * x + y * y};
    }

    /// Room for the two entries that evaluate() may write after each pop.
    void reserveTwo()
    {
        if (depth + 2 > vStack.size()) vStack.resize(2 * vStack.size());
    }

    void evaluate(Triangle2* pT, Triangle2* pN, int j, const Spoke& b, const Spoke& c, double bXc)
    {
        // If this edge is flipped, these two are next: in a mesh that is larger than the caches, that is where time goes.
        __builtin_prefetch(pN->neighbor(TriangleLinks::next(j)));
        __builtin_prefetch(pN->neighbor(TriangleLinks::prev(j)));
        const Spoke d = spokeTo(pN->corner(j));
        const double bXd = b.x * d.y - b.y * d.x;
        const double dXc = d.x * c.y - d.y * c.x;
        const double value = (bXd * c.lift + dXc * b.lift) - bXc * d.lift;
        const double bound = inCircleFactor * (b.lift * c.lift + (b.lift + c.lift) * d.lift);
        vStack[depth] = {pT, pN, value, bound, b, c, d, bXd, dXc, j};
        depth += static_cast<std::size_t>(!(value < -bound));
    }

    /// Flips the outer edge away: pT becomes (v, b, d), pN becomes (v, d, c), and their outer edges come up.
    void flip(const OuterEdge& e)
    {
        using L = TriangleLinks;
        Triangle2* const pT = e.pT;
        Triangle2* const pN = e.pN;
        Point2* const v = pT->corner(0);
        Point2* const b = pT->corner(1);
        Point2* const c = pT->corner(2);
        Point2* const d = pN->corner(e.j);
        Triangle2* const pBD = pN->neighbor(L::next(e.j));
        Triangle2* const pDC = pN->neighbor(L::prev(e.j));
        Triangle2* const pCV = pT->neighbor(1);

        L::set(pT, v, b, d, pBD, pN, pT->neighbor(2));
        L::set(pN, v, d, c, pDC, pCV, pT);
        if (pCV != nullptr) L::setNeighbor(pCV, 2, pN);
        b->setIncidentTriangle(pT);
        c->setIncidentTriangle(pN);

        reserveTwo();
        if (pBD != nullptr) {
            const int j = L::indexOf(pBD, pN);
            L::setNeighbor(pBD, j, pT);
            evaluate(pT, pBD, j, e.b, e.d, e.bXd);
        }
        if (pDC != nullptr) evaluate(pN, pDC, L::indexOf(pDC, pN), e.d, e.c, e.dXc);
    }

    /// The filter: the in-circle determinant of the lifts al, bl, cl of three corners is right in its sign when its
    /// magnitude exceeds this times al bl + bl cl + cl al. For the sum P of the magnitudes of its terms the factor is
    /// (10 + 96 e) e, e = 2^-53 (Shewchuk 1997); each |bx cy| + |cx by| is at most sqrt(bl cl), and then P is at most
    /// that sum by the inequality of the means. 1.12e-15 leaves room for the rounding of the bound itself.
    double inCircleFactor = 1.12e-15;
    double vx = 0.0, vy = 0.0;
    std::size_t depth = 0;
    std::vector<OuterEdge> vStack;
};

} // namespace ORBI_LUMO25D

#endif
