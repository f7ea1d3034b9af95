#include "output/WebSceneWriter.h"

#include "ConstraintGraph2.h"
#include "Lumo_2D.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <set>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CommaLocale;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

using Corners = std::array<std::uint32_t, 3>;

/// The bytes behind a name in a page, made without the library.
std::string bytesOf(const std::string& page, const std::string& name)
{
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::string begin = "<script type=\"text/plain\" data-block=\"" + name + "\">";
    std::string bytes;
    for (std::size_t at = 0; (at = page.find(begin, at)) != std::string::npos;) {
        at += begin.size();
        unsigned bits = 0, numBits = 0;
        for (; page[at] != '<' && page[at] != '='; ++at) {
            bits = bits << 6 | static_cast<unsigned>(digits.find(page[at]));
            numBits += 6;
            if (numBits < 8) continue;
            numBits -= 8;
            bytes += static_cast<char>(bits >> numBits & 255U);
        }
    }
    return bytes;
}

template <class T>
std::vector<T> blockOf(const std::string& page, const std::string& name)
{
    const std::string bytes = bytesOf(page, name);
    std::vector<T> v(bytes.size() / sizeof(T));
    std::memcpy(v.data(), bytes.data(), v.size() * sizeof(T));
    return v;
}

double numberOf(const std::string& page, const std::string& name, int k = 0)
{
    const char* p = page.c_str() + page.find("\"" + name + "\":") + name.size() + 3;
    for (; k > 0; --k) p = std::strchr(p, ',') + 1;
    return std::strtod(p + (*p == '[' ? 1 : 0), nullptr);
}

Corners cyclic(Corners t)
{
    while (t[0] > t[1] || t[0] > t[2]) t = {t[1], t[2], t[0]};
    return t;
}

/// Triangles by the numbers of their corners; those with a corner that has no number are left out.
std::set<Corners> cornersOf(const std::vector<Triangle2*>& vT, const std::map<Point2*, std::uint32_t>& mNumbers)
{
    std::set<Corners> s;
    for (const Triangle2* pT : vT) {
        Corners t{};
        bool bAll = true;
        for (int i = 0; i < 3; ++i) {
            const auto it = mNumbers.find(pT->corner(i));
            bAll = bAll && it != mNumbers.end();
            if (bAll) t[static_cast<std::size_t>(i)] = it->second;
        }
        if (bAll) s.insert(cyclic(t));
    }
    return s;
}

TEST(WebSceneWriterTest, pageHoldsAnotherSurface)
{
    const TempWorkDir directory;
    const CommaLocale locale;
    CoutCapture out;
    std::vector<Point2> vPoints = oracles::Dice(5).points(2000, 900.0, 700.0);
    for (Point2& p : vPoints) p.setCoords(5e6 + p.x(), 6e6 + p.y(), 300.0 + 0.1 * p.x());
    Lumo_2D lumo;
    std::vector<Point2*> vHandles;
    lumo.insert(vPoints, vHandles);
    lumo.remove(vHandles[7]);
    const std::vector<Segment2> vRing = {{{5e6 + 200, 6e6 + 200, 310}, {5e6 + 700, 6e6 + 210, 310}},
                                         {{5e6 + 700, 6e6 + 210, 310}, {5e6 + 400, 6e6 + 600, 310}},
                                         {{5e6 + 400, 6e6 + 600, 310}, {5e6 + 200, 6e6 + 200, 310}}};
    Zone2* const pZone = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
    vHandles[20]->setHeight(std::numeric_limits<double>::quiet_NaN());
    vHandles[30]->setHeight(std::numeric_limits<double>::max());
    ASSERT_TRUE(lumo.writeWebScene("page.html", {pZone, pZone}, "ft"));
    const std::string page = readFile("page.html");

    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    const auto vPositions = blockOf<float>(page, "positions");
    ASSERT_EQ(vPositions.size(), 3 * vVertices.size());
    std::map<Point2*, std::uint32_t> mNumbers;
    for (std::size_t v = 0; v < vVertices.size(); ++v) {
        if (vVertices[v] == vHandles[20] || vVertices[v] == vHandles[30]) continue;
        mNumbers[vVertices[v]] = static_cast<std::uint32_t>(v);
        const double aCoords[] = {vVertices[v]->x(), vVertices[v]->y(), vVertices[v]->z()};
        for (int k = 0; k < 3; ++k) {
            const double p = static_cast<double>(vPositions[3 * v + static_cast<std::size_t>(k)]);
            const double unit = numberOf(page, k == 2 ? "unitZ" : "unitXY");
            EXPECT_NEAR(numberOf(page, "center", k) + unit * p, aCoords[k], 1e-4) << "a float would be off by 0.25";
        }
    }
    const auto vTriangles = blockOf<std::uint32_t>(page, "triangles");
    std::set<Corners> sFound;
    for (std::size_t i = 0; i + 2 < vTriangles.size(); i += 3) {
        EXPECT_TRUE(sFound.insert(cyclic({vTriangles[i], vTriangles[i + 1], vTriangles[i + 2]})).second);
    }
    std::vector<Triangle2*> vT, vZoneT;
    lumo.getTrianglePointers(vT);
    EXPECT_EQ(sFound, cornersOf(vT, mNumbers));
    // The border's edges are those whose other direction is in no triangle.
    std::set<std::pair<std::uint32_t, std::uint32_t>> sEdges, sBorder;
    for (const Corners& t : sFound) {
        for (std::size_t i = 0; i < 3; ++i) sEdges.insert({t[i], t[(i + 1) % 3]});
    }
    const auto vBorder = blockOf<std::uint32_t>(page, "border");
    for (std::size_t i = 0; i + 1 < vBorder.size(); i += 2) sBorder.insert({vBorder[i], vBorder[i + 1]});
    for (const auto& [a, b] : sEdges) EXPECT_EQ(sBorder.count({a, b}), 1 - sEdges.count({b, a}));
    pZone->getTriangles(vZoneT);
    std::set<Corners> sZone;
    for (const std::uint32_t t : blockOf<std::uint32_t>(page, "zone1")) {
        sZone.insert(cyclic({vTriangles[3 * t], vTriangles[3 * t + 1], vTriangles[3 * t + 2]}));
    }
    EXPECT_EQ(sZone, cornersOf(vZoneT, mNumbers));
    std::vector<ConstraintSegment2*> vConstraints;
    lumo.getAliveConstraintSegments(vConstraints);
    EXPECT_EQ(blockOf<std::uint32_t>(page, "constraints").size(), 2 * vConstraints.size());
    EXPECT_EQ(blockOf<std::uint32_t>(page, "zone0border").size(), 2 * vConstraints.size());
    EXPECT_EQ(numberOf(page, "numTriangles"), static_cast<double>(vT.size()));
    EXPECT_NEAR(numberOf(page, "area"), 99000.0, 1e-4);
}

TEST(WebSceneWriterTest, longBlocksAndAnyMagnitudeAreMiswritten)
{
    const TempWorkDir directory;
    const CoutCapture out;
    constexpr std::uint32_t n = 1700001; // of three elements, the last one incomplete
    WebSceneWriter writer("page.html");
    ASSERT_TRUE(writer.begin());
    writer.beginBlock("numbers");
    for (std::uint32_t i = 0; i < n; ++i) writer.put(i * 2654435761U);
    writer.endBlock();
    ASSERT_TRUE(writer.finish());
    const auto vNumbers = blockOf<std::uint32_t>(readFile("page.html"), "numbers");
    ASSERT_EQ(vNumbers.size(), n);
    for (std::uint32_t i = 0; i < n; ++i) ASSERT_EQ(vNumbers[i], i * 2654435761U);

    for (const double size : {0.0, 5e-324, 1e-200, 1.0, 5e6, 1e300, std::numeric_limits<double>::max()}) {
        WebSceneHead head;
        head.setRange({-size, size / 2.0, -size}, {size, size, size});
        for (int k = 0; k < 3; ++k) {
            const double from = static_cast<double>(head.normalize(k, k == 1 ? size / 2.0 : -size));
            const double to = static_cast<double>(head.normalize(k, size));
            EXPECT_TRUE(std::fabs(from) <= 2.0 && std::fabs(to) <= 2.0) << size;
            EXPECT_TRUE(size < 1e-300 || k == 1 || (from < -0.4 && to > 0.4)) << size;
        }
    }
}

TEST(WebSceneWriterTest, misuseWritesAPage)
{
    const TempWorkDir directory;
    CoutCapture out;
    Lumo_2D lumo, other;
    EXPECT_FALSE(lumo.writeWebScene("page.html"));
    EXPECT_NE(out.take().find("no area"), std::string::npos);
    for (Lumo_2D* p : {&lumo, &other}) p->insert(std::vector<Point2>{{0, 0, 1}, {4, 0, 1}, {0, 4, 1}});
    for (Zone2* pZone : {static_cast<Zone2*>(nullptr), other.createZone(nullptr, ZL_GLOBAL)}) {
        EXPECT_FALSE(lumo.writeWebScene("page.html", {pZone}));
        EXPECT_FALSE(lumo.writeObj("page.html", {pZone}));
        EXPECT_NE(out.take().find("belongs to another triangulation"), std::string::npos);
    }
    EXPECT_EQ(readFile("page.html"), "");
    for (const char* pName : {"no/where.html", static_cast<const char*>(nullptr), "/dev/full"}) {
        EXPECT_FALSE(lumo.writeWebScene(pName, nullptr));
        EXPECT_NE(out.take().find("Can't write"), std::string::npos);
    }
}

} // namespace
