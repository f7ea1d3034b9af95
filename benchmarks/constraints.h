#ifndef LUMO25D_BENCHMARKS_CONSTRAINTS_H
#define LUMO25D_BENCHMARKS_CONSTRAINTS_H

#include "measure.h"

#include "Point2.h"
#include "Segment2.h"

#include <vector>

namespace benchmarks
{

/// Points and segments; the ends of the segments need not be among the points.
struct Breaklines
{
    std::vector<ORBI_LUMO25D::Point2> vPoints;
    std::vector<ORBI_LUMO25D::Segment2> vSegments;
};

/// From points and segments to the constrained Delaunay triangulation, `repetitions` times; the sum is the number of
/// vertices. CGAL's Constrained_Delaunay_triangulation_2, with Exact_predicates_tag where segments cross and without
/// intersections elsewhere; and Constrained_triangulation_plus_2 over it, which keeps the hierarchy of the segments.
Measurement lumoConstrained(const Breaklines& input, std::size_t repetitions);
Measurement cgalConstrained(const Breaklines& input, bool bCrossing, std::size_t repetitions);
Measurement cgalPlus(const Breaklines& input, std::size_t repetitions);

} // namespace benchmarks

#endif
