#include "Lumo_2D.h"

#include "engine/Dt2.h"
#include "oracles/Dice.h"
#include "oracles/MeshOracle.h"
#include "support/TestOutput.h"

#include "LumoException.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using lumo_test::TempWorkDir;
using oracles::isSound;

using Points = std::vector<Point2>;

const Points square = {{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}, {1, 2, 5}};

struct Listener : public MsgBase
{
    void update(MsgType, const char* s, double d) override { text += std::string(s) + "=" + std::to_string(d) + ";"; }
    std::string text;
};

TEST(Lumo_2DTest, badArraysAndCountsCrashOrInsertSomething)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Lumo_2D lumo;
    double aCoords[] = {0, 0, 1, nan, 0, 0, 4, 0, 2, 0, 4, 3, 0, 0, 9};
    Point2* aHandles[5] = {};
    CoutCapture out;
    lumo.insert(-1, aCoords, aHandles);
    EXPECT_NE(out.take().find("ERROR"), std::string::npos);
    lumo.insert(3, nullptr, aHandles);
    EXPECT_NE(out.take().find("ERROR"), std::string::npos);
    lumo.insert(0, nullptr, nullptr);
    lumo.insert(0, aCoords, aHandles);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(lumo.numberOfPoints(), 0U);
    EXPECT_EQ(aHandles[0], nullptr);
    lumo.insert(5, aCoords, aHandles);
    EXPECT_NE(out.take().find("1 point(s) refused"), std::string::npos);
    EXPECT_EQ(aHandles[1], nullptr);
    EXPECT_EQ(aHandles[4], aHandles[0]);
    EXPECT_EQ(aHandles[4]->z(), 1.0);
    lumo.insert(5, aCoords, nullptr);
    EXPECT_TRUE(isSound(lumo, {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}));
}

TEST(Lumo_2DTest, emptyInputIsReportedOtherwise)
{
    Lumo_2D lumo;
    Listener listener;
    lumo.subscribe(MSG_PROGRESS, &listener);
    lumo.subscribe(MSG_PROGRESS, &listener);
    std::vector<Point2*> vHandles(3, nullptr);
    lumo.insert(Points(), vHandles);
    EXPECT_EQ(listener.text, "insertVector=1.000000;");
    EXPECT_TRUE(vHandles.empty());
    listener.text.clear();
    lumo.insert(square);
    EXPECT_EQ(listener.text.rfind("insert vertices=", 0), 0U);
    lumo.unsubscribe(MSG_PROGRESS, &listener);
    listener.text.clear();
    lumo.insert(square);
    EXPECT_EQ(listener.text, "") << "subscribed twice, but heard of things once";
}

TEST(Lumo_2DTest, numberOfThreadsIsNotTheOneAskedFor)
{
    Lumo_2D lumo;
    const int numHardware = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    for (const auto& [asked, given] : {std::pair<int, int>(7, 7), {0, numHardware}, {-3, 1}, {1, 1}}) {
        EXPECT_EQ(lumo.setNumCPU(asked), given);
        EXPECT_EQ(lumo.getImpl()->numCPU, given);
    }
    lumo.enableMultithreading();
    EXPECT_EQ(lumo.getImpl()->numCPU, numHardware);
}

TEST(Lumo_2DTest, misuseOfQueriesCrashesOrChangesSomething)
{
    const TempWorkDir directory; // failed conditions leave a log file
    Lumo_2D lumo, other, empty;
    std::vector<Point2*> v, w;
    lumo.insert(square, v);
    other.insert(square, w);
    Triangle2 plainTriangle;
    Point2 plain(1, 2, 3);
    CoutCapture out;
    EXPECT_THROW(lumo.getAdjacentTriangle(nullptr, v[0]), LumoException);
    EXPECT_THROW(lumo.getAdjacentTriangle(v[0], v[0]), LumoException);
    lumo.remove(v[3]);
    std::vector<Triangle2*> vT;
    std::vector<Point2*> vVtx;
    for (Point2* p : {static_cast<Point2*>(nullptr), &plain, w[0], v[3]}) {
        out.take();
        lumo.getIncidentTriangles(p, vT);
        lumo.getIncidentVertices(p, vVtx);
        EXPECT_NE(out.take().find("vertex does not belong to the triangulation, return"), std::string::npos);
        if (p != nullptr) {
            EXPECT_EQ(lumo.getAdjacentTriangle(p, v[0]), nullptr);
            EXPECT_EQ(lumo.getAdjacentTriangle(v[0], p), nullptr);
        }
    }
    EXPECT_TRUE(vT.empty() && vVtx.empty());
    // A triangle of another triangulation, a dead one or a plain one is no place to begin a search at.
    for (Triangle2* pT : {&plainTriangle, other.locate(plain), reinterpret_cast<Triangle2*>(v[0])}) {
        double height = 0.0;
        EXPECT_TRUE(lumo.getHeight(1.0, 2.0, height, pT));
        EXPECT_EQ(height, 5.0);
    }
    lumo.show(nullptr);
    EXPECT_FALSE(lumo.writeObj(nullptr));
    EXPECT_TRUE(isSound(lumo, {square[0], square[1], square[2], square[4]}));
    EXPECT_TRUE(empty.checkValidity(true, nullptr));
    empty.statistics(nullptr);
    EXPECT_FALSE(empty.computeBoundingBox().isValid());
}

TEST(Lumo_2DTest, statisticsCountWrong)
{
    Lumo_2D lumo;
    lumo.insert(square);
    CoutCapture out;
    EXPECT_GT(lumo.measureTriangulationTime(oracles::Dice(3).points(200, 9.0, 9.0)), 0.0); // in a place of its own
    lumo.statistics("a title");
    const std::string text = out.take();
    // A square of side 4 with a vertex 1 from its left side, in the middle of the height.
    for (const char* part :
         {"a title", "vertices: 5\n", "triangles: 4\n", "edges: 8, on the hull: 4\n", "heights: min 1, mean 3, max 5\n",
          "degrees: min 3, mean 3.2, max 4\n", "max 126.87\n", "areas (2D): min 2, mean 4, max 6\n"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << text;
    }
}

TEST(Lumo_2DTest, drawingsLackEdges)
{
    const TempWorkDir directory;
    const CoutCapture out;
    Lumo_2D lumo;
    lumo.insert(square);
    lumo.show("lumo.ps");
    EXPECT_EQ(lumo_test::countOf("lineto", lumo_test::readFile("lumo.ps")), 8U) << "each edge once";
}

} // namespace
