#include "Visualizer3.h"

#include "CAF_Component.h"
#include "Color.h"
#include "Edge2.h"
#include "LumoException.h"
#include "Lumo_2D.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CommaLocale;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

TEST(Visualizer3Test, drawingIsNotTheOneThatWasAdded)
{
    const TempWorkDir directory;
    const CommaLocale locale;
    CoutCapture out;
    const double unknown = std::numeric_limits<double>::max();
    auto pA = std::make_unique<Point2>(0.1, 6e6, 5);
    Point2 b(4, 6e6, 5), c(0, 6000002.25, -5), d(4, 6000002.25, 1e-7), high(1, 1, unknown), none(1, 1, std::nan(""));
    Triangle2 t, u, dead, noHeight;
    t.setProperties(pA.get(), &b, &c);
    u.setProperties(&c, &b, &d);
    noHeight.setProperties(&c, &high, &d);
    Visualizer3 vis("a.list");
    vis.addObject(std::vector<Triangle2*>{&t, nullptr, &u, &dead, &noHeight}, "1 .5 0 0.25");
    vis.addObject(std::vector<Segment2>{{b, c}, {c, none}, {c, d}}, "0 0 1");
    vis.addObject(std::vector<Point2*>{&b, &none, nullptr}, " 0 1 0 ");
    vis.addObject(std::vector<Edge2>{Edge2(&dead, 0), Edge2(nullptr, 0)}, "0 0 0");
    pA.reset(); // what was added need not live
    EXPECT_TRUE(vis.writeFile());
    const std::string text = out.take();
    EXPECT_EQ(text.rfind("Visualizer3:: Writing a.list\n", 0), 0U);
    EXPECT_NE(text.find("WARNING: 8 objects"), std::string::npos) << text;
    EXPECT_EQ(readFile("a.list"),
              "LIST\n"
              "{ appearance { +face -edge +transparent material { diffuse 1 0.5 0 alpha 0.25 } }\nOFF\n4 2 0\n"
              "0.1 6e+06 5\n4 6e+06 5\n0 6000002.25 -5\n4 6000002.25 1e-07\n3 0 1 2\n3 2 1 3\n}\n"
              "{ appearance { linewidth 2 }\nVECT\n2 4 1\n2\n2\n1\n0\n"
              "4 6e+06 5\n0 6000002.25 -5\n0 6000002.25 -5\n4 6000002.25 1e-07\n0 0 1 1 \n}\n"
              "{ appearance { linewidth 4 }\nVECT\n1 1 1\n1\n1\n4 6e+06 5\n0 1 0 1 \n}\n");
}

TEST(Visualizer3Test, coloursComeOutOfTurnOrThreadsLoseSome)
{
    const TempWorkDir directory;
    CoutCapture out;
    std::set<std::string> sColors;
    Visualizer3::nextColor = 0;
    for (int i = 0; i < 10; ++i) sColors.insert(Visualizer3::getNextColor());
    EXPECT_EQ(sColors.size(), 10U);
    for (const int start : {-7, 20, INT_MAX}) {
        Visualizer3::nextColor = start;
        for (int i = 0; i < 12; ++i) EXPECT_EQ(sColors.count(Visualizer3::getNextColor()), 1U);
    }
    // A triangulation in each thread may be drawn.
    Visualizer3::nextColor = 0;
    Color::currentColorName = CCYAN;
    std::vector<std::thread> vThreads;
    for (int k = 0; k < 2; ++k) {
        vThreads.emplace_back([] {
            for (int i = 0; i < 30000; ++i) {
                Visualizer3::getNextColor();
                Color::getNextColorName();
            }
        });
    }
    for (std::thread& thread : vThreads) thread.join();
    EXPECT_EQ(Visualizer3::nextColor, 60000);
    EXPECT_EQ(Color::currentColorName, CCYAN);
    Visualizer3::nextColor = 3;
    {
        Visualizer3 vis("a.list");
        for (const char* pColor : {"", "red", "1 0", "1 0 0 1 1", "1 0 2", "-1 0 0", "nan 0 0"}) {
            vis.addObject(std::vector<Point2>{Point2(0, 0, 0)}, pColor);
        }
    }
    EXPECT_EQ(Visualizer3::nextColor, 10);
    EXPECT_EQ(lumo_test::countOf("is no color", out.take()), 6U);
}

TEST(Visualizer3Test, misuseCrashes)
{
    const TempWorkDir directory;
    CoutCapture out;
    Visualizer3 vis("p.list");
    EXPECT_TRUE(vis.writeFile());
    EXPECT_FALSE(vis.writeFile());
    EXPECT_NE(out.take().find("WARNING: No effect. File has already been closed"), std::string::npos);
    EXPECT_THROW(vis.addObject(std::vector<Point2>(), "1 0 0"), LumoException);
    EXPECT_EQ(readFile("p.list"), "LIST\n") << "an empty list is one as well";
    out.take();
    for (const char* pName : {"no/where", static_cast<const char*>(nullptr), "/dev/full"}) {
        const std::string name = pName == nullptr ? "" : pName;
        EXPECT_FALSE(Visualizer3(pName).writeFile());
        EXPECT_EQ(out.take(), "Visualizer3:: Writing " + name + "\n" + name + " can't be written\n");
    }
    Lumo_2D lumo;
    lumo.showGeomview(nullptr, "");
    EXPECT_NE(out.take().find("no visualizer given"), std::string::npos);
}

TEST(Visualizer3Test, surfacesAndVolumesAreDrawnIncompletely)
{
    struct Component : CAF_Component
    {
        using CAF_Component::CAF_Component;
        using CAF_Component::showGeomview;
    };
    const TempWorkDir directory;
    const CoutCapture out;
    const std::vector<Point2> vPoints = {{0, 0, 1}, {4, 0, 1}, {0, 4, 1}, {4, 4, 9}};
    Lumo_2D lumo;
    lumo.insert(std::vector<Point2>(vPoints.begin(), vPoints.begin() + 2));
    lumo.showGeomview("waiting.list");
    EXPECT_NE(readFile("waiting.list").find("VECT\n2 2 1\n"), std::string::npos);
    lumo.insert(vPoints);
    lumo.showGeomview("surface.list");
    EXPECT_NE(readFile("surface.list").find("OFF\n4 2 0\n"), std::string::npos);

    const std::map<Point2*, std::pair<double, double>> mNoHeights;
    Component(std::vector<Triangle2*>(), mNoHeights, 0)
        .showGeomview("solid", vPoints, {vPoints[0], vPoints[1], vPoints[2]}, {});
    const std::string solid = readFile("solid_null.list");
    EXPECT_NE(solid.find("diffuse 1 0 0 alpha 0.5 } }\nOFF\n3 1 0\n"), std::string::npos) << solid;
    EXPECT_NE(solid.find("diffuse 0 1 0 alpha 0.5 } }\nOFF\n3 1 0\n"), std::string::npos) << solid;
    EXPECT_EQ(solid.find("diffuse 0 0 1"), std::string::npos) << solid;
}

} // namespace
