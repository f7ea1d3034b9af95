#ifndef LUMO25D_ZONES_TRIANGLESETS_H
#define LUMO25D_ZONES_TRIANGLESETS_H

#include "Edge2.h"
#include "Triangle2.h"

#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Point2;
class Zone2;

// Sets of triangles of one triangulation, given as sequences in any order; repeated triangles count once. Everything here
// takes time in proportion to the sequence, but for a sort by address where that is promised.

/// What Zone2::getTriangles() gives, but in the order in which the triangles were made. Addresses differ from run to run:
/// where the order shows, in files, drawings, reports and the last digits of sums, it is to be this one.
std::vector<Triangle2*> trianglesByAge(const Zone2& zone);
/// Takes the triangles apart into the sets that hang together across shared edges, one vector for each, appended to vvT.
/// The sets come in the order of their first triangles in vT, and each begins with that triangle.
void getConnectedComponents(const Dt2& dt2, const std::vector<Triangle2*>& vT,
                            std::vector<std::vector<Triangle2*>>& vvT);
/// Appends each edge of the triangles once, as an edge of the first triangle in vT that has it.
void getUndirectedEdges(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Edge2>& vEdges);
/// Appends the edges behind which there is no triangle of the set, in the order of vT: with the set on their left.
void getBorderEdges(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Edge2>& vEdges);
/// Appends the corners, each once, in the order of their addresses.
void getCorners(const Dt2& dt2, const std::vector<Triangle2*>& vT, std::vector<Point2*>& vV);

/// The sum of the triangles' areas in the plane, and in space. Here repeated triangles count repeatedly. In the plane off
/// by at most 1e-13 of itself.
double sumArea2D(const std::vector<Triangle2*>& vT);
double sumArea25D(const std::vector<Triangle2*>& vT);

} // namespace ORBI_LUMO25D

#endif
