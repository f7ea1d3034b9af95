#ifndef LUMO25D_CORE_FILTERWALK_H
#define LUMO25D_CORE_FILTERWALK_H

#include "geometry/OrbiTest_filters.h"
#include "geometry/TriangleLinks.h"

#include <cmath>
#include <utility>

namespace ORBI_LUMO25D
{

/// A visibility walk (Devillers, Pion and Teillaud, "Walking in a triangulation", 2002), as far as the floating-point
/// filters can tell. It goes by the triangles' coordinates alone, holds them in registers, and reads each once.
class FilterWalk
{
public:
    enum Result
    {
        INSIDE,   ///< the point lies strictly inside of pT
        AT_HULL,  ///< it lies strictly beyond the hull edge hullEdge of pT
        UNDECIDED ///< the filters can't tell, the walk was long, or pT isn't to be read
    };

    /// staticBound: of an orientation of coordinates in their range. mayRead(pT) is asked of each triangle after the first
    /// one before the walk goes on from there.
    template <class MayRead>
    Result run(const Point2& p, double staticBound, Triangle2* pStart, const MayRead& mayRead);

    /// After so many steps the walk might go in a circle.
    static constexpr unsigned maxStraightSteps = 1000;

    Triangle2* pT = nullptr; ///< where the walk has ended
    int hullEdge = -1;

private:
    /// On which side of an edge the origin lies, as far as the filters can tell: by the bound of all coordinates, and
    /// where that doesn't do, by the determinant's own terms (filters::OrientationValue).
    class SideOfEdge
    {
    public:
        /// The edge from (ax, ay) to (bx, by), relative to the point that is asked for.
        SideOfEdge(double ax, double ay, double bx, double by, double staticBound)
            : det(ax * by - ay * bx), bound(staticBound)
        {
            if (__builtin_expect(!(std::fabs(det) > staticBound), 0)) {
                bound = filters::OrientationValue{ax, ay, bx, by}.bound();
            }
        }
        bool isBeyond() const { return det < -bound; }
        bool isInside() const { return det > bound; }

    private:
        double det;
        double bound;
    };
};

template <class MayRead>
FilterWalk::Result FilterWalk::run(const Point2& p, double staticBound, Triangle2* pStart, const MayRead& mayRead)
{
    using L = TriangleLinks;
    const double px = p.x(), py = p.y();
    pT = pStart;

    // Which edge was entered across (any one at the start), and its ends u = corner e+1 and v = corner e+2 relative to p.
    int e = 0;
    double ux = pT->corner(1)->x() - px, uy = pT->corner(1)->y() - py;
    double vx = pT->corner(2)->x() - px, vy = pT->corner(2)->y() - py;
    bool bNextFirst = true;
    const SideOfEdge start(ux, uy, vx, vy, staticBound);
    if (start.isBeyond()) {
        Triangle2* const pN = pT->neighbor(0);
        if (pN == nullptr) {
            hullEdge = 0;
            return AT_HULL;
        }
        e = L::indexOf(pN, pT);
        pT = pN;
        std::swap(ux, vx);
        std::swap(uy, vy);
        if (!mayRead(pT)) return UNDECIDED;
    } else if (!start.isInside()) {
        return UNDECIDED;
    }
    for (unsigned steps = 0; steps < maxStraightSteps; ++steps) {
        // One of these two is most likely next: ask for both while w is on its way.
        __builtin_prefetch(pT->neighbor(L::next(e)));
        __builtin_prefetch(pT->neighbor(L::prev(e)));
        const Point2* const pW = pT->corner(e);
        const double wx = pW->x() - px, wy = pW->y() - py;
        // The edges opposite u and v, both before the first is decided upon: the second costs nothing while the first is
        // waited for. Which of them is crossed is chosen without a branch, for it can't be predicted.
        const SideOfEdge sideU(vx, vy, wx, wy, staticBound);
        const SideOfEdge sideV(wx, wy, ux, uy, staticBound);
        const bool bCrossU = sideU.isBeyond();
        const bool bCrossV = sideV.isBeyond();
        if (!(bCrossU | bCrossV)) return sideU.isInside() && sideV.isInside() ? INSIDE : UNDECIDED;
        // Successive steps alternate their preferred side, so that the walk does not drift.
        const bool bTakeU = bCrossU & (bNextFirst | !bCrossV);
        const int i = bTakeU ? L::next(e) : L::prev(e);
        bNextFirst = bTakeU != bNextFirst;
        Triangle2* const pN = pT->neighbor(i);
        if (pN == nullptr) {
            hullEdge = i;
            return AT_HULL;
        }
        e = L::indexOf(pN, pT);
        pT = pN;
        ux = bTakeU ? wx : ux;
        uy = bTakeU ? wy : uy;
        vx = bTakeU ? vx : wx;
        vy = bTakeU ? vy : wy;
        if (!mayRead(pT)) return UNDECIDED;
    }
    return UNDECIDED;
}

} // namespace ORBI_LUMO25D

#endif
