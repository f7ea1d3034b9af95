#ifndef LUMO25D_TESTS_ORACLES_MESHORACLE_H
#define LUMO25D_TESTS_ORACLES_MESHORACLE_H

#include "Point2.h"
#include "Triangle2.h"

#include <gtest/gtest.h>

#include <vector>

namespace ORBI_LUMO25D
{
class Lumo_2D;
}

namespace oracles
{

/// Holds a Delaunay triangulation against its definition, by rational arithmetic of the test's own: triangles turn
/// counterclockwise and share their edges in pairs, links are symmetric, the border is the convex hull of all points
/// (by a monotone chain), Euler's formula holds, every edge is locally Delaunay, and the corners are exactly the
/// distinct points. Nothing of the library is asked but the triangles themselves.
::testing::AssertionResult isDelaunay(const std::vector<ORBI_LUMO25D::Triangle2*>& vT,
                                      const std::vector<ORBI_LUMO25D::Point2>& vPoints);

/// That of all points that went in, and that the library's own check and counts say the same. Rationals are slow: where
/// bWithOracle is false, the library's check alone is asked, which others hold against the oracle.
::testing::AssertionResult isSound(const ORBI_LUMO25D::Lumo_2D& lumo, const std::vector<ORBI_LUMO25D::Point2>& vPoints,
                                   bool bWithOracle = true);

/// The distinct positions of the points, sorted, each with the height of the first point there.
std::vector<ORBI_LUMO25D::Point2> distinctPoints(const std::vector<ORBI_LUMO25D::Point2>& vPoints);

/// The vertices of the convex hull counterclockwise from the lowest leftmost one, with the points on its edges or
/// without, by Andrew's monotone chain.
std::vector<ORBI_LUMO25D::Point2> convexHull(const std::vector<ORBI_LUMO25D::Point2>& vPoints, bool bWithCollinear);

} // namespace oracles

#endif
