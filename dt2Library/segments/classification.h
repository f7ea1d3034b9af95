#ifndef LUMO25D_SEGMENTS_CLASSIFICATION_H
#define LUMO25D_SEGMENTS_CLASSIFICATION_H

#include "SegmentIntersectionType.h"

namespace ORBI_LUMO25D
{

class OrbiTest;
class Segment2;

/// How two different segments meet, whatever their end points' order: exact. Coordinates must be finite; the predicates'
/// range grows as needed. Two orientation tests for most pairs that don't meet, four for those that do.
SegmentIntersectionType classifySegments(OrbiTest& orbiTest, const Segment2& a, const Segment2& b);

} // namespace ORBI_LUMO25D

#endif
