#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_size_criteria_2.h>
#include <CGAL/Delaunay_mesh_vertex_base_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Structure = CGAL::Triangulation_data_structure_2<CGAL::Delaunay_mesh_vertex_base_2<Kernel>,
                                                       CGAL::Delaunay_mesh_face_base_2<Kernel>>;
using Triangulation = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Structure>;

std::size_t numByCgal(const std::vector<Segment2>& vSegments, double angle, double maxEdgeLength)
{
    Triangulation t;
    for (const Segment2& s : vSegments) t.insert_constraint({s.src.x(), s.src.y()}, {s.trg.x(), s.trg.y()});
    const double sine = std::sin(angle * 3.14159265358979323846 / 180.0);
    CGAL::Delaunay_mesher_2 mesher(t, CGAL::Delaunay_mesh_size_criteria_2<Triangulation>(sine * sine, maxEdgeLength));
    mesher.refine_mesh();
    std::size_t n = 0;
    for (auto it = t.finite_faces_begin(); it != t.finite_faces_end(); ++it) n += it->is_in_domain() ? 1U : 0U;
    return n;
}

} // namespace

TEST(MeshGenParamsTest, NeedsNotManyMoreTrianglesThanCgal)
{
    std::vector<Point2> vWavy;
    for (int i = 0; i < 2000; ++i) {
        const double t = 6.283185307179586 * i / 2000, r = 1 + 0.3 * std::sin(7 * t) + 0.05 * std::sin(83 * t);
        vWavy.emplace_back(r * std::cos(t), r * std::sin(t), 0);
    }
    const std::vector<std::vector<Point2>> vDomains{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
                                                    {{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {1, 1, 0}, {1, 4, 0}, {0, 4, 0}},
                                                    vWavy};
    for (const std::vector<Point2>& vCorners : vDomains) {
        std::vector<Segment2> v;
        pointsToPolyline(vCorners, true, v);
        for (const double angle : {20.0, 27.0}) {
            Lumo_2D lumo;
            Zone2* const pZone = lumo.createZone(lumo.createConstraint(v, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
            lumo.refine(pZone, angle, 1e-6, 0.04, true);
            const auto num = static_cast<double>(pZone->getNumberOfTriangles());
            EXPECT_LE(num, 1.15 * static_cast<double>(numByCgal(v, angle, 0.04))) << angle;
        }
    }
}
