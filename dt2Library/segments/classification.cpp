#include "segments/classification.h"

#include "geometry/OrbiTest.h"
#include "geometry/numericTools.h"
#include "support/check.h"

#include "Segment2.h"

#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// Four end points: p1 and p2 of one segment, p3 and p4 of the other.
struct Ends
{
    const Point2* p1;
    const Point2* p2;
    const Point2* p3;
    const Point2* p4;
};

/// A real segment and a point q.
SegmentIntersectionType classifyPoint(const OrbiTest& orbiTest, const Point2& p1, const Point2& p2, const Point2& q)
{
    if (q == p1 || q == p2) return SIT_ENDPOINT;
    if (orbiTest.orientationInRange(&p1, &p2, &q) != ORIENTATION2_COLLINEAR) return SIT_NONE;
    return isStrictlyBetween(p1, p2, q) ? SIT_POINT : SIT_NONE;
}

/// Settles pairs with a point among them and identical pairs. Otherwise SIT_UNINITIALIZED, and a common end point, if
/// there is one, stands in p1 and p3.
SegmentIntersectionType getIntersectionType_degeneratePart(const OrbiTest& orbiTest, Ends& e)
{
    if (*e.p1 == *e.p2) {
        std::swap(e.p1, e.p3);
        std::swap(e.p2, e.p4);
        if (*e.p1 == *e.p2) return *e.p1 == *e.p3 ? SIT_ENDPOINT : SIT_NONE;
    }
    if (*e.p3 == *e.p4) return classifyPoint(orbiTest, *e.p1, *e.p2, *e.p3);
    if (*e.p1 == *e.p4 || *e.p2 == *e.p4) std::swap(e.p3, e.p4);
    if (*e.p2 == *e.p3) std::swap(e.p1, e.p2);
    return *e.p1 == *e.p3 && *e.p2 == *e.p4 ? SIT_SEGMENT : SIT_UNINITIALIZED;
}

/// Segments that share p1 = p3 and no other end.
SegmentIntersectionType classifyFan(const OrbiTest& orbiTest, const Ends& e)
{
    if (orbiTest.orientationInRange(e.p1, e.p2, e.p4) != ORIENTATION2_COLLINEAR) return SIT_ENDPOINT;
    const bool bOverlap = isStrictlyBetween(*e.p1, *e.p2, *e.p4) || isStrictlyBetween(*e.p3, *e.p4, *e.p2);
    return bOverlap ? SIT_SEGMENT : SIT_ENDPOINT;
}

/// Segments without a common end.
SegmentIntersectionType classifyApart(const OrbiTest& orbiTest, const Ends& e)
{
    const Orientation2 o3 = orbiTest.orientationInRange(e.p1, e.p2, e.p3);
    const Orientation2 o4 = orbiTest.orientationInRange(e.p1, e.p2, e.p4);
    if (o3 == ORIENTATION2_COLLINEAR && o4 == ORIENTATION2_COLLINEAR) {
        const bool bOverlap = isStrictlyBetween(*e.p1, *e.p2, *e.p3) || isStrictlyBetween(*e.p1, *e.p2, *e.p4) ||
                              isStrictlyBetween(*e.p3, *e.p4, *e.p1) || isStrictlyBetween(*e.p3, *e.p4, *e.p2);
        return bOverlap ? SIT_SEGMENT : SIT_NONE;
    }
    if (o3 == ORIENTATION2_COLLINEAR) return isStrictlyBetween(*e.p1, *e.p2, *e.p3) ? SIT_POINT : SIT_NONE;
    if (o4 == ORIENTATION2_COLLINEAR) return isStrictlyBetween(*e.p1, *e.p2, *e.p4) ? SIT_POINT : SIT_NONE;
    if (o3 == o4) return SIT_NONE;
    const Orientation2 o1 = orbiTest.orientationInRange(e.p3, e.p4, e.p1);
    const Orientation2 o2 = orbiTest.orientationInRange(e.p3, e.p4, e.p2);
    if (o1 != o2) return SIT_POINT;
    LUMO_CHECK(o1 != ORIENTATION2_COLLINEAR, "o1!=ORIENTATION2_COLLINEAR");
    return SIT_NONE;
}

} // namespace

SegmentIntersectionType classifySegments(OrbiTest& orbiTest, const Segment2& a, const Segment2& b)
{
    Ends e{&a.src, &a.trg, &b.src, &b.trg};
    orbiTest.ensureStaticBound(e.p1, e.p2, e.p3);
    orbiTest.ensureStaticBound(e.p4);
    const SegmentIntersectionType settled = getIntersectionType_degeneratePart(orbiTest, e);
    if (settled != SIT_UNINITIALIZED) return settled;
    if (*e.p1 == *e.p3) return classifyFan(orbiTest, e);
    LUMO_CHECK(*e.p1 != *e.p3 && *e.p1 != *e.p4 && *e.p2 != *e.p3 && *e.p2 != *e.p4,
               "p1!=p3 && p1!=p4 && p2!=p3 && p2!=p4");
    return classifyApart(orbiTest, e);
}

} // namespace ORBI_LUMO25D
