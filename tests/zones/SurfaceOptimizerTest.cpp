// Valleys, smoothing and grids: what may change does, to the better, and what mustn't doesn't.

#include "zones/SurfaceOptimizer.h"

#include "Lumo_2D.h"

#include "engine/Dt2.h"
#include "oracles/Dice.h"

#include "Segment2.h"
#include "Vector2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

using namespace ORBI_LUMO25D;

namespace
{

/// The sum of angles between neighbouring triangles.
double roughness(const Lumo_2D& lumo)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    double sum = 0.0;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr) continue;
            const Vector2 a = pT->getNormalVector(), b = pN->getNormalVector();
            sum += 0.5 * std::acos(std::min(1.0, a.x() * b.x() + a.y() * b.y() + a.z() * b.z()));
        }
    }
    return sum;
}

std::vector<Triangle2*> withinCircle(const Lumo_2D& lumo, const Point2& center)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    vT.erase(std::remove_if(vT.begin(), vT.end(),
                            [&](const Triangle2* pT) {
                                const Vector2 v = pT->getBarycenter() - center;
                                return v.x() * v.x() + v.y() * v.y() > 0.25;
                            }),
             vT.end());
    return vT;
}

using Outline = std::set<std::pair<const Point2*, const Point2*>>;
Outline outlineOf(const std::vector<Triangle2*>& vT)
{
    const std::set<const Triangle2*> sT(vT.begin(), vT.end());
    Outline s;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            if (sT.count(pT->getOppositeTriangle(i)) != 0) continue;
            s.emplace(pT->getCorner(incIndexBy1(i)), pT->getCorner(incIndexBy2(i)));
        }
    }
    return s;
}

std::array<const Point2*, 3> cornersOf(const Triangle2& t)
{
    std::array<const Point2*, 3> a{t.getCorner(0), t.getCorner(1), t.getCorner(2)};
    std::sort(a.begin(), a.end());
    return a;
}

} // namespace

TEST(SurfaceOptimizer, ImprovesTheSurfaceInsideAndTouchesNothingElse)
{
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(17 + static_cast<std::uint64_t>(round));
        std::vector<Point2> vPoints = dice.points(200, 1.0, 1.0);
        const int kind = round % 3;
        for (Point2& p : vPoints) {
            const double slope = p.x() + 0.3 * p.y() - 0.6; // smoothing is not meant for the crease
            p.setHeight((kind == 2 ? slope : std::fabs(slope)) + 0.01 * dice.real());
        }
        Lumo_2D lumo;
        lumo.insert(vPoints);
        const std::vector<Segment2> vConstraints{{vPoints[0], vPoints[1]}, {vPoints[2], vPoints[3]}};
        lumo.createConstraint(vConstraints, CIS_CONSTRAINED_DELAUNAY, false);
        const Point2 center(dice.real(), dice.real(), 0.0);
        const std::vector<Triangle2*> vT = withinCircle(lumo, center);
        const Outline outline = outlineOf(vT);
        std::set<std::array<const Point2*, 3>> sBefore;
        for (const Triangle2* pT : vT) sBefore.insert(cornersOf(*pT));
        const double before = roughness(lumo);
        Progress progress("test");
        std::map<const Point2*, double> mHeights;
        std::vector<Point2*> vV;
        lumo.getVertexPointers(vV);
        for (const Point2* p : vV) mHeights[p] = p->z();
        if (kind == 0) slopeValleyRidgeOptimization(*lumo.getImpl(), vT, progress);
        if (kind == 1) optimizeValleysAndRidges(*lumo.getImpl(), vT, 0.02, 0.002, progress);
        for (const Triangle2* pT : vT) { // what is new isn't too thin
            const double height = 2.0 * pT->getArea2D() / std::sqrt(pT->getMaxSqEdgeLen2D());
            EXPECT_TRUE(kind != 1 || sBefore.count(cornersOf(*pT)) != 0 || height > 0.0199);
        }
        if (kind == 2) smoothing(*lumo.getImpl(), vT, 5, progress);
        const double after = roughness(lumo);
        EXPECT_LT(after, before);
        if (kind == 0) { // the order of the triangles is that of their addresses
            Lumo_2D other;
            other.insert(vPoints);
            other.createConstraint(vConstraints, CIS_CONSTRAINED_DELAUNAY, false);
            std::vector<Triangle2*> vShuffled = withinCircle(other, center);
            dice.shuffle(vShuffled);
            slopeValleyRidgeOptimization(*other.getImpl(), vShuffled, progress);
            EXPECT_NEAR(roughness(other), after, 1e-9);
        }
        EXPECT_TRUE(lumo.checkValidity(false, "optimised"));
        EXPECT_EQ(outlineOf(vT), outline);
        std::set<const Point2*> sInside;
        for (const Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) sInside.insert(pT->getCorner(i));
        }
        for (const auto& [pSrc, pTrg] : outline) sInside.erase(pSrc);
        int numMoved = 0;
        for (Point2* p : vV) {
            if (p->z() == mHeights[p]) continue;
            ++numMoved;
            EXPECT_TRUE(kind == 2 && sInside.count(p) != 0 && !lumo.isConstraint(p));
        }
        EXPECT_EQ(numMoved > 0, kind == 2);
        std::vector<ConstraintSegment2*> vAlive;
        lumo.getAliveConstraintSegments(vAlive);
        for (ConstraintSegment2* pCSeg : vAlive) {
            EXPECT_TRUE(lumo.getAdjacentTriangle(pCSeg->getSrc(), pCSeg->getTrg()) != nullptr ||
                        lumo.getAdjacentTriangle(pCSeg->getTrg(), pCSeg->getSrc()) != nullptr);
        }
    }
}

TEST(SurfaceOptimizer, OpensAValleyThatADiagonalDamsUpWithinItsLimits)
{
    // A channel along the diagonals of a grid, deep enough for the edges across it to be wrong. These differ by 1 in height;
    // half a cell is 0.707 high.
    const struct
    {
        double sign, minHeight, threshold;
        bool bOpens;
    } aCases[] = {{1.0, 0.0, 0.0, true},
                  {-1.0, 0.0, 0.0, true},
                  {1.0, 0.7, 0.99, true},
                  {1.0, 0.71, 0.0, false},
                  {1.0, 0.0, 1.0, false}};
    for (const auto& [sign, minHeight, threshold, bOpens] : aCases) {
        Lumo_2D lumo;
        for (int x = 0; x < 8; ++x) {
            for (int y = 0; y < 8; ++y) lumo.insert(Point2(x, y, sign * std::min(std::abs(x - y), 2)));
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        Progress progress("test");
        const double before = roughness(lumo);
        if (minHeight + threshold == 0.0) slopeValleyRidgeOptimization(*lumo.getImpl(), vT, progress);
        if (minHeight + threshold > 0.0) optimizeValleysAndRidges(*lumo.getImpl(), vT, minHeight, threshold, progress);
        EXPECT_EQ(roughness(lumo) < before, bOpens);
        for (int i = 0; i < 7 && bOpens; ++i) {
            double z = 1.0;
            ASSERT_TRUE(lumo.getHeight(i + 0.5, i + 0.5, z));
            EXPECT_EQ(z, 0.0) << i;
        }
    }
}

TEST(SurfaceOptimizer, GivesAllCellsOfAGridOneDirection)
{
    for (const double angle : {0.0, 0.3, 0.785398163397448, 1.2}) {
        Lumo_2D lumo;
        for (int x = 0; x < 9; ++x) {
            for (int y = 0; y < 7; ++y) {
                const double u = 2.0 * x, v = 2.0 * y;
                lumo.insert(
                    Point2(std::cos(angle) * u - std::sin(angle) * v, std::sin(angle) * u + std::cos(angle) * v, 0));
            }
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        Progress progress("test");
        unifyGrid(*lumo.getImpl(), vT, 1e-9, progress);
        EXPECT_TRUE(lumo.checkValidity(false, "unified"));
        std::set<std::pair<long, long>> sDirections;
        int numDiagonals = 0;
        for (const Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) {
                if (std::fabs(pT->getSquaredEdgeLength(i) - 8.0) > 1e-6) continue;
                Vector2 v = *pT->getCorner(incIndexBy2(i)) - *pT->getCorner(incIndexBy1(i));
                const double s = v.x() > 1e-6 || (v.x() > -1e-6 && v.y() > 0) ? 1.0 : -1.0;
                sDirections.emplace(std::lround(1e6 * s * v.x()), std::lround(1e6 * s * v.y()));
                ++numDiagonals;
            }
        }
        EXPECT_EQ(sDirections.size(), 1U);
        EXPECT_EQ(numDiagonals, 2 * 8 * 6);
    }
}
