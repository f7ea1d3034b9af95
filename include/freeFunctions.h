#ifndef LUMO25D_FREEFUNCTIONS_H
#define LUMO25D_FREEFUNCTIONS_H

#include "Lumo25DApi.h"
#include "Orientation2.h"
#include "Point2.h"
#include "Segment2.h"

#include <vector>

namespace ORBI_LUMO25D
{

// ---- predicates -------------------------------------------------------------------------------------------------

/// How p2 lies seen from the directed line p0 to p1: exact for any finite doubles. A null argument is a failed
/// condition. One process-wide object is behind it, so it is meant for one thread; use getOrientation2_mt elsewhere.
LUMO25D_API Orientation2 getOrientation2(const Point2* p0, const Point2* p1, const Point2* p2);
/// The same, callable from any thread; each call sets up its own state and is somewhat slower.
LUMO25D_API Orientation2 getOrientation2_mt(const Point2* p0, const Point2* p1, const Point2* p2);

// ---- files ------------------------------------------------------------------------------------------------------

// ---- generators of test data ------------------------------------------------------------------------------------

// ---- stopwatch and version --------------------------------------------------------------------------------------

} // namespace ORBI_LUMO25D

#endif
