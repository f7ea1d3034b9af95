#ifndef LUMO25D_BENCHMARKS_COMPETITORS_H
#define LUMO25D_BENCHMARKS_COMPETITORS_H

#include "inputs.h"
#include "measure.h"

#include <cstddef>

// The same jobs for all. Whatever a job needs before (conversion of the points, a triangulation to search in) isn't
// timed. All run on one thread.

namespace benchmarks
{

/// One bulk insertion of all points, `repetitions` times one after another when they are few; times are those of one.
Measurement lumoBuild(const Points& vPoints, std::size_t repetitions);
/// vQueries located one after another, without hints, in the triangulation of vPoints.
Measurement lumoLocate(const Points& vPoints, const Points& vQueries);
/// All points one by one, in the given order.
Measurement lumoOneByOne(const Points& vPoints);
/// The points at those positions removed one after another from the triangulation of vPoints, which has no duplicates.
Measurement lumoRemove(const Points& vPoints, const std::vector<std::size_t>& vPositions);

/// Delaunay_triangulation_2 over the kernel with exact predicates and inexact constructions; with Triangulation_hierarchy_2
/// above it for location and single insertions.
Measurement cgalBuild(const Points& vPoints, std::size_t repetitions);
Measurement cgalLocate(const Points& vPoints, const Points& vQueries);
Measurement cgalOneByOne(const Points& vPoints);
Measurement cgalRemove(const Points& vPoints, const std::vector<std::size_t>& vPositions);

/// The Voronoi diagram of Boost.Polygon, the dual; of points rounded to 32-bit integers, which is all that it takes.
Measurement boostBuild(const Points& vPoints, std::size_t repetitions);

} // namespace benchmarks

#endif
