#ifndef LUMO25D_MESHGENPARAMS_H
#define LUMO25D_MESHGENPARAMS_H

#include "Lumo25DApi.h"
#include "Vector2.h"

#include <cstdint>
#include <limits>
#include <set>

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Lumo_2D;
class Triangle2;
class Zone2;

/// What Lumo_2D::refineAdvanced() is asked for: the zone and the limits that its triangles have to keep.
///
/// Lengths, areas and angles are those on the surface, heights counted, in units of the coordinates. A limit at its largest
/// value is switched off. For limits by place, derive a class and override the two virtual operations: they are asked for
/// every triangle, again and again, and must give one answer for one place.
///
///     class FinerInTheEast : public MeshGenParams
///     {
///     public:
///         using MeshGenParams::MeshGenParams;
///         double getMaxEdgeLength(Triangle2* pT) override { return pT->getBarycenter().x() > 50.0 ? 2.0 : 10.0; }
///     };
class LUMO25D_API MeshGenParams
{
public:
    /// Constraints that no refinement may split.
    using LockedConstraints = std::set<ConstraintSegment2*>;

    /// The zone must be an inside or a bounded zone (see Zone2::convertToBoundedZone()): for another one a message on the
    /// standard output, and gridVector stays the null vector; refineAdvanced() refuses such parameters, and NULL.
    explicit MeshGenParams(Zone2* pZone_);
    /// A copy has its own set of locked constraints.
    MeshGenParams(const MeshGenParams& other);
    MeshGenParams& operator=(const MeshGenParams& other);
    virtual ~MeshGenParams();

    /// The largest area, the longest edge allowed for a triangle: the fields, whatever the triangle is.
    virtual double getMaxTriangleArea(Triangle2* pT);
    virtual double getMaxEdgeLength(Triangle2* pT);

    /// From now on the segment may not be split by a refinement.
    void addLockedConstraint(ConstraintSegment2* pCSeg);

    /// Gives the heights of new vertices inside the zone; NULL: the surface that is refined does. Where it has none, a
    /// warning, and the height is 0. Vertices on constraints are at the constraints' heights.
    Lumo_2D* pGuideTriangulation = nullptr;
    /// A triangle whose barycentre is farther above or below the guide is refined. Without a guide of no effect.
    double maxGuideHeightError = std::numeric_limits<double>::max();
    /// What is refined: an inside or a bounded zone.
    Zone2* pZone = nullptr;
    /// The smallest angle of a triangle in degrees, at most 30.
    double minAngleDegree = 20.0;
    /// A constraint below twice this length isn't split, and no new vertex inside the zone comes closer to another one
    /// than this in the plane. Triangles that would need it are left as they are. Positive.
    double minEdgeLength = 0.001;
    /// The longest edge of a triangle.
    double maxEdgeLength = std::numeric_limits<double>::max();
    /// The largest area of a triangle.
    double maxTriangleArea = std::numeric_limits<double>::max();
    /// Whether constraints may be split at all; without that, many triangles beside them stay as they are.
    bool bAllowConstraintSplitting = true;
    /// How many times the area of a neighbour a triangle's area may be; neighbours below growthFactorMinArea don't count.
    double growthFactor = std::numeric_limits<double>::max();
    double growthFactorMinArea = 0.001;
    /// The grid that is laid first: its direction, which is brought to length 1, and the length of its cells; no grid for 0 or
    /// a vector without x and y. Its vertices are to the next refinement those of an earlier one.
    Vector2 gridVector;
    double gridLength = 0.0;
    /// How many times longer than wide, in the plane, triangles between a grid and constraints may be; worse ones are refined,
    /// whatever minAngleDegree is. Below 3.4642, which angles of 30 degrees fulfil, it counts as that.
    double capAspectLimit = 10.0;
    /// Whether the free vertices of earlier refinements of the zone stay; else they are removed first.
    bool bKeepExistingSteinerPoints = true;
    /// 1: prints why triangles are refined.
    std::int32_t verbosity = 0;
    /// Made by addLockedConstraint(), owned; NULL while there is none.
    LockedConstraints* pLockedConstraints = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
