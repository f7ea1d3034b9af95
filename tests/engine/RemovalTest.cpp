#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "oracles/MeshOracle.h"
#include "support/TestOutput.h"

#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using oracles::isSound;

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
    oracles::Dice(seed).shuffle(v);
    return v;
}

Points positionsOf(const Handles& vHandles)
{
    Points v;
    for (const Point2* p : vHandles) v.push_back(*p);
    return v;
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
        ASSERT_TRUE(vLeft.size() != numAll / 2 || isSound(lumo, positionsOf(vLeft)));
    }
    EXPECT_FALSE(lumo.hasArea());
    EXPECT_EQ(lumo.numberOfTriangles(), 0U);
    EXPECT_FALSE(lumo.computeBoundingBox().isValid());
    insertAll(lumo, vPoints);
    ASSERT_TRUE(isSound(lumo, vPoints));
}

TEST(Removal, aCorpusEntryDoesNotSurviveRemovalOfEveryVertexInRandomOrder)
{
    std::vector<oracles::CorpusEntry> vEntries = oracles::corpus(60);
    for (oracles::CorpusEntry& entry : oracles::plainCorpus(400)) {
        if (entry.vPoints.size() > 60) vEntries.push_back(std::move(entry));
    }
    std::uint64_t seed = 77;
    for (const oracles::CorpusEntry& entry : vEntries) {
        const oracles::FailureKeeper keeper(entry);
        SCOPED_TRACE("seed " + std::to_string(++seed));
        removeAllAndComeBack(entry.vPoints, seed);
        if (::testing::Test::HasFatalFailure()) return;
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
    for (Point2* p : {vHandles[4], vForeign[0], vWaiting[0], vWaiting[1], &plain, pNowhere, pMidRecord}) {
        (p == vWaiting[1] ? waiting : lumo).remove(p);
        EXPECT_NE(out.take().find("vertex does not belong to the triangulation, return"), std::string::npos);
    }
    EXPECT_EQ(waiting.numberOfPoints(), 2U);
    ASSERT_TRUE(isSound(lumo, Points(vSquare.begin(), vSquare.begin() + 4)));
    ASSERT_TRUE(isSound(other, vSquare));
}

TEST(Removal, manyWaitingPointsCostTheSquareOfTheirNumberOrThoseGoneComeBack)
{
    Points vLine;
    for (int i = 0; i < 50000; ++i) vLine.emplace_back((i * 41) % 50021, 0.0, i);
    Lumo_2D lumo;
    const Handles vHandles = insertAll(lumo, vLine);
    for (std::size_t i = 5; i < vHandles.size(); ++i) lumo.remove(vHandles[i]);
    Points vLeft(vLine.begin(), vLine.begin() + 5);
    ASSERT_TRUE(isSound(lumo, vLeft));
    vLeft.emplace_back(vLine[7].x(), 0.0, -7.0);
    EXPECT_EQ(lumo.insert(vLeft.back())->z(), -7.0) << "a removed point's height came back";
    vLeft.emplace_back(1, 1, 1);
    lumo.insert(vLeft.back());
    ASSERT_TRUE(isSound(lumo, vLeft));
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
        {"apex over a line", line, Point2(degree / 2, 1e9, 0), false},
        {"focus of a parabola", bowl, Point2(0, 250000.0, 0), true},
    };
    for (const auto& c : aCases) {
        SCOPED_TRACE(c.name);
        Points vPoints;
        for (int i = 0; i < degree; ++i) vPoints.push_back(c.at(i));
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
