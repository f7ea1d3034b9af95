#ifndef LUMO25D_SEGMENTINTERSECTIONTYPE_H
#define LUMO25D_SEGMENTINTERSECTIONTYPE_H

namespace ORBI_LUMO25D
{

/// What two segments have in common. Heights are ignored.
enum SegmentIntersectionType
{
    SIT_UNINITIALIZED = 0, ///< no result yet
    SIT_NONE = 1,          ///< no common point
    SIT_SEGMENT = 2,       ///< a common part of positive length, or the two are identical
    SIT_POINT = 3,         ///< one point that is not an end point of both: a crossing or a T junction
    SIT_ENDPOINT = 4       ///< a common end point and nothing else
};

} // namespace ORBI_LUMO25D

#endif
