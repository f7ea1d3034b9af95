#include "LumoExport.h"

#include "engine/Dt2.h"
#include "oracles/Corpus.h"
#include "support/TestOutput.h"

#include "LumoException.h"
#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CommaLocale;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

using Points = std::vector<Point2>;
using Pairs = std::vector<std::pair<int, int>>;

LumoExport exported(const Points& vPoints, bool bCustomIndices = false)
{
    Lumo_2D lumo;
    lumo.insert(vPoints);
    LumoExport record;
    lumo.exportTriangulation(record, bCustomIndices, false);
    return record;
}

/// The numbers of the lines that begin with the key, read by strtod.
std::vector<double> numbersOf(const std::string& text, const std::string& key)
{
    std::vector<double> v;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind(key + " ", 0) != 0) continue;
        const char* pos = line.c_str() + key.size();
        for (char* end = nullptr;; pos = end) {
            const double d = std::strtod(pos, &end);
            if (end == pos) break;
            v.push_back(d);
        }
        EXPECT_EQ(*pos, '\0') << line;
    }
    return v;
}

/// Every pair of triangles that have two vertices in common, by looking at all pairs.
Pairs neighboursByBruteForce(const LumoExport& record)
{
    Pairs vPairs;
    for (int t = 0; t < record.numTriangles; ++t) {
        for (int u = t + 1; u < record.numTriangles; ++u) {
            int a[3], b[3], numShared = 0;
            record.getCornerIndices(t, a[0], a[1], a[2]);
            record.getCornerIndices(u, b[0], b[1], b[2]);
            for (const int i : a) {
                numShared += static_cast<int>(std::count(b, b + 3, i));
            }
            if (numShared == 2) vPairs.emplace_back(t, u);
        }
    }
    return vPairs;
}

TEST(LumoExportTest, recordDiffersFromTheTriangulation)
{
    for (const oracles::CorpusEntry& entry : oracles::plainCorpus(150)) {
        const oracles::FailureKeeper keeper(entry);
        Lumo_2D lumo;
        Points vPoints(entry.vPoints);
        for (std::size_t i = 0; i < vPoints.size(); ++i) {
            vPoints[i].setCustomIndex(static_cast<int>(i) - 1);
        }
        std::vector<Point2*> vHandles;
        lumo.insert(vPoints, vHandles);
        if (vHandles.size() > 5) lumo.remove(vHandles[3]);
        LumoExport record;
        lumo.exportTriangulation(record, true, false);
        ASSERT_EQ(static_cast<std::size_t>(record.numPoints), lumo.numberOfPoints());
        ASSERT_EQ(static_cast<std::size_t>(record.numTriangles), lumo.numberOfTriangles());
        ASSERT_EQ(record.numCustomIndices, record.numPoints);
        EXPECT_EQ(record.dim, 3);
        // Vertices by their custom index; triangles are there with their corners in this turn.
        std::set<std::array<int, 3>> sTriangles;
        for (int t = 0; t < record.numTriangles; ++t) {
            int a = 0, b = 0, c = 0;
            record.getCornerIndices(t, a, b, c);
            const int* const i = record.aCustomIndices;
            sTriangles.insert({i[a], i[b], i[c]});
            sTriangles.insert({i[b], i[c], i[a]});
            sTriangles.insert({i[c], i[a], i[b]});
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        for (const Triangle2* pT : vT) {
            EXPECT_EQ(sTriangles.count({pT->corner(0)->getCustomIndex(), pT->corner(1)->getCustomIndex(),
                                        pT->corner(2)->getCustomIndex()}),
                      1U);
        }
        for (int v = 0; v < record.numPoints; ++v) {
            double x = 0.0, y = 0.0, z = 0.0;
            record.getCoordinates(v, x, y, z);
            const Point2& p = vPoints[static_cast<std::size_t>(record.aCustomIndices[v] + 1)];
            EXPECT_TRUE(p.samePoint(Point2(x, y, z)));
        }
        Pairs vPairs;
        record.extractTriangleNeighborships(vPairs);
        std::sort(vPairs.begin(), vPairs.end());
        EXPECT_EQ(vPairs, neighboursByBruteForce(record));
    }
}

TEST(LumoExportTest, copiesShareArraysOrLoseThem)
{
    const Points vPoints = {{0, 0, 1}, {3, 0, 2}, {0, 4, 3}, {5, 5, 4}};
    LumoExport a = exported(vPoints, true);
    LumoExport b(a), c;
    c = b;
    c = *&c;
    EXPECT_NE(a.aCoords, b.aCoords);
    EXPECT_NE(a.aTriangles, c.aTriangles);
    a.aCoords[0] = 77.0;
    a.aTriangles[0] = 99;
    a = LumoExport();
    EXPECT_EQ(a.aCoords, nullptr);
    for (const LumoExport* p : {&b, &c}) {
        ASSERT_EQ(p->numPoints, 4);
        ASSERT_EQ(p->numTriangles, 2);
        EXPECT_NE(p->aCoords[0], 77.0);
        EXPECT_NE(p->aTriangles[0], 99);
        EXPECT_EQ(p->aCustomIndices[3], -1);
        Pairs vPairs(1);
        p->extractTriangleNeighborships(vPairs);
        EXPECT_EQ(vPairs, (Pairs{{0, 0}, {0, 1}})) << "appended, not overwritten";
    }
    LumoExport d(std::move(b));
    EXPECT_EQ(d.numPoints, 4);
    EXPECT_EQ(b.aCoords, nullptr); // NOLINT(bugprone-use-after-move): a moved-from record is empty
}

TEST(LumoExportTest, aRecordThatIsNotEmptyIsOverwritten)
{
    Lumo_2D lumo;
    lumo.insert({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}});
    LumoExport record;
    lumo.exportTriangulation(record, true, false);
    const double* const pCoords = record.aCoords;
    CoutCapture out;
    EXPECT_THROW(lumo.exportTriangulation(record, true, true), LumoException);
    EXPECT_NE(out.take().find("lumoExport.aTriangles==0"), std::string::npos);
    EXPECT_EQ(record.aCoords, pCoords);
    EXPECT_EQ(lumo.numberOfPoints(), 3U) << "not cleared either";
    LumoExport counted;
    counted.numCustomIndices = 1;
    EXPECT_THROW(lumo.exportTriangulation(counted, false, false), LumoException);
}

TEST(LumoExportTest, clearingKeepsPointsOrLosesSettings)
{
    Lumo_2D lumo;
    lumo.setNumCPU(3);
    lumo.setFastMode(true);
    lumo.insert({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}});
    LumoExport first, second;
    lumo.exportTriangulation(first, false, true);
    EXPECT_EQ(first.numTriangles, 1);
    EXPECT_EQ(first.numCustomIndices, 0);
    EXPECT_EQ(first.aCustomIndices, nullptr);
    EXPECT_EQ(lumo.numberOfPoints(), 0U);
    EXPECT_FALSE(lumo.hasArea());
    EXPECT_EQ(lumo.getImpl()->numCPU, 3);
    EXPECT_TRUE(lumo.getImpl()->bFastMode);
    lumo.insert({{7, 7, 1}, {8, 8, 2}});
    lumo.exportTriangulation(second, true, true);
    EXPECT_EQ(second.numPoints, 2);
    EXPECT_EQ(second.numTriangles, 0);
    EXPECT_EQ(second.aCustomIndices[1], -1);
}

TEST(LumoExportTest, objFileLosesBitsOrFollowsTheLocale)
{
    const TempWorkDir directory;
    const CommaLocale locale;
    Points vPoints;
    for (int i = 0; i < 1200; ++i) { // vertex numbers with a separator of thousands, if any
        vPoints.emplace_back(21530000.0 + 0.001 * ((i * 7) % 1201), 67820000.0 + 0.001 * ((i * i) % 1301),
                             1.0 / (i + 1));
    }
    vPoints.emplace_back(21530000.0, std::nextafter(67820000.0, 1e9), -5e-324);
    Lumo_2D lumo;
    lumo.insert(vPoints);
    LumoExport record;
    lumo.exportTriangulation(record, false, false);
    CoutCapture out;
    ASSERT_TRUE(lumo.writeObj("lumo.obj"));
    EXPECT_EQ(out.take(), "writing lumo.obj\n");
    ASSERT_TRUE(record.writeObj("record.obj"));
    const std::string text = readFile("record.obj");
    EXPECT_EQ(text.rfind("# Written by Lumo2D\nv ", 0), 0U);
    EXPECT_EQ(text, readFile("lumo.obj"));
    const auto n = static_cast<std::size_t>(record.numPoints);
    EXPECT_EQ(numbersOf(text, "v"), std::vector<double>(record.aCoords, record.aCoords + 3 * n));
    std::vector<double> vFaces;
    for (int i = 0; i < 3 * record.numTriangles; ++i) {
        vFaces.push_back(record.aTriangles[i] + 1);
    }
    EXPECT_EQ(numbersOf(text, "f"), vFaces);
}

TEST(LumoExportTest, recordsOfTwoCoordinatesOrOfNothingAreMiswritten)
{
    const TempWorkDir directory;
    LumoExport flat;
    flat.dim = 2;
    flat.numPoints = 3;
    flat.numTriangles = 1;
    flat.aCoords = new double[6]{0.5, 0, 1, 0, 0, 2};
    flat.aTriangles = new std::int32_t[3]{0, 1, 2};
    double x = 0.0, y = 0.0, z = 9.0;
    LumoExport(flat).getCoordinates(2, x, y, z);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 2.0);
    EXPECT_EQ(z, 0.0);
    CoutCapture out;
    ASSERT_TRUE(flat.writeObj("flat.obj"));
    EXPECT_EQ(readFile("flat.obj"), "# Written by Lumo2D\nv 0.5 0 0\nv 1 0 0\nv 0 2 0\nf 1 2 3\n");
    ASSERT_TRUE(LumoExport().writeObj("empty.obj"));
    EXPECT_EQ(readFile("empty.obj"), "# Written by Lumo2D\n");
    out.take();
    EXPECT_FALSE(flat.writeObj("missing/dir.obj"));
    EXPECT_EQ(out.take(), "Can't write missing/dir.obj\n");
    EXPECT_FALSE(flat.writeObj(nullptr));
    EXPECT_FALSE(Lumo_2D().writeObj("missing/dir.obj"));
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_FALSE(flat.writeObj("/dev/full")) << "a full disk goes unnoticed";
    }
}

TEST(LumoExportTest, printLeavesSomethingOut)
{
    CoutCapture out;
    exported({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}, {5, 5, 4}}, true).print();
    const std::string withIndices = out.take();
    EXPECT_NE(withIndices.find(" (customIndex=-1"), std::string::npos);
    exported({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}, {5, 5, 4}}, false).print();
    const std::string without = out.take();
    EXPECT_EQ(without.find("customIndex"), std::string::npos);
    EXPECT_EQ(std::count(without.begin(), without.end(), '\n'), 4 + 2 + 1);
}

} // namespace
