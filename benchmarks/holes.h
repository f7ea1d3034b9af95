#ifndef LUMO25D_BENCHMARKS_HOLES_H
#define LUMO25D_BENCHMARKS_HOLES_H

#include "Point2.h"

#include <cstddef>
#include <vector>

namespace benchmarks
{

using Corners = std::vector<ORBI_LUMO25D::Point2>; ///< three in a row for each triangle

/// What closing all holes of a mesh gave: the time for the filling alone.
struct Closing
{
    double seconds = 0.0;
    std::size_t numTriangles = 0; ///< new ones
    std::size_t numFailed = 0;    ///< holes that stayed open
    Corners vMesh;                ///< old and new triangles
};

Closing closeByUs(const Corners& vMesh, bool bAddPoints, std::size_t maxRing);
#if defined(LUMO25D_WITH_CGAL)
/// The peer's triangulate_hole(), or triangulate_and_refine_hole() with points.
Closing closeByCgal(const Corners& vMesh, bool bAddPoints, std::size_t maxRing);
/// Pairs of triangles that intersect in more than common vertices and edges, by the peer's self_intersections().
std::size_t countSelfIntersections(const Corners& vMesh);
#endif

} // namespace benchmarks

#endif
