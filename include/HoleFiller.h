#ifndef LUMO25D_HOLEFILLER_H
#define LUMO25D_HOLEFILLER_H

#include "Edge2.h"
#include "Lumo25DApi.h"
#include "Point2.h"
#include "Segment2.h"
#include "Vector2.h"

#include <memory>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class HoleFillerImpl;
class Mesh3;

/// Closes one hole of a triangle mesh in space with a patch that continues the surface around it.
///
/// Guarantees, when fill() gives true
/// 1. Each border edge is matched once, by an opposite edge of the patch; the patch has no other border, and its
///    orientation is that of its surroundings.
/// 2. No triangle is degenerate. Without added points the patch has as many triangles as the ring has edges, minus two.
/// 3. An edge that the mesh or the patch has already is not made a second time, as long as there is another way.
/// 4. The same input gives the same patch, bit for bit.
///
/// Whether the patch crosses the surface far from the hole's border is not checked.
///
/// Two passes: a careful one that cuts off the sharpest corner first, adds points where the corner is open (if wished),
/// and refuses triangles that would cross the border, the patch or a triangle of the mesh at the border; and a rough one
/// that closes the shortest gap first and finishes what the first one could not. No points are added to the outer rim of
/// an open sheet: what continued the sheet there would never close.
///
/// One thread at a time in the process: std::srand(0) is called at construction.
class LUMO25D_API HoleFiller
{
public:
    /// The mesh is borrowed, gets the new vertices, and must outlive the object. The edges are border edges of the mesh,
    /// in any order, and form one ring that visits no vertex twice; otherwise fill() gives false. bVerbose: failures are
    /// also told on the standard output.
    HoleFiller(Mesh3* pMesh, bool bAddPoints, bool bVerbose, const std::vector<Edge2>& vPolygonEdges);
    ~HoleFiller();
    HoleFiller(const HoleFiller&) = delete;
    HoleFiller& operator=(const HoleFiller&) = delete;

    /// Makes the patch; a second call changes nothing and gives the result of the first. False: bad edges, or a border
    /// that can't be closed, such as one on a straight line; what was made of the patch so far can be had nevertheless.
    /// After 100000 steps: LumoException. About O(n log n) for a border of n edges, and the points that are added.
    bool fill();
    /// Appends the patch's triangles, three corners in a row each.
    void getNewTriangles(std::vector<Point2>& vCorners) const;

private:
    std::unique_ptr<HoleFillerImpl> pImpl;
};

/// Fills the hole of a mesh whose border edges are given (in any order, one ring), by the HoleFiller. Appends the new
/// triangles to vCorners, three points in a row each. The mesh gets the new vertices, not the triangles. False, with a
/// message under bVerbose, as from HoleFiller::fill(), and when a condition fails; nothing is thrown.
LUMO25D_API bool fillHole(Mesh3* pMesh, std::vector<Edge2>& vPolygonEdges, bool bAddPoints, bool bVerbose,
                          std::vector<Point2>& vCorners);

/// The same for a mesh given by its triangles, three points in a row each, and the border as segments between its
/// vertices, in any order, each with the direction of its triangle: coordinates must be those of the mesh, exactly.
LUMO25D_API bool fillHole(const std::vector<Point2>& vMeshCorners, const std::vector<Segment2>& vPolygonSegments,
                          bool bAddPoints, bool bVerbose, std::vector<Point2>& vCorners);

/// The same without a mesh: border segments, each with the surface's outward normal (of any length) beside it.
///
/// The segments form a ring, in any order, all with the same sense. The patch is oriented by the normals: it lies to the
/// side on which they see the ring counterclockwise. Where they don't tell, at the end of a tube, the missing surface is
/// to the left of the segments, seen with the normal up, as in the overloads with a mesh. A segment without length is
/// skipped. False for a null normal, for one along its segment, and for numbers that aren't finite.
LUMO25D_API bool fillHole(const std::vector<std::pair<Segment2, Vector2>>& vSegmentsAndNormals, bool bAddPoints,
                          bool bVerbose, std::vector<Point2>& vCorners);

} // namespace ORBI_LUMO25D

#endif
