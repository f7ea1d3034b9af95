#ifndef LUMO25D_MESHING_REFCAND3_H
#define LUMO25D_MESHING_REFCAND3_H

#include "meshing/TriangleShape.h"

#include "Point2.h"
#include "Triangle2.h"

#include <utility>

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Dt2;
class RefinementLimits;

/// A triangle that may need refinement: whether it does, and where the new vertex would go.
///
/// Lives while it is looked at. What waits is a CandidateQueue::Entry: most of those die before their turn comes.
class RefCand3
{
public:
    /// Why a triangle needs refinement.
    enum Reason
    {
        NONE,
        SIZE, ///< length or area
        GROWTH,
        ANGLE,
        HEIGHT
    };
    /// getContainingAndIndex().second for a circumcentre that coincides with a vertex.
    static constexpr int atCorner = 4;

    RefCand3(Dt2& dt2_, Triangle2* pTriangle_);

    /// False when the triangle has other corners than at construction.
    bool isAlive() const;
    /// In degrees, in space.
    double getSmallestAngle() const;
    /// Finds the circumcentre and walks towards it: to the triangle that holds it, or to the first constraint on the way.
    void computeSplitInfo();
    /// The triangle is bad, and something can be done about it. Computes the split info of a bad one.
    bool needRefinement(const RefinementLimits& limits);
    Reason getReason() const { return reason; }
    /// It is long for the difference of heights alone: it stands at more than 83 degrees.
    bool isSteep() const { return shape.maxSq25D() > 64.0 * shape.maxSq2D(); }
    /// Whether the circumcentre can be trusted.
    bool isSafe() const;
    bool isBlocked(const RefinementLimits& limits) const;
    /// Whether the surface at the barycentre is farther than maxError above or below the guide. False where either of them
    /// has no height; without a guide a warning, and false.
    bool getHeightError(Dt2* pGuide, double maxError) const;

    const Point2& getCircumcenter() const { return circumcenter; }
    /// Where the walk ended, and -1 in the triangle that holds the circumcentre; 0 to 2 at that edge of it, which is a
    /// constraint or on the hull; atCorner.
    std::pair<Triangle2*, int> getContainingAndIndex() const { return {pContainingT, splitIndex}; }
    /// The edge of the containing triangle that the circumcentre lies on, or -1.
    int getEdgeBelow() const { return edgeBelow; }
    /// Of the edge opposite corner ith of the containing triangle, when the walk ended at an edge; else NULL.
    ConstraintSegment2* getConstraintSegment(int ith) const;

private:
    class Walk;

    bool isBlockedBySplitRule(const RefinementLimits& limits) const;
    bool isTooClose(const RefinementLimits& limits) const;
    bool isBadBySize(const RefinementLimits& limits);
    bool isBadByAngle(const RefinementLimits& limits);
    bool isBadGrowth(double factor, double minArea) const;
    bool isAtConstraint() const;
    bool hasSmallConstraintAngle(double limit) const;
    bool isAcrossSharpCorner() const;

    Dt2& dt2;
    Triangle2* pTriangle;
    Point2* aCorners[3];
    TriangleShape shape;
    Triangle2* pContainingT = nullptr;
    Point2 circumcenter;
    double radius = -1.0;
    int splitIndex = -1;
    int edgeBelow = -1;
    bool bCircumcenterAccurate = true;
    Reason reason = NONE;
};

} // namespace ORBI_LUMO25D

#endif
