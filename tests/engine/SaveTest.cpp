// Saved states: restored exactly, and from a broken file nothing at all.

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
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <set>

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;
using lumo_test::writeFile;
using ::testing::HasSubstr;

namespace
{

using Zones = std::vector<Zone2*>;

// ---- files made without the library ---------------------------------------------------------------------------------

struct FileContent
{
    std::vector<std::array<double, 3>> vVertices;
    std::vector<std::array<int, 3>> vTriangles;
    std::vector<std::array<int, 2>> vSegments;
    std::vector<std::vector<std::array<int, 2>>> vvZones;
    int fileType = 32;
};

std::string bytesOf(std::uint64_t bits, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(bits >> (8 * i) & 255U);
    return bytes;
}

std::string number(std::size_t n)
{
    return bytesOf(n, 4);
}

template <std::size_t n>
std::string numbers(const std::vector<std::array<int, n>>& v)
{
    std::string bytes;
    for (const std::array<int, n>& a : v) {
        for (const int i : a) bytes += bytesOf(static_cast<std::uint64_t>(i), 4);
    }
    return bytes;
}

/// Vertices have the custom indices 1000, 1001...
std::string bytesOf(const FileContent& c)
{
    std::string s = number(static_cast<std::size_t>(c.fileType)) + number(c.vVertices.size()) +
                    number(c.vSegments.size()) + number(c.vTriangles.size()) + number(c.vvZones.size());
    for (std::size_t i = 0; i < c.vVertices.size(); ++i) {
        for (int axis = 0; axis < (c.fileType == 32 ? 3 : 2); ++axis) {
            std::uint64_t bits = 0;
            std::memcpy(&bits, &c.vVertices[i][static_cast<std::size_t>(axis)], 8);
            s += bytesOf(bits, 8);
        }
        s += number(1000 + i);
    }
    s += numbers(c.vTriangles) + numbers(c.vSegments);
    for (const auto& vZone : c.vvZones) s += number(vZone.size()) + numbers(vZone);
    return s + number(99);
}

/// A square with a vertex inside, constraints around two triangles, which are a zone, in the order of the writer.
FileContent square()
{
    return {{{0, 0, 1}, {4, 0, 2}, {1, 2, 5}, {4, 4, 3}, {0, 4, 4}},
            {{0, 1, 2}, {1, 3, 2}, {3, 4, 2}, {4, 0, 2}},
            {{0, 1}, {0, 2}, {1, 3}, {2, 3}},
            {{{2, 0}, {0, 1}, {3, 2}, {1, 3}}}};
}

bool loads(const std::string& bytes, Lumo_2D& lumo, Zones& vZones)
{
    writeFile("file", bytes);
    return lumo.load("file", vZones);
}

/// A refused file leaves an empty object, an accepted one a valid triangulation; both can go on.
void expectSound(const std::string& bytes)
{
    Lumo_2D lumo;
    Zones vZones;
    const bool bLoaded = loads(bytes, lumo, vZones);
    if (bLoaded) {
        EXPECT_TRUE(lumo.checkValidity(false, "loaded"));
        for (Zone2* pZone : vZones) EXPECT_TRUE(pZone == nullptr || pZone->getNumberOfTriangles() > 0);
    } else {
        EXPECT_EQ(lumo.numberOfPoints(), 0U);
        EXPECT_TRUE(vZones.empty());
    }
    lumo.insert(std::vector<Point2>{{0.5, 0.25, 0}, {3.5, 1, 0}, {1, 3, 0}});
    EXPECT_TRUE(lumo.hasArea());
    EXPECT_TRUE(lumo.checkValidity(false, "went on"));
}

// ---- what a triangulation is made of --------------------------------------------------------------------------------

using Position = std::array<double, 4>; ///< and the custom index

Position positionOf(const Point2* p)
{
    return {p->x(), p->y(), p->z(), static_cast<double>(p->getCustomIndex())};
}

template <class Triangles>
std::set<std::array<Position, 3>> positionsOf(const Triangles& source)
{
    std::vector<Triangle2*> vT;
    source(vT);
    std::set<std::array<Position, 3>> s;
    for (const Triangle2* pT : vT) {
        std::array<Position, 3> corners{positionOf(pT->corner(0)), positionOf(pT->corner(1)),
                                        positionOf(pT->corner(2))};
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        s.insert(corners);
    }
    return s;
}

auto allOf(const Lumo_2D& lumo)
{
    return positionsOf([&lumo](std::vector<Triangle2*>& vT) { lumo.getTrianglePointers(vT); });
}

auto zoneOf(const Zone2* pZone)
{
    return positionsOf([pZone](std::vector<Triangle2*>& vT) { pZone->getTriangles(vT); });
}

std::set<std::array<Position, 2>> segmentsOf(const Lumo_2D& lumo)
{
    std::vector<ConstraintSegment2*> v;
    lumo.getAliveConstraintSegments(v);
    std::set<std::array<Position, 2>> s;
    for (const ConstraintSegment2* p : v) {
        std::array<Position, 2> ends{positionOf(p->getSrc()), positionOf(p->getTrg())};
        std::sort(ends.begin(), ends.end());
        s.insert(ends);
    }
    return s;
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
    if (pGraph != nullptr) v.push_back(lumo.createZone({pGraph}, ZL_GROW, center));
    if (pGraph != nullptr && pGraph->isPolygon()) {
        v.push_back(lumo.createZone(pGraph, ZL_INSIDE));
        v.push_back(lumo.createZone(pGraph, ZL_OUTSIDE));
    }
    return v;
}

} // namespace

TEST(Save, RestoresTheWholeCorpusAndSavesTheSameFileAgain)
{
    const TempWorkDir directory;
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(300)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo;
        insertNumbered(lumo, entry.vPoints);
        ConstraintGraph2* pGraph = nullptr;
        if (!entry.vSegments.empty()) pGraph = lumo.createConstraint(entry.vSegments, CIS_CONSTRAINED_DELAUNAY);
        const Zones vZones = lumo.hasArea() ? zonesIn(lumo, pGraph) : Zones();
        ASSERT_TRUE(lumo.saveTriangulation("first", vZones));

        Lumo_2D copy;
        Zones vLoaded;
        ASSERT_TRUE(copy.load("first", vLoaded));
        EXPECT_EQ(allOf(copy), allOf(lumo));
        EXPECT_TRUE(copy.checkValidity(true, "loaded"));
        const auto segments = segmentsOf(copy), given = segmentsOf(lumo);
        EXPECT_TRUE(std::includes(segments.begin(), segments.end(), given.begin(), given.end()));
        ASSERT_EQ(vLoaded.size(), vZones.size());
        for (std::size_t i = 0; i < vZones.size(); ++i) {
            const bool bEmpty = vZones[i] == nullptr || zoneOf(vZones[i]).empty();
            ASSERT_EQ(vLoaded[i] == nullptr, bEmpty);
            if (bEmpty) continue;
            EXPECT_EQ(vLoaded[i]->getZoneLocation(), ZL_INSIDE);
            EXPECT_EQ(zoneOf(vLoaded[i]), zoneOf(vZones[i])) << i;
        }
        ASSERT_TRUE(copy.saveTriangulation("second", vLoaded));
        EXPECT_EQ(readFile("first"), readFile("second"));

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
        Lumo_2D lumo;
        insertNumbered(lumo, dice.points(60, 9, 9));
        lumo.cutTriangles({1, 1, 0}, {8, 7, 0}, false); // edges that aren't Delaunay
        std::vector<Triangle2*> vT, vRandom;
        lumo.getTrianglePointers(vT);
        for (Triangle2* pT : vT) {
            if (dice.below(5) < round % 5) vRandom.push_back(pT);
        }
        const Zones vZones{lumo.createZone(vRandom), lumo.createZone({vT[0], vT[1]})};
        ASSERT_TRUE(lumo.saveZones("first", vZones));
        Lumo_2D copy;
        Zones vLoaded;
        ASSERT_TRUE(copy.load("first", vLoaded));
        EXPECT_TRUE(copy.checkValidity(false, "loaded"));
        ASSERT_EQ(vLoaded.size(), 2U);
        ASSERT_EQ(vLoaded[0] == nullptr, vRandom.empty());
        if (!vRandom.empty()) {
            EXPECT_EQ(zoneOf(vLoaded[0]), zoneOf(vZones[0]));
        }
        EXPECT_EQ(zoneOf(vLoaded[1]), zoneOf(vZones[1]));
        ASSERT_TRUE(copy.saveZones("second", vLoaded));
        EXPECT_EQ(readFile("first"), readFile("second"));
        ASSERT_TRUE(vLoaded[1]->save("one"));
        copy.insert(dice.points(60, 9, 9));
        EXPECT_TRUE(copy.checkValidity(false, "went on"));
        EXPECT_NEAR(vLoaded[1]->getArea2D(), vT[0]->getArea2D() + vT[1]->getArea2D(), 1e-9);
    }
}

TEST(Save, HasTheDocumentedFileForm)
{
    const TempWorkDir directory;
    for (const int fileType : {32, 22}) {
        FileContent content = square();
        content.fileType = fileType;
        Lumo_2D lumo;
        Zones vZones;
        ASSERT_TRUE(loads(bytesOf(content), lumo, vZones));
        EXPECT_EQ(vZones[0]->getArea2D(), 10.0);
        ASSERT_TRUE(lumo.saveTriangulation("again", vZones));
        content.fileType = 32;
        for (auto& vertex : content.vVertices) vertex[2] = fileType == 22 ? 0.0 : vertex[2];
        EXPECT_EQ(readFile("again"), bytesOf(content));
    }
    Lumo_2D empty;
    ASSERT_TRUE(empty.saveTriangulation("empty", {}));
    EXPECT_EQ(readFile("empty"), number(32) + number(0) + number(0) + number(0) + number(0) + number(99));
}

TEST(Save, WaitingPointsAndSegmentsGoOnWaiting)
{
    const TempWorkDir directory;
    Lumo_2D lumo, copy;
    insertNumbered(lumo, {{0, 0, 1}, {3, 3, 2}, {1, 1, 3}});
    lumo.createConstraint({Segment2({0, 0, 0}, {3, 3, 0})}, CIS_CONSTRAINED_DELAUNAY);
    ASSERT_TRUE(lumo.saveTriangulation("first", {}));
    Zones vZones;
    ASSERT_TRUE(copy.load("first", vZones));
    EXPECT_EQ(segmentsOf(copy), segmentsOf(lumo));
    ASSERT_TRUE(copy.saveTriangulation("second", {}));
    EXPECT_EQ(readFile("first"), readFile("second"));

    // With area, what waits is applied, so that the file can tell it.
    copy.insert({0, 5, 0});
    ASSERT_TRUE(copy.saveTriangulation("third", {}));
    EXPECT_EQ(segmentsOf(copy).size(), 2U);
    Lumo_2D third;
    ASSERT_TRUE(third.load("third", vZones));
    EXPECT_EQ(segmentsOf(third), segmentsOf(copy));
}

TEST(Load, EveryPrefixAndEveryFlippedByteLeavesSomethingSound)
{
    const TempWorkDir directory;
    const CoutCapture quiet;
    const std::string good = bytesOf(square());
    for (std::size_t n = 0; n < good.size(); ++n) {
        Lumo_2D lumo;
        Zones vZones;
        EXPECT_FALSE(loads(good.substr(0, n), lumo, vZones)) << n;
    }
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const int flip : {0x01, 0x80, 0x7F, 0xFF}) {
            SCOPED_TRACE(i);
            std::string bytes = good;
            bytes[i] = static_cast<char>(bytes[i] ^ flip);
            expectSound(bytes);
        }
    }
}

TEST(Load, RefusesWhatIsNoTriangulation)
{
    const TempWorkDir directory;
    CoutCapture output;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // A ring of triangles that goes around its centre twice: each is fine, neighbours are, the border isn't.
    FileContent twice;
    for (int i = 0; i < 10; ++i) {
        const double angle = 4.0 * 3.14159265358979 * i / 10.0;
        for (const double r : {1.0, 2.0})
            twice.vVertices.push_back({r * std::cos(angle), r * std::sin(angle + 1e-3 * i), 0});
        const int a = 2 * i, b = 2 * ((i + 1) % 10);
        twice.vTriangles.push_back({a, a + 1, b + 1});
        twice.vTriangles.push_back({a, b + 1, b});
    }
    const std::vector<std::pair<const char*, std::function<void(FileContent&)>>> vEdits = {
        {"finite", [&](FileContent& c) { c.vVertices[1][2] = nan; }},
        {"no vertex", [](FileContent& c) { c.vTriangles[0][0] = 5; }},
        {"no vertex", [](FileContent& c) { c.vSegments[0][0] = -1; }},
        {"no vertex", [](FileContent& c) { c.vvZones[0][0][1] = 7; }},
        {"counterclockwise",
         [](FileContent& c) {
             c.vTriangles[0] = {0, 2, 1};
         }},
        {"counterclockwise",
         [](FileContent& c) {
             c.vTriangles[0] = {0, 1, 1};
         }},
        {"one side",
         [](FileContent& c) {
             c.vTriangles.push_back({0, 1, 2});
         }},
        {"overlap",
         [](FileContent& c) {
             c.vTriangles.push_back({0, 1, 3});
         }},
        {"has no triangle",
         [](FileContent& c) {
             c.vVertices.push_back({2, 2, 0});
         }},
        // One in another, sharing nothing; and at the same places.
        {"overlap",
         [](FileContent& c) {
             c.vVertices.insert(c.vVertices.end(), {{2.5, 2, 0}, {3, 2, 0}, {3, 2.5, 0}});
             c.vTriangles.push_back({5, 6, 7});
         }},
        {"overlap",
         [](FileContent& c) {
             c.vVertices.insert(c.vVertices.end(), {{0, 0, 0}, {4, 0, 0}, {1, 2, 0}});
             c.vTriangles[0] = {5, 6, 7};
         }},
        // A vertex in the middle of an edge of its neighbour.
        {"overlap",
         [](FileContent& c) {
             c.vVertices.push_back({2, 0, 0});
             c.vVertices.push_back({2, -1, 0});
             c.vTriangles.push_back({0, 6, 5});
         }},
        {"overlap", [&](FileContent& c) { c = twice; }},
        {"no edge",
         [](FileContent& c) {
             c.vSegments.push_back({0, 3});
         }},
        {"no edge",
         [](FileContent& c) {
             c.vSegments.push_back({3, 3});
         }},
        {"comes twice",
         [](FileContent& c) {
             c.vSegments.push_back({1, 0});
         }},
        {"isn't closed", [](FileContent& c) { c.vvZones[0].pop_back(); }},
        {"isn't closed",
         [](FileContent& c) {
             c.vvZones[0] = {{0, 1}, {1, 0}};
         }},
        {"border of a zone is no",
         [](FileContent& c) {
             c.vvZones[0] = {{1, 0}, {0, 4}, {4, 3}, {3, 1}};
         }},
        {"no triangles", [](FileContent& c) { c.vTriangles.clear(); }},
        {"at one place",
         [](FileContent& c) {
             c = {{{1, 1, 0}, {1, 1, 5}}, {}, {}, {}};
         }},
    };
    for (const auto& [reason, edit] : vEdits) {
        FileContent content = square();
        edit(content);
        output.take();
        Lumo_2D lumo;
        Zones vZones;
        EXPECT_FALSE(loads(bytesOf(content), lumo, vZones)) << reason;
        const std::string text = output.take();
        EXPECT_THAT(text, HasSubstr(reason));
        EXPECT_THAT(text, HasSubstr("failed, wrong file format?"));
        EXPECT_EQ(lumo.numberOfPoints(), 0U);
    }
}

TEST(Load, BordersTowardsFilledGapsBecomeConstraints)
{
    const TempWorkDir directory;
    FileContent content = square();
    content.vTriangles.erase(content.vTriangles.begin() + 1); // no longer convex: the edges 1 2 and 2 3 are border
    content.vSegments = {{0, 1}};
    content.vvZones = {{}};
    Lumo_2D lumo;
    Zones vZones;
    ASSERT_TRUE(loads(bytesOf(content), lumo, vZones));
    EXPECT_EQ(lumo.numberOfTriangles(), 4U);
    EXPECT_EQ(segmentsOf(lumo).size(), 3U);
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
    struct Thrower : MsgBase
    {
        void update(MsgType, const char*, double) override
        {
            if (--numLeft == 0) throw std::runtime_error("no more");
        }
        int numLeft = 0;
    };
    const TempWorkDir directory;
    for (int n = 1;; ++n) {
        ASSERT_LT(n, 20);
        Lumo_2D lumo;
        Thrower thrower;
        thrower.numLeft = n;
        lumo.subscribe(MSG_PROGRESS, &thrower);
        Zones vZones;
        try {
            ASSERT_TRUE(loads(bytesOf(square()), lumo, vZones));
            EXPECT_GT(n, 1);
            break;
        } catch (const std::runtime_error&) {
            EXPECT_TRUE(vZones.empty());
            EXPECT_EQ(lumo.numberOfPoints(), 0U);
            EXPECT_TRUE(lumo.load("file", vZones)); // still heard: the counter goes on
            EXPECT_LT(thrower.numLeft, 0);
        }
    }
}
