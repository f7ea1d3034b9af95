#include "meshes.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_size_criteria_2.h>
#include <CGAL/Delaunay_mesh_vertex_base_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <cmath>
#include <vector>

namespace benchmarks
{

Measurement cgalMesh(const MeshTask& task)
{
    using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
    using Structure = CGAL::Triangulation_data_structure_2<CGAL::Delaunay_mesh_vertex_base_2<Kernel>,
                                                           CGAL::Delaunay_mesh_face_base_2<Kernel>>;
    using Triangulation = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Structure>;
    using Criteria = CGAL::Delaunay_mesh_size_criteria_2<Triangulation>;
    Triangulation t;
    for (const auto& s : task.vSegments) {
        t.insert_constraint({s.src.x(), s.src.y()}, {s.trg.x(), s.trg.y()});
    }
    std::vector<Kernel::Point_2> vSeeds;
    for (const auto& p : task.vHoles) {
        vSeeds.emplace_back(p.x(), p.y());
    }
    const double sine = std::sin(task.minAngle * 3.14159265358979323846 / 180.0);
    return measureWork([&] {
        CGAL::Delaunay_mesher_2<Triangulation, Criteria> mesher(t, Criteria(sine * sine, task.maxEdgeLength));
        mesher.set_seeds(vSeeds.begin(), vSeeds.end(), false);
        mesher.refine_mesh();
        unsigned long long n = 0;
        for (auto it = t.finite_faces_begin(); it != t.finite_faces_end(); ++it) {
            n += it->is_in_domain() ? 1U : 0U;
        }
        return n;
    });
}

} // namespace benchmarks
