#ifndef LUMO25D_REPAIR_CORNERGEOMETRY_H
#define LUMO25D_REPAIR_CORNERGEOMETRY_H

#include "repair/PatchSurface.h"

#include "Point2.h"
#include "Vector2.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

/// A corner of the front: its base vertex between the neighbours dec (before) and inc (after), with the hole on the left
/// of dec, base, inc. Tells how far the corner is open, and where new points would continue the surface.
class CornerGeometry
{
public:
    /// Failed conditions: two of the three vertices are one, or at one place.
    CornerGeometry(const PatchSurface& surface_, std::size_t base, std::size_t dec, std::size_t inc, bool bVerbose_);

    /// The opening on the hole's side in degrees. A reflex corner has the angle between its edges plus 180, not 360
    /// minus it: it only has to sort behind the convex ones.
    double getAngle() const { return angle; }
    /// Between the surface's normal and that of the corner's own triangle, in degrees; 180 if one of them is missing.
    double getNormalAngle() const { return normalAngle; }
    /// By how much the border turns into the hole here, seen along the surface's normal: from -180 to 180 degrees.
    double computeTurn() const;
    const Point2& getDec() const { return *pDec; }
    const Point2& getInc() const { return *pInc; }
    /// The surface's unit normal here; may be null.
    const Vector2& getNNV() const { return nnv; }

    /// One new point that halves the opening. False if the surroundings are degenerate, or the point would be all but on
    /// an edge of the corner.
    bool computeAddPoint(double medianEdgeLength, Point2& add0) const;
    /// Two new points at the thirds of the opening, the first one beside dec. False as above.
    bool computeTwoAddPoints(double medianEdgeLength, Point2& add0, Point2& add1) const;

private:
    /// How the surface goes on: a direction in the tangent plane becomes that direction + offset.
    struct Bend
    {
        Vector2 tangent; ///< into the hole, in the tangent plane, of length 1
        Vector2 offset;
        bool bSteep = false; ///< the corner's own plane is upright on the tangent plane
    };

    NormalSum sumNormalsAtEdges() const;
    NormalSum computeVertexNNV() const;
    double computeCurvature() const;
    Vector2 computeLaplacian() const;
    bool computeBend(double len, Bend& bend) const;
    void computeThirds(const Bend& bend, Vector2& third0, Vector2& third1) const;
    bool isClearOfHands(const Vector2& direction) const;
    double newEdgeLength(double medianEdgeLength) const;

    const PatchSurface& surface;
    std::size_t baseVertex;
    std::size_t decVertex;
    std::size_t incVertex;
    const Point2* pBase;
    const Point2* pDec;
    const Point2* pInc;
    bool bVerbose;
    double lenDec;
    double lenInc;
    Vector2 handDec; ///< of length 1, from base
    Vector2 handInc;
    double handAngle; ///< between the hands, degrees
    Vector2 normal;   ///< of the triangle base, inc, dec; null if it has no area
    Vector2 nnv;
    Vector2 centreOfNNV; ///< relative to the base: where on the surface nnv is the normal
    double normalAngle = 180.0;
    double angle = 0.0;
};

} // namespace ORBI_LUMO25D

#endif
