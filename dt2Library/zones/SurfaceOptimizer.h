#ifndef LUMO25D_ZONES_SURFACEOPTIMIZER_H
#define LUMO25D_ZONES_SURFACEOPTIMIZER_H

#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Progress;
class Triangle2;

// Changes of a surface within a set of triangles of one triangulation. Repeated triangles count once; what is no triangle
// of the triangulation is passed over with a warning. The outline of the set and constraints stay, no vertex moves in the
// plane, and the set keeps its triangles: only their corners are exchanged. Flips are decided exactly: no triangle turns
// over. What is flipped is not Delaunay by nature, as after a knife cut: insertions close by may undo it.
// Progress is published under the function's name, "slopeValleyRidgeOptimization()" and so on.

/// Flips edges so that they follow valleys and ridges: as long as that makes the surface smoother, which is measured by the
/// angles between neighbouring triangles (Dyn, Levin and Rippa, "Data dependent triangulations for piecewise linear
/// interpolation", 1990), summed over the five edges of a flip. The sum of these angles over all edges never grows. Heights
/// stay. Linear for each pass over what changed.
void slopeValleyRidgeOptimization(Dt2& dt2, const std::vector<Triangle2*>& vT, Progress& progress);

/// The same where it matters: only where the two diagonals differ by more than lowerThreshold25D in height at their
/// crossing, and only if the new triangles are at least tolerance2D high in the plane. Both must be finite and not negative;
/// else a warning, and nothing happens.
void optimizeValleysAndRidges(Dt2& dt2, const std::vector<Triangle2*>& vT, double tolerance2D, double lowerThreshold25D,
                              Progress& progress);

/// Changes the heights of the vertices inside of the set that are no ends of constraints: numIterations times, each becomes
/// the mean of its own and that of its neighbours' heights, weighted by mean value coordinates (Floater 2003): a plane stays
/// a plane, whatever the triangles. All vertices take a step at a time, so that their order plays no part. A new height is
/// between the lowest and the highest around. A negative number: a warning, and nothing happens.
void smoothing(Dt2& dt2, const std::vector<Triangle2*>& vT, int numIterations, Progress& progress);

/// Gives the diagonals of grid cells one direction. A cell is a pair of triangles that form a rectangle, whose diagonals
/// differ in length and in their middle by at most tolerance (not negative, else a warning, and nothing happens). Of its
/// diagonals the one stays or comes that rises more to the right; of two alike, as in a square that stands on a corner, the
/// one that runs more along x. Heights stay.
void unifyGrid(Dt2& dt2, const std::vector<Triangle2*>& vT, double tolerance, Progress& progress);

} // namespace ORBI_LUMO25D

#endif
