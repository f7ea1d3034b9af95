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

// Readers append to the given sequence. A false result comes with a message on the standard output; a NULL name, a
// directory or a missing file is answered that way, too. Neither custom indices nor any properties are stored.
//
// Binary files are little-endian on every machine and consist of a header of 12 bytes (file type as int32, number of
// records as two uint32, the lower half first) and the coordinates as doubles. The number in the header is not trusted:
// a file that is shorter gives the records that it holds, and a warning. If it ends within a record, the coordinates
// that are missing there are those of the record before (0 in the first).

/// Write one line "x y z" per point with 18 significant digits, so that readXYZ() gets the same doubles. False if the
/// file can't be created or the disk is full. A NULL among the points: a warning, false, and no file.
LUMO25D_API bool writePointsASCII(const char* filename, const std::vector<Point2*>& vPoints);
LUMO25D_API bool writePointsASCII(const char* filename, const std::vector<Point2>& vPoints);

/// Read numbers, separated by any white space, in pairs (z is 0) or in triples, whatever the lines are. Something that
/// is no finite number ends the reading silently; an incomplete pair or triple at the end is dropped. The decimal
/// separator is the point in every locale. True if the file could be opened.
LUMO25D_API bool readXY(const char* filename, std::vector<Point2>& vPoints);
LUMO25D_API bool readXYZ(const char* filename, std::vector<Point2>& vPoints);

/// Write a binary point file (type 30: x, y, z). Results as those of writePointsASCII().
LUMO25D_API bool writePointsBIN(const char* filename, const std::vector<Point2*>& vPoints);
LUMO25D_API bool writePointsBIN(const char* filename, const std::vector<Point2>& vPoints);
/// Reads a binary point file of type 30, or of type 20 (x, y; z is 0). False for any other type.
LUMO25D_API bool readPointsBIN(const char* filename, std::vector<Point2>& vPoints);

/// Writes a binary segment file (type 31: x, y, z of the source, then of the target).
LUMO25D_API bool writeSegmentsBIN(const char* filename, const std::vector<Segment2>& vSegments);
/// Reads a binary segment file of type 31, or of type 21 (without the heights, which are 0). False for any other type.
LUMO25D_API bool readSegmentsBIN(const char* filename, std::vector<Segment2>& vSegments);

// ---- generators of test data ------------------------------------------------------------------------------------

// ---- stopwatch and version --------------------------------------------------------------------------------------

/// A stopwatch with a name. The first call with a name starts it and returns -1.0; the next one stops it, forgets the
/// name and returns the seconds between. Both print a line, unless the name begins with "[quiet]". A printing stop
/// leaves the standard output in fixed notation with precision 6. One process-wide map holds the names: for one thread
/// only. A NULL name is warned about and gives -1.0.
LUMO25D_API double timer(const char* name);

/// "Lumo 2.5D, DEBUG, v1.86.557"; the text lives as long as the process.
LUMO25D_API const char* getLumo2DVersion();
LUMO25D_API int getMajorVersionNumber();
LUMO25D_API int getMinorVersionNumber();
LUMO25D_API int getRevisionNumber();
/// False in a version whose text says "DEBUG".
LUMO25D_API bool isRelease();

} // namespace ORBI_LUMO25D

#endif
