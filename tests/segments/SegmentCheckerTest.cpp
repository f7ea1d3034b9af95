#include "SegmentChecker.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "geometry/numericTools.h"
#include "support/TestOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gmpxx.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ORBI_LUMO25D
{

namespace
{

using ::testing::HasSubstr;
using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

using Exact = std::pair<mpq_class, mpq_class>;

Exact exactOf(const Point2& p)
{
    return {p.x(), p.y()};
}

mpq_class cross(const Exact& a, const Exact& b, const Exact& c, const Exact& d) // (b - a) x (d - c)
{
    return (b.first - a.first) * (d.second - c.second) - (b.second - a.second) * (d.first - c.first);
}

/// What two segments have in common, in rationals: the closed stretch from lo to hi, and whether their lines coincide.
struct Common
{
    SegmentIntersectionType sit = SIT_NONE;
    bool bOneLine = false, bEnd = false;
    Exact lo, hi;

    Common(const Segment2& a, const Segment2& b)
    {
        const auto [a0, a1] = std::minmax({exactOf(a.src), exactOf(a.trg)});
        const auto [b0, b1] = std::minmax({exactOf(b.src), exactOf(b.trg)});
        const mpq_class det = cross(a0, a1, b0, b1);
        lo = std::max(a0, b0);
        hi = std::min(a1, b1);
        if (det == 0) {
            bOneLine = a0 == a1 && b0 == b1 ? a0 == b0 : cross(a0, a1, a0, b0) == 0 && cross(b0, b1, b0, a0) == 0;
            if (!bOneLine || hi < lo) return;
        } else {
            const mpq_class t = cross(a0, b0, b0, b1) / det, s = cross(a0, b0, a0, a1) / det;
            if (t < 0 || t > 1 || s < 0 || s > 1) return;
            lo = hi = {a0.first + t * (a1.first - a0.first), a0.second + t * (a1.second - a0.second)};
        }
        const bool bEndOfA = lo == a0 || lo == a1, bEndOfB = lo == b0 || lo == b1;
        bEnd = bEndOfA || bEndOfB;
        sit = lo < hi ? SIT_SEGMENT : bEndOfA && bEndOfB ? SIT_ENDPOINT : SIT_POINT;
    }
};

/// At its place, or off by roundings, with the segment's own height.
bool isOn(const Segment2& s, const Point2& p, const Exact& place, bool bExact)
{
    const double off = bExact ? 0.0 : 0x1p-50 * (s.src.getMaxAbs() + s.trg.getMaxAbs());
    return abs(place.first - p.x()) <= off && abs(place.second - p.y()) <= off &&
           std::fabs(p.z() - heightOnSegment(s.src, s.trg, p.x(), p.y())) <=
               1e-14 * std::max(std::fabs(s.src.z()), std::fabs(s.trg.z()));
}

/// Type, common point and common part, in both orders.
void expectExact(const SegmentChecker& checker, const Segment2& first, const Segment2& second)
{
    const Common common(first, second);
    for (const auto& [a, b] : {std::pair(first, second), std::pair(second, first)}) {
        SCOPED_TRACE(::testing::Message() << a << "\n" << b);
        ASSERT_EQ(checker.getIntersectionType(&a, &b), common.sit);
        if (common.sit == SIT_NONE) continue;
        if (common.sit != SIT_SEGMENT) {
            Point2 onA, onB;
            checker.getIntersectionPoint(common.sit, a, b, onA, onB);
            ASSERT_TRUE(isOn(a, onA, common.lo, common.bEnd) && isOn(b, onB, common.lo, common.bEnd) && onA == onB);
        }
        if (!common.bOneLine) continue;
        Segment2 partOfA, partOfB;
        checker.getIntersectionSegment(a, b, partOfA, partOfB);
        const bool bDown = partOfA.trg < partOfA.src; // ascending in y then
        ASSERT_TRUE(!bDown || partOfA.src.y() < partOfA.trg.y());
        const Exact &lo = bDown ? common.hi : common.lo, &hi = bDown ? common.lo : common.hi;
        ASSERT_TRUE(isOn(a, partOfA.src, lo, true) && isOn(a, partOfA.trg, hi, true)) << partOfA;
        ASSERT_TRUE(isOn(b, partOfB.src, lo, true) && isOn(b, partOfB.trg, hi, true)) << partOfB;
    }
}

std::vector<Segment2*> pointersTo(std::vector<Segment2>& vSegments)
{
    std::vector<Segment2*> v;
    for (Segment2& s : vSegments) v.push_back(&s);
    return v;
}

/// By kind: crossings in general position, or a grid full of overlaps and points; at the origin or survey coordinates.
Segment2 randomSegment(SplitMix64& random, int kind)
{
    const auto coordinate = [&](double origin) {
        return (kind < 2 ? 0.0 : origin) + (kind % 2 == 0 ? random.between(0, 10) : double(random.index(9)));
    };
    const Point2 p(coordinate(21530000.125), coordinate(6782000.375), 1);
    if (kind % 2 == 0) return Segment2(p, Point2(p.x() + random.between(-1, 1), p.y() + random.between(-1, 1), 2));
    return Segment2(p, Point2(coordinate(21530000.125), coordinate(6782000.375), 2));
}

struct Listener : public MsgBase
{
    void update(MsgType, const char* s, double d) override
    {
        EXPECT_STREQ(s, "getIllegalSegments");
        vFractions.push_back(d);
        if (vFractions.size() == throwAt) throw std::runtime_error("enough");
    }
    std::size_t throwAt = 0;
    std::vector<double> vFractions;
};

} // namespace

TEST(SegmentChecker, TypeOrCommonPartIsNotExact)
{
    lumo_test::CoutCapture out; // of heights that are clamped
    // All pairs on a grid of 4 x 4, points among them; signed zeros at the origin, and few bits left elsewhere.
    for (const double offset : {-1.0, 21530000.125, 0x1p50}) {
        const SegmentChecker checker;
        std::vector<Segment2> vAll;
        for (int i = 0; i < 256; ++i) {
            const int p = i % 16, q = i / 16;
            const double zero = i % 2 == 0 ? 0.0 : -0.0;
            vAll.emplace_back(Point2(offset + p % 4 + zero, -(p / 4 + offset), i),
                              Point2(offset + q % 4, -(q / 4 + offset), -2 * i));
        }
        for (std::size_t i = 0; i < vAll.size(); ++i) {
            for (std::size_t j = i + 1; j < vAll.size(); j += offset == -1.0 ? 1 : 7) {
                expectExact(checker, vAll[i], vAll[j]);
                if (HasFatalFailure()) return;
            }
        }
        EXPECT_EQ(checker.getIntersectionType(&vAll[0], &vAll[0]), SIT_SEGMENT);
    }
    // On one line but for the rounding of coordinates, at magnitudes that take every stage of the predicates.
    SplitMix64 random(11);
    for (int i = 0; i < 3000; ++i) {
        const double scale = std::ldexp(1.0, (i % 3) * 300 - 300), dx = random.between(-1, 1),
                     dy = random.between(-1, 1);
        const double origin = i % 4 == 0 ? 0.0 : 1.0;
        Point2 aPoints[4];
        for (Point2& p : aPoints) {
            double t = double(random.index(6)) * (i % 2 == 0 ? 0.1 : 0.5);
            if (origin == 0.0 && &p == &aPoints[3]) t *= 0x1p30; // out of the others' range
            p.setCoords((origin * 21530000.125 + t * dx) * scale, (origin * 6782000.375 + t * dy) * scale,
                        random.unit());
        }
        const SegmentChecker checker;
        expectExact(checker, Segment2(aPoints[0], aPoints[1]), Segment2(aPoints[2], aPoints[3]));
        if (HasFatalFailure()) return;
    }
}

TEST(SegmentChecker, SearchesDifferFromAllPairs)
{
    for (int i = 0; i < 80; ++i) {
        SplitMix64 random(static_cast<unsigned>(i));
        SCOPED_TRACE(i);
        std::vector<Segment2> vSegments;
        const std::size_t n = i < 8 ? static_cast<std::size_t>(i) : i < 10 ? 700 : random.index(i % 2 == 0 ? 200 : 30);
        for (std::size_t j = 0; j < n; ++j) vSegments.push_back(randomSegment(random, i % 4));
        const SegmentChecker checker(pointersTo(vSegments));
        for (const bool bAlsoEnds : {false, true}) {
            std::vector<Segment2*> vExpected, vFound;
            for (Segment2& s : vSegments) {
                Intersectors vTwin, vIntersectors;
                for (Segment2& other : vSegments) {
                    const SegmentIntersectionType sit =
                        &s == &other ? SIT_NONE : checker.getIntersectionType(&s, &other);
                    if (sit != SIT_NONE && (bAlsoEnds || sit != SIT_ENDPOINT)) vTwin.emplace_back(&other, sit);
                }
                checker.getIntersectors(&s, bAlsoEnds, vIntersectors);
                ASSERT_EQ(vIntersectors, vTwin);
                if (!vTwin.empty()) vExpected.push_back(&s);
            }
            checker.getIllegalSegments(bAlsoEnds, vFound);
            ASSERT_EQ(vFound, vExpected);
        }
    }
}

TEST(SegmentChecker, BadInputIsTakenInSilence)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    Segment2 good(Point2(0, 0, 0), Point2(1, 1, 0)), other(Point2(0, 1, 0), Point2(1, 0, 0));
    Segment2 bad(Point2(0, std::nan(""), 0), Point2(1, 1, 0)), badHeight(Point2(0, 1, 0), Point2(1, 0, HUGE_VAL));
    const SegmentChecker checker({nullptr, &bad, &good, &badHeight, &good, &other});
    EXPECT_THAT(out.take(), HasSubstr("WARNING: Refused, because NULL or not finite: 3 segments"));
    EXPECT_TRUE(checker.getNumberOfSegments() == 3 && checker.getSegment(0) == &good);
    EXPECT_TRUE(checker.getIndex(&good) == 1 && checker.getIndex(&other) == 2); // the last place of one that came twice
    EXPECT_THROW(checker.getSegment(3), LumoException);
    EXPECT_THAT(out.take(), HasSubstr("Condition [ i<pSCD->vSegments.size() failed ]"));
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(false, vIllegal); // once, and it doesn't overlap itself
    EXPECT_EQ(vIllegal, (std::vector<Segment2*>{&good, &other}));

    const Segment2 parallel(Point2(0, 1, 0), Point2(1, 2, 0)), far(Point2(5, 5, 0), Point2(6, 6, 0));
    Intersectors vNone;
    Point2 onA, onB;
    Segment2 partA, partB;
    const auto expectWarning = [&](const char* text) {
        EXPECT_THAT(out.take(), HasSubstr(std::string("SegmentChecker::get") + text));
        EXPECT_TRUE(vNone.empty() && onA.samePoint(Point2()) && onB.samePoint(Point2()));
        EXPECT_TRUE(partA == Segment2() && partB == Segment2());
    };
    for (const Segment2* p : {static_cast<const Segment2*>(nullptr), static_cast<const Segment2*>(&bad)}) {
        EXPECT_EQ(checker.getIndex(p), -1);
        expectWarning("Index(), WARNING: No such segment");
        checker.getIntersectors(p, true, vNone);
        expectWarning("Intersectors(), WARNING: ");
        EXPECT_EQ(checker.getIntersectionType(&good, p), SIT_UNINITIALIZED);
        expectWarning("IntersectionType(), WARNING: ");
    }
    checker.getIntersectionPoint(SIT_SEGMENT, good, other, onA, onB);
    expectWarning("IntersectionPoint(), WARNING: wrong SegmentIntersectionType provided");
    checker.getIntersectionPoint(SIT_ENDPOINT, good, other, onA, onB);
    expectWarning(
        "IntersectionPoint(), WARNING: SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments");
    checker.getIntersectionPoint(SIT_POINT, good, parallel, onA, onB);
    expectWarning("IntersectionPoint(), WARNING: SIT_POINT is a wrong SegmentIntersectionType for the preset segments");
    checker.getIntersectionPoint(SIT_POINT, good, bad, onA, onB);
    expectWarning("IntersectionPoint(), WARNING: Segment has a coordinate that is no finite number");
    checker.getIntersectionSegment(good, other, partA, partB);
    expectWarning("IntersectionPoint(), WARNING: segments seem to be non-collinear");
    checker.getIntersectionSegment(good, far, partA, partB);
    expectWarning("IntersectionSegment(), WARNING: segments have no common range");
    EXPECT_STREQ(SegmentChecker::getIntersectionTypeString(SIT_ENDPOINT), "SIT_ENDPOINT");
    EXPECT_STREQ(SegmentChecker::getIntersectionTypeString(static_cast<SegmentIntersectionType>(5)), "UNKNOWN SIT");
}

TEST(SegmentChecker, ProgressOrPicturesAreWrong)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    std::vector<Segment2> vSegments = {{Point2(0, 0, 0), Point2(4, 4, 0)},
                                       {Point2(0, 4, 0), Point2(4, 0, 0)}, // crosses the first
                                       {Point2(5, 0, 0), Point2(9, 0, 0)}, // overlaps the next
                                       {Point2(7, 0, 0), Point2(12, 0, 0)},
                                       {Point2(12, 0, 0), Point2(12, 5, 0)}}; // a common end
    SegmentChecker checker(pointersTo(vSegments));
    checker.showSegments("all.ps");
    EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::showSegments(), numSegments=5\n"));
    EXPECT_EQ(lumo_test::countOf("lineto", lumo_test::readFile("all.ps")), 5U);
    for (const bool bAlsoEnds : {false, true}) {
        checker.showIllegalSegments(bAlsoEnds, "illegal.ps");
        const std::string picture = lumo_test::readFile("illegal.ps");
        EXPECT_THAT(picture, HasSubstr("SegmentChecker::showIllegalSegments"));
        EXPECT_THAT(picture, HasSubstr("(Number of segments: 5)"));
        EXPECT_THAT(picture, HasSubstr(bAlsoEnds ? "(Legal segments: 0)" : "(Legal segments: 1)"));
        EXPECT_THAT(picture, HasSubstr(bAlsoEnds ? "(Illegal segments: 5)" : "(Illegal segments: 4)"));
        // Behind the frame of the notes: five segments, an overlap, and a cross of two lines for each point.
        EXPECT_EQ(lumo_test::countOf("lineto", picture.substr(picture.rfind("692\tlineto"))), bAlsoEnds ? 11U : 9U)
            << picture;
    }

    Listener listener;
    checker.unsubscribe(MSG_PROGRESS, &listener);
    EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::unsubscribe(), WARNING: No publisher present"));
    checker.subscribe(MSG_PROGRESS, &listener);
    listener.throwAt = 2;
    std::vector<Segment2*> vIllegal;
    EXPECT_THROW(checker.getIllegalSegments(false, vIllegal), std::runtime_error);
    EXPECT_TRUE(vIllegal.empty());
    checker.getIllegalSegments(false, vIllegal);
    EXPECT_EQ(vIllegal.size(), 4U);
    EXPECT_THAT(listener.vFractions, ::testing::ElementsAre(0.2, 0.4, 0.2, 0.4, 0.6, 0.8, 1.0));
}

} // namespace ORBI_LUMO25D
