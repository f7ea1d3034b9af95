#include "ConstraintGraph2.h"

#include "LumoException.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "oracles/ConstraintOracle.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

namespace
{

using namespace ORBI_LUMO25D;
using Segments = std::vector<Segment2>;

Segments closed(const std::vector<Point2>& v)
{
    Segments vSegments;
    pointsToPolyline(v, true, vSegments);
    return vSegments;
}

TEST(ConstraintGraph2, ringsAreTakenForLinesOrWalkedTheWrongWay)
{
    Segments vTwo = closed({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}), vOther = closed({{5, 0, 0}, {6, 0, 0}, {5, 1, 0}});
    vTwo.insert(vTwo.end(), vOther.begin(), vOther.end());
    const struct
    {
        Segments vSegments;
        bool bOriented;
        double area; ///< 0 for what is no ring
    } cases[] = {{{{{0, 0, 0}, {1, 0, 0}}, {{0, 3, 0}, {0, 0, 0}}, {{0, 3, 0}, {1, 0, 0}}}, false, 1.5},
                 {closed({{1, 0, 0}, {0, 0, 0}, {0, 3, 0}}), false, 1.5},
                 {closed({{1, 0, 0}, {0, 0, 0}, {0, 3, 0}}), true, -1.5},
                 {closed({{0, 3, 0}, {0, 0, 0}, {1, 0, 0}}), true, 1.5},
                 {closed({{0, 0, 0}, {2, 2, 0}, {4, 0, 0}, {4, 4, 0}, {2, 2, 0}, {0, 4, 0}}), false, 0},
                 {closed({{0, 0, 0}, {0, 2, 0}, {0, 1, 0}}), false, 0},
                 {vTwo, false, 0}};
    for (const auto& c : cases) {
        Lumo_2D lumo;
        auto* const pGraph = lumo.createConstraint(c.vSegments, CIS_CONSTRAINED_DELAUNAY, c.bOriented);
        lumo.insert(Point2(-9, 0, 0));
        lumo.applyConstraintsAndZones();
        for (const Segment2& s : c.vSegments)
            lumo.insert({(s.src.x() + s.trg.x()) / 2, (s.src.y() + s.trg.y()) / 2, 0});
        EXPECT_EQ(oracles::constraintFault(lumo, {{pGraph, c.vSegments}}), "");
        EXPECT_EQ(pGraph->isPolygon(), c.area != 0);
        std::vector<Point2*> v;
        pGraph->getPolygonVertices(v);
        double area = 0.0;
        for (std::size_t i = 0; i < v.size(); i += 2) area += v[i]->x() * v[i + 1]->y() - v[i]->y() * v[i + 1]->x();
        EXPECT_DOUBLE_EQ(pGraph->isPolygon() ? area / 2 : 0.0, c.area);
    }
}

TEST(ConstraintGraph2, deepHierarchiesSharedPartsOrWrongSplitsBreak)
{
    const lumo_test::CoutCapture out;
    Lumo_2D lumo;
    lumo.insert(Point2(0, 9, 0));
    auto* const pGraph = lumo.createConstraint({{{0, 0, 0}, {131072, 0, 0}}}, CIS_CONSTRAINED_DELAUNAY, true);
    std::vector<Point2> vOnLine;
    for (int i = 1; i < 100000; ++i) vOnLine.emplace_back(i, 0, 0);
    lumo.insert(vOnLine);
    auto* const pBack = lumo.createConstraint({{{131072, 0, 0}, {0, 0, 0}}}, CIS_CONFORMING_DELAUNAY, true);
    std::vector<ConstraintSegment2*> v, vSame;
    pGraph->getChildConstraintSegments(v);
    pBack->getChildConstraintSegments(vSame);
    ASSERT_EQ(v.size(), 100000U);
    EXPECT_TRUE(std::equal(v.begin(), v.end(), vSame.rbegin(), vSame.rend()));
    EXPECT_EQ(v[7]->getNumberOfOwners(), 2U);
    EXPECT_EQ(v[7]->getCIS(), CIS_CONSTRAINED_DELAUNAY) << "the first strategy stays";
    EXPECT_EQ(v[7]->insertAndSplit(*v[7]->getTrg()), nullptr);
    EXPECT_THROW(v[7]->insertAndSplit(Point2(std::nan(""), 0, 0)), LumoException);
    EXPECT_TRUE(v[7]->isAlive());
    const Point2* const pOff = v[7]->insertAndSplit(Point2(7.5, 2, 3));
    ConstraintSegment2 *pChild0 = nullptr, *pChild1 = nullptr;
    Point2* pSplit = nullptr;
    v[7]->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
    EXPECT_EQ(pSplit, pOff);
    EXPECT_FALSE(pChild0->split_combinatorialOnly(v[7]->getTrg())) << "a part of itself";
    EXPECT_TRUE(v[9]->splitAndRemovePrev(Point2(9.5, 0, 0)));
    EXPECT_TRUE(lumo.checkValidity(true, "after a split off the segment"));
    for (const ConstraintGraph2* pEither : {pGraph, pBack}) {
        std::vector<Point2*> vChain;
        pEither->getPolygonVertices(vChain);
        ASSERT_EQ(vChain.size(), 200004U);
        for (std::size_t i = 1; i + 1 < vChain.size(); i += 2) ASSERT_EQ(vChain[i], vChain[i + 1]);
    }
}

TEST(ConstraintGraph2, partsArentMadeDelaunayOrBadInputIsTakenOrDumpsDiffer)
{
    const lumo_test::CoutCapture out;
    const lumo_test::TempWorkDir directory;
    const double inf = std::numeric_limits<double>::infinity();
    Lumo_2D lumo;
    for (int i = 0; i < 60; ++i) lumo.insert(Point2(i, 0.1 + std::sin(i), i));
    const Segments vSegments = {{{-1, 0, 0}, {70, 0.3, 71}}, {{5, -5, 0}, {9, 5, 1.0 / 3}}};
    auto* const pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_FALSE(pGraph->makeDelaunay(1000));
    EXPECT_TRUE(pGraph->makeDelaunay(1e-3));
    EXPECT_EQ(oracles::constraintFault(lumo, {}, 1.0, true), "");
    EXPECT_EQ(lumo.createConstraint(vSegments, static_cast<ConstraintInsertionStrategy>(3)), nullptr);
    EXPECT_EQ(lumo.createConstraint({{{0, 0, 0}, {1, 0, -inf}}}, CIS_CONSTRAINED_DELAUNAY), nullptr);
    EXPECT_FALSE(pGraph->isConstraint(static_cast<Point2*>(nullptr), nullptr));

    Dt2 dt2(3);
    dt2.insert(Point2(20, 1, 0));
    dt2.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, false);
    ASSERT_TRUE(dt2.getConstraintMgr().writeConstraints("d") && dt2.getConstraintMgr().writeConstraintsBIN("d"));
    Segments vBinary;
    ASSERT_TRUE(readSegmentsBIN("d_c0_con.bin", vBinary));
    ASSERT_EQ(vBinary.size(), 4U);
    std::ifstream in("d_c0.con");
    for (const Segment2& s : vBinary) {
        double a[6] = {};
        for (double& d : a) in >> d;
        EXPECT_TRUE(s.src.samePoint({a[0], a[1], a[2]}) && s.trg.samePoint({a[3], a[4], a[5]}));
    }
}

} // namespace
