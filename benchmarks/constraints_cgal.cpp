#include "constraints.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Constrained_triangulation_plus_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <memory>
#include <utility>

namespace benchmarks
{

namespace
{

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Structure = CGAL::Triangulation_data_structure_2<CGAL::Triangulation_vertex_base_2<Kernel>,
                                                       CGAL::Constrained_triangulation_face_base_2<Kernel>>;
using Crossing = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Structure, CGAL::Exact_predicates_tag>;
using Plain = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Structure,
                                                         CGAL::No_constraint_intersection_requiring_constructions_tag>;
using Plus = CGAL::Constrained_triangulation_plus_2<Crossing>;

struct Input
{
    explicit Input(const Breaklines& input)
    {
        const auto add = [this](const ORBI_LUMO25D::Point2& p) { vPoints.emplace_back(p.x(), p.y()); };
        for (const auto& p : input.vPoints) {
            add(p);
        }
        for (const auto& s : input.vSegments) {
            vIndices.emplace_back(vPoints.size(), vPoints.size() + 1);
            add(s.src);
            add(s.trg);
        }
    }

    std::vector<Kernel::Point_2> vPoints;
    std::vector<std::pair<std::size_t, std::size_t>> vIndices;
};

/// All points in one range, then the constraints by the positions of their ends: the fastest way it offers.
template <class Triangulation>
Measurement measure(const Breaklines& breaklines, std::size_t repetitions)
{
    const Input input(breaklines);
    const auto build = [&input] {
        auto pTriangulation = std::make_unique<Triangulation>();
        pTriangulation->insert_constraints(input.vPoints.begin(), input.vPoints.end(), input.vIndices.begin(),
                                           input.vIndices.end());
        return pTriangulation;
    };
    const auto sum = [](const Triangulation& t) { return static_cast<unsigned long long>(t.number_of_vertices()); };
    return measureRepeated(build, sum, repetitions);
}

} // namespace

Measurement cgalConstrained(const Breaklines& input, bool bCrossing, std::size_t repetitions)
{
    return bCrossing ? measure<Crossing>(input, repetitions) : measure<Plain>(input, repetitions);
}

Measurement cgalPlus(const Breaklines& input, std::size_t repetitions)
{
    return measure<Plus>(input, repetitions);
}

} // namespace benchmarks
