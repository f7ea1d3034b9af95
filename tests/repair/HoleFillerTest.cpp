#include "HoleFiller.h"

#include "Bbox2.h"
#include "Mesh3.h"
#include "freeFunctions.h"
#include "oracles/Dice.h"
#include "repair/PatchOracle.h"
#include "support/TestOutput.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <set>

using namespace ORBI_LUMO25D;
using namespace oracles;

namespace
{

constexpr double pi = 3.14159265358979323846;

std::vector<Segment2> segmentsOf(const std::vector<Edge2>& vRing)
{
    std::vector<Segment2> v;
    for (const Edge2& edge : vRing) v.emplace_back(*edge.getSrc(), *edge.getTrg());
    return v;
}

/// The longest ring but for the outer rim of an open grid, which is the longest.
std::vector<Segment2> holeOf(const Corners& vMesh, bool bOpenGrid)
{
    const Mesh3 mesh(vMesh);
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    std::sort(vRings.begin(), vRings.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    return segmentsOf(vRings.at(bOpenGrid ? 1 : 0));
}

struct Shape
{
    const char* name;
    Corners vMesh;
    bool bOpenGrid;
    double radius = 0.0;                                ///< of a sphere
    std::function<double(const Point2&)> offPlane = {}; ///< of a plane
};

std::vector<Shape> shapes()
{
    const Region disc = [](double u, double v) { return std::hypot(u - 0.5, v - 0.5) < 0.28; };
    const Region star = [](double u, double v) {
        return std::hypot(u - 0.5, v - 0.5) < 0.24 + 0.1 * std::sin(5.0 * std::atan2(v - 0.5, u - 0.5));
    };
    const Region hook = [](double u, double v) { // a tongue of the surface reaches into the hole
        return std::fabs(u - 0.5) < 0.3 && std::fabs(v - 0.5) < 0.3 && !(std::fabs(u - 0.5) < 0.1 && v > 0.4);
    };
    const Region quarter = [](double u, double v) { return std::hypot(u - 0.5, v - 0.5) < 0.12; };
    const Surface tilted = [](double u, double v) { return Point2(24 * u, 24 * v, 7 * u - 17 * v); };
    const auto off = [](const Point2& p) { return p.z() - 7 * p.x() / 24 + 17 * p.y() / 24; };
    const Surface wall = [](double u, double v) { return Point2(3, 24 * u, 24 * v); };
    const auto offWall = [](const Point2& p) { return p.x() - 3; };
    const Surface saddle = [](double u, double v) {
        const double x = 24 * u - 12, y = 24 * v - 12;
        return Point2(x, y, 0.04 * x * y);
    };
    const Surface cylinder = [](double u, double v) {
        return Point2(6 * std::cos(2 * pi * u), 6 * std::sin(2 * pi * u), 30 * v);
    };
    const Surface torus = [](double u, double v) {
        const double r = 10 + 4 * std::cos(2 * pi * v);
        return Point2(r * std::cos(2 * pi * u), r * std::sin(2 * pi * u), 4 * std::sin(2 * pi * v));
    };
    const Region none = [](double, double) { return false; };
    std::vector<Shape> v;
    for (const auto& [name, hole] : {std::pair("disc", disc), std::pair("star", star), std::pair("hook", hook)}) {
        v.push_back({name, makeGrid(24, 24, false, false, tilted, hole), true, 0.0, off});
        v.push_back({name, makeGrid(24, 24, false, false, wall, hole), true, 0.0, offWall});
        v.push_back({name, makeGrid(24, 24, false, false, saddle, hole), true});
    }
    v.push_back({"side of a cylinder", makeGrid(40, 32, true, false, cylinder, quarter), false});
    v.push_back({"end of a tube", makeGrid(40, 32, true, false, cylinder, none), false});
    v.push_back({"torus", makeGrid(60, 26, true, true, torus, quarter), false});
    for (const double angle : {12.0, 30.0, 60.0, 90.0}) {
        v.push_back({"sphere", makeSphere(12, 10.0, angle), false, 10.0});
        v.push_back({"fine sphere", makeSphere(24, 10.0, angle), false, 10.0});
    }
    return v;
}

double medianLength(std::vector<Segment2> vRing)
{
    std::sort(vRing.begin(), vRing.end(),
              [](const auto& a, const auto& b) { return a.getSqLen25D() < b.getSqLen25D(); });
    return std::sqrt(vRing[vRing.size() / 2].getSqLen25D());
}

Point2 moved(const Point2& p, double scale, double shift)
{
    return Point2(p.x() * scale + shift, p.y() * scale - shift, p.z() * scale + shift / 1024);
}

} // namespace

// Each shape also in millimetres, and at survey coordinates, where a patch of the same structure is expected.
TEST(HoleFiller, PatchDoesNotContinueASimpleShape)
{
    for (const Shape& shape : shapes()) {
        const std::vector<Segment2> vRing = holeOf(shape.vMesh, shape.bOpenGrid);
        const double median = medianLength(vRing);
        for (const bool bAddPoints : {false, true}) {
            SCOPED_TRACE(std::string(shape.name) + (bAddPoints ? ", points" : ", no points"));
            Corners vPatch;
            ASSERT_TRUE(fillHole(shape.vMesh, vRing, bAddPoints, true, vPatch));
            EXPECT_EQ(faultOfPatch(vRing, vPatch, bAddPoints), "");
            EXPECT_EQ(countCrossings(shape.vMesh, vPatch), 0U);
            for (std::size_t i = 0; bAddPoints && i < vPatch.size(); ++i) {
                const Point2& p = vPatch[i];
                const double length = (p - vPatch[i % 3 == 2 ? i - 2 : i + 1]).length();
                if (shape.radius > 0.0) {
                    EXPECT_NEAR((p - Point2(0, 0, 0)).length(), shape.radius, 0.05 * shape.radius);
                    EXPECT_GT(length, median / 3);
                    EXPECT_LT(length, median * 3);
                }
                if (shape.offPlane) {
                    EXPECT_NEAR(shape.offPlane(p), 0.0, 1e-12);
                }
            }
            for (const auto& [scale, shift] : {std::pair(0x1p-10, 0.0), std::pair(1.0, 0x1p22)}) {
                Corners vMesh, vMovedPatch;
                std::vector<Segment2> vMovedRing;
                for (const Point2& p : shape.vMesh) vMesh.push_back(moved(p, scale, shift));
                for (const Segment2& s : vRing) {
                    vMovedRing.emplace_back(moved(s.src, scale, shift), moved(s.trg, scale, shift));
                }
                ASSERT_TRUE(fillHole(vMesh, vMovedRing, bAddPoints, true, vMovedPatch));
                EXPECT_EQ(faultOfPatch(vMovedRing, vMovedPatch, bAddPoints), "");
                if (shift != 0.0) continue; // coordinates were rounded
                ASSERT_EQ(vMovedPatch.size(), vPatch.size());
                for (std::size_t i = 0; i < vPatch.size(); ++i) {
                    ASSERT_TRUE(vMovedPatch[i].samePoint(moved(vPatch[i], scale, 0.0))) << "the size decides";
                }
            }
        }
    }
}

namespace
{

/// Fills all rings of a mesh, which is a closed manifold then. A patch is a disc: its component's V - E + F grows by one.
void closeAll(const Corners& vCorners, bool bAddPoints, bool bPointsMade, bool bMayCross)
{
    Mesh3 mesh(vCorners);
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    std::size_t numCrossings = 0;
    for (std::vector<Edge2>& vRing : vRings) {
        Corners vPatch;
        ASSERT_TRUE(fillHole(&mesh, vRing, bAddPoints, true, vPatch));
        EXPECT_EQ(faultOfPatch(segmentsOf(vRing), vPatch, bPointsMade), "");
        if (!bMayCross) numCrossings += countCrossings(vCorners, vPatch);
        for (std::size_t i = 0; i < vPatch.size(); i += 3)
            mesh.createTriangle(mesh.getVertex(vPatch[i]), mesh.getVertex(vPatch[i + 1]),
                                mesh.getVertex(vPatch[i + 2]));
    }
    EXPECT_EQ(numCrossings, 0U);
    std::vector<Edge2> vBorder;
    mesh.getBorderEdges(vBorder);
    EXPECT_TRUE(vBorder.empty());
    EXPECT_FALSE(mesh.hasNonManifoldEdges());
}

} // namespace

TEST(HoleFiller, RealMeshIsNotClosed)
{
    std::vector<std::filesystem::path> vFiles;
    for (const auto& item : std::filesystem::directory_iterator(LUMO25D_CORPUS_DIR "/meshes")) vFiles.push_back(item);
    ASSERT_EQ(vFiles.size(), 5U);
    for (const auto& file : vFiles) {
        for (const bool bAddPoints : {false, true}) {
            SCOPED_TRACE(file.filename().string() + (bAddPoints ? ", points" : ", no points"));
            Corners vCorners;
            ASSERT_TRUE(Mesh3::readCorners(file.string(), vCorners));
            const bool bSheets = file.stem() == "industrial_patches"; // rims, which get no points
            closeAll(vCorners, bAddPoints, bAddPoints && !bSheets, bSheets);
        }
    }
}

// Holes all over that share vertices: an edge of the mesh or of a neighbouring patch must not be made once more.
TEST(HoleFiller, RaggedSphereIsNotClosed)
{
    for (std::uint64_t seed = 0; seed < 450; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        const Corners vSphere = makeSphere(3 + dice.below(3), 10.0, 0.0);
        const double share = 0.5 + 0.5 * dice.real();
        Corners vKept;
        for (std::size_t i = 0; i < vSphere.size(); i += 3) {
            if (dice.real() > share) vKept.insert(vKept.end(), {vSphere[i], vSphere[i + 1], vSphere[i + 2]});
        }
        if (seed % 3 == 0) {
            for (Point2& p : vKept) p = Point2(p.x(), p.y(), 0.1 * p.z());
        }
        closeAll(vKept, true, true, true);
    }
}

namespace
{

/// A ring of some nasty kind, counterclockwise about z where it is about anything; points are distinct.
std::vector<Point2> randomRing(Dice& dice, int kind, int n)
{
    std::vector<Point2> v;
    std::set<XYZ> sSeen;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * pi * i / n, c = std::cos(t), s = std::sin(t), r = 0.3 + dice.real();
        const Point2 aPoint[] = {
            {r * c, r * s, 0},                                             // a star with sharp tips
            {dice.real(), dice.real(), dice.real()},                       // a knot
            {double(dice.below(6)), double(dice.below(6)), 0},             // on a grid, crosses itself
            {double(i < n / 2 ? i : n - 1 - i), i < n / 2 ? 0.0 : 1.0, 0}, // a ladder: all but two are straight
            {double(i), i == n - 1 ? 1.0 : 0.0, 0},                        // all but one on a line
            {c, 1e-5 * s, 0},                                              // a slit
            {c * (1 + 0.4 * std::cos(5 * t)), s * (1 + 0.4 * std::cos(5 * t)), 0.3 * dice.real()}};
        const Point2& p = aPoint[kind];
        if (sSeen.insert(xyz(p)).second) v.push_back(p);
    }
    return v;
}

} // namespace

TEST(HoleFiller, PatchOfARandomRingIsBroken)
{
    for (std::uint64_t seed = 0; seed < 700; ++seed) {
        Dice dice(seed);
        const int kind = static_cast<int>(seed % 7);
        const double scale = std::pow(10.0, dice.below(13) - 6), shift = dice.below(3) == 0 ? 1e6 * scale : 0.0;
        std::vector<Point2> vRing = randomRing(dice, kind, 4 + dice.below(seed % 50 == 0 ? 400 : 50));
        if (vRing.size() < 3) continue;
        std::vector<std::pair<Segment2, Vector2>> vPairs;
        std::vector<Segment2> vSegments;
        for (std::size_t i = 0; i < vRing.size(); ++i) {
            const Segment2 s(moved(vRing[i], scale, shift), moved(vRing[(i + 1) % vRing.size()], scale, shift));
            vSegments.emplace_back(s.trg, s.src);
            vPairs.emplace_back(s, Vector2(0.0, 0.0, 2.0));
        }
        // On the grid and in the knot the sense of the ring is anybody's guess; elsewhere it's the normals'.
        const bool bSenseIsKnown = kind != 1 && kind != 2;
        if (bSenseIsKnown && dice.below(2) == 0) {
            for (auto& pair : vPairs) pair.first.swapSrcTrg();
        }
        dice.shuffle(vPairs);
        const bool bAddPoints = dice.below(2) == 0;
        Corners vPatch, vAgain;
        SCOPED_TRACE("seed " + std::to_string(seed));
        ASSERT_TRUE(fillHole(vPairs, bAddPoints, true, vPatch));
        std::string fault = faultOfPatch(vSegments, vPatch, bAddPoints);
        if (!bSenseIsKnown && !fault.empty()) {
            for (Segment2& s : vSegments) s.swapSrcTrg();
            fault = faultOfPatch(vSegments, vPatch, bAddPoints);
        }
        EXPECT_EQ(fault, "");
        ASSERT_TRUE(fillHole(vPairs, bAddPoints, true, vAgain));
        ASSERT_TRUE(vAgain.size() == vPatch.size() &&
                    std::equal(vPatch.begin(), vPatch.end(), vAgain.begin(),
                               [](const Point2& p, const Point2& q) { return p.samePoint(q); }))
            << "not repeatable";
    }
}

// A long front on a plane must not take roundings for bends, which grow from row to row, nor a long edge for the measure.
TEST(HoleFiller, PatchLeavesThePlane)
{
    const Vector2 u = normalize(Vector2(1, 2, 3)), v = normalize(crossProduct(u, Vector2(0.3, 0.5, 0.8)));
    std::vector<Point2> vRing; // a rectangle of 350 by 50; one of its short sides is a single edge
    for (int i = 0; i < 350; ++i) vRing.push_back(Point2(5, 6, 7) + i * u);
    for (int i = 0; i < 50; ++i) vRing.push_back(Point2(5, 6, 7) + 350 * u + i * v);
    for (int i = 350; i >= 0; --i) vRing.push_back(Point2(5, 6, 7) + i * u + 50 * v);
    std::vector<std::pair<Segment2, Vector2>> vPairs;
    for (std::size_t i = 0; i < vRing.size(); ++i)
        vPairs.emplace_back(Segment2(vRing[i], vRing[(i + 1) % vRing.size()]), crossProduct(u, v));
    Corners vPatch;
    ASSERT_TRUE(fillHole(vPairs, true, true, vPatch));
    for (const Point2& p : vPatch) ASSERT_NEAR((p - Point2(5, 6, 7)) * crossProduct(u, v), 0.0, 1e-6);
    EXPECT_GT(vPatch.size(), 3U * 30000) << "without points, or too few";
}

// The areas of the triangles add up to that of the polygon when none overlaps another.
TEST(HoleFiller, PatchOfASimplePolygonOverlapsItself)
{
    Bbox2 box;
    box.add(Point2(0, 0, 0));
    box.add(Point2(1, 1, 0));
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        std::vector<Segment2> vPolygon;
        generateRandomPolygon(4 + seed % 60, box, seed, vPolygon);
        std::vector<std::pair<Segment2, Vector2>> vPairs;
        double area = 0.0, covered = 0.0;
        for (const Segment2& s : vPolygon) {
            vPairs.emplace_back(s, Vector2(0, 0, 1));
            area += (s.src.x() * s.trg.y() - s.src.y() * s.trg.x()) / 2;
        }
        Corners vPatch;
        ASSERT_TRUE(fillHole(vPairs, seed % 2 == 0, true, vPatch));
        for (std::size_t i = 0; i < vPatch.size(); i += 3)
            covered += getArea25D(&vPatch[i], &vPatch[i + 1], &vPatch[i + 2]);
        EXPECT_NEAR(covered, area, 1e-6 * area) << "seed " << seed;
    }
}

TEST(HoleFiller, BadInputIsNotAnsweredWithItsText)
{
    // Two triangles of a square, and one more that makes the diagonal an edge of three.
    const Point2 a(0, 0, 0), b(1, 0, 0), c(1, 1, 0), d(0, 1, 0), e(0.5, 0.5, 1), far(9, 9, 9);
    const Corners vSquare{a, b, c, a, c, d};
    const Corners vTwo{a, b, c, Point2(5, 0, 0), Point2(6, 0, 0), Point2(6, 1, 0)};
    const Corners vBowTie{a, b, e, c, d, e};
    using Pairs = std::vector<std::pair<Segment2, Vector2>>;
    const Vector2 up(0, 0, 1);
    const Pairs vGood{{{a, b}, up}, {{b, c}, up}, {{c, a}, up}};
    const auto with = [](Pairs v, std::size_t i, const Segment2& s, const Vector2& n) {
        v[i] = {s, n};
        return v;
    };
    const double nan = std::nan("");
    Corners vOut;
    const auto mesh = [&](const Corners& v, const std::vector<Segment2>& vRing) {
        return [&vOut, v, vRing](bool bVerbose) { return fillHole(v, vRing, true, bVerbose, vOut); };
    };
    const auto pairs = [&](const Pairs& v) {
        return [&vOut, v](bool bVerbose) { return fillHole(v, true, bVerbose, vOut); };
    };
    const auto edges = [&](Mesh3* pMesh, std::vector<Edge2> v) {
        return [&vOut, pMesh, v](bool bVerbose) mutable { return fillHole(pMesh, v, true, bVerbose, vOut); };
    };
    Mesh3 square(vSquare), other(vSquare);
    std::vector<Edge2> vEdges, vForeign;
    square.getBorderEdges(vEdges);
    other.getBorderEdges(vForeign);
    const std::vector<Edge2> vInner{vEdges[0], vEdges[1], Edge2(vEdges[0].getTriangle(), 1)};
    const std::vector<std::pair<std::function<bool(bool)>, std::string>> vCases{
        {mesh(vSquare, {{a, far}}), "Err1: Not an edge of the input mesh"},
        {mesh(vSquare, {{b, d}}), "Err2: Not an edge of the input mesh"},
        {mesh(vSquare, {{b, a}}), "Err2: Not an edge of the input mesh"},
        {mesh(vSquare, {{a, c}}), "Err3: Not a border-edge of the input mesh"},
        {mesh({a, b, c, a, b, d}, {{a, b}}), "Err3: Not a border-edge of the input mesh"},
        {mesh(vSquare, {{a, b}, {b, c}, {c, d}}), "Err4: Not a closed polygon"},
        {mesh(vSquare, {}), "Err4: Not a closed polygon"},
        {mesh(vTwo, {{a, b}, {b, c}, {c, a}, {vTwo[3], vTwo[4]}, {vTwo[4], vTwo[5]}, {vTwo[5], vTwo[3]}}),
         "Err5: Not a simple polygon"},
        {mesh(vBowTie, {{a, b}, {b, e}, {e, a}, {c, d}, {d, e}, {e, c}}), "Err5: Not a simple polygon"},
        {pairs(with(vGood, 1, {b, c}, Vector2())), "Degenerate normal vector provided, returning false"},
        {pairs(with(vGood, 1, {b, c}, c - b)), "Err2: Bad segment/vector pair"},
        {pairs(with(vGood, 1, {b, c}, Vector2(0, nan, 1))), "Err2: Bad segment/vector pair"},
        {pairs(with(vGood, 1, {b, b}, up)), "degenerate segment skipped"},
        {pairs(with(vGood, 1, {b, b}, up)), "Err4: Not a closed polygon"},
        {pairs(with(vGood, 1, {c, b}, up)), "Err4: Not a closed polygon"},
        {edges(&square, vForeign), "bad parameter vPolygon"},
        {edges(&square, vInner), "bad parameter vPolygon"},
        {edges(&square, {Edge2(nullptr, 0), Edge2(nullptr, 7), Edge2(nullptr, 1)}), "bad parameter vPolygon"},
        {edges(nullptr, vEdges), "Bad polygon, can't triangulate, returning false"}};
    for (const auto& [call, text] : vCases) {
        SCOPED_TRACE(text);
        for (const bool bVerbose : {true, false}) {
            testing::internal::CaptureStdout();
            EXPECT_FALSE(call(bVerbose));
            const std::string output = testing::internal::GetCapturedStdout();
            EXPECT_EQ(output.find(text) != std::string::npos, bVerbose) << output;
        }
    }
    EXPECT_TRUE(vOut.empty());
    // Numbers whose differences are no doubles end in a failed condition, a straight ring can't be closed at all.
    const double huge = 1.7e308;
    EXPECT_FALSE(fillHole(
        {{{{-huge, 0, 0}, {huge, 0, 0}}, up}, {{{huge, 0, 0}, {0, huge, 0}}, up}, {{{0, huge, 0}, {-huge, 0, 0}}, up}},
        true, false, vOut));
    const Point2 m(2, 0, 0);
    EXPECT_FALSE(fillHole({{{a, b}, up}, {{b, m}, up}, {{m, a}, up}}, true, false, vOut));
    EXPECT_TRUE(fillHole(vGood, true, true, vOut));
    EXPECT_EQ(vOut.size(), 3U) << "a triangular hole takes one triangle";
}

TEST(HoleFiller, LongRunDoesNotEnd)
{
    const lumo_test::TempWorkDir directory;
    std::vector<std::pair<Segment2, Vector2>> vPairs;
    const int n = 100100;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * pi * i / n, u = i + 1 == n ? 0.0 : 2 * pi * (i + 1) / n;
        vPairs.emplace_back(Segment2({std::cos(t), std::sin(t), 0}, {std::cos(u), std::sin(u), 0}), Vector2(0, 0, 1));
    }
    Corners vPatch;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(fillHole(vPairs, true, false, vPatch));
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("HoleFiller::fillLoop(), longRun. Throwing an exception"), std::string::npos);
    EXPECT_NE(output.find("Err: LongRun, throwing now..."), std::string::npos);
}
