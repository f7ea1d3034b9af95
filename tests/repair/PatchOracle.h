#ifndef LUMO25D_TESTS_REPAIR_PATCHORACLE_H
#define LUMO25D_TESTS_REPAIR_PATCHORACLE_H

#include "Point2.h"
#include "Segment2.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Judges patches by their coordinates alone; knows nothing of the mesh classes.
namespace oracles
{

using Corners = std::vector<ORBI_LUMO25D::Point2>; ///< three in a row for each triangle
using XYZ = std::array<double, 3>;

XYZ xyz(const ORBI_LUMO25D::Point2& p);
/// What is wrong with the patch of a ring, whose segments run against the patch's own border; empty if nothing is.
std::string faultOfPatch(const std::vector<ORBI_LUMO25D::Segment2>& vRing, const Corners& vPatch, bool bAddPoints);
/// Pairs of a patch triangle and any other one that cross properly: an edge of one through the inside of the other, decided
/// in rationals.
std::size_t countCrossings(const Corners& vMesh, const Corners& vPatch);

using Surface = std::function<ORBI_LUMO25D::Point2(double, double)>;
using Region = std::function<bool(double, double)>;
/// nu by nv cells of the unit square, two triangles each, laid on a surface; without the cells whose centre is in the
/// hole. A direction that wraps is closed.
Corners makeGrid(int nu, int nv, bool bWrapU, bool bWrapV, const Surface& surface, const Region& hole);
/// A sphere about the origin from an octahedron, each edge in n parts, without the triangles whose centre is closer than
/// an angle (degrees) to the direction (1, 2, 3).
Corners makeSphere(int n, double radius, double angle);

} // namespace oracles

#endif
