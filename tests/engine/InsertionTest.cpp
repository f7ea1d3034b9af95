#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "oracles/MeshOracle.h"

#include "Lumo_2D.h"
#include "Vector2.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cstring>
#include <limits>
#include <map>
#include <stdexcept>

namespace
{

using namespace ORBI_LUMO25D;
using oracles::isSound;

using Points = std::vector<Point2>;
using Handles = std::vector<Point2*>;

/// Inserts equal parts of the points, each in the form of one letter: a vector, coordinates, one by one. Returns the
/// handles in input order.
Handles insertParts(Lumo_2D& lumo, const Points& vPoints, const std::string& forms)
{
    Handles vHandles;
    for (std::size_t i = 0; i < forms.size(); ++i) {
        const auto at = [&](std::size_t part) {
            return vPoints.begin() + static_cast<std::ptrdiff_t>(vPoints.size() * part / forms.size());
        };
        const Points vPart(at(i), at(i + 1));
        Handles vNew;
        std::vector<double> vCoords;
        for (const Point2& p : vPart) {
            if (forms[i] == 'o') vNew.push_back(lumo.insert(p));
            vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
        }
        if (forms[i] == 'v') lumo.insert(vPart, vNew);
        if (forms[i] == 'c') {
            vNew.resize(vPart.size());
            lumo.insert(static_cast<int>(vPart.size()), vCoords.data(), vNew.data());
        }
        vHandles.insert(vHandles.end(), vNew.begin(), vNew.end());
    }
    return vHandles;
}

/// The last one: the first third waits, perhaps without area, and bulks with the fake box follow.
const struct
{
    const char* forms;
    int numCPU;
} ways[] = {{"v", 1}, {"vv", 1}, {"c", 1}, {"o", 1}, {"ovv", 4}};

/// Handles in input order, duplicates at the first vertex, whose height and custom index stay.
void expectHandlesOfFirstPoints(const Points& vPoints, const Handles& vHandles, bool bWithCustomIndex = true)
{
    ASSERT_EQ(vHandles.size(), vPoints.size());
    std::map<std::pair<double, double>, std::size_t> mFirst;
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        const std::size_t first = mFirst.emplace(std::make_pair(vPoints[i].x(), vPoints[i].y()), i).first->second;
        ASSERT_NE(vHandles[i], nullptr);
        ASSERT_EQ(*vHandles[i], vPoints[i]) << "handle " << i;
        ASSERT_EQ(vHandles[i], vHandles[first]) << "handle " << i;
        ASSERT_EQ(vHandles[i]->z(), vPoints[first].z()) << "height of handle " << i;
        const int index = vHandles[i]->getCustomIndex();
        ASSERT_TRUE(!bWithCustomIndex || index == vPoints[first].getCustomIndex()) << "handle " << i;
    }
}

TEST(Insertion, everyFormGivesASoundTriangulationOfEveryCorpusEntry)
{
    std::size_t numVariants = 0;
    for (oracles::CorpusEntry& entry : oracles::corpus(1000)) {
        const oracles::FailureKeeper keeper(entry);
        const bool bVariant = entry.name.find('+') != std::string::npos; // turned and so on: one way each, in turn
        const std::size_t number = bVariant ? numVariants++ : 0;
        Points& vPoints = entry.vPoints;
        for (std::size_t i = 0; i < vPoints.size(); ++i) {
            vPoints[i].setCustomIndex(static_cast<int>(i));
            vPoints[i].setZ(static_cast<double>(i));
        }
        for (const auto& way : ways) {
            if (bVariant && static_cast<std::size_t>(&way - ways) != number % std::size(ways)) continue;
            SCOPED_TRACE(way.forms);
            Lumo_2D lumo;
            lumo.setNumCPU(way.numCPU);
            expectHandlesOfFirstPoints(vPoints, insertParts(lumo, vPoints, way.forms), *way.forms != 'c');
            EXPECT_TRUE(isSound(lumo, vPoints, vPoints.size() < 100 || &way == ways));
        }
    }
}

TEST(Insertion, largeCorpusEntriesAreSoundInBulkAndRepeatBitForBit)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus()) {
        if (entry.vPoints.size() <= 1000) continue;
        const oracles::FailureKeeper keeper(entry);
        std::vector<double> exports[2];
        for (const int numCPU : {1, 1, 4}) {
            Lumo_2D lumo;
            lumo.setNumCPU(numCPU);
            expectHandlesOfFirstPoints(entry.vPoints, insertParts(lumo, entry.vPoints, "v"));
            const bool bFirst = numCPU == 1 && exports[1].empty();
            EXPECT_TRUE(isSound(lumo, entry.vPoints, bFirst && entry.vPoints.size() < 2000));
            if (numCPU != 1) continue;
            exports[0].swap(exports[1]);
            std::vector<Triangle2*> vT;
            lumo.getTrianglePointers(vT);
            for (const Triangle2* pT : vT) {
                for (int i = 0; i < 3; ++i)
                    exports[1].insert(exports[1].end(), {pT->corner(i)->x(), pT->corner(i)->y()});
            }
        }
        EXPECT_TRUE(exports[0] == exports[1]) << "the same input gives other triangles";
    }
}

TEST(Insertion, nonFinitePointsAreRefusedAndAllOthersInserted)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Points vMixed = {{nan, 0, 0}, {0, 0, 0},   {1, 0, 0},      {inf, 1, 0}, {0, 1, 0},
                           {1, 1, 0},   {5, 5, nan}, {0.5, 0.25, 0}, {2, -inf, 1}};
    for (const auto& way : ways) {
        SCOPED_TRACE(way.forms);
        Lumo_2D lumo;
        lumo.setNumCPU(way.numCPU);
        const Handles vHandles = insertParts(lumo, vMixed, way.forms);
        ASSERT_EQ(vHandles.size(), vMixed.size());
        for (std::size_t i = 0; i < vMixed.size(); ++i) {
            const bool bRefused = i == 0 || i == 3 || i == 6 || i == 8;
            EXPECT_EQ(vHandles[i] == nullptr, bRefused) << i;
            EXPECT_TRUE(bRefused || *vHandles[i] == vMixed[i]) << i;
        }
        EXPECT_TRUE(isSound(lumo, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0.5, 0.25, 0}}));
    }
}

TEST(Insertion, roundingModeOfTheCallerHurtsOrChanges)
{
    Points vPoints; // many a step of the doubles off their common line
    for (int i = 0; i < 200; ++i) vPoints.emplace_back(0.1 * i, 0.3 * i, i);
    vPoints.emplace_back(7.0, 1.0, 0.0);
    for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        Lumo_2D lumo;
        lumo.insert(vPoints);
        for (const Point2& p : vPoints) EXPECT_NE(lumo.locate(p), nullptr);
        EXPECT_EQ(std::fegetround(), mode);
        std::fesetround(FE_TONEAREST);
        EXPECT_TRUE(isSound(lumo, vPoints));
    }
}

TEST(Insertion, fastModeLeavesAnInvalidMesh)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(3000)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo;
        lumo.setFastMode(true);
        lumo.insert(entry.vPoints);
        EXPECT_TRUE(lumo.checkValidity(false, "fast mode"));
        EXPECT_EQ(lumo.numberOfPoints(), oracles::distinctPoints(entry.vPoints).size());
    }
}

/// Breaks off when so much is done.
struct Interrupter : public MsgBase
{
    explicit Interrupter(double limit_) : limit(limit_) {}
    void update(MsgType, const char*, double fraction) override
    {
        if (fraction >= limit) throw std::runtime_error("stop");
    }
    double limit;
};

TEST(Insertion, aListenerThatThrowsLeavesAnUnsoundTriangulationOrLosesOlderPoints)
{
    Points vPoints = oracles::Dice(3).points(10000, 100, 97); // enough for threads
    Points vWaiting;
    for (int i = 0; i < 150; ++i) vWaiting.emplace_back(i, i, -1.0);
    Points vAll(vWaiting);
    vAll.insert(vAll.end(), vPoints.begin(), vPoints.end());
    for (const int numCPU : {1, 4}) {
        for (const double limit : {0.0, 0.5, 1.0}) {
            SCOPED_TRACE(::testing::Message() << numCPU << " threads, at " << limit);
            Lumo_2D lumo;
            lumo.setNumCPU(numCPU);
            Handles vHandles;
            lumo.insert(vWaiting, vHandles);
            Interrupter interrupter(limit);
            lumo.subscribe(MSG_PROGRESS, &interrupter);
            EXPECT_THROW(lumo.insert(vPoints), std::runtime_error);
            EXPECT_TRUE(lumo.checkValidity(true, "interrupted"));
            lumo.unsubscribe(MSG_PROGRESS, &interrupter);
            lumo.insert(vPoints);
            EXPECT_TRUE(isSound(lumo, vAll, false));
            for (const Point2* p : vHandles) ASSERT_TRUE(p->getIncidentTriangle() != nullptr);
        }
    }
}

TEST(Insertion, denseClusterBesideFarOutliersIsInsertedInQuadraticTime)
{
    // All of the cluster falls into one cell of the curve over the whole box; without a finer order of its own, walks
    // through it would be as long as it is wide. Steps are counted, not seconds.
    Points vPoints = oracles::Dice(1).points(20000, 4e-5, 4e-5);
    vPoints.emplace_back(1e6, 1e6, 0.0);
    vPoints.emplace_back(-1e6, 3e6, 0.0);
    Lumo_2D lumo;
    lumo.insert(vPoints);
    EXPECT_TRUE(isSound(lumo, vPoints, false));
    std::size_t numFar = 0;
    Handles vVertices;
    lumo.getVertexPointers(vVertices);
    for (std::size_t i = 1; i < vVertices.size(); ++i) {
        const Vector2 step = *vVertices[i] - *vVertices[i - 1];
        if (step.x() * step.x() + step.y() * step.y() > 1e-11) ++numFar; // a tenth of the cluster's width apart
    }
    EXPECT_LT(numFar, 100U) << "successive vertices are near neighbours";
}

} // namespace
