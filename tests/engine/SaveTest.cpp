// Saved states: restored exactly, and from a broken file nothing at all. What bytes can do to a file, the fuzzer tries.

#include "Lumo_2D.h"

#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include "LumoException.h"
#include "Zone2.h"
#include "freeFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>

using namespace ORBI_LUMO25D;
using lumo_test::bytesOf;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;
using lumo_test::writeFile;
using ::testing::HasSubstr;

namespace
{

using Zones = std::vector<Zone2*>;

// ---- files made without the library ---------------------------------------------------------------------------------

/// A square with a vertex inside, constraints around two triangles, which are a zone, in the order of the writer: vertices,
/// triangles, segments, a zone's border edges.
const char* const square = "v 0 0 1;v 4 0 2;v 1 2 5;v 4 4 3;v 0 4 4;t 0 1 2;t 4 0 2;t 1 3 2;t 3 4 2;"
                           "s 0 1;s 0 2;s 1 3;s 2 3;z 0 1 1 3 2 0 3 2;";

std::string number(double n)
{
    return bytesOf(static_cast<std::uint64_t>(static_cast<std::int64_t>(n)), 4);
}

/// The file of such a text; vertices have the custom indices 1000, 1001...
std::string fileOf(const std::string& text, bool bFlat = false, int fileType = 32)
{
    const std::string kinds = "vstz";
    std::size_t aCounts[4] = {};
    std::string aBytes[4];
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ';');) {
        const std::size_t kind = kinds.find(item[0]);
        std::vector<double> v;
        std::istringstream numbers(item.substr(1));
        for (std::string s; numbers >> s;) v.push_back(std::stod(s));
        std::string& bytes = aBytes[kind];
        if (kind == 3) bytes += number(static_cast<double>(v.size() / 2));
        if (kind == 0 && bFlat) v[2] = 0.0;
        if (kind == 0 && fileType == 22) v.pop_back();
        for (const double value : v) {
            bytes += kind == 0 ? bytesOf(value) : number(value);
        }
        if (kind == 0) bytes += number(1000.0 + static_cast<double>(aCounts[0]));
        ++aCounts[kind];
    }
    std::string s = number(fileType);
    for (const std::size_t count : aCounts) s += number(static_cast<double>(count));
    return s + aBytes[0] + aBytes[2] + aBytes[1] + aBytes[3] + number(99);
}

bool loads(const std::string& bytes, Lumo_2D& lumo, Zones& vZones)
{
    writeFile("file", bytes);
    return lumo.load("file", vZones);
}

// ---- what a triangulation is made of --------------------------------------------------------------------------------

std::size_t numSegments(const Lumo_2D& lumo)
{
    std::vector<ConstraintSegment2*> v;
    lumo.getAliveConstraintSegments(v);
    return v.size();
}

void insertNumbered(Lumo_2D& lumo, std::vector<Point2> vPoints)
{
    int i = 0;
    for (Point2& p : vPoints) p.setCustomIndex(7 * ++i);
    lumo.insert(vPoints);
}

/// Zones of all kinds in a triangulation with area.
Zones zonesIn(Lumo_2D& lumo, ConstraintGraph2* pGraph)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    const Point2 center = vT.front()->getBarycenter();
    vT.erase(std::remove_if(vT.begin(), vT.end(), [](const Triangle2* p) { return p->getBarycenter().x() < 1.0; }),
             vT.end());
    Zones v{lumo.createZone(nullptr, ZL_GLOBAL), lumo.createZone(vT), nullptr};
    v.push_back(zoneDifference(v[0], v[1]));
    v.push_back(zoneDifference(v[0], v[0])); // empty
    v.push_back(v[0]->convertToBoundedZone());
    if (pGraph != nullptr) v.push_back(lumo.createZone(pGraph, ZL_GROW, center));
    if (pGraph != nullptr && pGraph->isPolygon()) {
        v.push_back(lumo.createZone(pGraph, ZL_INSIDE));
        v.push_back(lumo.createZone(pGraph, ZL_OUTSIDE));
    }
    return v;
}

/// The zones of the file "first", which give the same file again.
void expectRestored(Lumo_2D& copy, const Zones& vGiven, bool bZonesOnly, Zones& vLoaded)
{
    ASSERT_TRUE(copy.load("first", vLoaded));
    EXPECT_TRUE(copy.checkValidity(false, "loaded"));
    ASSERT_EQ(vLoaded.size(), vGiven.size());
    for (std::size_t i = 0; i < vGiven.size(); ++i) {
        const bool bEmpty = vGiven[i] == nullptr || vGiven[i]->getNumberOfTriangles() == 0;
        ASSERT_EQ(vLoaded[i] == nullptr, bEmpty);
        if (bEmpty) continue;
        EXPECT_EQ(vLoaded[i]->getZoneLocation(), ZL_INSIDE);
        EXPECT_EQ(vLoaded[i]->getNumberOfTriangles(), vGiven[i]->getNumberOfTriangles()) << i;
        const double area = vGiven[i]->getArea2D();
        if (std::isfinite(area)) {
            EXPECT_NEAR(vLoaded[i]->getArea2D(), area, 1e-9 * area) << i;
        }
    }
    ASSERT_TRUE(bZonesOnly ? copy.saveZones("second", vLoaded) : copy.saveTriangulation("second", vLoaded));
    EXPECT_EQ(readFile("first"), readFile("second"));
}

} // namespace

TEST(Save, RestoresTheWholeCorpusAndSavesTheSameFileAgain)
{
    const TempWorkDir directory;
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(300)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo, copy;
        insertNumbered(lumo, entry.vPoints);
        ConstraintGraph2* pGraph = nullptr;
        if (!entry.vSegments.empty()) pGraph = lumo.createConstraint(entry.vSegments, CIS_CONSTRAINED_DELAUNAY);
        const Zones vZones = lumo.hasArea() ? zonesIn(lumo, pGraph) : Zones();
        ASSERT_TRUE(lumo.saveTriangulation("first", vZones));
        Zones vLoaded;
        ASSERT_NO_FATAL_FAILURE(expectRestored(copy, vZones, false, vLoaded));
        EXPECT_EQ(copy.numberOfPoints(), lumo.numberOfPoints());
        EXPECT_EQ(copy.numberOfTriangles(), lumo.numberOfTriangles());
        EXPECT_GE(numSegments(copy), numSegments(lumo));
        EXPECT_TRUE(copy.checkValidity(true, "Delaunay"));

        std::vector<Point2> vMore = entry.vPoints;
        for (Point2& p : vMore) p.setCoords(0.7 * p.x() + 0.1, 0.9 * p.y(), p.z());
        copy.insert(vMore);
        EXPECT_TRUE(copy.checkValidity(true, "went on"));
    }
}

TEST(Save, ZonesAloneAreRestoredWithTheGapsFilled)
{
    const TempWorkDir directory;
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(77 + static_cast<std::uint64_t>(round));
        Lumo_2D lumo, copy;
        insertNumbered(lumo, dice.points(60, 9, 9));
        lumo.cutTriangles({1, 1, 0}, {8, 7, 0}, false); // edges that aren't Delaunay
        std::vector<Triangle2*> vT, vRandom;
        lumo.getTrianglePointers(vT);
        std::copy_if(vT.begin(), vT.end(), std::back_inserter(vRandom),
                     [&](Triangle2*) { return dice.below(5) < round % 5; });
        const Zones vZones{lumo.createZone(vRandom), lumo.createZone({vT[0], vT[1]})};
        ASSERT_TRUE(lumo.saveZones("first", vZones));
        Zones vLoaded;
        ASSERT_NO_FATAL_FAILURE(expectRestored(copy, vZones, true, vLoaded));
        ASSERT_TRUE(vLoaded[1]->save("one"));
        copy.insert(dice.points(60, 9, 9));
        EXPECT_TRUE(copy.checkValidity(false, "went on"));
        EXPECT_NEAR(vLoaded[1]->getArea2D(), vT[0]->getArea2D() + vT[1]->getArea2D(), 1e-9);
    }
}

TEST(Save, HasTheDocumentedFileForm)
{
    const TempWorkDir directory;
    for (const bool bFlat : {false, true}) {
        Lumo_2D lumo;
        Zones vZones;
        ASSERT_TRUE(loads(fileOf(square, false, bFlat ? 22 : 32), lumo, vZones));
        EXPECT_EQ(vZones[0]->getArea2D(), 10.0);
        ASSERT_TRUE(lumo.saveTriangulation("again", vZones));
        EXPECT_EQ(readFile("again"), fileOf(square, bFlat));
    }
    Lumo_2D empty;
    ASSERT_TRUE(empty.saveTriangulation("empty", {}));
    EXPECT_EQ(readFile("empty"), fileOf(""));
}

TEST(Save, WaitingPointsAndSegmentsGoOnWaiting)
{
    const TempWorkDir directory;
    Lumo_2D lumo, copy, third;
    Zones vZones;
    insertNumbered(lumo, {{0, 0, 1}, {3, 3, 2}, {1, 1, 3}});
    lumo.createConstraint({Segment2({0, 0, 0}, {3, 3, 0})}, CIS_CONSTRAINED_DELAUNAY);
    ASSERT_TRUE(lumo.saveTriangulation("first", {}));
    ASSERT_NO_FATAL_FAILURE(expectRestored(copy, {}, false, vZones));
    EXPECT_EQ(numSegments(copy), 1U);

    // With area, what waits is applied, so that the file can tell it.
    copy.insert({0, 5, 0});
    ASSERT_TRUE(copy.saveTriangulation("third", {}));
    EXPECT_EQ(numSegments(copy), 2U);
    ASSERT_TRUE(third.load("third", vZones));
    EXPECT_EQ(numSegments(third), 2U);
}

TEST(Load, RefusesWhatIsNoTriangulation)
{
    const TempWorkDir directory;
    CoutCapture output;
    // A ring of triangles that goes around its centre twice: each is fine, neighbours are, the border isn't.
    std::ostringstream twice;
    for (int i = 0; i < 10; ++i) {
        const double angle = 4.0 * 3.14159265358979 * i / 10.0;
        const int a = 2 * i, b = 2 * ((i + 1) % 10);
        for (const int r : {1, 2})
            twice << "v " << r * std::cos(angle) << ' ' << r * std::sin(angle + 1e-3 * i) << " 0;";
        twice << "t " << a << ' ' << a + 1 << ' ' << b + 1 << ";t " << a << ' ' << b + 1 << ' ' << b << ';';
    }
    const std::string triangles = "t 0 1 2;t 4 0 2;t 1 3 2;t 3 4 2;", zone = "z 0 1 1 3 2 0 3 2;";
    struct
    {
        const char* reason;
        std::string part, instead; ///< replaced in the square; at its end without a part
    } const aCases[] = {
        {"finite", "v 4 0 2;", "v 4 0 nan;"},
        {"no vertex", "t 0 1 2;", "t 5 1 2;"},
        {"no vertex", "s 0 1;", "s -1 1;"},
        {"no vertex", zone, "z 0 1 1 3 2 7 3 2;"},
        {"counterclockwise", "t 0 1 2;", "t 0 2 1;"},
        {"counterclockwise", "t 0 1 2;", "t 0 1 1;"},
        {"one side", "", "t 0 1 2;"},
        {"one side", "", "t 0 1 3;"},
        {"has no triangle", "", "v 2 2 0;"},
        // One in another, sharing nothing; and at the same places; a vertex in the middle of an edge of its neighbour.
        {"overlap", "", "v 2.5 2 0;v 3 2 0;v 3 2.5 0;t 5 6 7;"},
        {"overlap", "t 0 1 2;", "t 5 6 7;v 0 0 0;v 4 0 0;v 1 2 0;"},
        {"overlap", "", "v 2 0 0;v 2 -1 0;t 0 6 5;"},
        {"overlap", square, twice.str()},
        {"no edge", "", "s 0 3;"},
        {"no edge", "", "s 3 3;"},
        {"comes twice", "", "s 1 0;"},
        {"isn't closed", zone, "z 0 1 2 0 3 2;"},
        {"isn't closed", zone, "z 0 1 1 0;"},
        {"border of a zone is no", zone, "z 1 0 0 4 4 3 3 1;"},
        {"no triangles", triangles, ""},
        {"at one place", square, "v 1 1 0;v 1 1 5;"},
        {"failed", zone, "z 0 1 1 3 2 0 3 2;z;"}, // the last zone's count, without an end mark
    };
    for (const auto& [reason, part, instead] : aCases) {
        SCOPED_TRACE(reason + (": " + instead));
        std::string text = square;
        text.replace(part.empty() ? text.size() : text.find(part), part.size(), instead);
        const std::string bytes = fileOf(text);
        output.take();
        Lumo_2D lumo;
        Zones vZones;
        EXPECT_FALSE(
            loads(std::strcmp(reason, "failed") == 0 ? bytes.substr(0, bytes.size() - 4) : bytes, lumo, vZones));
        const std::string told = output.take();
        EXPECT_THAT(told, HasSubstr(reason));
        EXPECT_THAT(told, HasSubstr("failed, wrong file format?"));
        EXPECT_EQ(lumo.numberOfPoints() + lumo.numberOfTriangles(), 0U);
        EXPECT_TRUE(loads(fileOf(square), lumo, vZones)); // as if nothing had been
        EXPECT_EQ(lumo.numberOfTriangles(), 4U);
        EXPECT_TRUE(lumo.checkValidity(true, "usable"));
    }
}

/// Every other triangle of a fan first: all of them wait at the hub for their neighbours.
TEST(Load, ALargeFanInABadOrder)
{
    const TempWorkDir directory;
    CoutCapture output;
    constexpr int n = 5000;
    std::ostringstream fan;
    fan << "v 0 1e9 0;";
    for (int i = 0; i <= n; ++i) fan << "v " << i - n / 2 << ' ' << (i - n / 2) * (i - n / 2) << " 0;";
    for (const int first : {1, 2}) {
        for (int i = first; i <= n; i += 2) fan << "t 0 " << i << ' ' << i + 1 << ';';
    }
    Lumo_2D lumo, other;
    Zones vZones;
    ASSERT_TRUE(loads(fileOf(fan.str()), lumo, vZones));
    EXPECT_EQ(lumo.numberOfTriangles(), std::size_t(n));
    EXPECT_TRUE(lumo.checkValidity(false, "fan"));
    fan << "t 0 1 3;";
    EXPECT_FALSE(loads(fileOf(fan.str()), other, vZones));
    EXPECT_THAT(output.take(), HasSubstr("one side"));
}

TEST(Load, BordersTowardsFilledGapsBecomeConstraints)
{
    const TempWorkDir directory;
    // No longer convex: the edges 1 2 and 2 3 are border.
    const char* const text = "v 0 0 1;v 4 0 2;v 1 2 5;v 4 4 3;v 0 4 4;t 0 1 2;t 3 4 2;t 4 0 2;s 0 1;z;";
    Lumo_2D lumo;
    Zones vZones;
    ASSERT_TRUE(loads(fileOf(text), lumo, vZones));
    EXPECT_EQ(lumo.numberOfTriangles(), 4U);
    EXPECT_EQ(numSegments(lumo), 3U);
    EXPECT_TRUE(lumo.checkValidity(true, "filled"));
    EXPECT_EQ(vZones, Zones{nullptr});
}

TEST(Load, MisuseIsToldAndChangesNothing)
{
    const TempWorkDir directory;
    CoutCapture output;
    Lumo_2D lumo, other;
    insertNumbered(lumo, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    insertNumbered(other, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    Zones vZones;
    EXPECT_FALSE(lumo.saveTriangulation("no/such/place", {}));
    EXPECT_THAT(output.take(), HasSubstr("no/such/place can't be opened\n"));
    EXPECT_FALSE(lumo.saveTriangulation("file", {other.createZone(nullptr, ZL_GLOBAL)}));
    EXPECT_THAT(output.take(), HasSubstr("does not belong"));
    lumo.locate({0.1, 0.1, 0})->corner(0)->setHeight(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(lumo.saveTriangulation("file", {}));
    EXPECT_FALSE(std::filesystem::exists("file"));
    ASSERT_TRUE(other.saveTriangulation("file", {}));
    EXPECT_FALSE(lumo.load("file", vZones));
    EXPECT_THAT(output.take(), HasSubstr("function can only be called on an empty triangulation"));
    Lumo_2D empty;
    EXPECT_FALSE(empty.load("missing", vZones));
    EXPECT_THAT(output.take(), HasSubstr("missing can't be read\n"));
    EXPECT_FALSE(loads(number(30), empty, vZones));
    EXPECT_THAT(output.take(), HasSubstr("wrong filetype, expected 32 or 22"));
}

TEST(Load, ASubscriberThatThrowsLeavesAnEmptyTriangulation)
{
    const TempWorkDir directory;
    for (int n = 1;; ++n) {
        ASSERT_LT(n, 20);
        Lumo_2D lumo;
        lumo_test::Interrupter interrupter(n);
        lumo.subscribe(MSG_PROGRESS, &interrupter);
        Zones vZones;
        try {
            ASSERT_TRUE(loads(fileOf(square), lumo, vZones));
            EXPECT_GT(n, 1);
            break;
        } catch (const std::runtime_error&) {
            EXPECT_TRUE(vZones.empty());
            EXPECT_EQ(lumo.numberOfPoints(), 0U);
            EXPECT_TRUE(lumo.load("file", vZones)); // still heard: the counter goes on
            EXPECT_LT(interrupter.numLeft, 0);
        }
    }
}
