// Knife cuts against what they promise: the surface before and after, the segments as chains of edges, and every law of
// the structure but the empty circles.

#include "Lumo_2D.h"

#include "engine/Dt2.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include "ConstraintSegment2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

using namespace ORBI_LUMO25D;

namespace
{

struct Scene
{
    std::vector<Point2> vPoints;
    std::vector<Segment2> vConstraints, vKnives;
};

/// Points on a grid or anywhere; knives that end at vertices, on edges, inside and outside, and cross each other and
/// constraints. On a slanted grid straight lines are straight but for rounding, so that slivers are everywhere; the
/// surface is a plane then, because across a sliver heights may change abruptly.
Scene makeScene(oracles::Dice& dice, bool bGrid, double slant)
{
    constexpr int size = 8;
    const auto place = [&](double beyond) {
        const double width = size + 2.0 * beyond;
        const double x = (bGrid ? dice.below(2 * static_cast<int>(width) + 1) * 0.5 : width * dice.real()) - beyond;
        const double y = (bGrid ? dice.below(2 * static_cast<int>(width) + 1) * 0.5 : width * dice.real()) - beyond;
        return Point2(x + slant * y, y - slant * x, -99.0);
    };
    Scene scene;
    for (int i = 0; i < 60; ++i) {
        Point2 p = place(0.0);
        p.setHeight(bGrid && slant != 0.0 ? 0.3 * p.x() - 0.2 * p.y() : dice.real());
        scene.vPoints.push_back(p);
    }
    for (int i = 0; i < 4; ++i) scene.vConstraints.emplace_back(dice.of(scene.vPoints), dice.of(scene.vPoints));
    for (int i = 0; i < 12; ++i) scene.vKnives.emplace_back(place(2.0), place(2.0));
    return scene;
}

/// The length of the knife that edges cover: it must be that of the knife's part in the hull.
double lengthOfChain(const Dt2& dt2, const Segment2& knife, bool bConstraints)
{
    const double dx = knife.trg.x() - knife.src.x(), dy = knife.trg.y() - knife.src.y();
    const double sqLen = dx * dx + dy * dy;
    const auto param = [&](const Point2& p) {
        return ((p.x() - knife.src.x()) * dx + (p.y() - knife.src.y()) * dy) / sqLen;
    };
    const auto isOn = [&](const Point2& p) {
        const double cross = dx * (p.y() - knife.src.y()) - dy * (p.x() - knife.src.x());
        return std::fabs(cross) < 1e-13 * std::sqrt(sqLen) && param(p) > -1e-12 && param(p) < 1.0 + 1e-12;
    };
    std::vector<Triangle2*> vT;
    dt2.getTrianglePointers(vT);
    std::vector<std::pair<double, double>> vCovered;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Point2& p = *pT->corner(incIndexBy1(i));
            const Point2& q = *pT->corner(incIndexBy2(i));
            if (!isOn(p) || !isOn(q) || (bConstraints && !dt2.isConstraint(&p, &q))) continue;
            vCovered.push_back(std::minmax(param(p), param(q)));
        }
    }
    std::sort(vCovered.begin(), vCovered.end());
    double sum = 0.0, end = -1.0;
    for (const auto& [lo, hi] : vCovered) {
        sum += std::max(0.0, hi - std::max(lo, end));
        end = std::max(end, hi);
    }
    return sum * std::sqrt(sqLen);
}

/// The length of the knife's part in a convex hull that is widened by a little, by clipping.
double lengthInHull(const std::vector<Point2*>& vHull, const Segment2& knife, double widened)
{
    double lo = 0.0, hi = 1.0;
    for (std::size_t i = 0; i < vHull.size(); ++i) {
        const Point2& a = *vHull[i];
        const Point2& b = *vHull[(i + 1) % vHull.size()];
        const auto side = [&](const Point2& p) {
            return widened + (b.x() - a.x()) * (p.y() - a.y()) - (b.y() - a.y()) * (p.x() - a.x());
        };
        const double s = side(knife.src), t = side(knife.trg);
        if (s < 0.0 && t < 0.0) return 0.0;
        if (s < 0.0) lo = std::max(lo, s / (s - t));
        if (t < 0.0) hi = std::min(hi, s / (s - t));
    }
    return std::max(0.0, hi - lo) * std::sqrt(knife.getSqLen2D());
}

} // namespace

TEST(KnifeCut, LeavesTheSurfaceAndMakesChainsOfEdges)
{
    std::vector<int> vRounds{1132, 1702, 1712}; // where cuts once ended early, among slivers on the hull
    for (int i = 0; i < 90; ++i) vRounds.push_back(i);
    for (const int round : vRounds) {
        SCOPED_TRACE(round);
        lumo_test::CoutCapture out;
        oracles::Dice dice(4711 + static_cast<std::uint64_t>(round));
        const double slant = round % 3 == 0 ? 0.0 : 0.1 * (round % 3);
        const Scene scene = makeScene(dice, round % 2 == 0, slant);
        Lumo_2D lumo;
        lumo.insert(scene.vPoints);
        lumo.createConstraint(scene.vConstraints, CIS_CONSTRAINED_DELAUNAY, false);
        Dt2& dt2 = *lumo.getImpl();
        std::vector<Point2*> vHull;
        lumo.getConvexHull(false, vHull);
        std::vector<std::pair<Point2, double>> vHeights;
        for (int i = 0; i < 400; ++i) {
            const Point2 p(12.0 * dice.real() - 2.0, 12.0 * dice.real() - 2.0, 0.0);
            double z = 0.0;
            if (lumo.getHeight(p.x(), p.y(), z)) vHeights.emplace_back(p, z);
        }
        const bool bConstraints = round % 4 < 2;
        lumo.cutTriangles(scene.vKnives, bConstraints);
        EXPECT_EQ(out.take().find("ends early"), std::string::npos);
        ASSERT_TRUE(lumo.checkValidity(false, "cut"));
        for (const auto& [p, before] : vHeights) {
            double after = -1.0;
            ASSERT_TRUE(lumo.getHeight(p.x(), p.y(), after));
            ASSERT_NEAR(before, after, 1e-9);
        }
        for (const Segment2& knife : scene.vKnives) {
            // Along the hull, rounding may decide.
            const double least = lengthInHull(vHull, knife, -1e-12), most = lengthInHull(vHull, knife, 1e-12);
            const double length = lengthOfChain(dt2, knife, bConstraints);
            ASSERT_TRUE(length > least - 1e-9 && (length < most + 1e-9 || !bConstraints))
                << knife << least << ' ' << length;
        }
        std::vector<ConstraintSegment2*> vAlive;
        lumo.getAliveConstraintSegments(vAlive);
        for (ConstraintSegment2* pCSeg : vAlive) {
            EXPECT_TRUE(lumo.getAdjacentTriangle(pCSeg->getSrc(), pCSeg->getTrg()) != nullptr ||
                        lumo.getAdjacentTriangle(pCSeg->getTrg(), pCSeg->getSrc()) != nullptr);
        }
        // Whatever follows works on a mesh that isn't Delaunay.
        std::vector<Point2*> vVertices;
        lumo.getVertexPointers(vVertices);
        for (int i = 0; i < 20; ++i) {
            lumo.insert(Point2(8.0 * dice.real(), 8.0 * dice.real(), 0.5));
            Point2* const pVtx = dice.of(vVertices);
            if (dt2.isMeshVertex(pVtx) && !lumo.isConstraint(pVtx)) lumo.remove(pVtx);
        }
        ASSERT_TRUE(lumo.checkValidity(false, "afterwards"));
    }
}

TEST(KnifeCut, aListenerThatThrowsLeavesAVertexWithoutTriangle)
{
    bool bThrown = true;
    for (int n = 1; bThrown; ++n) {
        Lumo_2D lumo;
        lumo.insert(oracles::Dice(7).points(50, 10.0, 10.0));
        lumo_test::Interrupter interrupter(n);
        lumo.subscribe(MSG_PROGRESS, &interrupter);
        std::vector<Segment2> vKnives;
        for (int i = 0; i < 8; ++i) vKnives.emplace_back(Point2(1, 1 + i, 0), Point2(9.5, 0.5 + 1.1 * i, 0));
        try {
            lumo.cutTriangles(vKnives, true);
            bThrown = false;
        } catch (const std::runtime_error&) {
        }
        EXPECT_TRUE(lumo.checkValidity(false, "interrupted")) << "at report " << n;
    }
}
