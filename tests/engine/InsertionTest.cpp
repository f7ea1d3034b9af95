#include "engine/Dt2.h"
#include "oracles/Corpus.h"
#include "oracles/MeshOracle.h"

#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>

namespace
{

using namespace ORBI_LUMO25D;

using Points = std::vector<Point2>;
using Handles = std::vector<Point2*>;

/// One way of bringing points in; returns the handles in input order.
struct InsertionForm
{
    const char* name;
    std::function<Handles(Lumo_2D&, const Points&)> insert;
};

Handles insertCoordinates(Lumo_2D& lumo, const Points& vPoints)
{
    std::vector<double> vCoords;
    for (const Point2& p : vPoints) {
        vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
    }
    Handles vHandles(vPoints.size());
    lumo.insert(static_cast<int>(vPoints.size()), vCoords.data(), vHandles.data());
    return vHandles;
}

Handles insertVector(Lumo_2D& lumo, const Points& vPoints)
{
    Handles vHandles;
    lumo.insert(vPoints, vHandles);
    return vHandles;
}

Handles insertInTwoHalves(Lumo_2D& lumo, const Points& vPoints)
{
    const auto mid = vPoints.begin() + static_cast<std::ptrdiff_t>(vPoints.size() / 2);
    Handles vFirst = insertVector(lumo, Points(vPoints.begin(), mid));
    const Handles vSecond = insertVector(lumo, Points(mid, vPoints.end()));
    vFirst.insert(vFirst.end(), vSecond.begin(), vSecond.end());
    return vFirst;
}

Handles insertOneByOne(Lumo_2D& lumo, const Points& vPoints)
{
    Handles vHandles;
    for (const Point2& p : vPoints) {
        vHandles.push_back(lumo.insert(p));
    }
    return vHandles;
}

/// The first third waits one by one, perhaps without area, and a bulk with the fake box follows.
Handles insertMixedThreaded(Lumo_2D& lumo, const Points& vPoints)
{
    lumo.setNumCPU(4);
    const auto third = vPoints.begin() + static_cast<std::ptrdiff_t>(vPoints.size() / 3);
    Handles vHandles = insertOneByOne(lumo, Points(vPoints.begin(), third));
    const Handles vRest = insertVector(lumo, Points(third, vPoints.end()));
    vHandles.insert(vHandles.end(), vRest.begin(), vRest.end());
    return vHandles;
}

const InsertionForm forms[] = {
    {"vector", insertVector},       {"two halves", insertInTwoHalves},        {"coordinates", insertCoordinates},
    {"one by one", insertOneByOne}, {"mixed, fake box", insertMixedThreaded},
};

/// Handles in input order, duplicates at the first vertex, whose height and custom index stay.
void expectHandlesOfFirstPoints(const Points& vPoints, const Handles& vHandles, bool bWithCustomIndex)
{
    ASSERT_EQ(vHandles.size(), vPoints.size());
    std::map<std::pair<double, double>, std::size_t> mFirst;
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        const std::size_t first = mFirst.emplace(std::make_pair(vPoints[i].x(), vPoints[i].y()), i).first->second;
        ASSERT_NE(vHandles[i], nullptr);
        ASSERT_EQ(*vHandles[i], vPoints[i]) << "handle " << i;
        ASSERT_EQ(vHandles[i], vHandles[first]) << "handle " << i;
        ASSERT_EQ(vHandles[i]->z(), vPoints[first].z()) << "height of handle " << i;
        if (bWithCustomIndex) {
            ASSERT_EQ(vHandles[i]->getCustomIndex(), vPoints[first].getCustomIndex());
        }
    }
}

/// The oracle's rationals are slow; the library's own check is held against it where bWithOracle is true.
void expectSound(const Lumo_2D& lumo, const Points& vPoints, bool bWithOracle = true)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    if (bWithOracle) {
        EXPECT_TRUE(oracles::isDelaunay(vT, vPoints));
    }
    EXPECT_TRUE(lumo.checkValidity(true, "test"));
    EXPECT_EQ(lumo.numberOfPoints(), oracles::distinctPoints(vPoints).size());
    EXPECT_EQ(lumo.numberOfTriangles(), vT.size());
    EXPECT_EQ(lumo.hasArea(), !vT.empty());
}

Points withIndicesAndHeights(Points vPoints)
{
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        vPoints[i].setCustomIndex(static_cast<int>(i));
        vPoints[i].setZ(static_cast<double>(i));
    }
    return vPoints;
}

TEST(Insertion, everyFormGivesASoundTriangulationOfEveryCorpusEntry)
{
    for (const oracles::CorpusEntry& entry : oracles::corpus(1000)) {
        const oracles::FailureKeeper keeper(entry);
        const Points vPoints = withIndicesAndHeights(entry.vPoints);
        for (const InsertionForm& form : forms) {
            SCOPED_TRACE(form.name);
            Lumo_2D lumo;
            const Handles vHandles = form.insert(lumo, vPoints);
            const bool bWithCustomIndex = std::strcmp(form.name, "coordinates") != 0;
            expectHandlesOfFirstPoints(vPoints, vHandles, bWithCustomIndex);
            expectSound(lumo, vPoints, vPoints.size() < 100 || &form == forms);
        }
    }
}

TEST(Insertion, largeCorpusEntriesAreSoundInBulk)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus()) {
        if (entry.vPoints.size() <= 1000) continue;
        const oracles::FailureKeeper keeper(entry);
        for (const int numCPU : {1, 4}) {
            Lumo_2D lumo;
            lumo.setNumCPU(numCPU);
            expectHandlesOfFirstPoints(entry.vPoints, insertVector(lumo, entry.vPoints), false);
            expectSound(lumo, entry.vPoints, numCPU == 1 && entry.vPoints.size() < 3000);
        }
    }
}

TEST(Insertion, theEarliestOfManyEqualPointsKeepsItsHeightInBulk)
{
    // Runs of equal points of every length, so that middle-first insertion meets any of them first.
    Points vPoints;
    for (int run = 1; run <= 40; ++run) {
        for (int k = 0; k < run; ++k) {
            vPoints.emplace_back(run % 7, run / 7 + 0.25 * (run % 3), 1000.0 * run + k);
            vPoints.back().setCustomIndex(1000 * run + k);
        }
    }
    for (const int numCPU : {1, 4}) {
        Lumo_2D lumo;
        lumo.setNumCPU(numCPU);
        expectHandlesOfFirstPoints(vPoints, insertVector(lumo, vPoints), true);
        // A second pass changes nothing and hands out the vertices of the first.
        Points vHigher(vPoints);
        for (Point2& p : vHigher) {
            p.setZ(-1.0);
        }
        vHigher.insert(vHigher.begin(), vPoints.begin(), vPoints.end());
        const Handles vHandles =
            insertVector(lumo, Points(vHigher.begin() + static_cast<std::ptrdiff_t>(vPoints.size()), vHigher.end()));
        for (const Point2* p : vHandles) {
            EXPECT_GE(p->z(), 1000.0);
        }
        expectSound(lumo, vPoints);
    }
}

TEST(Insertion, pointsWithoutAreaWaitAndAreAllUsedLater)
{
    for (const int numCPU : {1, 4}) {
        Lumo_2D lumo;
        lumo.setNumCPU(numCPU);
        Points vLine;
        for (int i = 0; i < 50; ++i) {
            vLine.emplace_back(0.1 * i, 0.1 * i, i);
        }
        insertVector(lumo, vLine);
        expectSound(lumo, vLine);
        EXPECT_EQ(lumo.insert(Point2(0.1 * 7, 0.1 * 7, -5.0))->z(), 7.0)
            << "a waiting point comes back with its height";
        Points vAll(vLine);
        vAll.emplace_back(-0.0, 0.0, 9.0);
        EXPECT_EQ(lumo.insert(vAll.back())->z(), 0.0) << "-0.0 and 0.0 are one place";
        vAll.emplace_back(3.0, 7.0, 1.0);
        vAll.emplace_back(0.3, 0.3, 1.0);
        const Handles vHandles = insertVector(lumo, Points(vAll.end() - 2, vAll.end()));
        expectSound(lumo, vAll);
        EXPECT_TRUE(lumo.locate(*vHandles[0]) != nullptr);
    }
}

TEST(Insertion, allPointsEqualAreOneVertex)
{
    Lumo_2D lumo;
    const Handles vHandles = insertVector(lumo, Points(1000, Point2(3.0, 4.0, 5.0)));
    EXPECT_EQ(lumo.numberOfPoints(), 1U);
    EXPECT_EQ(std::count(vHandles.begin(), vHandles.end(), vHandles.front()), 1000);
}

TEST(Insertion, nonFinitePointsAreRefusedAndAllOthersInserted)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Points vGood = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0.5, 0.25, 0}};
    Points vMixed = {{nan, 0, 0}, {0, 0, 0},   {1, 0, 0},      {inf, 1, 0}, {0, 1, 0},
                     {1, 1, 0},   {5, 5, nan}, {0.5, 0.25, 0}, {2, -inf, 1}};
    for (const InsertionForm& form : forms) {
        SCOPED_TRACE(form.name);
        Lumo_2D lumo;
        const Handles vHandles = form.insert(lumo, vMixed);
        ASSERT_EQ(vHandles.size(), vMixed.size());
        for (std::size_t i = 0; i < vMixed.size(); ++i) {
            const bool bRefused = i == 0 || i == 3 || i == 6 || i == 8;
            EXPECT_EQ(vHandles[i] == nullptr, bRefused) << i;
            if (!bRefused) {
                EXPECT_EQ(*vHandles[i], vMixed[i]);
            }
        }
        expectSound(lumo, vGood);
    }
}

TEST(Insertion, sameInputGivesTheSameTrianglesBitForBit)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(3000)) {
        const oracles::FailureKeeper keeper(entry);
        LumoExport exports[2];
        for (LumoExport& e : exports) {
            Lumo_2D lumo;
            lumo.insert(entry.vPoints);
            lumo.exportTriangulation(e, false, true);
            EXPECT_EQ(lumo.numberOfPoints(), 0U);
        }
        ASSERT_EQ(exports[0].numPoints, exports[1].numPoints);
        ASSERT_EQ(exports[0].numTriangles, exports[1].numTriangles);
        const auto bytes = [](std::int32_t n, std::size_t size) { return static_cast<std::size_t>(n) * size; };
        EXPECT_EQ(std::memcmp(exports[0].aCoords, exports[1].aCoords, bytes(exports[0].numPoints, 3 * sizeof(double))),
                  0);
        EXPECT_EQ(std::memcmp(exports[0].aTriangles, exports[1].aTriangles,
                              bytes(exports[0].numTriangles, 3 * sizeof(std::int32_t))),
                  0);
    }
}

TEST(Insertion, roundingModeOfTheCallerNeitherHurtsNorChanges)
{
    const oracles::CorpusEntry entry = [] {
        for (const oracles::CorpusEntry& e : oracles::plainCorpus(1000)) {
            if (e.name.find("robustness2") != std::string::npos) return e;
        }
        throw std::runtime_error("corpus entry is missing");
    }();
    for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        Lumo_2D lumo;
        lumo.insert(entry.vPoints);
        for (const Point2& p : entry.vPoints) {
            lumo.locate(p);
        }
        EXPECT_EQ(std::fegetround(), mode);
        std::fesetround(FE_TONEAREST);
        expectSound(lumo, entry.vPoints);
    }
}

TEST(Insertion, fastModeLeavesAValidMesh)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(3000)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo;
        lumo.setFastMode(true);
        insertVector(lumo, entry.vPoints);
        EXPECT_TRUE(lumo.checkValidity(false, "fast mode"));
        EXPECT_EQ(lumo.numberOfPoints(), oracles::distinctPoints(entry.vPoints).size());
    }
}

/// Breaks off after some reports.
struct Interrupter : public MsgBase
{
    int numLeft = 5;
    void update(MsgType, const char*, double) override
    {
        if (--numLeft == 0) throw std::runtime_error("stop");
    }
};

TEST(Insertion, aListenerThatThrowsLeavesASoundTriangulation)
{
    Points vPoints;
    for (int i = 0; i < 3000; ++i) {
        vPoints.emplace_back((i * 37) % 101 + 0.01 * (i % 13), (i * 53) % 97, i);
    }
    for (const int numCPU : {1, 4}) {
        Lumo_2D lumo;
        lumo.setNumCPU(numCPU);
        Interrupter interrupter;
        lumo.subscribe(MSG_PROGRESS, &interrupter);
        EXPECT_THROW(lumo.insert(vPoints), std::runtime_error);
        EXPECT_TRUE(lumo.checkValidity(true, "interrupted"));
        lumo.unsubscribe(MSG_PROGRESS, &interrupter);
        lumo.insert(vPoints);
        expectSound(lumo, vPoints, false);
    }
}

TEST(Insertion, denseClusterBesideFarOutliersIsInsertedInLinearTime)
{
    // All of the cluster falls into one cell of the curve over the whole box; without a finer order of its own, walks
    // through it would be as long as it is wide. Steps are counted, not seconds.
    Points vPoints;
    for (long long i = 0; i < 20000; ++i) {
        vPoints.emplace_back(1e-9 * static_cast<double>((i * 7919) % 40009),
                             1e-9 * static_cast<double>((i * 104729) % 39989), 0.0);
    }
    vPoints.emplace_back(1e6, 1e6, 0.0);
    vPoints.emplace_back(-1e6, 3e6, 0.0);
    Lumo_2D lumo;
    lumo.insert(vPoints);
    expectSound(lumo, vPoints, false);
    std::size_t numFar = 0;
    Handles vVertices;
    lumo.getVertexPointers(vVertices);
    for (std::size_t i = 1; i < vVertices.size(); ++i) {
        const double dx = vVertices[i]->x() - vVertices[i - 1]->x();
        const double dy = vVertices[i]->y() - vVertices[i - 1]->y();
        if (dx * dx + dy * dy > 1e-11) ++numFar; // a tenth of the cluster's width apart
    }
    EXPECT_LT(numFar, 100U) << "successive vertices are near neighbours";
}

} // namespace
