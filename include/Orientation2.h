#ifndef LUMO25D_ORIENTATION2_H
#define LUMO25D_ORIENTATION2_H

#include "Lumo25DApi.h"

namespace ORBI_LUMO25D
{

/// How a point p2 lies, seen from the directed line p0 to p1. Only x and y count.
enum Orientation2
{
    ORIENTATION2_COLLINEAR = 0, ///< on the line; also when two or three of the points coincide
    ORIENTATION2_CCW = 1,       ///< to the left: p0, p1, p2 turn counterclockwise
    ORIENTATION2_CW = 2         ///< to the right: p0, p1, p2 turn clockwise
};

/// The enumerator's name, or "UNKNOWN" for any other value.
LUMO25D_API const char* getString(Orientation2 ori);

} // namespace ORBI_LUMO25D

#endif
