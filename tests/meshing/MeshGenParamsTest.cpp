#include "MeshGenParams.h"

#include "core/InnerVtxMgr.h"
#include "engine/Dt2.h"
#include "meshing/RefCand3.h"
#include "meshing/RefinementLimits.h"
#include "oracles/ConstraintOracle.h"
#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include "LumoException.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

using namespace ORBI_LUMO25D;
using ::testing::HasSubstr;

namespace
{

constexpr double unlimited = std::numeric_limits<double>::max();
using Triangles = std::vector<Triangle2*>;
using Segments = std::vector<Segment2>;

Segments ring(const std::vector<Point2>& vCorners)
{
    Segments v;
    pointsToPolyline(vCorners, true, v);
    return v;
}

Segments square(double side)
{
    return ring({{0, 0, 0}, {side, 0, 0}, {side, side, 0}, {0, side, 0}});
}

/// A zone inside of oriented segments, in a triangulation of its own.
struct Domain
{
    explicit Domain(const Segments& vSegments_, const std::vector<Point2>& vPoints = {}) : vSegments(vSegments_)
    {
        lumo.insert(vPoints);
        pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, true);
        pZone = lumo.createZone(pGraph, ZL_INSIDE);
    }
    Triangles triangles() const
    {
        Triangles v;
        pZone->getTriangles(v);
        return v;
    }
    std::size_t numPoints() const { return lumo.numberOfPoints(); }
    std::string fault() const
    {
        return lumo.checkValidity(true, "refined") ? oracles::constraintFault(lumo, {{pGraph, vSegments}}) : "invalid";
    }

    Segments vSegments;
    Lumo_2D lumo;
    ConstraintGraph2* pGraph;
    Zone2* pZone;
};

double smallestAngle(const Triangle2& t)
{
    return std::min({t.getInteriorAngle25D(0), t.getInteriorAngle25D(1), t.getInteriorAngle25D(2)});
}

double longestEdge(const Triangle2& t)
{
    double sq = 0;
    for (int i = 0; i < 3; ++i) sq = std::max(sq, t.getSquaredEdgeLength25D(i));
    return std::sqrt(sq);
}

/// The plane allows no more; a small angle between two constraints in the triangle; or, beside such a corner, a shortest
/// edge that joins two constraints, at equal distances from one of the given sharp corners.
bool isGivenUp(const Lumo_2D& lumo, Triangle2* pT, double angle, const std::vector<Point2>& vSharp)
{
    if (std::min({pT->getInteriorAngle2D(0), pT->getInteriorAngle2D(1), pT->getInteriorAngle2D(2)}) > 29.5) return true;
    for (int i = 0; i < 3; ++i) {
        const bool bBoth = lumo.isConstraint(pT, incIndexBy1(i)) && lumo.isConstraint(pT, incIndexBy2(i));
        if (bBoth && pT->getInteriorAngle25D(i) < angle) return true;
    }
    const int shortest = pT->getMinIndex();
    Point2* const p = pT->getCorner(incIndexBy1(shortest));
    Point2* const q = pT->getCorner(incIndexBy2(shortest));
    if (!lumo.isConstraint(p) || !lumo.isConstraint(q)) return false;
    return std::any_of(vSharp.begin(), vSharp.end(), [p, q](const Point2& c) {
        const double ratio = std::hypot(p->x() - c.x(), p->y() - c.y()) / std::hypot(q->x() - c.x(), q->y() - c.y());
        return std::fabs(ratio - 1.0) < 0.001;
    });
}

struct Shape
{
    const char* name;
    Segments vSegments;
    std::vector<Point2> vSharp; ///< corners below 60 degrees
    std::size_t maxTriangles;   ///< at 27 degrees
};

std::vector<Shape> shapes()
{
    const auto z = [](double x, double y) { return Point2(x, y, 0.25 * x); };
    std::vector<Shape> v;
    v.push_back({"square with a point beside an edge", square(8), {}, 80});
    pointsToPolyline({{3, 0.25, 0}, {3, 0.5, 0}, {3.25, 0.25, 0}}, true, v.back().vSegments);
    v.push_back({"L", ring({z(0, 0), z(20, 0), z(20, 1), z(1, 1), z(1, 20), z(0, 20)}), {}, 200});
    v.push_back({"hole", square(10), {}, 100});
    pointsToPolyline({{4, 4, 0}, {4, 6, 0}, {6.5, 6, 0}, {5, 5.5, 0}}, true, v.back().vSegments);
    v.back().vSharp = {{6.5, 6, 0}};
    v.push_back({"wedge", ring({{0, 0, 0}, {10, 0, 0}, {10, 1, 0}}), {{0, 0, 0}}, 10});
    // Rounded corners on the hull: splits leave triangles without a width behind the sides.
    const double along[2] = {10 * std::cos(0.7), 10 * std::sin(0.7)}, across[2] = {-along[1] / 1200, along[0] / 1200};
    v.push_back({"strip", {}, {}, 15000});
    v.back().vSegments = ring({{0, 0, 0},
                               {along[0], along[1], 0},
                               {along[0] + across[0], along[1] + across[1], 0},
                               {across[0], across[1], 0}});
    v.push_back({"comb", {}, {}, 600});
    std::vector<Point2> vComb{{0, -3, 0}, {20, -3, 0}};
    for (int i = 10; i > 0; --i) {
        vComb.emplace_back(2 * i, 0, 0);
        vComb.emplace_back(2 * i - 1, 9, 0);
        v.back().vSharp.push_back(vComb.back());
        v.back().vSharp.push_back(vComb[vComb.size() - 2]);
    }
    vComb.emplace_back(0, 0, 0);
    v.back().vSegments = ring(vComb);
    return v;
}

} // namespace

TEST(MeshGenParamsTest, ShapesKeepAnglesBordersAndHeights)
{
    for (const Shape& shape : shapes()) {
        for (const double angle : {20.0, 27.0, 30.0}) {
            SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(angle));
            Domain d(shape.vSegments);
            const double area = d.pZone->getArea2D();
            const double area25D = d.pZone->getArea25D();
            d.lumo.refine(d.pZone, angle, 1e-4, unlimited, true);
            for (Triangle2* pT : d.triangles()) {
                if (smallestAngle(*pT) >= angle - 1e-9) continue;
                EXPECT_TRUE(isGivenUp(d.lumo, pT, angle, shape.vSharp)) << *pT;
            }
            EXPECT_LE(d.triangles().size(), shape.maxTriangles);
            EXPECT_NEAR(d.pZone->getArea2D(), area, 1e-12 * area);
            EXPECT_NEAR(d.pZone->getArea25D(), area25D, 1e-12 * area25D);
            EXPECT_EQ(d.fault(), "");
            const std::size_t numPoints = d.numPoints();
            d.lumo.refine(d.pZone, angle, 1e-4, unlimited, true);
            EXPECT_EQ(d.numPoints(), numPoints);
        }
    }
}

TEST(MeshGenParamsTest, LimitsOfSizeHoldByPlaceAndGradeSmoothly)
{
    class FinerInTheEast : public MeshGenParams
    {
    public:
        using MeshGenParams::MeshGenParams;
        double getMaxEdgeLength(Triangle2* pT) override { return pT->getBarycenter().x() > 5 ? 0.25 : 2.0; }
        double getMaxTriangleArea(Triangle2* pT) override { return pT->getBarycenter().y() > 5 ? 0.125 : unlimited; }
    };
    Domain d(square(10));
    FinerInTheEast params(d.pZone);
    params.minAngleDegree = 27.0;
    d.lumo.refineAdvanced(&params);
    double worstGrowth = 1.0;
    for (Triangle2* pT : d.triangles()) {
        EXPECT_LE(longestEdge(*pT), params.getMaxEdgeLength(pT));
        EXPECT_LE(pT->getArea25D(), params.getMaxTriangleArea(pT) * (1 + 1e-12));
        EXPECT_GE(smallestAngle(*pT), 27.0 - 1e-9);
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN != nullptr) worstGrowth = std::max(worstGrowth, pN->getArea25D() / pT->getArea25D());
        }
    }
    EXPECT_LT(worstGrowth, 6.0); // 4.6 is what two triangles of 27 degrees on one edge can differ by, nearly
    EXPECT_EQ(d.fault(), "");
    // Area of the equilateral triangle with the longest edge allowed, in the fine half and in the quarters of the other.
    const double numIdeal = 50 / (0.433 * 0.0625) + 25 / 0.125 + 25 / (0.433 * 4);
    EXPECT_LT(static_cast<double>(d.triangles().size()), 2.5 * numIdeal);

    Domain grown(square(10), {{5, 5, 0}, {5.01, 5, 0}, {5, 5.01, 0}});
    MeshGenParams slow(grown.pZone);
    slow.growthFactor = 2.0;
    slow.growthFactorMinArea = 1e-5;
    grown.lumo.refineAdvanced(&slow);
    for (const Triangle2* pT : grown.triangles()) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || pN->getArea25D() < 1e-5) continue;
            EXPECT_LE(pT->getArea25D() / pN->getArea25D(), 2.0 + 1e-9);
        }
    }
    EXPECT_LT(grown.numPoints(), 2000U);
}

TEST(MeshGenParamsTest, GrowthGoesOnFromAFineMeshBehindTheBorder)
{
    const std::vector<Point2> vHole{{4, 4, 0}, {4, 6, 0}, {6, 6, 0}, {6, 4, 0}};
    Segments vBorder = square(10);
    pointsToPolyline(vHole, true, vBorder);
    Domain around(vBorder);
    ConstraintGraph2* const pHole = around.lumo.createConstraint(
        ring(std::vector<Point2>(vHole.rbegin(), vHole.rend())), CIS_CONSTRAINED_DELAUNAY, true);
    around.lumo.refine(around.lumo.createZone(pHole, ZL_INSIDE), 20, 0.001, 0.2, true);
    MeshGenParams params(around.pZone);
    params.growthFactor = 2.0;
    params.growthFactorMinArea = 1e-6;
    around.lumo.refineAdvanced(&params);
    int numAtHole = 0;
    for (Triangle2* pT : around.triangles()) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (!around.lumo.isConstraint(pT, i) || pN == nullptr) continue;
            EXPECT_LE(pT->getArea25D(), 2.0 * pN->getArea25D() + 1e-12);
            ++numAtHole;
        }
    }
    EXPECT_GE(numAtHole, 40);
}

TEST(MeshGenParamsTest, ConstraintsAreSplitOnlyWhereAllowed)
{
    // Obtuse: without a split of the long side, which hides the circumcentre, nothing can be cured.
    Domain d(ring({{0, 0, 0}, {10, 0, 0}, {5, 2, 0}}));
    MeshGenParams params(d.pZone);
    params.maxEdgeLength = 8.0;
    params.bAllowConstraintSplitting = false;
    d.lumo.refineAdvanced(&params);
    EXPECT_EQ(d.numPoints(), 3U);
    params.bAllowConstraintSplitting = true;
    params.minEdgeLength = 5.5; // of the long sides, half would be shorter
    d.lumo.refineAdvanced(&params);
    EXPECT_EQ(d.numPoints(), 3U);
    params.minEdgeLength = 0.001;
    d.lumo.refineAdvanced(&params);
    EXPECT_GT(d.numPoints(), 3U);
    EXPECT_EQ(d.fault(), "");

    Domain large(square(10));
    MeshGenParams locking(large.pZone);
    locking.maxEdgeLength = 2.0;
    std::vector<ConstraintSegment2*> vCSegs;
    large.pGraph->getOriginalConstraintSegments(vCSegs);
    for (ConstraintSegment2* p : vCSegs) {
        if (p->getSrc()->y() == 0 && p->getTrg()->y() == 0) locking.addLockedConstraint(p);
    }
    const MeshGenParams copy(locking);
    ASSERT_NE(copy.pLockedConstraints, locking.pLockedConstraints);
    EXPECT_EQ(*copy.pLockedConstraints, *locking.pLockedConstraints);
    large.lumo.refineAdvanced(&locking);
    EXPECT_GT(large.numPoints(), 30U);
    for (ConstraintSegment2* p : vCSegs) EXPECT_EQ(p->isAlive(), locking.pLockedConstraints->count(p) == 1);
    EXPECT_EQ(large.fault(), "");
}

TEST(MeshGenParamsTest, NoVertexComesCloserThanMinEdgeLength)
{
    Domain d(square(10));
    d.lumo.refine(d.pZone, 20, 0.75, 0.1, true);
    for (const Triangle2* pT : d.triangles()) {
        for (int i = 0; i < 3; ++i) EXPECT_GE(pT->getSquaredEdgeLength2D(i), 0.75 * 0.75 * (1 - 1e-12));
    }
    EXPECT_GT(d.numPoints(), 60U);
}

TEST(MeshGenParamsTest, TrianglesTooFlatForTheirCircleAreCutToLength)
{
    Domain d(
        ring({{0, 0, 0}, {8990.7651665136109, 4377.9152253790262, 0}, {4329.5451821952993, 2108.2057869711111, 0}}));
    d.lumo.refine(d.pZone, 27, 0.25, 8.0, true);
    for (const Triangle2* pT : d.triangles()) EXPECT_LE(longestEdge(*pT), 8.0);
    EXPECT_EQ(d.fault(), "");
}

TEST(MeshGenParamsTest, FreeVerticesInTheCircleOfASplitSegmentGo)
{
    Domain d(square(10));
    Dt2& dt2 = *d.lumo.getImpl();
    Point2* const pInside = d.lumo.insert({5, 3, 0});
    Point2* const pOnTheCircle = d.lumo.insert({5, 5, 0});
    Point2* const pNotFree = d.lumo.insert({5, 2, 0});
    Point2* const pBeyond = d.lumo.insert({2, 6, 0});
    for (const Point2* p : {pInside, pOnTheCircle, pBeyond}) dt2.innerVtxMgr.add(p);
    ConstraintSegment2* pBottom = nullptr;
    std::vector<ConstraintSegment2*> vCSegs;
    d.pGraph->getOriginalConstraintSegments(vCSegs);
    for (ConstraintSegment2* p : vCSegs) {
        if (p->getSrc()->y() == 0 && p->getTrg()->y() == 0) pBottom = p;
    }
    ASSERT_TRUE(pBottom->splitAndRemovePrev({5, 0, 0}));
    EXPECT_FALSE(dt2.isMeshVertex(pInside));
    for (const Point2* p : {pOnTheCircle, pNotFree, pBeyond}) EXPECT_TRUE(dt2.isMeshVertex(p));
    EXPECT_EQ(d.fault(), "");
}

TEST(MeshGenParamsTest, SteepTrianglesAreRefinedInVain)
{
    Domain half(ring({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}));
    EXPECT_NEAR(RefCand3(*half.lumo.getImpl(), half.triangles()[0]).getSmallestAngle(), 45, 1e-12);
    // All angles in the plane are 60 degrees, but the smallest in space is far below the limit.
    Domain steep(ring({{0, 0, 0}, {2, 0, 0}, {1, 1.7320508, 40}}));
    MeshGenParams params(steep.pZone);
    RefCand3 candidate(*steep.lumo.getImpl(), steep.triangles()[0]);
    EXPECT_LT(candidate.getSmallestAngle(), 5);
    EXPECT_FALSE(candidate.needRefinement(RefinementLimits(params, nullptr)));
    steep.lumo.refineAdvanced(&params);
    EXPECT_EQ(steep.numPoints(), 3U);
    lumo_test::CoutCapture out;
    EXPECT_FALSE(candidate.getHeightError(nullptr, 0.1));
    EXPECT_THAT(out.take(), HasSubstr("No guide"));
}

TEST(RefCand3, CircumcentresOnEdgesOrAtVerticesAndChangedTrianglesMislead)
{
    // On an edge: that of a constraint or of the hull stops the walk, another one is only told.
    for (const int numPoints : {3, 4}) {
        for (const bool bConstraint : {false, true}) {
            const std::vector<Point2> v{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}};
            Lumo_2D lumo;
            lumo.insert(std::vector<Point2>(v.begin(), v.begin() + numPoints));
            if (bConstraint) lumo.createConstraint({{v[1], v[2]}}, CIS_CONSTRAINED_DELAUNAY);
            Triangle2* const pT = lumo.locate({1, 0.5, 0});
            RefCand3 candidate(*lumo.getImpl(), pT);
            candidate.computeSplitInfo();
            const bool bStops = bConstraint || numPoints == 3;
            EXPECT_EQ(candidate.getContainingAndIndex(), std::pair(pT, bStops ? pT->getMaxIndex() : -1));
            EXPECT_EQ(candidate.getEdgeBelow(), pT->getMaxIndex());
        }
    }
    // At a vertex, which no Delaunay triangle has: the diagonal between the two flat triangles is turned.
    Domain kite(ring({{0, 0, 0}, {3, 4, 0}, {0, 5, 0}, {-3, 4, 0}}));
    Dt2& dt2 = *kite.lumo.getImpl();
    Triangle2* const pSide = kite.lumo.locate({1, 4, 0});
    dt2.flip(pSide, pSide->getIntraTriangleIndex(dt2.vertexVault.getVertex({3, 4, 0})));
    Triangle2* const pTop = kite.lumo.locate({0, 4.5, 0});
    RefCand3 candidate(dt2, pTop);
    candidate.computeSplitInfo();
    EXPECT_EQ(candidate.getContainingAndIndex().second, RefCand3::atCorner);
    MeshGenParams params(kite.pZone);
    EXPECT_TRUE(candidate.isBlocked(RefinementLimits(params, nullptr)));
    for (int i = 0; i < 3; ++i) {
        Point2* const pCorner = pTop->getCorner(i);
        EXPECT_TRUE(candidate.isAlive());
        pTop->setVertexPointer(i, nullptr);
        EXPECT_FALSE(candidate.isAlive()) << i;
        pTop->setVertexPointer(i, pCorner);
    }
    // Of a size whose powers are no doubles, nothing can be told.
    Domain huge(square(1e72));
    MeshGenParams fine(huge.pZone);
    fine.maxEdgeLength = 1.0;
    EXPECT_FALSE(RefCand3(*huge.lumo.getImpl(), huge.triangles()[0]).needRefinement(RefinementLimits(fine, nullptr)));
}

TEST(MeshGenParamsTest, HeightsAreThoseOfTheGuideAndWithinItsTolerance)
{
    oracles::Dice dice(5);
    std::vector<Point2> vPoints{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    for (int i = 0; i < 300; ++i) {
        const double x = 10 * dice.real(), y = 10 * dice.real();
        vPoints.emplace_back(x, y, std::sin(x) * x * (10 - x) * y * (10 - y) / 400);
    }
    Lumo_2D guide;
    guide.insert(vPoints);
    Domain d(square(10));
    MeshGenParams params(d.pZone);
    params.pGuideTriangulation = &guide;
    params.maxGuideHeightError = 0.05;
    d.lumo.refineAdvanced(&params);
    std::vector<Point2*> vVertices;
    d.pZone->getVertices(vVertices);
    double z = 0;
    for (Point2* p : vVertices) {
        if (!d.lumo.isConstraint(p)) {
            ASSERT_TRUE(guide.getHeight(p->x(), p->y(), z));
            EXPECT_NEAR(p->z(), z, 1e-12);
        }
    }
    std::size_t numInside = 0; // the border keeps its own height, where the guide's is another
    for (const Triangle2* pT : d.triangles()) {
        const Point2 c = pT->getBarycenter();
        ASSERT_TRUE(guide.getHeight(c.x(), c.y(), z));
        const bool bAtBorder = d.lumo.isConstraint(pT->getCorner(0)) || d.lumo.isConstraint(pT->getCorner(1)) ||
                               d.lumo.isConstraint(pT->getCorner(2));
        if (bAtBorder) continue;
        EXPECT_LE(std::fabs(c.z() - z), 0.05 + 1e-12);
        ++numInside;
    }
    EXPECT_GT(numInside, 300U);
    EXPECT_LT(numInside, 20000U);
}

TEST(MeshGenParamsTest, VerticesOfAnEarlierRefinementGoIfWanted)
{
    Domain d(square(10), {{3, 3, 0}});
    Domain fresh(square(10), {{3, 3, 0}});
    d.lumo.refine(d.pZone, 25, 0.001, 0.5, true);
    const std::size_t numFine = d.numPoints();
    MeshGenParams params(d.pZone);
    d.lumo.refineAdvanced(&params);
    EXPECT_EQ(d.numPoints(), numFine);
    params.bKeepExistingSteinerPoints = false;
    d.lumo.refineAdvanced(&params);
    EXPECT_LT(d.numPoints(), numFine / 2);
    std::vector<Point2*> vVertices;
    d.lumo.getVertexPointers(vVertices);
    EXPECT_TRUE(std::any_of(vVertices.begin(), vVertices.end(), [](Point2* p) { return *p == Point2(3, 3, 0); }));
    EXPECT_EQ(d.fault(), "");
}

TEST(MeshGenParamsTest, BadParametersAndExceptionsLeaveThingsUsable)
{
    Domain d(ring({{0, 0, 0}, {10, 0, 0}, {10, 1, 0}, {0, 1, 0}}), {{20, 20, 0}});
    const std::size_t numPoints = d.numPoints();
    lumo_test::CoutCapture out;
    const auto refused = [&](const std::function<void(MeshGenParams&)>& spoil, const char* text) {
        MeshGenParams params(d.pZone);
        spoil(params);
        d.lumo.refineAdvanced(&params);
        EXPECT_THAT(out.take(), HasSubstr(text));
        EXPECT_EQ(d.numPoints(), numPoints);
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    refused([](MeshGenParams& p) { p.pZone = nullptr; }, "pZone==NULL");
    refused([](MeshGenParams& p) { p.minAngleDegree = 30.1; }, "minAngleDegree must be <=30.0");
    for (const double bad : {0.0, -1.0, nan}) {
        refused([bad](MeshGenParams& p) { p.minEdgeLength = bad; }, "must be positive");
        refused([bad](MeshGenParams& p) { p.maxEdgeLength = bad; }, "must be positive");
        refused([bad](MeshGenParams& p) { p.maxTriangleArea = bad; }, "must be positive");
    }
    refused([&](MeshGenParams& p) { p.pZone = Domain(square(1)).pZone; }, "does not belong");
    Zone2* const pGrow = d.lumo.createZone(d.pGraph, ZL_GROW, {5, 0.5, 0});
    const MeshGenParams ofGrowing(pGrow);
    EXPECT_THAT(out.take(), HasSubstr("convertToBoundedZone"));
    EXPECT_TRUE(ofGrowing.gridVector.isDegenerate());
    refused([pGrow](MeshGenParams& p) { p.pZone = pGrow; }, "must be ZL_INSIDE or ZL_BOUNDED");
    d.lumo.refine(d.pZone, 30.1, 0.001, unlimited, true);
    d.lumo.refine(nullptr, 20, 0.001, unlimited, true);
    EXPECT_EQ(d.numPoints(), numPoints);
    ConstraintGraph2* const pOther =
        d.lumo.createConstraint(ring({{4, .25, 0}, {5, .25, 0}, {5, .75, 0}}), CIS_CONSTRAINED_DELAUNAY, true);
    Zone2* const pTwo = d.lumo.getImpl()->createZone(std::vector<ConstraintGraph2*>{d.pGraph, pOther}, ZL_INSIDE);
    EXPECT_THROW(d.lumo.refine(pTwo, 20, 0.001, unlimited, true), LumoException);

    class Throwing : public MeshGenParams
    {
    public:
        using MeshGenParams::MeshGenParams;
        double getMaxEdgeLength(Triangle2*) override
        {
            if (--numLeft == 0) throw std::runtime_error("enough");
            return 0.1;
        }
        int numLeft = 500;
    };
    Throwing throwing(d.pZone);
    EXPECT_THROW(d.lumo.refineAdvanced(&throwing), std::runtime_error);
    EXPECT_EQ(d.fault(), "");
    const std::size_t numThen = d.numPoints();
    EXPECT_GT(numThen, numPoints + 10);
    d.lumo.refine(d.pZone, 20, 0.001, 0.1, true);
    EXPECT_GT(d.numPoints(), numThen);
    for (const Triangle2* pT : d.triangles()) EXPECT_LE(longestEdge(*pT), 0.1 + 1e-12);
    EXPECT_EQ(d.fault(), "");
}

TEST(MeshGenParamsTest, CorpusEndsWithABoundedNumberOfTriangles)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(1500)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo;
        lumo.insert(entry.vPoints);
        if (!entry.vSegments.empty()) lumo.createConstraint(entry.vSegments, CIS_CONSTRAINED_DELAUNAY);
        if (!lumo.hasArea()) continue;
        Zone2* const pZone = lumo.createZone(nullptr, ZL_GLOBAL)->convertToBoundedZone();
        const Bbox2 box = lumo.computeBoundingBox();
        const double size = std::hypot(box.get_maxX() - box.get_minX(), box.get_maxY() - box.get_minY());
        const double area = pZone->getArea2D();
        const std::size_t numBefore = pZone->getNumberOfTriangles();
        lumo.refine(pZone, 25, 0.01 * size, unlimited, true);
        EXPECT_TRUE(lumo.checkValidity(true, "corpus"));
        EXPECT_TRUE(!std::isfinite(area) || std::fabs(pZone->getArea2D() - area) <= 1e-12 * size * size);
        EXPECT_LE(pZone->getNumberOfTriangles(), 15 * numBefore + 200);
        const std::size_t numPoints = lumo.numberOfPoints();
        lumo.refine(pZone, 25, 0.01 * size, unlimited, true);
        EXPECT_EQ(lumo.numberOfPoints(), numPoints);
    }
}
