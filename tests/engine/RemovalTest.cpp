#include "engine/Dt2.h"
#include "oracles/Corpus.h"
#include "oracles/MeshOracle.h"
#include "support/TestOutput.h"

#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;

using Points = std::vector<Point2>;
using Handles = std::vector<Point2*>;

Handles insertAll(Lumo_2D& lumo, const Points& vPoints)
{
    Handles vHandles;
    lumo.insert(vPoints, vHandles);
    return vHandles;
}

/// The vertices in use, in an order drawn by the seed.
Handles shuffledVertices(const Lumo_2D& lumo, std::uint64_t seed)
{
    Handles v;
    lumo.getVertexPointers(v);
    std::mt19937_64 engine(seed);
    for (std::size_t i = v.size(); i > 1; --i) {
        std::swap(v[i - 1], v[engine() % i]);
    }
    return v;
}

Points positionsOf(const Handles& vHandles)
{
    Points v;
    for (const Point2* p : vHandles) {
        v.push_back(*p);
    }
    return v;
}

/// Triangles by the positions of their corners, each beginning with its least one.
std::set<std::array<double, 6>> triangleSet(const Lumo_2D& lumo)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    std::set<std::array<double, 6>> sTriangles;
    for (const Triangle2* pT : vT) {
        int first = 0;
        for (int i = 1; i < 3; ++i) {
            if (*pT->corner(i) < *pT->corner(first)) first = i;
        }
        const Point2 &a = *pT->corner(first), &b = *pT->corner((first + 1) % 3), &c = *pT->corner((first + 2) % 3);
        sTriangles.insert({a.x(), a.y(), b.x(), b.y(), c.x(), c.y()});
    }
    return sTriangles;
}

void expectSound(const Lumo_2D& lumo, const Points& vPoints)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    ASSERT_TRUE(oracles::isDelaunay(vT, vPoints));
    ASSERT_TRUE(lumo.checkValidity(true, "removal"));
    ASSERT_EQ(lumo.numberOfPoints(), oracles::distinctPoints(vPoints).size());
    ASSERT_EQ(lumo.hasArea(), oracles::haveArea(vPoints));
}

/// Removes all vertices in a random order, with a check after each, and brings all points back.
void removeAllAndComeBack(const Points& vPoints, std::uint64_t seed)
{
    Lumo_2D lumo;
    insertAll(lumo, vPoints);
    Handles vLeft = shuffledVertices(lumo, seed);
    const std::size_t numAll = vLeft.size();
    while (!vLeft.empty()) {
        Point2* const pGone = vLeft.back();
        vLeft.pop_back();
        lumo.remove(pGone);
        ASSERT_EQ(pGone->getIncidentTriangle(), nullptr);
        ASSERT_EQ(lumo.numberOfPoints(), vLeft.size());
        ASSERT_TRUE(lumo.checkValidity(true, "after a removal")) << vLeft.size() << " left";
        if (vLeft.size() == numAll / 2) expectSound(lumo, positionsOf(vLeft));
    }
    EXPECT_FALSE(lumo.hasArea());
    EXPECT_EQ(lumo.numberOfTriangles(), 0U);
    EXPECT_FALSE(lumo.computeBoundingBox().isValid());
    insertAll(lumo, vPoints);
    expectSound(lumo, vPoints);
}

TEST(Removal, aCorpusEntryDoesNotSurviveRemovalOfEveryVertexInRandomOrder)
{
    std::uint64_t seed = 77;
    for (const oracles::CorpusEntry& entry : oracles::corpus(60)) {
        const oracles::FailureKeeper keeper(entry);
        SCOPED_TRACE("seed " + std::to_string(++seed));
        removeAllAndComeBack(entry.vPoints, seed);
        if (::testing::Test::HasFatalFailure()) return;
    }
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(400)) {
        if (entry.vPoints.size() <= 60) continue;
        const oracles::FailureKeeper keeper(entry);
        SCOPED_TRACE("seed " + std::to_string(++seed));
        removeAllAndComeBack(entry.vPoints, seed);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

TEST(Removal, smallShapesLoseTheWrongTriangles)
{
    const struct
    {
        const char* name;
        Points vPoints;
        std::size_t goes;
        std::size_t numTriangles;
    } aShapes[] = {
        {"degree three", {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {3, 3, 0}}, 3, 1},
        {"convex quadrilateral", {{0, 0, 0}, {5, 0, 0}, {6, 5, 0}, {0, 4, 0}}, 2, 1},
        {"square", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, 0, 1},
        {"hull corner over an inner vertex", {{0, 0, 0}, {9, 0, 0}, {4, 9, 0}, {4, 1, 0}}, 2, 1},
        {"middle of a straight side", {{0, 0, 0}, {4, 0, 0}, {8, 0, 0}, {4, 4, 0}}, 1, 1},
        {"end of a straight side", {{0, 0, 0}, {4, 0, 0}, {8, 0, 0}, {4, 4, 0}}, 0, 1},
        {"apex over a line", {{0, 0, 0}, {4, 0, 0}, {8, 0, 0}, {12, 0, 0}, {4, 4, 0}}, 4, 0},
        {"corner of the only triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 1, 0},
        {"centre of a grid",
         {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}, {0, 2, 0}, {1, 2, 0}, {2, 2, 0}},
         4,
         6},
    };
    for (const auto& shape : aShapes) {
        SCOPED_TRACE(shape.name);
        Lumo_2D lumo;
        const Handles vHandles = insertAll(lumo, shape.vPoints);
        Point2* const pGone = vHandles[shape.goes];
        lumo.remove(pGone);
        EXPECT_EQ(lumo.numberOfTriangles(), shape.numTriangles);
        Points vLeft(shape.vPoints);
        vLeft.erase(vLeft.begin() + static_cast<std::ptrdiff_t>(shape.goes));
        expectSound(lumo, vLeft);
        Point2* const pNew = lumo.insert(Point2(pGone->x(), pGone->y(), 42.0));
        EXPECT_NE(pNew, pGone);
        EXPECT_EQ(pNew->z(), 42.0);
        expectSound(lumo, shape.vPoints);
    }
}

TEST(Removal, pointersThatAreNoVertexInUseAreTakenForOne)
{
    const Points vSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {1, 2, 0}};
    Lumo_2D lumo, other, waiting;
    const Handles vHandles = insertAll(lumo, vSquare);
    const Handles vForeign = insertAll(other, vSquare);
    const Handles vWaiting = insertAll(waiting, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}});
    Point2 plain(1, 2, 0);
    auto* const pNowhere = reinterpret_cast<Point2*>(std::uintptr_t(8));
    auto* const pMidRecord = reinterpret_cast<Point2*>(reinterpret_cast<char*>(vHandles[1]) + 8);
    lumo.remove(vHandles[4]);
    waiting.remove(vWaiting[1]);

    CoutCapture out;
    lumo.remove(nullptr);
    EXPECT_NE(out.take().find("pVtx==NULL, illegal, return."), std::string::npos);
    for (Point2* p : {vHandles[4], vForeign[0], vWaiting[0], &plain, pNowhere, pMidRecord}) {
        lumo.remove(p);
        EXPECT_NE(out.take().find("vertex does not belong to the triangulation, return"), std::string::npos);
    }
    waiting.remove(vWaiting[1]);
    EXPECT_NE(out.take().find("vertex does not belong to the triangulation, return"), std::string::npos);
    EXPECT_EQ(waiting.numberOfPoints(), 2U);
    expectSound(lumo, Points(vSquare.begin(), vSquare.begin() + 4));
    expectSound(other, vSquare);
}

TEST(Removal, waitingPointsThatLeftComeBackWithTheFirstTriangle)
{
    Points vLine;
    for (int i = 0; i < 40; ++i) {
        vLine.emplace_back(2 * i, 3 * i, i);
    }
    Lumo_2D lumo;
    const Handles vHandles = insertAll(lumo, vLine);
    Points vLeft;
    for (std::size_t i = 0; i < vLine.size(); ++i) {
        if (i % 3 == 0) {
            lumo.remove(vHandles[i]);
        } else {
            vLeft.push_back(vLine[i]);
        }
    }
    expectSound(lumo, vLeft);
    vLeft.emplace_back(0, 0, -7.0);
    EXPECT_EQ(lumo.insert(vLeft.back())->z(), -7.0) << "a removed point's height came back";
    vLeft.emplace_back(5, 1, 0);
    lumo.insert(vLeft.back());
    expectSound(lumo, vLeft);
}

TEST(Removal, manyWaitingPointsCostTheSquareOfTheirNumber)
{
    Points vLine;
    for (int i = 0; i < 50000; ++i) {
        vLine.emplace_back((i * 41) % 50021, 0.0, i);
    }
    Lumo_2D lumo;
    const Handles vHandles = insertAll(lumo, vLine);
    for (std::size_t i = 5; i < vHandles.size(); ++i) {
        lumo.remove(vHandles[i]);
    }
    expectSound(lumo, Points(vLine.begin(), vLine.begin() + 5));
    lumo.insert(Point2(1, 1, 1));
    EXPECT_EQ(lumo.numberOfTriangles(), 4U);
}

TEST(Removal, halfOfTheVerticesGoneDiffersFromTheTriangulationOfTheOthers)
{
    // Random doubles are in general position: there is one Delaunay triangulation only.
    std::mt19937_64 engine(5);
    for (const int numCPU : {1, 4}) {
        Points vPoints;
        for (int i = 0; i < 3000; ++i) {
            const double x = static_cast<double>(engine() >> 11) * 0x1p-53;
            vPoints.emplace_back(x, static_cast<double>(engine() >> 11) * 0x1p-53, i);
        }
        Lumo_2D lumo;
        lumo.setNumCPU(numCPU);
        insertAll(lumo, vPoints);
        Handles vOrder = shuffledVertices(lumo, 99);
        const Points vLeft = positionsOf(Handles(vOrder.begin() + 1500, vOrder.end()));
        vOrder.resize(1500);
        for (Point2* p : vOrder) {
            lumo.remove(p);
        }
        Lumo_2D fresh;
        fresh.insert(vLeft);
        EXPECT_TRUE(lumo.checkValidity(true, "half removed"));
        EXPECT_EQ(triangleSet(lumo), triangleSet(fresh));
    }
}

/// Removes vertices of huge degree: with a cost of the square of the degree, this would take minutes.
TEST(Removal, aVertexOfHugeDegreeCostsTheSquareOfIt)
{
    constexpr int degree = 20000;
    const auto ring = [](int i) {
        const double angle = 2.0 * 3.14159265358979 * i / degree;
        return Point2(1000.0 * std::cos(angle), 1000.0 * std::sin(angle), i);
    };
    const auto line = [](int i) { return Point2(i, 0.0, i); };
    const auto bowl = [](int i) { return Point2(i - degree / 2, 1e-6 * (i - degree / 2) * (i - degree / 2), i); };
    const struct
    {
        const char* name;
        Point2 (*at)(int);
        Point2 centre;
        bool bAreaLeft;
    } aCases[] = {
        {"centre of a circle", ring, Point2(0, 0, 0), true},
        {"beside the centre of a circle", ring, Point2(300, 100, 0), true},
        {"apex over a line", line, Point2(degree / 2, 1e9, 0), false},
        {"focus of a parabola", bowl, Point2(0, 250000.0, 0), true},
        {"apex below a bowl", bowl, Point2(0, -1e9, 0), true},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.name);
        Points vPoints;
        for (int i = 0; i < degree; ++i) {
            vPoints.push_back(c.at(i));
        }
        vPoints.push_back(c.centre);
        Lumo_2D lumo;
        Point2* const pCentre = insertAll(lumo, vPoints).back();
        Handles vNeighbours;
        lumo.getIncidentVertices(pCentre, vNeighbours);
        ASSERT_GE(vNeighbours.size(), static_cast<std::size_t>(degree / 2));
        lumo.remove(pCentre);
        EXPECT_EQ(lumo.hasArea(), c.bAreaLeft);
        EXPECT_EQ(lumo.numberOfPoints(), static_cast<std::size_t>(degree));
        EXPECT_TRUE(lumo.checkValidity(true, c.name));
        lumo.insert(c.centre);
        EXPECT_TRUE(lumo.checkValidity(true, c.name));
    }
}

} // namespace
