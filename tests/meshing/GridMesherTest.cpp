#include "meshing/GridMesher.h"

#include "engine/Dt2.h"
#include "support/TestOutput.h"

#include "ConstraintGraph2.h"
#include "LumoException.h"
#include "Lumo_2D.h"
#include "MeshGenParams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

using namespace ORBI_LUMO25D;
using ::testing::HasSubstr;

namespace
{

using Ring = std::vector<Point2>;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Twelve corners, no edge parallel to another; and a hole.
const Ring outer{{0, 0, 0},       {41.3, -6.1, 0}, {60.2, 3.3, 0},  {58.7, 31.9, 0}, {37.1, 29.6, 0}, {33.9, 44.8, 0},
                 {52.4, 50.3, 0}, {49.9, 63.7, 0}, {21.2, 66.6, 0}, {18.3, 41.4, 0}, {-3.6, 36.5, 0}, {3.1, 17.7, 0}};
const Ring hole{{20.1, 12.2, 0}, {17.7, 21.9, 0}, {29.9, 24.3, 0}, {33.3, 10.7, 0}};

/// A zone on a tilted plane, which reaches beyond it.
struct Terrain
{
    explicit Terrain(const std::vector<Ring>& vRings, double offset_ = 0.0, double angle = 0.0)
        : offset(offset_), cosine(std::cos(angle)), sine(std::sin(angle))
    {
        for (const Point2& p : Ring{{-90, -90, 0}, {130, -80, 0}, {140, 150, 0}, {-100, 140, 0}}) lumo.insert(place(p));
        std::vector<Segment2> vSegments;
        for (const Ring& ring : vRings) {
            for (std::size_t i = 0; i < ring.size(); ++i) {
                vSegments.emplace_back(place(ring[i]), place(ring[(i + 1) % ring.size()]));
            }
        }
        pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, true);
        pZone = lumo.createZone(pGraph, ZL_INSIDE);
        area = pZone->getArea2D();
        pParams = std::make_unique<MeshGenParams>(pZone);
    }

    Point2 place(const Point2& p) const
    {
        const double x = cosine * p.x() - sine * p.y(), y = sine * p.x() + cosine * p.y();
        return Point2(x + offset, y + offset, 0.125 * x - 0.25 * y);
    }
    void mesh(double length, bool bChop)
    {
        pParams->gridLength = length;
        GridMesher(pParams.get(), nullptr).run(bChop);
    }
    std::string fault() const
    {
        if (!lumo.checkValidity(true, "")) return "not valid";
        if (std::fabs(pZone->getArea2D() - area) > 1e-9 * area) return "another area";
        for (const Point2* p : vertices()) {
            const double z = 0.125 * (p->x() - offset) - 0.25 * (p->y() - offset);
            if (std::fabs(z - p->z()) > 1e-8) return "off the plane";
        }
        return "";
    }
    std::vector<Point2*> vertices() const
    {
        std::vector<Point2*> v;
        pZone->getVertices(v);
        return v;
    }
    /// The vertices that aren't on constraints, brought back from place() and sorted.
    Ring innerVertices() const
    {
        Ring v;
        for (const Point2* p : vertices()) {
            if (lumo.getImpl()->isConstraint(p)) continue;
            const double x = p->x() - offset, y = p->y() - offset;
            v.emplace_back(cosine * x + sine * y, cosine * y - sine * x, 0);
        }
        std::sort(v.begin(), v.end(), [](const Point2& a, const Point2& b) {
            const long ax = std::lround(a.x() * 1e5), bx = std::lround(b.x() * 1e5);
            return ax != bx ? ax < bx : a.y() < b.y();
        });
        return v;
    }

    Lumo_2D lumo;
    double offset, cosine, sine;
    ConstraintGraph2* pGraph = nullptr;
    Zone2* pZone = nullptr;
    double area = 0.0;
    std::unique_ptr<MeshGenParams> pParams;
};

/// Where the lines lie in one direction.
std::vector<double> lines(double lo, double hi, double step)
{
    std::vector<double> v;
    if (hi - lo < step) return v;
    std::size_t n = 1;
    while ((hi - lo) - static_cast<double>(n - 1) * step > 2 * step) ++n;
    for (std::size_t i = 0; i < n; ++i) {
        v.push_back(0.5 * (lo + hi) + (static_cast<double>(i) - 0.5 * static_cast<double>(n - 1)) * step);
    }
    return v;
}

/// How far the crossing with the line through (x, y) along the y axis is above; infinite for none.
double above(const Point2& p, const Point2& q, double x, double y)
{
    return (p.x() > x) == (q.x() > x) ? inf : p.y() + (q.y() - p.y()) * (x - p.x()) / (q.x() - p.x()) - y;
}

/// The grid along the x axis by its definition: crossings inside that are half a step from all borders along both lines,
/// and from all corners.
Ring gridTwin(const std::vector<Ring>& vRings, double step)
{
    Point2 lo(inf, inf, 0), hi(-inf, -inf, 0);
    for (const Ring& ring : vRings) {
        for (const Point2& p : ring) {
            lo = Point2(std::min(lo.x(), p.x()), std::min(lo.y(), p.y()), 0);
            hi = Point2(std::max(hi.x(), p.x()), std::max(hi.y(), p.y()), 0);
        }
    }
    Ring v;
    for (const double x : lines(lo.x(), hi.x(), step)) {
        for (const double y : lines(lo.y(), hi.y(), step)) {
            bool bInside = false;
            double clearance = inf;
            for (const Ring& ring : vRings) {
                for (std::size_t i = 0; i < ring.size(); ++i) {
                    const Point2 &p = ring[i], &q = ring[(i + 1) % ring.size()];
                    const double up = above(p, q, x, y);
                    const double right = above({p.y(), p.x(), 0}, {q.y(), q.x(), 0}, y, x);
                    if (up > 0 && up < inf) bInside = !bInside;
                    clearance =
                        std::min({clearance, std::fabs(up), std::fabs(right), std::hypot(p.x() - x, p.y() - y)});
                }
            }
            if (bInside && clearance >= 0.5 * step) v.emplace_back(x, y, 0);
        }
    }
    return v;
}

} // namespace

TEST(GridMesher, TheGridIsWhatItsDefinitionSaysInAnyDirectionAndFarOff)
{
    for (const double offset : {0.0, 5e6}) {
        for (const double angle : {0.0, 0.3, 2.0, 4.1, 5.9}) {
            for (const double length : {2.0, 4.7, 13.0}) {
                Terrain terrain({outer, hole}, offset, angle);
                terrain.pParams->gridVector = Vector2(30.0 * terrain.cosine, 30.0 * terrain.sine, 7.0);
                terrain.mesh(length, false);
                const Ring vGrid = terrain.innerVertices(), vExpected = gridTwin({outer, hole}, length);
                ASSERT_EQ(vGrid.size(), vExpected.size()) << offset << ' ' << angle << ' ' << length;
                for (std::size_t i = 0; i < vGrid.size(); ++i) {
                    EXPECT_NEAR(vGrid[i].x(), vExpected[i].x(), 1e-7);
                    EXPECT_NEAR(vGrid[i].y(), vExpected[i].y(), 1e-7);
                }
                EXPECT_EQ(terrain.fault(), "");
                EXPECT_NEAR(terrain.pParams->gridVector.length(), 1.0, 1e-15);
            }
        }
    }
}

TEST(GridMesher, BordersAreCutAtTheLinesButNotIntoShortPieces)
{
    // Lines at 1.25, 2.75 ... 8.75: seven edges on each side of the square.
    for (const double offset : {0.0, 5e6}) {
        Terrain terrain({{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}}, offset);
        terrain.mesh(1.5, true);
        EXPECT_EQ(terrain.vertices().size(), 64u);
        EXPECT_EQ(terrain.fault(), "");
    }
    for (const double angle : {0.0, 0.7, 3.3}) {
        Terrain terrain({outer, hole}, 5e6, angle);
        terrain.mesh(4.0, true);
        EXPECT_EQ(terrain.fault(), "");
        std::vector<ConstraintSegment2*> vPieces;
        terrain.pGraph->getChildConstraintSegments(vPieces);
        EXPECT_GT(vPieces.size(), 60u);
        for (const ConstraintSegment2* pPiece : vPieces) {
            EXPECT_GE(Segment2(*pPiece->getSrc(), *pPiece->getTrg()).getSqLen25D(), 2.8 * 2.8 * (1 - 1e-9));
        }
    }
}

TEST(GridMesher, NarrowZonesGetOneLineOrNone)
{
    for (const auto& [width, numExpected] : {std::pair(2.9, 0u), std::pair(3.1, 13u)}) {
        Terrain terrain({{{0, 0, 0}, {width, 0, 0}, {width, 40, 0}, {0, 40, 0}}});
        terrain.mesh(3.0, true);
        EXPECT_EQ(terrain.innerVertices().size(), numExpected);
        EXPECT_EQ(terrain.vertices().size() > 4, numExpected > 0);
        for (const Point2& p : terrain.innerVertices()) EXPECT_NEAR(p.x(), 0.5 * width, 1e-12);
    }
}

TEST(GridMesher, WhatWasThereStays)
{
    const Ring square{{0, 0, 0}, {30, 0, 0}, {30, 30, 0}, {0, 30, 0}}; // lines at 3, 6 ... 27
    Terrain terrain({square});
    const std::vector<Point2> vOld{terrain.place({6, 6, 0}), terrain.place({9.5, 9.25, 0})};
    std::vector<Point2*> vHandles;
    terrain.lumo.insert(vOld, vHandles);
    std::vector<ConstraintSegment2*> vEdges;
    terrain.pGraph->getChildConstraintSegments(vEdges);
    terrain.pParams->addLockedConstraint(vEdges[2]);
    terrain.lumo.insert(Point2(*vEdges[2]->getSrc() + (*vEdges[2]->getTrg() - *vEdges[2]->getSrc()) * 0.5));
    terrain.mesh(3.0, true);
    EXPECT_EQ(terrain.innerVertices().size(), 81u) << "one shares its place, one displaces a vertex of the grid";
    for (const Point2* pOld : vHandles) EXPECT_TRUE(terrain.lumo.getImpl()->isMeshVertex(pOld));
    for (ConstraintSegment2* pEdge : vEdges) {
        std::vector<ConstraintSegment2*> vParts;
        pEdge->getChildrenRec(vParts);
        EXPECT_EQ(vParts.size() == 2, pEdge == vEdges[2]);
    }
    EXPECT_EQ(terrain.fault(), "");

    Terrain uncut({square});
    uncut.pParams->bAllowConstraintSplitting = false;
    uncut.mesh(3.0, true);
    EXPECT_EQ(uncut.vertices().size(), 81u + 4u);
}

TEST(GridMesher, RefinementGoesOnFromTheGridAndCanTakeItBack)
{
    Terrain terrain({outer, hole}, 5e6, 0.4);
    MeshGenParams& params = *terrain.pParams;
    params.gridLength = 3.0;
    params.minAngleDegree = 0.0; // only caps are refined
    params.capAspectLimit = 4.0;
    const auto refine = [&terrain, &params] {
        terrain.lumo.refineAdvanced(&params);
        EXPECT_EQ(terrain.fault(), "");
        return terrain.vertices().size();
    };
    const auto worstAspect = [&terrain] {
        std::vector<Triangle2*> vT;
        terrain.pZone->getTriangles(vT);
        double worst = 0.0;
        for (const Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) worst = std::max(worst, 0.5 * pT->getSquaredEdgeLength2D(i) / pT->getArea2D());
        }
        return worst;
    };
    const std::size_t n = refine();
    EXPECT_GT(n, gridTwin({outer, hole}, 3.0).size());
    EXPECT_LE(worstAspect(), 4.0);
    EXPECT_EQ(refine(), n) << "again";
    params.gridLength = 0.0;
    params.bKeepExistingSteinerPoints = false;
    refine();
    EXPECT_EQ(terrain.innerVertices().size(), 0u);
    EXPECT_GT(worstAspect(), 4.0);
}

TEST(GridMesher, HostileParametersGiveNoGrid)
{
    const lumo_test::TempWorkDir directory;
    const auto run = [](const Vector2& direction, double length, const std::string& text) {
        Terrain terrain({outer, hole});
        terrain.pParams->gridVector = direction;
        lumo_test::CoutCapture out;
        terrain.mesh(length, true);
        EXPECT_THAT(out.take(), HasSubstr(text));
        EXPECT_EQ(terrain.vertices().size(), outer.size() + hole.size());
    };
    run(Vector2(notANumber, 1, 0), 3.0, "orthLen is invalid");
    run(Vector2(1, inf, 0), 3.0, "orthLen is invalid");
    run(Vector2(1, 0, 0), inf, "");
    run(Vector2(1, 0, 0), 1e300, "");
    run(Vector2(1, 0, 0), 1e-5, "gridLength is too small");
    run(Vector2(1, 0, 0), 1e-320, "gridLength is too small");
    EXPECT_THROW(run(Vector2(1, 0, 0), notANumber, ""), LumoException);
}
