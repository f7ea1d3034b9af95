// Imported triangles: exactly those, within a valid mesh, or nothing at all.

#include "Lumo_2D.h"

#include "engine/Dt2.h"
#include "oracles/Dice.h"

#include "Zone2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>

using namespace ORBI_LUMO25D;

namespace
{

using Coordinates = std::array<double, 2>;
using Corners = std::array<Coordinates, 3>;

Corners cornersOf(const Point2& a, const Point2& b, const Point2& c)
{
    Corners corners{{{a.x(), a.y()}, {b.x(), b.y()}, {c.x(), c.y()}}};
    std::sort(corners.begin(), corners.end());
    return corners;
}

std::set<Corners> trianglesOf(const std::vector<Point2>& vPoints)
{
    std::set<Corners> s;
    for (std::size_t i = 0; i < vPoints.size(); i += 3) s.insert(cornersOf(vPoints[i], vPoints[i + 1], vPoints[i + 2]));
    return s;
}

/// A triangulation that random flips have made anything but Delaunay, slivers included, with holes.
std::vector<Point2> randomTriangles(oracles::Dice& dice, bool bGrid)
{
    Lumo_2D lumo;
    for (int i = 0; i < 40; ++i) {
        const double x = 7.0 * dice.real(), y = 7.0 * dice.real();
        const double shift = bGrid ? dice.below(3) * 1e-16 : 0.0; // next to collinear
        lumo.insert(bGrid ? Point2(std::floor(x) * 0.1 + shift, std::floor(y) * 0.1, i) : Point2(x, y, i));
    }
    Dt2& dt2 = *lumo.getImpl();
    std::vector<Triangle2*> vT;
    dt2.getTrianglePointers(vT);
    for (int i = 0; i < 500; ++i) {
        Triangle2* const pT = dice.of(vT);
        const int ith = dice.below(3);
        if (dt2.canBeFlipped(pT, ith)) dt2.flip(pT, ith);
    }
    std::vector<Point2> vPoints;
    for (const Triangle2* pT : vT) {
        if (dice.below(10) < 3) continue;
        for (int i = 0; i < 3; ++i) vPoints.push_back(*pT->corner(i));
    }
    return vPoints;
}

} // namespace

TEST(ImportTriangles, AreExactlyThoseInAValidMesh)
{
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(2024 + static_cast<std::uint64_t>(round));
        std::vector<Point2> vPoints = randomTriangles(dice, round % 2 == 0);
        Lumo_2D lumo;
        if (round % 3 == 0) std::swap(vPoints[0], vPoints[1]); // clockwise
        EXPECT_EQ(lumo.importTriangles(vPoints, false, false) == nullptr, round % 3 == 0);
        Zone2* pZone = nullptr;
        Lumo_2D turned;
        ASSERT_NE(pZone = turned.importTriangles(vPoints, true, round % 4 == 0), nullptr);
        EXPECT_TRUE(turned.checkValidity(true, "imported"));
        std::vector<Triangle2*> vT, vZone;
        pZone->getTriangles(vZone);
        turned.getTrianglePointers(vT);
        std::vector<Point2> vInMesh, vInZone;
        for (const Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) vInMesh.push_back(*pT->corner(i));
        }
        for (const Triangle2* pT : vZone) {
            for (int i = 0; i < 3; ++i) vInZone.push_back(*pT->corner(i));
        }
        const std::set<Corners> expected = trianglesOf(vPoints), all = trianglesOf(vInMesh),
                                zone = trianglesOf(vInZone);
        EXPECT_TRUE(std::includes(all.begin(), all.end(), expected.begin(), expected.end()));
        EXPECT_EQ(zone, expected) << "also those that have no double inside";
        turned.insert(Point2(3.3, 3.1, 0.0));
        EXPECT_TRUE(turned.checkValidity(true, "afterwards"));
    }
}

TEST(ImportTriangles, RefuseWhatCantBeAMeshAndChangeNothing)
{
    const Point2 a(0, 0, 0), b(4, 0, 0), c(0, 4, 0), d(4, 4, 0), inner(1, 1, 0), mid(2, 2, 0), far(9, 0, 0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::vector<Point2>> vBad = {{},
                                                   {a, b},
                                                   {a, b, Point2(1, nan, 0)},
                                                   {a, b, Point2(1, 1, nan)},
                                                   {a, b, far},            // degenerate
                                                   {a, c, b},              // clockwise
                                                   {a, b, c, a, b, d},     // on one side of an edge
                                                   {a, b, c, a, b, c},     // twice
                                                   {a, b, c, a, b, inner}, // one in the other
                                                   {a, b, c, inner, b, d}, // a corner inside
                                                   {a, b, c, b, d, mid},   // part of an edge
                                                   {a, b, c, Point2(.5, .5, 0), Point2(1, .5, 0), Point2(.5, 1, 0)}};
    for (const std::vector<Point2>& vPoints : vBad) {
        Lumo_2D lumo;
        EXPECT_EQ(lumo.importTriangles(vPoints, false, true), nullptr) << vPoints.size();
        EXPECT_EQ(lumo.numberOfPoints(), 0U);
        EXPECT_NE(lumo.importTriangles({a, b, c}, false, false), nullptr);
        EXPECT_EQ(lumo.importTriangles({a, b, c}, false, false), nullptr) << "not empty";
    }
}
