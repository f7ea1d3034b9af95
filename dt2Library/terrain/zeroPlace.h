#ifndef LUMO25D_TERRAIN_ZEROPLACE_H
#define LUMO25D_TERRAIN_ZEROPLACE_H

#include "terrain/SurfaceHeights.h"

namespace ORBI_LUMO25D
{

/// Where two surfaces meet on an edge.
struct ZeroPlace
{
    Point2 place;           ///< at height 0
    double fraction = 0.0;  ///< of the edge, from the end that is nearer
    bool bNearFirst = true; ///< which end that is
    bool bApart = false;    ///< false when an end is nearer than the rounding of places

    /// The same height of both surfaces there, by those at the ends. Warns where they differ.
    double height(const Point2& p0, const SurfaceHeights::Pair& pair0, const Point2& p1,
                  const SurfaceHeights::Pair& pair1) const;
};

/// Between two points whose z, the differences of two surfaces, have opposite signs.
ZeroPlace findZeroPlace(const Point2& p0, const Point2& p1);

/// Tells of an edge on which there is no place apart from its ends.
void warnOfSkippedCut(double h0, double h1);

} // namespace ORBI_LUMO25D

#endif
