#include "holes.h"
#include "measure.h"

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_processing/border.h>
#include <CGAL/Polygon_mesh_processing/orient_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/polygon_soup_to_polygon_mesh.h>
#include <CGAL/Polygon_mesh_processing/self_intersections.h>
#include <CGAL/Polygon_mesh_processing/triangulate_hole.h>
#include <CGAL/Surface_mesh.h>

#include <array>
#include <iterator>
#include <map>
#include <utility>

namespace benchmarks
{

namespace
{

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
namespace PMP = CGAL::Polygon_mesh_processing;

Mesh toMesh(const Corners& vCorners)
{
    std::vector<Kernel::Point_3> vPoints;
    std::vector<std::array<std::size_t, 3>> vTriangles;
    std::map<Kernel::Point_3, std::size_t> mNumber;
    for (std::size_t i = 0; i < vCorners.size(); ++i) {
        const Kernel::Point_3 p(vCorners[i].x(), vCorners[i].y(), vCorners[i].z());
        const auto added = mNumber.emplace(p, vPoints.size());
        if (added.second) vPoints.push_back(p);
        if (i % 3 == 0) vTriangles.push_back({});
        vTriangles.back()[i % 3] = added.first->second;
    }
    PMP::orient_polygon_soup(vPoints, vTriangles); // duplicates vertices in which several fans meet
    Mesh mesh;
    PMP::polygon_soup_to_polygon_mesh(vPoints, vTriangles, mesh);
    return mesh;
}

Corners toCorners(const Mesh& mesh)
{
    Corners vCorners;
    for (const Mesh::Face_index f : mesh.faces()) {
        for (const Mesh::Vertex_index v : mesh.vertices_around_face(mesh.halfedge(f))) {
            const Kernel::Point_3& p = mesh.point(v);
            vCorners.emplace_back(p.x(), p.y(), p.z());
        }
    }
    return vCorners;
}

std::size_t lengthOf(const Mesh& mesh, Mesh::Halfedge_index h)
{
    std::size_t num = 0;
    for (Mesh::Halfedge_index i = h; num == 0 || i != h; i = mesh.next(i)) ++num;
    return num;
}

} // namespace

Closing closeByCgal(const Corners& vMesh, bool bAddPoints, std::size_t maxRing)
{
    Mesh mesh = toMesh(vMesh);
    std::vector<Mesh::Halfedge_index> vRings;
    PMP::extract_boundary_cycles(mesh, std::back_inserter(vRings));
    Closing closing;
    for (const Mesh::Halfedge_index h : vRings) {
        if (lengthOf(mesh, h) > maxRing) continue;
        std::vector<Mesh::Face_index> vFaces;
        std::vector<Mesh::Vertex_index> vVertices;
        const double start = Times::now().wall;
        if (bAddPoints) {
            PMP::triangulate_and_refine_hole(mesh, h, std::back_inserter(vFaces), std::back_inserter(vVertices));
        } else {
            PMP::triangulate_hole(mesh, h, std::back_inserter(vFaces));
        }
        closing.seconds += Times::now().wall - start;
        closing.numTriangles += vFaces.size();
        if (vFaces.empty()) ++closing.numFailed;
    }
    closing.vMesh = toCorners(mesh);
    return closing;
}

std::size_t countSelfIntersections(const Corners& vMesh)
{
    const Mesh mesh = toMesh(vMesh);
    std::vector<std::pair<Mesh::Face_index, Mesh::Face_index>> vPairs;
    PMP::self_intersections(mesh, std::back_inserter(vPairs));
    return vPairs.size();
}

} // namespace benchmarks
