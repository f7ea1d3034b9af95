#include "Lumo_2D.h"

#include "oracles/ConstraintOracle.h"
#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <set>
#include <stdexcept>

namespace
{

using namespace ORBI_LUMO25D;
using oracles::constraintFault;
using Segments = std::vector<Segment2>;

/// Segments that cross, overlap and nearly do in large numbers.
void addCrowds(std::vector<oracles::CorpusEntry>& vEntries)
{
    Segments star, overlay, nested, needles, neighbors;
    for (int i = 0; i < 300; ++i) {
        const double c = std::cos(0.01 * i), s = std::sin(0.01 * i);
        star.emplace_back(Point2(7.1 + c, 3.3 + s, i), Point2(7.1 - c, 3.3 - s, 0));
        nested.emplace_back(Point2(0, 0, 0), Point2(3.0 * (i + 1), 7.0 * (i + 1), i));
        nested.emplace_back(Point2(3.0 * i, 7.0 * i, i), Point2(900, 2100, 0));
    }
    for (int i = 0; i < 25; ++i) {
        needles.emplace_back(Point2(0, 1e-9 * i, 0), Point2(1000, 1e-9 * (1.3 * (25 - i)), 0));
        const double e = 0x1p-52 * i, t = 0.1 * i;
        neighbors.emplace_back(Point2(1, 1 + e, 0), Point2(1 + 0x1p-47, 1 + 0x1p-47 - e, 0));
        neighbors.emplace_back(Point2(1 + e, 1, 0), Point2(1 + 0x1p-47 - e, 1 + 0x1p-47, 0));
        for (const double angle : {0.3, 0.3 + 1e-15, 0.3 - 3e-12}) { // a grid, on itself
            const double c = std::cos(angle), s = std::sin(angle), x = 2153e4, y = 678e4;
            overlay.emplace_back(Point2(x - t * s, y + t * c, 0), Point2(x + 3 * c - t * s, y + 3 * s + t * c, 0));
            overlay.emplace_back(Point2(x + t * c, y + t * s, 0), Point2(x + t * c - 3 * s, y + t * s + 3 * c, 0));
        }
    }
    for (const Segments& v : {star, overlay, nested, needles, neighbors}) {
        vEntries.push_back({"crowd " + std::to_string(vEntries.size()), {Point2(-3000, 5000, 0)}, v});
    }
}

TEST(Constraints, segmentsOfTheCorpusAreLostOrStrayOrDontEnd)
{
    lumo_test::CoutCapture out;
    auto vEntries = oracles::corpus(700);
    addCrowds(vEntries);
    int number = 0; // of the variants: of five, two are made constrained and one conforming; each entry has four
    for (const auto& entry : vEntries) {
        if (entry.vSegments.empty()) continue;
        const oracles::FailureKeeper keeper(entry);
        const bool bCrowd = entry.vPoints.size() == 1;
        Segments vReversed(entry.vSegments.rbegin(), entry.vSegments.rend());
        for (Segment2& s : vReversed) s.swapSrcTrg();
        const bool bVariant = entry.name.find('+') != std::string::npos;
        if (bVariant) ++number;
        for (const auto cis : {CIS_CONSTRAINED_DELAUNAY, CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL}) {
            const bool bConforming = cis != CIS_CONSTRAINED_DELAUNAY;
            const bool bTurn = number % 5 == 4 ? bConforming : !bConforming && number % 5 % 2 == 0;
            if ((bConforming && bCrowd) || (bVariant && !bTurn)) continue;
            Lumo_2D lumo;
            auto* const pGraph = lumo.createConstraint(entry.vSegments, cis); // at first without area, as a rule
            lumo.insert(entry.vPoints);
            lumo.applyConstraintsAndZones();
            std::vector<ConstraintSegment2*> vBefore, vAfter;
            lumo.getAliveConstraintSegments(vBefore);
            auto* const pSame = lumo.createConstraint(vReversed, CIS_CONSTRAINED_DELAUNAY);
            lumo.getAliveConstraintSegments(vAfter);
            EXPECT_EQ(vBefore, vAfter) << "the same segments once more, reversed, aren't shared";
            EXPECT_EQ(
                constraintFault(lumo, {{pGraph, entry.vSegments}, {pSame, vReversed}}, bCrowd ? 3.0 : 1.0, bConforming),
                "");
        }
    }
    EXPECT_EQ(out.take().find("insufficient numeric"), std::string::npos);
}

TEST(Constraints, heightsAreOffTheSegmentsOrAcuteEndsDontEnd)
{
    Lumo_2D lumo;
    lumo.insert(Point2(30, 0, 99));
    lumo.createConstraint({{{0, 0, 10}, {40, 0, 50}}, {{11, -9, 100}, {11, 27, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_EQ(lumo.insert(Point2(11, 0, 0))->z(), (10 + 89.0 * 11 / 30 + 75) / 2) << "the mean of both parts'";
    EXPECT_EQ(lumo.insert(Point2(30, 0, 0))->z(), 99) << "the vertex' own";
    for (const auto cis : {CIS_CONFORMING_DELAUNAY, CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL}) {
        Lumo_2D other;
        other.insert(oracles::Dice(5).points(300, 64, 64));
        Segments vRays;
        for (int i = 0; i < 7; ++i) vRays.push_back({{0, 0, 0}, {64, 8.0 * i, 128 + 8.0 * i}});
        auto* const pRays = other.createConstraint(vRays, cis);
        other.applyConstraintsAndZones();
        EXPECT_EQ(constraintFault(other, {{pRays, vRays}}, 50.0, true), "");
        std::vector<Point2*> v;
        pRays->getPolygonVertices(v);
        for (const Point2* p : v) EXPECT_NEAR(p->z(), 2 * p->x() + p->y(), 1e-9);
    }
}

TEST(Constraints, aListenerThatThrowsLeavesSomethingHalfDead)
{
    const std::vector<Point2> vPoints = oracles::Dice(9).points(120, 1, 1);
    Segments vSegments;
    for (std::size_t i = 0; i < 120; i += 2) vSegments.emplace_back(vPoints[i], vPoints[i + 1]);
    bool bThrown = true;
    for (int n = 1; bThrown; n += 23) {
        Lumo_2D lumo;
        lumo.createConstraint({vSegments[0]}, CIS_CONSTRAINED_DELAUNAY); // waits while the bulk comes
        lumo_test::Interrupter interrupter(n);
        lumo.subscribe(MSG_PROGRESS, &interrupter);
        bThrown = false;
        try {
            lumo.insert(vPoints);
            lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
            lumo.applyConstraintsAndZones();
        } catch (const std::runtime_error&) {
            bThrown = true;
        }
        lumo.unsubscribe(MSG_PROGRESS, &interrupter);
        auto* const pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
        lumo.applyConstraintsAndZones();
        EXPECT_EQ(constraintFault(lumo, {{pGraph, vSegments}}), "") << "report " << n;
    }
}

TEST(Constraints, edgesOfADeliveredSurfaceAreMissing)
{
    // A surveyor's triangles, by the indices of the points: inner edges are breaklines or Delaunay.
    const std::string path = LUMO25D_CORPUS_DIR "/terrain/road_rockbed";
    const auto entry = oracles::readCorpusFile(path + ".txt", "road");
    Lumo_2D lumo;
    std::vector<Point2*> v;
    lumo.insert(entry.vPoints, v);
    lumo.createConstraint(entry.vSegments, CIS_CONSTRAINED_DELAUNAY);
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    std::set<std::pair<Point2*, Point2*>> sOurs, sTheirs;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) sOurs.insert({pT->getCorner(i), pT->getCorner((i + 1) % 3)});
    }
    std::ifstream in(path + ".tri");
    for (std::size_t a = 0, b = 0, c = 0; in >> a >> b >> c;) {
        sTheirs.insert({{v.at(a), v.at(b)}, {v.at(b), v.at(c)}, {v.at(c), v.at(a)}});
    }
    std::size_t numInner = 0, numMissing = 0;
    for (const auto& [p, q] : sTheirs) {
        if (sTheirs.count({q, p}) == 0) continue;
        ++numInner;
        if (sOurs.count({p, q}) == 0) ++numMissing;
    }
    EXPECT_GT(numInner, 8000U);
    EXPECT_EQ(numMissing, 0U);
}

} // namespace
