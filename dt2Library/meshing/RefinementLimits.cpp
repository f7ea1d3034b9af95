#include "meshing/RefinementLimits.h"

#include "meshing/TriangleShape.h"

#include "ConstraintSegment2.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double infinity = std::numeric_limits<double>::infinity();
/// The aspect of an isosceles triangle with two angles of 30 degrees: what is worse has a smaller one.
constexpr double smallestCapLimit = 3.4642;
constexpr double unlimited = std::numeric_limits<double>::max();

double sqSineOfDegrees(double angle)
{
    const double sine = std::sin(std::max(angle, 0.0) * (3.14159265358979323846 / 180.0));
    return sine * sine;
}

/// The best that the plane allows.
const double sqSineGoodIn2D = sqSineOfDegrees(29.5);

} // namespace

RefinementLimits::RefinementLimits(MeshGenParams& params_, Dt2* pGuide_)
    : params(params_), pGuide(pGuide_), sqSineLimit(sqSineOfDegrees(params_.minAngleDegree)),
      capLimit(hasGrid(params_) ? std::max(params_.capAspectLimit, smallestCapLimit) : infinity)
{
    if (params.pLockedConstraints == nullptr) return;
    for (ConstraintSegment2* pCSeg : *params.pLockedConstraints) {
        if (pCSeg == nullptr) continue;
        sLocked.insert(pCSeg);
        std::vector<ConstraintSegment2*> vParts;
        if (pCSeg->isDead()) pCSeg->getChildrenRec(vParts);
        sLocked.insert(vParts.begin(), vParts.end());
    }
}

bool RefinementLimits::isTooLong(const TriangleShape& shape, Triangle2* pT) const
{
    const double limit = params.getMaxEdgeLength(pT);
    return shape.maxSq25D() > limit * limit;
}

bool RefinementLimits::isTooLarge(const TriangleShape& shape, Triangle2* pT) const
{
    return shape.area25D() > params.getMaxTriangleArea(pT);
}

bool RefinementLimits::isTooSharp(const TriangleShape& shape) const
{
    return sqSineLimit > shape.sqSineSmallest25D() && !(shape.sqSineSmallest2D() > sqSineGoodIn2D);
}

bool RefinementLimits::isCap(const TriangleShape& shape) const
{
    // The edge over its height, which is twice the area over the edge.
    return capLimit != infinity && shape.maxSq2D() > capLimit * 2.0 * shape.area2D();
}

bool RefinementLimits::hasGrowthLimit() const
{
    return params.growthFactor != unlimited && params.growthFactor > 0.0;
}

bool RefinementLimits::hasHeightLimit() const
{
    return pGuide != nullptr && params.maxGuideHeightError != unlimited;
}

} // namespace ORBI_LUMO25D
