#include "SegmentChecker.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "oracles/Corpus.h"
#include "support/TestOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gmpxx.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace ORBI_LUMO25D
{

namespace
{

using ::testing::HasSubstr;
using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

/// What two segments have in common, in rationals, by their parameters: an interval of the first segment's.
SegmentIntersectionType exactType(const Segment2& a, const Segment2& b)
{
    if (a.src == a.trg && b.src != b.trg) return exactType(b, a);
    const mpq_class ax(a.src.x()), ay(a.src.y());
    const mpq_class adx = mpq_class(a.trg.x()) - ax, ady = mpq_class(a.trg.y()) - ay;
    const mpq_class sx = mpq_class(b.src.x()) - ax, sy = mpq_class(b.src.y()) - ay;
    const mpq_class tx = mpq_class(b.trg.x()) - ax, ty = mpq_class(b.trg.y()) - ay;
    if (a.src == a.trg) return sx == 0 && sy == 0 ? SIT_ENDPOINT : SIT_NONE;
    const mpq_class srcSide = adx * sy - ady * sx, trgSide = adx * ty - ady * tx;
    const bool bShareEnd = a.src == b.src || a.src == b.trg || a.trg == b.src || a.trg == b.trg;
    if (srcSide == 0 && trgSide == 0) {
        const mpq_class sqLength = adx * adx + ady * ady;
        const mpq_class s = (sx * adx + sy * ady) / sqLength, t = (tx * adx + ty * ady) / sqLength;
        const mpq_class lo = std::max<mpq_class>(0, std::min(s, t)), hi = std::min<mpq_class>(1, std::max(s, t));
        if (lo > hi) return SIT_NONE;
        if (lo < hi) return SIT_SEGMENT;
        return bShareEnd ? SIT_ENDPOINT : SIT_POINT;
    }
    if (srcSide == trgSide) return SIT_NONE;
    const mpq_class s = srcSide / (srcSide - trgSide); // along b
    const mpq_class x = sx + s * (tx - sx), y = sy + s * (ty - sy);
    const mpq_class r = (x * adx + y * ady) / (adx * adx + ady * ady); // along a
    if (s < 0 || s > 1 || r < 0 || r > 1) return SIT_NONE;
    return bShareEnd ? SIT_ENDPOINT : SIT_POINT;
}

/// The type that a search should find: none where not even the boxes meet, which saves most of the rationals.
SegmentIntersectionType wantedType(const Segment2& a, const Segment2& b, bool bAlsoEnds)
{
    const auto apart = [](double a0, double a1, double b0, double b1) {
        return std::max(a0, a1) < std::min(b0, b1) || std::max(b0, b1) < std::min(a0, a1);
    };
    if (&a == &b || apart(a.src.x(), a.trg.x(), b.src.x(), b.trg.x()) ||
        apart(a.src.y(), a.trg.y(), b.src.y(), b.trg.y())) {
        return SIT_NONE;
    }
    const SegmentIntersectionType sit = exactType(a, b);
    return sit == SIT_ENDPOINT && !bAlsoEnds ? SIT_NONE : sit;
}

void expectExact(const SegmentChecker& checker, const Segment2& a, const Segment2& b)
{
    const SegmentIntersectionType expected = exactType(a, b);
    const Segment2 aReversed(a.trg, a.src), bReversed(b.trg, b.src);
    for (const Segment2* pA : {&a, &aReversed}) {
        for (const Segment2* pB : {&b, &bReversed}) {
            ASSERT_EQ(checker.getIntersectionType(pA, pB), expected) << a << "\n" << b;
            ASSERT_EQ(checker.getIntersectionType(pB, pA), expected) << a << "\n" << b;
        }
    }
}

std::vector<Segment2*> pointersTo(std::vector<Segment2>& vSegments)
{
    std::vector<Segment2*> v;
    for (Segment2& s : vSegments) v.push_back(&s);
    return v;
}

/// Kinds: crossings in general position, a grid full of overlaps and points, both at survey coordinates.
Segment2 randomSegment(SplitMix64& random, int kind)
{
    const double offsetX = kind < 2 ? 0.0 : 21530000.125, offsetY = kind < 2 ? 0.0 : 6782000.375;
    if (kind % 2 == 0) {
        const double x = offsetX + random.between(0.0, 10.0), y = offsetY + random.between(0.0, 10.0);
        return Segment2(Point2(x, y, 1), Point2(x + random.between(-1, 1), y + random.between(-1, 1), 2));
    }
    const auto coordinate = [&random](double origin) { return origin + static_cast<double>(random.index(9)); };
    return Segment2(Point2(coordinate(offsetX), coordinate(offsetY), 1),
                    Point2(coordinate(offsetX), coordinate(offsetY), 2));
}

struct Listener : public MsgBase
{
    void update(MsgType, const char* s, double d) override
    {
        names.insert(s);
        vFractions.push_back(d);
    }
    std::set<std::string> names;
    std::vector<double> vFractions;
};

} // namespace

TEST(SegmentChecker, TypeOfSmallConfigurationsIsNotExact)
{
    // All pairs of segments, points among them, on a grid of 4 x 4; at the origin and where a coordinate has few bits left.
    // One of eight symmetric configurations is enough: expectExact() tries them all.
    const SegmentChecker checker;
    for (const double offset : {0.0, 21530000.125, 0x1p50}) {
        std::vector<Segment2> vAll;
        for (int i = 0; i < 16; ++i) {
            for (int j = i; j < 16; ++j) {
                vAll.emplace_back(Point2(offset + i % 4, i / 4 - offset, i),
                                  Point2(offset + j % 4, j / 4 - offset, -j));
            }
        }
        for (std::size_t i = 0; i < vAll.size(); ++i) {
            for (std::size_t j = i + 1; j < vAll.size(); ++j) expectExact(checker, vAll[i], vAll[j]);
        }
        EXPECT_EQ(checker.getIntersectionType(&vAll[0], &vAll[0]), SIT_SEGMENT);
        const Segment2 samePoint = vAll[0];
        EXPECT_EQ(checker.getIntersectionType(&vAll[0], &samePoint), SIT_ENDPOINT);
    }
}

TEST(SegmentChecker, TypeOfNearlyDegeneratePairsIsNotExact)
{
    // Points of one line but for the rounding of their coordinates, which puts some on it and most beside; and magnitudes
    // that take every stage of the predicates.
    SplitMix64 random(11);
    const SegmentChecker checker;
    int aCount[5] = {};
    for (int i = 0; i < 6000; ++i) {
        const double scale = std::ldexp(1.0, (i % 3) * 300 - 300);
        const double x0 = 21530000.125, y0 = 6782000.375, dx = random.between(-1, 1), dy = random.between(-1, 1);
        Point2 aPoints[4];
        for (Point2& p : aPoints) {
            const double t = static_cast<double>(random.index(6)) * (i % 2 == 0 ? 0.1 : 0.5);
            p.setCoords((x0 + t * dx) * scale, (y0 + t * dy) * scale, random.unit());
        }
        const Segment2 a(aPoints[0], aPoints[1]), b(aPoints[2], aPoints[3]);
        expectExact(checker, a, b);
        ++aCount[checker.getIntersectionType(&a, &b)];
    }
    for (int sit = SIT_NONE; sit <= SIT_ENDPOINT; ++sit) EXPECT_GT(aCount[sit], 50) << sit;
}

TEST(SegmentChecker, SearchesDifferFromAllPairs)
{
    for (int i = 0; i < 120; ++i) {
        const int kind = i % 4;
        SplitMix64 random(static_cast<unsigned>(i));
        SCOPED_TRACE(i);
        std::vector<Segment2> vSegments;
        const std::size_t n = i < 8 ? static_cast<std::size_t>(i) : random.index(kind % 2 == 0 ? 200 : 30);
        for (std::size_t j = 0; j < n; ++j) vSegments.push_back(randomSegment(random, kind));
        const std::vector<Segment2*> vPointers = pointersTo(vSegments);
        const SegmentChecker checker(vPointers);
        ASSERT_EQ(checker.getNumberOfSegments(), n);
        for (const bool bAlsoEnds : {false, true}) {
            std::vector<Segment2*> vExpected, vFound;
            for (Segment2& s : vSegments) {
                Intersectors vTwin, vIntersectors;
                for (Segment2& other : vSegments) {
                    const SegmentIntersectionType sit = wantedType(s, other, bAlsoEnds);
                    if (sit != SIT_NONE) vTwin.emplace_back(&other, sit);
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

TEST(SegmentChecker, CorpusIsJudgedOtherwiseThanByAllPairs)
{
    std::size_t numChecked = 0;
    for (oracles::CorpusEntry& entry : oracles::corpus(4000)) {
        if (entry.vSegments.empty()) continue;
        const oracles::FailureKeeper keeper(entry);
        ++numChecked;
        std::vector<Segment2*> vFound, vExpected;
        const SegmentChecker checker(pointersTo(entry.vSegments));
        checker.getIllegalSegments(false, vFound);
        for (Segment2& s : entry.vSegments) {
            const bool bIllegal =
                std::any_of(entry.vSegments.begin(), entry.vSegments.end(),
                            [&](const Segment2& other) { return wantedType(s, other, false) != SIT_NONE; });
            if (bIllegal) vExpected.push_back(&s);
        }
        ASSERT_EQ(vFound, vExpected);
    }
    EXPECT_GT(numChecked, 0U);
}

TEST(SegmentChecker, CommonPointsAndPartsHaveTheWrongPlaceOrHeight)
{
    const SegmentChecker checker;
    const auto segment = [](double x0, double y0, double z0, double x1, double y1, double z1) {
        return Segment2(Point2(x0, y0, z0), Point2(x1, y1, z1));
    };
    const Segment2 base = segment(0, 0, 10, 8, 0, 18);
    const struct
    {
        Segment2 other;
        Point2 onBase, onOther;
    } aPoints[] = {{segment(4, -4, 0, 4, 4, 8), Point2(4, 0, 14), Point2(4, 0, 4)},  // crossing
                   {segment(2, 0, 5, 2, 7, 6), Point2(2, 0, 12), Point2(2, 0, 5)},   // T
                   {segment(8, -1, 3, 8, 1, 5), Point2(8, 0, 18), Point2(8, 0, 4)},  // T, the other way
                   {segment(6, 0, 3, 6, 0, 3), Point2(6, 0, 16), Point2(6, 0, 3)},   // a point
                   {segment(9, 9, 0, 8, 0, -7), Point2(8, 0, 18), Point2(8, 0, -7)}, // common end
                   {segment(0, 0, 1, 0, 0, 2), Point2(0, 0, 10), Point2(0, 0, 1)}};  // a point on an end
    for (const auto& c : aPoints) {
        Point2 onA, onB;
        checker.getIntersectionPoint(checker.getIntersectionType(&base, &c.other), base, c.other, onA, onB);
        EXPECT_TRUE(onA.samePoint(c.onBase) && onB.samePoint(c.onOther)) << onA << "\n" << onB;
        checker.getIntersectionPoint(checker.getIntersectionType(&base, &c.other), c.other, base, onB, onA);
        EXPECT_TRUE(onA.samePoint(c.onBase) && onB.samePoint(c.onOther)) << onA << "\n" << onB;
    }
    const struct
    {
        Segment2 a, b, partOfA, partOfB;
    } aParts[] = {
        {base, segment(12, 0, 0, 4, 0, 8), segment(4, 0, 14, 8, 0, 18), segment(4, 0, 8, 8, 0, 4)},
        {base, segment(6, 0, 1, 2, 0, 3), segment(2, 0, 12, 6, 0, 16), segment(2, 0, 3, 6, 0, 1)},
        {base, segment(8, 0, 1, 9, 0, 3), segment(8, 0, 18, 8, 0, 18), segment(8, 0, 1, 8, 0, 1)}, // a single point
        {base, segment(3, 0, 1, 3, 0, 1), segment(3, 0, 13, 3, 0, 13), segment(3, 0, 1, 3, 0, 1)},
        {segment(1, 6, 6, 1, 0, 0), segment(1, -2, 0, 1, 4, 60), segment(1, 0, 0, 1, 4, 4),
         segment(1, 0, 20, 1, 4, 60)},
        {segment(0, 0, 0, 3, 9, 9), segment(1, 3, 1, 2, 6, 2), segment(1, 3, 3, 2, 6, 6), segment(1, 3, 1, 2, 6, 2)}};
    for (const auto& c : aParts) {
        for (const bool bExchanged : {false, true}) {
            Segment2 onA, onB;
            checker.getIntersectionSegment(bExchanged ? c.b : c.a, bExchanged ? c.a : c.b, onA, onB);
            if (bExchanged) std::swap(onA, onB);
            EXPECT_TRUE(onA.src.samePoint(c.partOfA.src) && onA.trg.samePoint(c.partOfA.trg)) << onA;
            EXPECT_TRUE(onB.src.samePoint(c.partOfB.src) && onB.trg.samePoint(c.partOfB.trg)) << onB;
        }
    }
}

TEST(SegmentChecker, BadInputIsTakenInSilence)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    const double nan = std::nan("");
    Segment2 good(Point2(0, 0, 0), Point2(1, 1, 0)), other(Point2(0, 1, 0), Point2(1, 0, 0));
    Segment2 bad(Point2(0, nan, 0), Point2(1, 1, 0)), badHeight(Point2(0, 1, 0), Point2(1, 0, HUGE_VAL));
    SegmentChecker checker({nullptr, &bad, &good, &badHeight, &good, &other});
    EXPECT_THAT(out.take(), HasSubstr("WARNING: Refused, because NULL or not finite: 3 segments"));
    EXPECT_EQ(checker.getNumberOfSegments(), 3U);
    EXPECT_EQ(checker.getSegment(0), &good);
    EXPECT_EQ(checker.getIndex(&good), 1); // the last place of a pointer that came twice
    EXPECT_EQ(checker.getIndex(&other), 2);
    EXPECT_EQ(out.take(), "");
    for (const Segment2* p : {static_cast<const Segment2*>(nullptr), static_cast<const Segment2*>(&bad)}) {
        EXPECT_EQ(checker.getIndex(p), -1);
        EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::getIndex(), WARNING: No such segment"));
        Intersectors v;
        checker.getIntersectors(p, true, v);
        EXPECT_TRUE(v.empty());
        EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::getIntersectors(), WARNING: "));
        EXPECT_EQ(checker.getIntersectionType(&good, p), SIT_UNINITIALIZED);
        EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::getIntersectionType(), WARNING: "));
    }
    EXPECT_THROW(checker.getSegment(3), LumoException);
    EXPECT_THAT(out.take(), HasSubstr("Condition [ i<pSCD->vSegments.size() failed ]"));
    // A pointer that came twice doesn't overlap itself, but is reported once for each place where the other meets it.
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(false, vIllegal);
    EXPECT_EQ(vIllegal, (std::vector<Segment2*>{&good, &other}));

    const Point2 untouched(7, 7, 7);
    Point2 onA = untouched, onB = untouched;
    Segment2 partA(untouched, untouched), partB = partA;
    const Segment2 parallel(Point2(0, 1, 0), Point2(1, 2, 0)), far(Point2(5, 5, 0), Point2(6, 6, 0));
    const struct
    {
        SegmentIntersectionType sit;
        const Segment2& b;
        const char* text;
    } aWrong[] = {{SIT_SEGMENT, other, "wrong SegmentIntersectionType provided"},
                  {SIT_ENDPOINT, other, "SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments"},
                  {SIT_POINT, parallel, "SIT_POINT is a wrong SegmentIntersectionType for the preset segments"},
                  {SIT_POINT, bad, "no finite number"}};
    for (const auto& wrong : aWrong) {
        checker.getIntersectionPoint(wrong.sit, good, wrong.b, onA, onB);
        EXPECT_THAT(out.take(), HasSubstr(std::string("SegmentChecker::getIntersectionPoint(), WARNING: ")));
        EXPECT_TRUE(onA.samePoint(untouched) && onB.samePoint(untouched)) << wrong.text;
    }
    checker.getIntersectionSegment(good, other, partA, partB);
    EXPECT_THAT(out.take(),
                HasSubstr("SegmentChecker::getIntersectionPoint(), WARNING: segments seem to be non-collinear"));
    checker.getIntersectionSegment(good, far, partA, partB);
    EXPECT_THAT(out.take(), HasSubstr("WARNING: segments have no common range"));
    EXPECT_TRUE(partA.src.samePoint(untouched) && partB.trg.samePoint(untouched));

    const SegmentChecker empty;
    vIllegal.clear();
    Intersectors vNone;
    empty.getIllegalSegments(true, vIllegal);
    empty.getIntersectors(&good, true, vNone);
    EXPECT_TRUE(vIllegal.empty() && vNone.empty());
    EXPECT_STREQ(SegmentChecker::getIntersectionTypeString(SIT_ENDPOINT), "SIT_ENDPOINT");
    EXPECT_STREQ(SegmentChecker::getIntersectionTypeString(static_cast<SegmentIntersectionType>(5)), "UNKNOWN SIT");
}

TEST(SegmentChecker, ProgressIsNotToldOrEndsBeforeOne)
{
    lumo_test::CoutCapture out;
    SplitMix64 random(4);
    std::vector<Segment2> vSegments;
    for (int i = 0; i < 1000; ++i) vSegments.push_back(randomSegment(random, 0));
    SegmentChecker checker(pointersTo(vSegments));
    Listener listener;
    checker.unsubscribe(MSG_PROGRESS, &listener);
    EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::unsubscribe(), WARNING: No publisher present"));
    checker.subscribe(MSG_PROGRESS, &listener);
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(false, vIllegal);
    EXPECT_EQ(listener.names, std::set<std::string>{"getIllegalSegments"});
    EXPECT_EQ(listener.vFractions.size(), 100U);
    EXPECT_EQ(listener.vFractions.back(), 1.0);
    checker.unsubscribe(MSG_PROGRESS, &listener);
    checker.getIllegalSegments(false, vIllegal);
    EXPECT_EQ(listener.vFractions.size(), 100U);
}

TEST(SegmentChecker, PicturesLackSegmentsOrMarks)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    std::vector<Segment2> vSegments = {{Point2(0, 0, 0), Point2(4, 4, 0)},
                                       {Point2(0, 4, 0), Point2(4, 0, 0)}, // crosses the first
                                       {Point2(5, 0, 0), Point2(9, 0, 0)}, // overlaps the next
                                       {Point2(7, 0, 0), Point2(12, 0, 0)},
                                       {Point2(12, 0, 0), Point2(12, 5, 0)}}; // a common end
    const SegmentChecker checker(pointersTo(vSegments));
    checker.showSegments("all.ps");
    EXPECT_THAT(out.take(), HasSubstr("SegmentChecker::showSegments(), numSegments=5\n"));
    const auto count = [](const std::string& text, const std::string& word) {
        std::size_t n = 0;
        for (std::size_t i = text.find(word); i != std::string::npos; i = text.find(word, i + 1)) ++n;
        return n;
    };
    EXPECT_EQ(count(lumo_test::readFile("all.ps"), "lineto"), 5U);
    for (const bool bAlsoEnds : {false, true}) {
        checker.showIllegalSegments(bAlsoEnds, "illegal.ps");
        const std::string picture = lumo_test::readFile("illegal.ps");
        EXPECT_THAT(picture, HasSubstr("SegmentChecker::showIllegalSegments"));
        EXPECT_THAT(picture, HasSubstr("(Number of segments: 5)"));
        EXPECT_THAT(picture, HasSubstr(bAlsoEnds ? "(Legal segments: 0)" : "(Legal segments: 1)"));
        EXPECT_THAT(picture, HasSubstr(bAlsoEnds ? "(Illegal segments: 5)" : "(Illegal segments: 4)"));
        // Five segments, an overlap, and a cross of two lines for each point.
        const std::string drawing = picture.substr(picture.rfind("692\tlineto")); // behind the frame of the notes
        EXPECT_EQ(count(drawing, "lineto"), bAlsoEnds ? 11U : 9U) << picture;
    }
}

} // namespace ORBI_LUMO25D
