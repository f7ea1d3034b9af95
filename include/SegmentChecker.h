#ifndef LUMO25D_SEGMENTCHECKER_H
#define LUMO25D_SEGMENTCHECKER_H

#include "Lumo25DApi.h"
#include "MsgBase.h"
#include "Segment2.h"
#include "SegmentIntersectionType.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Visualizer2;
struct SegmentCheckerData;

/// Finds the segments of a set that meet in a way that makes them unusable as constraints: they cross, overlap, or one
/// ends on the inside of another. Stands on its own, there is no triangulation.
///
/// Guarantees
/// 1. Classification is exact for any finite coordinates and looks at x and y alone; it doesn't depend on the order of
///    the two segments, nor on their directions.
/// 2. Sequences of results are in the order of input, the same on every run.
///
/// The segments are borrowed: they must outlive the checker and must not change. Those that are NULL or have a coordinate
/// that is no finite number are refused, with one message that tells how many: they are not counted and have no index. A
/// segment that is a point is a segment.
///
/// One thread at a time may use an object.
///
///     std::vector<Segment2*> vIllegal;
///     SegmentChecker checker(vSegments);
///     checker.getIllegalSegments(false, vIllegal);
///     if (!vIllegal.empty()) checker.showIllegalSegments(false, "illegal.ps");
class LUMO25D_API SegmentChecker
{
public:
    /// An empty checker: good for the operations on pairs.
    SegmentChecker();

    /// Takes the pointers over.
    explicit SegmentChecker(const std::vector<Segment2*>& vSegments);
    ~SegmentChecker();
    SegmentChecker(const SegmentChecker&) = delete;
    SegmentChecker& operator=(const SegmentChecker&) = delete;

    /// Those that were given, but for the refused ones.
    std::size_t getNumberOfSegments() const;
    /// An index out of range is a failed condition.
    Segment2* getSegment(std::size_t i) const;
    /// The index of a segment, the last one if the pointer was given several times; -1, with a warning, for a pointer that
    /// isn't in the set. Logarithmic, but for the first call.
    std::ptrdiff_t getIndex(const Segment2* pSegment) const;

    /// Progress of getIllegalSegments(), under the name "getIllegalSegments". Not owned. What a subscriber throws ends the
    /// search and is handed on; the results stay as they were.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

    /// Appends each segment that takes part in an illegal intersection, once: SIT_SEGMENT, SIT_POINT and, if wished,
    /// SIT_ENDPOINT. O(n log n) and the number of pairs whose bounding boxes meet.
    void getIllegalSegments(bool bAlsoEndPointIntersections, std::vector<Segment2*>& vIllegalSegments) const;

    /// Appends the segments that meet pSegment in such a way, each with the type. pSegment need not be in the set; its own
    /// pointer is passed over. NULL, and coordinates that aren't finite, get a warning.
    void getIntersectors(const Segment2* pSegment, bool bAlsoEndPointIntersections,
                         std::vector<std::pair<Segment2*, SegmentIntersectionType>>& vIntersectors) const;

    /// How two segments meet; SIT_SEGMENT for the same pointer twice. Two point segments at one place are SIT_ENDPOINT.
    /// NULL, and coordinates that aren't finite, get a warning and SIT_UNINITIALIZED.
    SegmentIntersectionType getIntersectionType(const Segment2* pA, const Segment2* pB) const;
    /// The enumerator's name; "UNKNOWN SIT" for any other value.
    static const char* getIntersectionTypeString(SegmentIntersectionType sit);

    /// The common point of two segments of type SIT_POINT or SIT_ENDPOINT, once with the height of the first segment
    /// there, once with that of the second. An end point on the other segment is met exactly; a crossing is off by
    /// roundings only (at most 2^-44 times the length of segment a, and a unit in the last place). Another type, or one
    /// that isn't theirs: a warning, and the points stay.
    void getIntersectionPoint(SegmentIntersectionType sit, const Segment2& a, const Segment2& b, Point2& onA,
                              Point2& onB) const;
    /// The common part of two segments on one line, once with the heights of the first, once with those of the second,
    /// with ascending x (or y, if it is longer in y, but for lengths that no double holds). Its ends are end points of
    /// the segments, exactly; a single common point is a part without length. Segments that have nothing in common or
    /// aren't on one line: a warning, and the results stay.
    void getIntersectionSegment(const Segment2& a, const Segment2& b, Segment2& onA, Segment2& onB) const;

    /// Draws all segments into a PostScript file.
    void showSegments(const char* name) const;
    /// Draws all segments into a PostScript file: legal ones gray, illegal ones red and over them, in blue, what they have
    /// in common, pair by pair.
    void showIllegalSegments(bool bAlsoEndPointIntersections, const char* name) const;

private:
    void addSegments(const std::vector<Segment2*>& vSegments);
    void markCommonParts(std::size_t i, bool bAlsoEndPointIntersections, Visualizer2& visualizer) const;

    std::unique_ptr<SegmentCheckerData> pSCD;
};

} // namespace ORBI_LUMO25D

#endif
