#include "meshing/RefCand3.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "meshing/ConcentricShells.h"
#include "meshing/RefinementLimits.h"
#include "support/check.h"
#include "support/messages.h"

#include "MeshGenParams.h"
#include "Vector2.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

RefCand3::RefCand3(Dt2& dt2_, Triangle2* pTriangle_)
    : dt2(dt2_), pTriangle(pTriangle_), aCorners{pTriangle_->corner(0), pTriangle_->corner(1), pTriangle_->corner(2)},
      shape(*pTriangle_)
{
}

bool RefCand3::isAlive() const
{
    return pTriangle->corner(0) == aCorners[0] && pTriangle->corner(1) == aCorners[1] &&
           pTriangle->corner(2) == aCorners[2];
}

double RefCand3::getSmallestAngle() const
{
    return std::asin(std::sqrt(std::min(shape.sqSineSmallest25D(), 1.0))) * 180.0 / 3.14159265358979323846;
}

// ---- the way to the circumcentre --------------------------------------------------------------------------------------

/// A straight walk from the corner with the largest angle towards the circumcentre, that stops at constraints. All
/// decisions are exact.
class RefCand3::Walk
{
public:
    Walk(const Dt2& dt2_, const Point2& goal_, Triangle2* pT_)
        : pT(pT_), dt2(dt2_), goal(goal_), pStart(pT_->corner(pT_->getMaxIndex())),
          bInRange(goal_.getMaxAbs() <= dt2_.orbiTest.getMaxCoord())
    {
    }

    /// As RefCand3::getContainingAndIndex().
    int run();

    Triangle2* pT;      ///< where the walk stands
    int edgeBelow = -1; ///< of pT, that the goal lies on, or -1

private:
    /// A far circumcentre must not spoil the filter's bound for all.
    Orientation2 orientation(const Point2* p, const Point2* q, const Point2* r) const
    {
        return bInRange ? dt2.orbiTest.orientationInRange(p, q, r) : dt2.orbiTest.orientationByIntervals(p, q, r);
    }
    const Point2* source(int side) const { return pT->corner(L::next(side)); }
    const Point2* target(int side) const { return pT->corner(L::prev(side)); }
    bool isOnTheWay(int side) const
    {
        return orientation(pStart, &goal, source(side)) != orientation(pStart, &goal, target(side));
    }
    bool isBarrier(int side) const { return pT->neighbor(side) == nullptr || dt2.isConstraint(pT, side); }
    bool isAtCorner() const { return *pT->corner(0) == goal || *pT->corner(1) == goal || *pT->corner(2) == goal; }

    const Dt2& dt2;
    const Point2& goal;
    const Point2* pStart;
    bool bInRange;
};

int RefCand3::Walk::run()
{
    // Rounding can put the goal of an inaccurate circumcentre where no edge is both passed and on the way.
    constexpr int maxIdle = 6;
    int checks = 3; // edges that are still to be shown to have the goal on their inner side
    int idle = 0;
    for (int side = 0; checks != 0; side = L::next(side)) {
        const Orientation2 o = orientation(source(side), target(side), &goal);
        if (o == ORIENTATION2_CCW) {
            --checks;
            continue;
        }
        if (o == ORIENTATION2_COLLINEAR) {
            if (isAtCorner()) return atCorner;
            edgeBelow = side;
            --checks;
            continue;
        }
        if (!isOnTheWay(side)) {
            checks = 3;
            if (++idle > maxIdle) return atCorner;
            continue;
        }
        if (isBarrier(side)) return side;
        Triangle2* const pN = pT->neighbor(side);
        side = L::indexOf(pN, pT);
        pT = pN;
        checks = 2;
        idle = 0;
        edgeBelow = -1;
    }
    return edgeBelow >= 0 && isBarrier(edgeBelow) ? edgeBelow : -1;
}

void RefCand3::computeSplitInfo()
{
    const auto [center, bAccurate] = pTriangle->getDual();
    circumcenter = center;
    bCircumcenterAccurate = bAccurate;
    radius = std::hypot(center.x() - aCorners[0]->x(), center.y() - aCorners[0]->y());
    Walk walk(dt2, circumcenter, pTriangle);
    splitIndex = walk.run();
    pContainingT = walk.pT;
    edgeBelow = walk.edgeBelow;
}

ConstraintSegment2* RefCand3::getConstraintSegment(int ith) const
{
    if (splitIndex < 0) return nullptr;
    LUMO_CHECK(ith >= 0 && ith <= 2, "range(ith,0,2)");
    return dt2.getConstraintSegment(pContainingT->corner(L::next(ith)), pContainingT->corner(L::prev(ith)));
}

// ---- what stands against it -------------------------------------------------------------------------------------------

bool RefCand3::isBlocked(const RefinementLimits& limits) const
{
    return isBlockedBySplitRule(limits) || isTooClose(limits) || !isSafe();
}

bool RefCand3::isBlockedBySplitRule(const RefinementLimits& limits) const
{
    if (splitIndex < 0) return false;
    if (splitIndex == atCorner || !limits.params.bAllowConstraintSplitting) return true;
    if (limits.isLocked(getConstraintSegment(splitIndex))) return true;
    return 2.0 * limits.params.minEdgeLength > std::sqrt(pContainingT->getSquaredEdgeLength25D(splitIndex));
}

/// Nothing that the circumcentre sees is nearer to it than the corners of its triangle.
bool RefCand3::isTooClose(const RefinementLimits& limits) const
{
    return splitIndex < 0 && radius < limits.params.minEdgeLength;
}

bool RefCand3::isSafe() const
{
    if (bCircumcenterAccurate || splitIndex < 0) return true;
    const int maxIdx = pTriangle->getMaxIndex();
    if (!dt2.isConstraint(pTriangle, maxIdx)) return false;
    // It belongs behind that edge.
    if (getOrientation2_mt(aCorners[L::next(maxIdx)], aCorners[L::prev(maxIdx)], &circumcenter) == ORIENTATION2_CCW) {
        return false;
    }
    if (splitIndex == maxIdx) return true;
    msgWarning("RefCand3::isSafe()", "splitIndex!=maxIdx, numeric");
    return false;
}

// ---- whether it is needed ---------------------------------------------------------------------------------------------

bool RefCand3::needRefinement(const RefinementLimits& limits)
{
    reason = NONE;
    if (!shape.isMeasurable()) return false;
    if (!isBadBySize(limits) && !isBadByAngle(limits)) {
        if (!limits.hasHeightLimit() || !getHeightError(limits.pGuide, limits.params.maxGuideHeightError)) {
            return false;
        }
        reason = HEIGHT;
    }
    computeSplitInfo();
    return !isBlocked(limits);
}

bool RefCand3::isBadBySize(const RefinementLimits& limits)
{
    const bool bDiagnostics = limits.params.verbosity == 1;
    if (limits.isTooLong(shape, pTriangle)) {
        if (bDiagnostics) {
            std::cout << "RefC: sidelength is " << std::sqrt(shape.maxSq25D()) << " > "
                      << limits.params.getMaxEdgeLength(pTriangle) << '\n';
        }
        reason = SIZE;
    } else if (limits.isTooLarge(shape, pTriangle)) {
        if (bDiagnostics) std::cout << "RefC: area\n";
        reason = SIZE;
    } else if (limits.hasGrowthLimit() && isBadGrowth(limits.params.growthFactor, limits.params.growthFactorMinArea)) {
        if (bDiagnostics) std::cout << "RefC: growth\n";
        reason = GROWTH;
    }
    return reason != NONE;
}

bool RefCand3::isBadByAngle(const RefinementLimits& limits)
{
    double limit = limits.params.minAngleDegree;
    if (!limits.isTooSharp(shape)) {
        if (!limits.isCap(shape) || !isAtConstraint()) return false;
        limit = 30.0;
    }
    if (hasSmallConstraintAngle(limit) || isAcrossSharpCorner()) return false;
    if (limits.params.verbosity == 1) std::cout << "RefC: minAngle, current=" << getSmallestAngle() << '\n';
    reason = ANGLE;
    return true;
}

bool RefCand3::isBadGrowth(double factor, double minArea) const
{
    constexpr double unknown = std::numeric_limits<double>::max();
    const double ownArea = shape.area25D();
    for (int i = 0; i < 3; ++i) {
        double area = unknown;
        const ConstraintSegment2* const pCSeg = dt2.getConstraintSegment(aCorners[L::next(i)], aCorners[L::prev(i)]);
        if (pCSeg != nullptr) {
            area = pCSeg->getAdjacentArea();
        } else if (const Triangle2* const pN = pTriangle->neighbor(i)) {
            area = TriangleShape(*pN).area25D();
        }
        if (area != 0.0 && area >= minArea && area < unknown && ownArea / area > factor) return true;
    }
    return false;
}

bool RefCand3::isAtConstraint() const
{
    return std::any_of(aCorners, aCorners + 3, [this](const Point2* pVtx) { return dt2.isConstraint(pVtx); });
}

/// An angle between two constraints can't be cured by inserting a vertex.
bool RefCand3::hasSmallConstraintAngle(double limit) const
{
    const bool aConstraint[3] = {dt2.isConstraint(pTriangle, 0), dt2.isConstraint(pTriangle, 1),
                                 dt2.isConstraint(pTriangle, 2)};
    for (int i = 0; i < 3; ++i) {
        if (!aConstraint[L::next(i)] || !aConstraint[L::prev(i)]) continue;
        const Vector2 v = *aCorners[L::next(i)] - *aCorners[i];
        const Vector2 w = *aCorners[L::prev(i)] - *aCorners[i];
        const double cosine = std::min(std::max((v * w) / (v.length() * w.length()), -1.0), 1.0);
        if (limit > std::acos(cosine) / 3.14159 * 180.0) return true;
    }
    return false;
}

/// The smallest angle is the one between the two longest edges: the shortest edge lies across it.
bool RefCand3::isAcrossSharpCorner() const
{
    const int i = pTriangle->getMinIndex();
    return ConcentricShells(dt2).isAcrossCorner(aCorners[L::next(i)], aCorners[L::prev(i)]);
}

bool RefCand3::getHeightError(Dt2* pGuide, double maxError) const
{
    if (pGuide == nullptr) {
        msgWarning("RefCand3::getHeightError()", "No guide");
        return false;
    }
    const Point2 center = pTriangle->getBarycenter();
    double height = 0.0;
    double guideHeight = 0.0;
    if (!dt2.getHeight(center.x(), center.y(), height, pTriangle, 0.0) ||
        !pGuide->getHeight(center.x(), center.y(), guideHeight, nullptr, 0.0)) {
        return false;
    }
    return std::fabs(height - guideHeight) > maxError;
}

} // namespace ORBI_LUMO25D
