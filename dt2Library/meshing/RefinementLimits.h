#ifndef LUMO25D_MESHING_REFINEMENTLIMITS_H
#define LUMO25D_MESHING_REFINEMENTLIMITS_H

#include "meshing/TriangleShape.h"

#include "MeshGenParams.h"

#include <unordered_set>

namespace ORBI_LUMO25D
{

class Dt2;

/// Whether a grid is wanted.
inline bool hasGrid(const MeshGenParams& params)
{
    return params.gridLength > 0.0 && (params.gridVector.x() != 0.0 || params.gridVector.y() != 0.0);
}

/// Parameters in the form in which a running refinement asks for them.
class RefinementLimits
{
public:
    /// pGuide_ may be null. Locks what is alive below the locked constraints as well.
    RefinementLimits(MeshGenParams& params_, Dt2* pGuide_);

    /// Whether the longest edge or the area is above its limit; asks the virtual operations.
    bool isTooLong(const TriangleShape& shape, Triangle2* pT) const;
    bool isTooLarge(const TriangleShape& shape, Triangle2* pT) const;
    /// Whether the smallest angle is below the limit, unless the terrain alone makes it so: the angles in the plane are
    /// above 29.5 degrees then.
    bool isTooSharp(const TriangleShape& shape) const;
    /// Whether a triangle is too long for its width to be left beside a grid: by the longest edge and the height over it, in
    /// the plane. False without a grid.
    bool isCap(const TriangleShape& shape) const;
    /// What can be told from the triangle alone, where caps count. Limits on growth and on heights depend on what is around it.
    bool isBad(const TriangleShape& shape, Triangle2* pT) const
    {
        return shape.isMeasurable() &&
               (isTooLong(shape, pT) || isTooSharp(shape) || isCap(shape) || isTooLarge(shape, pT));
    }
    bool hasGrowthLimit() const;
    bool hasHeightLimit() const;
    bool isLocked(const ConstraintSegment2* pCSeg) const { return sLocked.count(pCSeg) != 0; }

    MeshGenParams& params;
    Dt2* const pGuide; ///< the engine of the guide triangulation, or null

private:
    double sqSineLimit; ///< of the angle
    double capLimit;    ///< infinite without a grid
    std::unordered_set<const ConstraintSegment2*> sLocked;
};

} // namespace ORBI_LUMO25D

#endif
