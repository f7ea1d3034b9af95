#include "core/StraightWalk.h"

#include "geometry/OrbiTest.h"
#include "geometry/TriangleLinks.h"
#include "support/check.h"

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

void StraightWalk::run(const Point2* pFrom_)
{
    pFrom = pFrom_;
    pT = pFrom->getIncidentTriangle();
    LUMO_CHECK(pT != nullptr, "pStartTriangle!=0");
    do {
        if (finishAtCorner()) return;
        turnTowardsPoint();
    } while (!endsHere() && !crossToPoint());
}

bool StraightWalk::finishAtCorner()
{
    for (int i = 0; i < 3; ++i) {
        if (*pT->corner(i) != p) continue;
        pEqual = pT->corner(i);
        return true;
    }
    return false;
}

/// Turns around the vertex to the triangle whose wedge holds the point: one way only, and never round.
void StraightWalk::turnTowardsPoint()
{
    from = L::indexOf(pT, pFrom);
    if (orbiTest.orientationInRange(pFrom, pT->corner(L::next(from)), &p) == ORIENTATION2_CW) {
        do {
            pT = pT->neighbor(L::prev(from));
            LUMO_CHECK(pT != nullptr, "tmpTriangle!=0");
            from = L::indexOf(pT, pFrom);
        } while (orbiTest.orientationInRange(pFrom, pT->corner(L::next(from)), &p) == ORIENTATION2_CW);
        return;
    }
    while (orbiTest.orientationInRange(pFrom, pT->corner(L::prev(from)), &p) == ORIENTATION2_CCW) {
        pT = pT->neighbor(L::next(from));
        LUMO_CHECK(pT != nullptr, "tmpTriangle!=0");
        from = L::indexOf(pT, pFrom);
    }
}

/// True when the triangle at the vertex holds the point already.
bool StraightWalk::endsHere()
{
    const Point2* const a = pT->corner(L::next(from));
    const Point2* const b = pT->corner(L::prev(from));
    const Orientation2 beyond = orbiTest.orientationInRange(a, b, &p);
    if (beyond == ORIENTATION2_CW) return false;
    if (finishAtCorner()) return true;
    if (beyond == ORIENTATION2_COLLINEAR) edgeIdx = from;
    if (orbiTest.orientationInRange(pFrom, a, &p) == ORIENTATION2_COLLINEAR) edgeIdx = L::prev(from);
    if (orbiTest.orientationInRange(pFrom, b, &p) == ORIENTATION2_COLLINEAR) edgeIdx = L::next(from);
    return true;
}

/// Crosses edges as long as the point lies beyond them; the segment runs between the ends of each. False when it meets a
/// vertex on its way: the walk begins anew from there.
bool StraightWalk::crossToPoint()
{
    int crossed = from;
    for (;;) {
        Triangle2* const pN = pT->neighbor(crossed);
        LUMO_CHECK(pN != nullptr, "tmpTriangle!=0");
        const int e = L::indexOf(pN, pT);
        pT = pN;
        // The crossed edge has its left end at corner e+1, its right end at e+2. The far corner bounds the next edge on
        // its own side of the segment.
        const Orientation2 side = orbiTest.orientationInRange(pFrom, &p, pT->corner(e));
        const int toRight = L::next(e);
        const int toLeft = L::prev(e);
        if (side == ORIENTATION2_COLLINEAR) {
            if (isBeyond(toRight) || isBeyond(toLeft)) {
                pFrom = pT->corner(e);
                return false;
            }
            finishInside(toRight, toLeft);
            return true;
        }
        crossed = side == ORIENTATION2_CCW ? toRight : toLeft;
        if (isBeyond(crossed)) continue;
        finishInside(crossed, crossed);
        return true;
    }
}

bool StraightWalk::isBeyond(int i) const
{
    return orbiTest.orientationInRange(pT->corner(L::next(i)), pT->corner(L::prev(i)), &p) == ORIENTATION2_CW;
}

/// The triangle holds the point; i and j are the edges that it may lie on.
void StraightWalk::finishInside(int i, int j)
{
    if (finishAtCorner()) return;
    for (const int k : {i, j}) {
        if (orbiTest.orientationInRange(pT->corner(L::next(k)), pT->corner(L::prev(k)), &p) == ORIENTATION2_COLLINEAR) {
            edgeIdx = k;
        }
    }
}

} // namespace ORBI_LUMO25D
