#include "Lumo_2D.h"

#include "oracles/Dice.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace
{

using namespace ORBI_LUMO25D;
using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Cdt = CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default, CGAL::Exact_predicates_tag>;

/// All edges, and whether they are constrained.
class Edges
{
public:
    void add(const Point2& p, const Point2& q, bool bConstraint)
    {
        mEdges[p < q ? std::make_pair(p, q) : std::make_pair(q, p)] = bConstraint;
    }
    bool operator==(const Edges& other) const { return mEdges == other.mEdges; }

private:
    std::map<std::pair<Point2, Point2>, bool> mEdges;
};

TEST(ConstraintsCgal, constraintsOrTriangulationsDiffer)
{
    for (int seed = 0; seed < 30; ++seed) {
        SCOPED_TRACE(seed);
        const auto v =
            oracles::Dice(static_cast<std::uint64_t>(seed)).points(50 + 40 * seed, 100, seed % 2 == 0 ? 100 : 1e-3);
        Lumo_2D lumo;
        lumo.insert(v);
        Cdt cdt;
        std::vector<Kernel::Segment_2> vTaken; // pairs that cross no earlier one: crossings are rounded otherwise there
        std::vector<Segment2> vSegments;
        for (std::size_t i = 0; i + 1 < v.size(); i += 2) {
            const Kernel::Point_2 p(v[i].x(), v[i].y()), q(v[i + 1].x(), v[i + 1].y());
            const Kernel::Segment_2 s(p, q);
            cdt.insert(p);
            cdt.insert(q);
            const auto crosses = [&s](const Kernel::Segment_2& other) { return CGAL::do_intersect(s, other); };
            if (std::any_of(vTaken.begin(), vTaken.end(), crosses)) continue;
            vTaken.push_back(s);
            vSegments.emplace_back(v[i], v[i + 1]);
            cdt.insert_constraint(p, q);
        }
        lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
        Edges expected, actual;
        for (const auto& [pFace, i] : cdt.finite_edges()) {
            const auto &p = pFace->vertex(Cdt::ccw(i))->point(), &q = pFace->vertex(Cdt::cw(i))->point();
            expected.add(Point2(p.x(), p.y(), 0), Point2(q.x(), q.y(), 0), pFace->is_constrained(i));
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        for (Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) {
                actual.add(*pT->getCorner((i + 1) % 3), *pT->getCorner((i + 2) % 3), lumo.isConstraint(pT, i));
            }
        }
        EXPECT_GT(vSegments.size(), 5U);
        EXPECT_TRUE(expected == actual);
    }
}

} // namespace
