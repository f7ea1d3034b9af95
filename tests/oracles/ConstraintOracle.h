#ifndef LUMO25D_TESTS_ORACLES_CONSTRAINTORACLE_H
#define LUMO25D_TESTS_ORACLES_CONSTRAINTORACLE_H

#include "Segment2.h"

#include <string>
#include <vector>

namespace ORBI_LUMO25D
{
class ConstraintGraph2;
class Lumo_2D;
} // namespace ORBI_LUMO25D

namespace oracles
{

/// A call of createConstraint: what it gave, and what it was given.
struct GivenConstraint
{
    ORBI_LUMO25D::ConstraintGraph2* pGraph;
    std::vector<ORBI_LUMO25D::Segment2> vSegments;
};

/// Holds constraints against their definition, in rationals: triangles turn counterclockwise, edges are constraints or
/// locally Delaunay (with bConforming, all are), alive constraints are edges and owned; every segment that was given is
/// covered, end to end, by a path of alive ones whose vertices lie within maxSnaps times four units in the last place of
/// it; chains of rings and of oriented graphs are consecutive and run the right way (of rings that are given
/// oriented, all segments must be in the same sense). Without area, the hierarchy alone is looked at. Returns an empty
/// text when all is well.
std::string constraintFault(const ORBI_LUMO25D::Lumo_2D& lumo, const std::vector<GivenConstraint>& vGiven,
                            double maxSnaps = 1.0, bool bConforming = false);

} // namespace oracles

#endif
