#ifndef LUMO25D_REPAIR_PATCHSURFACE_H
#define LUMO25D_REPAIR_PATCHSURFACE_H

#include "repair/GrowingIndex.h"

#include "Mesh3.h"
#include "Point2.h"
#include "Vector2.h"

#include <array>
#include <cstddef>
#include <unordered_set>
#include <vector>

namespace ORBI_LUMO25D
{

/// The unit normal of three points; null for a needle, whose normal rounding decides as much as its corners do. A needle
/// is one whose height is no more than ten thousand roundings of its coordinates, or a billionth of its length.
Vector2 reliableNormal(const Point2& p0, const Point2& p1, const Point2& p2);

inline void addPoint(ORBI_LOCATE3::RTree::Box& box, const Point2& p)
{
    box.add({{p.x(), p.y(), p.z()}, {p.x(), p.y(), p.z()}});
}

/// Triangles around a vertex: their normals, their centres relative to the vertex, and what a regression needs.
struct NormalSum
{
    Vector2 normal;
    Vector2 centre;
    double products = 0.0; ///< normal * centre
    double squares = 0.0;  ///< centre * centre
    double weight = 0.0;
    std::size_t num = 0;

    /// A null normal is counted, no more.
    void add(const Vector2& n, const Vector2& c, double factor)
    {
        ++num;
        if (n.isDegenerate()) return;
        normal = normal + n * factor;
        centre = centre + c * factor;
        products += factor * (n * c);
        squares += factor * (c * c);
        weight += factor;
    }
};

/// The surface as a hole's vertices see it: the mesh's triangles around them and those of the growing patch. Vertices
/// are known by dense numbers, those of the ring first.
class PatchSurface
{
public:
    /// A triangle at a vertex.
    struct Facet
    {
        std::array<const Point2*, 3> apCorners;
        Vector2 normal; ///< of length 1, or null for a triangle without area
        Vector2 centre; ///< relative to the vertex

        bool hasCorner(const Point2* p) const { return apCorners[0] == p || apCorners[1] == p || apCorners[2] == p; }
    };

    explicit PatchSurface(Mesh3* pMesh_) : pMesh(pMesh_) {}

    /// A vertex of the mesh, with the triangles that it has there. To be added once.
    std::size_t addRingVertex(Point2* pVertex);
    /// True when a place is finite and the mesh has no vertex there.
    bool isFree(const Point2& place) const;
    /// A vertex at a place that is free.
    std::size_t addNewVertex(const Point2& place);
    void addTriangle(std::size_t a, std::size_t b, std::size_t c);
    /// Announces an edge of the patch that has no triangle yet.
    void addLink(std::size_t a, std::size_t b);

    const Point2& point(std::size_t vertex) const { return *vVertices[vertex].pPoint; }
    const std::vector<Facet>& facetsAt(std::size_t vertex) const { return vVertices[vertex].vFacets; }
    /// Of all triangles at a vertex. Constant.
    const NormalSum& normalSum(std::size_t vertex) const { return vVertices[vertex].sum; }
    /// Calls f(facet) for the triangles with the edge from a vertex to another one. Linear in the number of triangles at
    /// the one that has fewer: the tip of a fan may have as many as the patch.
    template <class F>
    void forEachAtEdge(std::size_t vertex, std::size_t other, const F& f) const
    {
        const bool bOther = vVertices[other].vFacets.size() < vVertices[vertex].vFacets.size();
        const Point2* const pFar = vVertices[bOther ? vertex : other].pPoint;
        const Vector2 shift = bOther ? point(other) - point(vertex) : Vector2();
        for (const Facet& facet : vVertices[bOther ? other : vertex].vFacets) {
            if (facet.hasCorner(pFar)) f(Facet{facet.apCorners, facet.normal, facet.centre + shift});
        }
    }
    /// Calls f(corners) for triangles whose box shares a point with the given one: of the patch, and of the mesh where
    /// it has a corner on the ring.
    template <class F>
    void forEachNear(const ORBI_LOCATE3::RTree::Box& box, const F& f) const
    {
        nearby.forEach(box, f);
    }
    /// True when a and b are joined by an edge in either direction. Linear in the number of triangles at the one that
    /// has fewer.
    bool hasEdge(std::size_t a, std::size_t b) const;
    std::size_t numberOfNewVertices() const { return numNewVertices; }
    /// The patch: three vertices each, in the order of creation.
    const std::vector<std::array<std::size_t, 3>>& getTriangles() const { return vTriangles; }

private:
    struct Vertex
    {
        Point2* pPoint;
        std::vector<Facet> vFacets;
        NormalSum sum; ///< of vFacets
        std::vector<std::size_t> vLinks;
    };

    /// Triangles by their corners, never dead.
    struct Triangles
    {
        using Record = std::array<const Point2*, 3>;

        bool isAlive(const Record&) const { return true; }
        ORBI_LOCATE3::RTree::Box boxOf(const Record& corners) const
        {
            ORBI_LOCATE3::RTree::Box box = ORBI_LOCATE3::RTree::Box::nothing();
            for (const Point2* p : corners) addPoint(box, *p);
            return box;
        }
    };

    void addFacet(std::size_t vertex, const Point2* p0, const Point2* p1, const Point2* p2);

    Mesh3* pMesh;
    std::vector<Vertex> vVertices;
    std::vector<std::array<std::size_t, 3>> vTriangles;
    GrowingIndex<Triangles> nearby{Triangles()};
    std::unordered_set<const Triangle2*> sNearby; ///< the mesh's triangles in there
    std::size_t numNewVertices = 0;
};

} // namespace ORBI_LUMO25D

#endif
