#include "competitors.h"

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Triangulation_hierarchy_2.h>
#include <CGAL/Triangulation_hierarchy_vertex_base_2.h>

#include <algorithm>
#include <memory>
#include <numeric>

namespace benchmarks
{

namespace
{

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Triangulation = CGAL::Delaunay_triangulation_2<Kernel>;
using HierarchyVertex = CGAL::Triangulation_hierarchy_vertex_base_2<CGAL::Triangulation_vertex_base_2<Kernel>>;
using HierarchyLevel = CGAL::Delaunay_triangulation_2<
    Kernel, CGAL::Triangulation_data_structure_2<HierarchyVertex, CGAL::Triangulation_face_base_2<Kernel>>>;
using Hierarchy = CGAL::Triangulation_hierarchy_2<HierarchyLevel>;

std::vector<Kernel::Point_2> converted(const Points& vPoints)
{
    std::vector<Kernel::Point_2> vResult;
    vResult.reserve(vPoints.size());
    for (const ORBI_LUMO25D::Point2& p : vPoints) {
        vResult.emplace_back(p.x(), p.y());
    }
    return vResult;
}

template <class T>
unsigned long long count(const T& triangulation)
{
    return 4ull * triangulation.number_of_vertices() + triangulation.number_of_faces();
}

/// Handles in the order of the points they were made from.
std::vector<Triangulation::Vertex_handle> handlesInOrder(const Triangulation& triangulation,
                                                         const std::vector<Kernel::Point_2>& vPoints)
{
    std::vector<std::size_t> vPositions(vPoints.size());
    std::iota(vPositions.begin(), vPositions.end(), std::size_t(0));
    std::sort(vPositions.begin(), vPositions.end(),
              [&vPoints](std::size_t a, std::size_t b) { return vPoints[a] < vPoints[b]; });
    std::vector<Triangulation::Vertex_handle> vSorted;
    for (auto it = triangulation.finite_vertices_begin(); it != triangulation.finite_vertices_end(); ++it) {
        vSorted.push_back(it);
    }
    std::sort(vSorted.begin(), vSorted.end(),
              [](Triangulation::Vertex_handle a, Triangulation::Vertex_handle b) { return a->point() < b->point(); });
    std::vector<Triangulation::Vertex_handle> vHandles(vPoints.size());
    for (std::size_t i = 0; i < vPositions.size(); ++i) {
        vHandles[vPositions[i]] = vSorted.at(i);
    }
    return vHandles;
}

} // namespace

Measurement cgalBuild(const Points& vPoints, std::size_t repetitions)
{
    const std::vector<Kernel::Point_2> vInput = converted(vPoints);
    const auto build = [&vInput] {
        auto pTriangulation = std::make_unique<Triangulation>();
        pTriangulation->insert(vInput.begin(), vInput.end());
        return pTriangulation;
    };
    return measureRepeated(build, count<Triangulation>, repetitions);
}

Measurement cgalLocate(const Points& vPoints, const Points& vQueries)
{
    const std::vector<Kernel::Point_2> vInput = converted(vPoints);
    const std::vector<Kernel::Point_2> vPlaces = converted(vQueries);
    const Hierarchy hierarchy(vInput.begin(), vInput.end());
    return measureWork([&] {
        unsigned long long numFound = 0;
        for (const Kernel::Point_2& place : vPlaces) {
            numFound += !hierarchy.is_infinite(hierarchy.locate(place));
        }
        return numFound;
    });
}

Measurement cgalOneByOne(const Points& vPoints)
{
    const std::vector<Kernel::Point_2> vInput = converted(vPoints);
    const auto build = [&vInput] {
        auto pHierarchy = std::make_unique<Hierarchy>();
        for (const Kernel::Point_2& p : vInput) {
            pHierarchy->insert(p);
        }
        return pHierarchy;
    };
    return measureRepeated(build, count<Hierarchy>, 1);
}

Measurement cgalRemove(const Points& vPoints, const std::vector<std::size_t>& vPositions)
{
    const std::vector<Kernel::Point_2> vInput = converted(vPoints);
    Triangulation triangulation(vInput.begin(), vInput.end());
    const std::vector<Triangulation::Vertex_handle> vHandles = handlesInOrder(triangulation, vInput);
    return measureWork([&] {
        for (const std::size_t position : vPositions) {
            triangulation.remove(vHandles[position]);
        }
        return count(triangulation);
    });
}

} // namespace benchmarks
