#ifndef LUMO25D_MESH3_H
#define LUMO25D_MESH3_H

#include "Edge2.h"
#include "Lumo25DApi.h"
#include "Point2.h"
#include "Triangle2.h"
#include "Vector2.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

struct Mesh3Data;

/// A triangle mesh in space: vertices, triangles, and how they hang together. It need not be a height field, nor
/// closed, nor manifold.
///
/// Laws
/// 1. Corners are welded: those with exactly equal x, y and z are one vertex (-0 equals 0). The first one gives the
///    custom index.
/// 2. Edges are directed along their triangle. An edge is a border edge when it belongs to one triangle and its reverse
///    to none. Neighbours (Triangle2::getOppositeTriangle) are set across edges that occur once in each direction, and
///    are NULL elsewhere.
/// 3. Sequences of results are in the order of creation, the same on every run.
///
/// The mesh owns its vertices and triangles; handles stay valid until it is destroyed. One thread at a time.
///
///     std::vector<Point2> vCorners; // three in a row for each triangle
///     if (!Mesh3::readCorners("part.stl", vCorners)) return;
///     Mesh3 mesh(vCorners);
///     std::vector<std::vector<Edge2>> vRings;
///     mesh.getBorderRings(vRings);
class LUMO25D_API Mesh3
{
public:
    /// No vertices, no triangles.
    Mesh3();
    /// Three corners in a row for each triangle. Triangles with a coordinate that is no finite number or with two equal
    /// corners, and one or two points left over at the end, are left out with one warning. "Non-manifold mesh. Expect
    /// trouble" is the warning when an edge has more than two triangles. O(n) expected.
    explicit Mesh3(const std::vector<Point2>& vCorners);
    ~Mesh3();
    Mesh3(const Mesh3&) = delete;
    Mesh3& operator=(const Mesh3&) = delete;

    /// All that were made: nothing is ever removed.
    std::size_t numberOfVertices() const;
    std::size_t numberOfTriangles() const;
    /// Append all vertices, all triangles.
    void getVertexPointers(std::vector<Point2*>& vVertices) const;
    void getTrianglePointers(std::vector<Triangle2*>& vTriangles) const;

    /// The vertex with exactly these coordinates, the first one if there are several; NULL if there is none.
    Point2* getVertex(const Point2& p) const;
    /// The vertex at p: a new one if there is none yet, or if bAlwaysNew. NULL, with a warning, for coordinates that
    /// aren't finite.
    Point2* createVertex(const Point2& p, bool bAlwaysNew);
    /// A new triangle of three different vertices of this mesh; NULL, with a warning, for anything else. Edges in excess
    /// of two triangles, and reverse ones that are there already, are not looked for.
    Triangle2* createTriangle(Point2* p0, Point2* p1, Point2* p2);

    /// Appends the triangles around a vertex; none for a pointer that isn't a vertex of this mesh.
    void getIncidentTriangles(const Point2* pVertex, std::vector<Triangle2*>& vTriangles) const;
    /// Appends the edges from one vertex to another, one for each triangle. Edges of the other direction don't count.
    void getEdges(const Point2* pSrc, const Point2* pTrg, std::vector<Edge2>& vEdges) const;
    /// False, too, for an edge of another mesh, or whose triangle is NULL.
    bool isBorderEdge(const Edge2& edge) const;
    void getBorderEdges(std::vector<Edge2>& vEdges) const;
    /// Appends the borders of the mesh, each as a closed chain of edges that visits no vertex twice: an edge's target is
    /// the next one's source. Where several borders meet in a vertex, each follows the rim of its hole; one that comes
    /// back to a vertex is cut there into two. Edges whose chain doesn't close are left out, which takes a non-manifold
    /// edge. O(n) expected.
    void getBorderRings(std::vector<std::vector<Edge2>>& vRings) const;

    /// True when an edge has more than two triangles, or two of the same direction.
    bool hasNonManifoldEdges() const;
    /// The unit normal at a vertex: that of its triangles' sum, each weighted by its angle there. The null vector where
    /// there is none.
    Vector2 getNormalVector(const Point2* pVertex) const;

    /// Appends the triangles of a file, three corners in a row: text STL (.stl) or Wavefront OBJ (.obj), told by the
    /// name's ending. OBJ: lines "v x y z" and "f a b c ...", indices from 1 or, negative, from the last vertex;
    /// polygons are cut into a fan. Files are not trusted: facets that can't be read are left out, with one warning that
    /// tells how many. False, with a message, for other endings, for files that can't be read and for STL files whose
    /// vertices aren't triples.
    static bool readCorners(const std::string& filename, std::vector<Point2>& vCorners);

private:
    std::unique_ptr<Mesh3Data> pData;
};

} // namespace ORBI_LUMO25D

#endif
