#include "meshing/ConcentricShells.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/aroundVertex.h"
#include "geometry/distances.h"
#include "geometry/snapping.h"

#include <cmath>

namespace ORBI_LUMO25D
{

namespace
{

/// Less than 60 degrees between the ways from p to q and from p to r.
bool isSharp(const Point2& p, const Point2& q, const Point2& r)
{
    const double ux = q.x() - p.x(), uy = q.y() - p.y();
    const double vx = r.x() - p.x(), vy = r.y() - p.y();
    const double product = ux * vx + uy * vy;
    return product > 0.0 && 4.0 * product * product > (ux * ux + uy * uy) * (vx * vx + vy * vy) * (1.0 + 1e-12);
}

} // namespace

bool ConcentricShells::isSharpCorner(const Point2* pVtx, const Point2* pEnd) const
{
    return anyNeighborOf(pVtx, [this, pVtx, pEnd](const Point2* p) {
        return p != pEnd && isSharp(*pVtx, *pEnd, *p) && dt2.isConstraint(pVtx, p);
    });
}

double ConcentricShells::splitFraction(const Point2* pA, const Point2* pB) const
{
    const bool bSharpA = isSharpCorner(pA, pB);
    if (bSharpA == isSharpCorner(pB, pA)) return 0.5;
    const double length = distance2D(*pA, *pB);
    const double fraction = std::exp2(std::round(std::log2(length / 2.0))) / length;
    if (!(fraction > 0.25 && fraction < 0.75)) return 0.5; // where the length is beyond the doubles
    return bSharpA ? fraction : 1.0 - fraction;
}

bool ConcentricShells::isAcrossCorner(const Point2* pU, const Point2* pV) const
{
    if (!dt2.isConstraint(pU) || !dt2.isConstraint(pV) || dt2.isConstraint(pU, pV)) return false;
    return anyNeighborOf(pU, [this, pU, pV](const Point2* pNearU) {
        const ConstraintSegment2* const pSegU = dt2.getConstraintSegment(pU, pNearU);
        return pSegU != nullptr && anyNeighborOf(pV, [this, pU, pV, pSegU](const Point2* pNearV) {
                   const ConstraintSegment2* const pSegV = dt2.getConstraintSegment(pV, pNearV);
                   return pSegV != nullptr && meetOnShell(*pSegU, *pSegV, *pU, *pV);
               });
    });
}

/// The segments as they were given tell: their parts near u and v need not reach the corner.
bool ConcentricShells::meetOnShell(const ConstraintSegment2& segU, const ConstraintSegment2& segV, const Point2& u,
                                   const Point2& v) const
{
    const ConstraintSegment2& carrierU = *segU.pCarrier;
    const ConstraintSegment2& carrierV = *segV.pCarrier;
    if (&carrierU == &carrierV) return false;
    const Point2& a = *carrierU.getSrc();
    const Point2& b = *carrierU.getTrg();
    const Point2& c = *carrierV.getSrc();
    const Point2& d = *carrierV.getTrg();
    Point2 corner;
    if (a == c || a == d) {
        corner = a;
    } else if (b == c || b == d) {
        corner = b;
    } else {
        double x = 0.0, y = 0.0;
        if (!roundedCrossing(dt2.orbiTest, a, b, c, d, x, y)) return false;
        corner.setCoords(x, y, 0.0);
        if (!isInRange2D(corner, a, b) || !isInRange2D(corner, c, d)) return false;
    }
    // The parts at u and v double in length from shell to shell: whatever is on one has the same distance to rounding.
    const double ratio = distance2D(corner, u) / distance2D(corner, v);
    return ratio > 0.999 && ratio < 1.001 && isSharp(corner, u, v);
}

} // namespace ORBI_LUMO25D
