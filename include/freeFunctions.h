#ifndef LUMO25D_FREEFUNCTIONS_H
#define LUMO25D_FREEFUNCTIONS_H

#include "Lumo25DApi.h"
#include "Orientation2.h"
#include "Point2.h"
#include "Segment2.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

class Bbox2;
class Edge2;
class UserPredicateT;
class Zone2;

// ---- predicates -------------------------------------------------------------------------------------------------

/// How p2 lies seen from the directed line p0 to p1: exact for any finite doubles. A null argument is a failed condition,
/// and so is an x or y that is no finite number. One process-wide object is behind it, which gets slower for small
/// coordinates once it has seen large ones, and is meant for one thread; use getOrientation2_mt elsewhere.
LUMO25D_API Orientation2 getOrientation2(const Point2* p0, const Point2* p1, const Point2* p2);
/// The same, callable from any thread: only where rounding could decide, a call sets up a state of its own.
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

// ---- polygons ---------------------------------------------------------------------------------------------------

// Points are equal when their x and y are; all decisions are exact. A ring is a closed chain of three or more segments in
// which exactly two segments end at each corner. Coordinates that aren't finite get a warning and the neutral result.

/// Brings the segments of one ring, given in any order and direction, into the order of a walk: each target is the next
/// source, and the last target the first source. It starts with the first segment, in its direction. False, with a
/// warning and the segments as they were, for anything else: several rings (nested or not), open chains, a corner that
/// more than two segments share (rings that touch there, or one that touches itself), a segment that is a point. Whether
/// the ring crosses itself isn't looked at. O(n log n).
LUMO25D_API bool sortRing(std::vector<Segment2>& vRing);
/// The same with a counterclockwise walk, so that the first segment may be turned. It is the turn at the leftmost
/// corner (of several, the lowest) that counts, which for a ring that crosses itself is all that there is. False, too, if
/// there the ring runs back along itself.
LUMO25D_API bool sortRingCCW(std::vector<Segment2>& vRing);
/// Takes directed edges apart into closed polygons, appended to vvPolygons in walking order. Vertices count by identity.
/// No polygon passes a vertex twice: rings that touch at a vertex are polygons of their own, also the two parts of a ring
/// that touches itself. Polygons that share a vertex don't cross there unless edges do. For the border of an area (the
/// area on the left of each edge) outer borders are counterclockwise, holes clockwise; nested ones follow each other
/// in no particular order. What belongs to no closed polygon, open chains above all, is appended to vRemaining, and so are
/// edges without a triangle. Linear, but for vertices at which k polygons meet: k * k.
LUMO25D_API void edgesToPolygons(const std::vector<Edge2>& vEdges, std::vector<std::vector<Edge2>>& vvPolygons,
                                 std::vector<Edge2>& vRemaining);
/// True when the segments, in any order and direction, form exactly one ring (see sortRing()) whose segments have nothing
/// in common but the corner between successive ones: no crossing, no overlap, no corner on another segment. No message
/// for a ring that isn't simple. O(n log n) plus the pairs of segments whose boxes meet.
LUMO25D_API bool isSimplePolygon(const std::vector<Segment2>& vSegments);
/// Appends the segments from each point to the next; with bClose also the one from the last to the first, if there are
/// three points or more. Points equal to the one before are passed over, so that no segment is a point.
LUMO25D_API void pointsToPolyline(const std::vector<Point2>& vPoints, bool bClose, std::vector<Segment2>& vSegments);

// ---- zones ------------------------------------------------------------------------------------------------------

/// Combine two zones of one triangulation into a new one, which belongs to the triangulation: the triangles in one of them,
/// in both, in the first but not in the second, in exactly one. Nothing is cut: for the result to have its border where
/// both have theirs, both have to stand in the triangulation. The result asks the two at every query, so that it follows
/// all that happens to them; they must live as long as it does. It may be empty. NULL, with a message, for zones of
/// different triangulations; the arguments must not be NULL.
LUMO25D_API Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1);
LUMO25D_API Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1);
LUMO25D_API Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1);
LUMO25D_API Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1);
/// Erodes a zone from its border inwards: triangles at the border are taken away as long as the predicate holds for one.
/// Those that fulfil it and lie inside of others that don't remain. Returns a new grow zone of the rest, whose border is
/// made of constraints; NULL when nothing remains, and, with a warning, for a zone that is NULL or empty. The zone itself
/// stays as it is. bVerbose prints count and areas before and after.
LUMO25D_API Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose = false);

// ---- generators of test data ------------------------------------------------------------------------------------

// All of them are repeatable: the same arguments give the same data, the random ones bit by bit on every platform. They
// append to the vector that they are given. With arguments that make no sense (no finite numbers, a box without area,
// sizes that are not positive, results finer than the spacing of doubles) they warn and append nothing.

/// num points, equally distributed over the box, with height 0. Points may coincide, if rarely. O(num).
LUMO25D_API void generateRandomPoints(std::size_t num, const Bbox2& box, std::uint64_t seed,
                                      std::vector<Point2>& vPoints);
/// The same with heights equally distributed from minZ to maxZ, which may be equal.
LUMO25D_API void generateRandomPoints3D(std::size_t num, const Bbox2& box, double minZ, double maxZ, std::uint64_t seed,
                                        std::vector<Point2>& vPoints);
/// num segments in the box, at most maxLen long but never without length, with height 0. Sources are equally
/// distributed over the box, targets over the part of the disc around the source that the box holds. Segments may
/// intersect. O(num).
LUMO25D_API void generateRandomSegments(std::size_t num, const Bbox2& box, double maxLen, std::uint64_t seed,
                                        std::vector<Segment2>& vSegments);
/// A random simple polygon with num edges (3 or more) in the box: counterclockwise, each edge's target is the next
/// edge's source and the last edge's target the first edge's source; height 0. It is simple in the exact sense: edges
/// share nothing but the corner between successive ones. O(num log num) expected.
LUMO25D_API void generateRandomPolygon(std::size_t num, const Bbox2& box, std::uint64_t seed,
                                       std::vector<Segment2>& vSegments);

/// num different points on a circle, counterclockwise from the angle 0, rounded, at the height of the centre.
LUMO25D_API void generateCircle(std::size_t num, const Point2& center, double radius, std::vector<Point2>& vPoints);
/// The closed polygon of these points (3 or more).
LUMO25D_API void generateCircle(std::size_t num, const Point2& center, double radius, std::vector<Segment2>& vSegments);
/// A chain of num segments along a sine curve from start, at its height: y = start.y + amplitude * sin(2 pi t periods),
/// x = start.x + t length, for t from 0 to 1 in equal steps. The amplitude may be 0 or negative.
LUMO25D_API void generateSineSegments(std::size_t num, const Point2& start, double length, double amplitude,
                                      double periods, std::vector<Segment2>& vSegments);

/// Shears in place: x becomes x + factor * y. Where a result would not be finite: a warning, and nothing changes.
LUMO25D_API void shear(std::vector<Point2>& vPoints, double factor);
LUMO25D_API void shear(std::vector<Segment2>& vSegments, double factor);

// ---- stopwatch and version --------------------------------------------------------------------------------------

/// A stopwatch with a name. The first call with a name starts it and returns -1.0; the next one stops it, forgets the
/// name and returns the seconds between. Both print a line, unless the name begins with "[quiet]". A printing stop
/// leaves the standard output in fixed notation with precision 6. One process-wide map holds the names, which threads
/// should not share. A NULL name is warned about and gives -1.0.
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
