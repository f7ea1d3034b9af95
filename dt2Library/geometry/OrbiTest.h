#ifndef LUMO25D_GEOMETRY_ORBITEST_H
#define LUMO25D_GEOMETRY_ORBITEST_H

#include "geometry/OrbiTest_filters.h"
#include "geometry/TriangleLinks.h"

#include "Orientation2.h"
#include "Point2.h"
#include "Triangle2.h"

#include <atomic>
#include <gmp.h>
#include <mutex>

namespace ORBI_LUMO25D
{

/// How a point lies to the circumcircle of a counterclockwise triangle.
enum CircleInc2
{
    CINC2_UNDECIDED = 0, ///< from circleIncFast() alone: the value did not clear the filter
    CINC2_ZERO = 1,      ///< exactly on the circle
    CINC2_INCIRCLE = 2,  ///< strictly inside
    CINC2_OUTCIRCLE = 3  ///< strictly outside
};

/// How two segments meet.
enum SegmentMeet2
{
    IST_NOIS = 0,      ///< not at all
    IST_COLLINEAR = 1, ///< on one line, touching or overlapping
    IST_REGULAR = 2    ///< they cross or touch at one point
};

/// What decided an answer, for tests and statistics: in the order of cost.
enum class PredicateStage
{
    Filter,      ///< the inlined one: a bound from the largest coordinate, or from the lifts
    TightFilter, ///< a bound from the determinant's own terms
    Shortcut,    ///< axis-parallel line or rectangle
    Integers,    ///< integers of a fixed width
    Intervals,   ///< directed rounding
    Rationals    ///< the last word
};

/// The one place that decides on which side of a line a point lies, and whether a point lies inside a circle.
///
/// Laws
/// 1. Answers are exact for all finite doubles: coordinates are never snapped, overflow and underflow never decide, and
///    the caller's rounding mode is neither trusted nor changed. (With the processor's flush-to-zero modes on, that
///    holds for coordinates and differences that are no denormals.) Heights play no part.
/// 2. orientation(p, q, r) = orientation(q, r, p); an exchange of two points swaps clockwise and counterclockwise;
///    collinear if and only if the exact determinant is zero. The same for corners and the circle test.
/// 3. The static filter alone needs to know the coordinates' range: law 1 holds for orientation tests of points that
///    were announced by ensureStaticBound() or setStaticBound_MT(). getOrientation2() warns otherwise.
///
/// A coordinate that is no finite number is found only where the filters can't tell: a failed condition "coordinates
/// are finite". Any number of threads may test and raise the bound at one time; a lock is taken by the rational stage
/// alone, whose temporaries live here so that it doesn't allocate once they have grown.
class OrbiTest
{
public:
    OrbiTest();
    ~OrbiTest();
    OrbiTest(const OrbiTest&) = delete;
    OrbiTest& operator=(const OrbiTest&) = delete;

    /// Makes the static filter valid for coordinates up to maxCoord in size and, as a margin, tenfold. The range only
    /// ever grows, and smaller values change nothing. NaN is a failed condition.
    void setStaticBound_MT(double maxCoord);
    /// The same for the coordinates of the given points, if they are out of range.
    void ensureStaticBound(const Point2* p)
    {
        if (p->getMaxAbs() > getMaxCoord()) setStaticBound_MT(p->getMaxAbs());
    }
    void ensureStaticBound(const Point2* p0, const Point2* p1, const Point2* p2);
    /// The largest size of coordinates in range, and the bound of the filter that goes with it (in round-to-nearest
    /// and without underflow; filterBound() counts those in).
    double getMaxCoord() const { return maxCoord.load(std::memory_order_acquire); }
    double getStaticBound() const { return staticBound.load(std::memory_order_relaxed); }

    /// For loops that evaluate D themselves: of points in range, |D| > filterBound() has the true sign in every
    /// rounding mode. NaN never compares so.
    double filterBound() const { return rangeBound.load(std::memory_order_relaxed); }

    /// How p2 lies seen from the directed line p0 to p1. Points out of range: four lines on the standard output, and an
    /// answer by the present bound. pStage, when given, learns what decided.
    Orientation2 getOrientation2(const Point2* p0, const Point2* p1, const Point2* p2,
                                 PredicateStage* pStage = nullptr) const
    {
        const double range = getMaxCoord();
        if (p0->getMaxAbs() > range || p1->getMaxAbs() > range || p2->getMaxAbs() > range) warnOutOfRange(p0, p1, p2);
        return orientationInRange(p0, p1, p2, pStage);
    }
    /// How q lies seen from the edge opposite corner i (0 to 2), which has t on its left.
    Orientation2 getOrientation2(const Triangle2* t, int i, const Point2* q, PredicateStage* pStage = nullptr) const
    {
        return getOrientation2(t->corner(TriangleLinks::next(i)), t->corner(TriangleLinks::prev(i)), q, pStage);
    }
    /// The same without the range watch: the engine's hot path.
    Orientation2 orientationInRange(const Point2* p0, const Point2* p1, const Point2* p2,
                                    PredicateStage* pStage = nullptr) const
    {
        const double bound = filterBound();
        const double det = filters::orientation(p0, p1, p2).det();
        if (pStage != nullptr) *pStage = PredicateStage::Filter;
        if (det > bound) return ORIENTATION2_CCW;
        if (det < -bound) return ORIENTATION2_CW;
        return orientationUnfiltered(p0, p1, p2, pStage);
    }
    /// The single stages: axis shortcut, intervals and then exact arithmetic; rationals alone.
    Orientation2 orientationByIntervals(const Point2* p0, const Point2* p1, const Point2* p2,
                                        PredicateStage* pStage = nullptr) const;
    Orientation2 orientationExact(const Point2* p0, const Point2* p1, const Point2* p2) const;

    /// How q lies to the circle through the corners of t, or through three points that turn counterclockwise (answers
    /// are inverted if they turn clockwise). No range is needed.
    CircleInc2 circleInc3state(const Triangle2* t, const Point2* q, PredicateStage* pStage = nullptr) const
    {
        return circleInc3state(t->corner(0), t->corner(1), t->corner(2), q, pStage);
    }
    CircleInc2 circleInc3state(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q,
                               PredicateStage* pStage = nullptr) const
    {
        const filters::InCircleValue value = filters::inCircle(p0, p1, p2, q);
        const double det = value.det();
        const double bound = value.liftBound();
        if (pStage != nullptr) *pStage = PredicateStage::Filter;
        if (det > bound) return CINC2_INCIRCLE;
        if (det < -bound) return CINC2_OUTCIRCLE;
        return circleUnfiltered(p0, p1, p2, q, pStage);
    }
    /// The filter alone: for the approximate mode, never wrong either, but at times CINC2_UNDECIDED.
    CircleInc2 circleIncFast(const Triangle2* t, const Point2* q) const;
    /// Rectangle shortcut, then rationals.
    CircleInc2 circleIncExact(const Triangle2* t, const Point2* q, PredicateStage* pStage = nullptr) const;

    /// Where the lines through p1, p2 and through p3, p4 cross: computed exactly, then truncated toward zero to doubles,
    /// once. Parallel lines: a message and a failed condition.
    void getIntersectionCoords_gmp_MT(const Point2* p1, const Point2* p2, const Point2* p3, const Point2* p4, double& x,
                                      double& y) const;
    /// How the segments p1 p2 and p3 p4 meet. Of segments on one line, squared distances in plain floating point tell.
    SegmentMeet2 getIntersectionTypeIST(const Point2* p1, const Point2* p2, const Point2* p3, const Point2* p4) const;
    /// Sign of the determinant of the differences to p4 in space, in plain floating point: 1 for positive, 2 for
    /// negative, else 0. Neither filtered nor exact.
    Orientation2 getOrientation3(const Point2* p1, const Point2* p2, const Point2* p3, const Point2* p4) const;

    /// Height over (x, y) of the plane through three points, computed exactly, then truncated toward zero, once;
    /// infinite beyond the doubles. Points on one line in the plane: a failed condition. For any thread; calls wait for
    /// each other.
    static double getPlaneHeightExact(const Point2* p0, const Point2* p1, const Point2* p2, double x, double y);
    /// The same over a segment, by the axis in which it is longer. A segment without length in the plane is a failed
    /// condition.
    static double getLineHeightExact(const Point2* p0, const Point2* p1, double x, double y);

    /// Names for printing: "COL", "CCW", "CW"; the enumerators' names.
    static const char* toString(Orientation2 ori);
    static const char* toString(CircleInc2 inc);
    static const char* toString(SegmentMeet2 ist);

private:
    Orientation2 orientationUnfiltered(const Point2* p0, const Point2* p1, const Point2* p2,
                                       PredicateStage* pStage) const;
    CircleInc2 circleUnfiltered(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q,
                                PredicateStage* pStage) const;
    static CircleInc2 circleTightFilter(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q);
    CircleInc2 circleRationals(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q) const;
    void warnOutOfRange(const Point2* p0, const Point2* p1, const Point2* p2) const;

    static constexpr int numCircleTemp = 36;
    static constexpr int numIntersectionTemp = 18;
    static constexpr int numOrientationTemp = 12;

    // Rationals are made at their first use, under the mutex of their set. The three sets are disjoint.
    mutable mpq_t aCircleTemp[numCircleTemp];
    mutable mpq_t aIntersectionTemp[numIntersectionTemp];
    mutable mpq_t aOrientationTemp[numOrientationTemp];
    std::atomic<double> staticBound{0.0};
    std::atomic<double> rangeBound; ///< what the filter compares with
    std::atomic<double> maxCoord{0.0};
    mutable bool bCircleInit = false;
    mutable bool bIntersectionInit = false;
    mutable bool bOrientationInit = false;
    std::mutex mtxStaticBound;
    mutable std::mutex mtxIntersection;
    mutable std::mutex mtxOrientation;
    mutable std::mutex mtxCircle;
};

} // namespace ORBI_LUMO25D

#endif
