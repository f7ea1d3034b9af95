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

/// The numbers of the lines that begin with the key, read by strtod.
std::vector<double> numbersOf(const std::string& text, const std::string& key)
{
    std::vector<double> v;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind(key + " ", 0) != 0) continue;
        char* pos = line.data() + key.size();
        while (*pos == ' ') v.push_back(std::strtod(pos + 1, &pos));
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
            for (const int i : a) numShared += static_cast<int>(std::count(b, b + 3, i));
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
        for (std::size_t i = 0; i < vPoints.size(); ++i) vPoints[i].setCustomIndex(static_cast<int>(i) - 1);
        std::vector<Point2*> vHandles;
        lumo.insert(vPoints, vHandles);
        if (vHandles.size() > 5) lumo.remove(vHandles[3]);
        LumoExport record;
        lumo.exportTriangulation(record, true, false);
        ASSERT_EQ(static_cast<std::size_t>(record.numPoints), lumo.numberOfPoints());
        ASSERT_EQ(record.numCustomIndices, record.numPoints);
        // Vertices by their custom index; triangles with their corners in this turn, the least one first.
        const auto turned = [](std::array<int, 3> a) {
            std::rotate(a.begin(), std::min_element(a.begin(), a.end()), a.end());
            return a;
        };
        std::multiset<std::array<int, 3>> sExported, sExpected;
        for (int t = 0; t < record.numTriangles; ++t) {
            int a = 0, b = 0, c = 0;
            record.getCornerIndices(t, a, b, c);
            const int* const i = record.aCustomIndices;
            sExported.insert(turned({i[a], i[b], i[c]}));
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        for (const Triangle2* pT : vT) {
            const auto index = [pT](int i) { return pT->corner(i)->getCustomIndex(); };
            sExpected.insert(turned({index(0), index(1), index(2)}));
        }
        EXPECT_EQ(sExported, sExpected);
        for (int v = 0; v < record.numPoints; ++v) {
            double x = 0.0, y = 0.0, z = 0.0;
            record.getCoordinates(v, x, y, z);
            EXPECT_TRUE(vPoints[static_cast<std::size_t>(record.aCustomIndices[v] + 1)].samePoint(Point2(x, y, z)));
        }
        Pairs vPairs;
        record.extractTriangleNeighborships(vPairs);
        std::sort(vPairs.begin(), vPairs.end());
        EXPECT_EQ(vPairs, neighboursByBruteForce(record));
    }
}

TEST(LumoExportTest, copiesShareArraysOrLoseThem)
{
    Lumo_2D lumo;
    lumo.insert({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}, {5, 5, 4}});
    LumoExport a;
    lumo.exportTriangulation(a, true, false);
    LumoExport b(a), c;
    c = b;
    c = *&c;
    a.aCoords[0] = 77.0;
    a.aTriangles[0] = 99;
    a = LumoExport();
    for (const LumoExport* p : {&b, &c}) {
        EXPECT_TRUE(p->numPoints == 4 && p->aCoords[0] != 77.0 && p->aTriangles[0] != 99);
        EXPECT_EQ(p->aCustomIndices[3], -1);
        Pairs vPairs(1);
        p->extractTriangleNeighborships(vPairs);
        EXPECT_EQ(vPairs, (Pairs{{0, 0}, {0, 1}})) << "appended, not overwritten";
    }
    EXPECT_NE(b.aCoords, c.aCoords);
    const LumoExport d(std::move(b));
    EXPECT_EQ(d.numPoints, 4);
    EXPECT_EQ(b.aCoords, nullptr); // NOLINT(bugprone-use-after-move): a moved-from record is empty
}

TEST(LumoExportTest, aRecordIsOverwrittenOrClearingLosesSettings)
{
    Lumo_2D lumo;
    lumo.setNumCPU(3);
    lumo.insert({{0, 0, 1}, {3, 0, 2}, {0, 4, 3}});
    LumoExport record, counted;
    counted.numCustomIndices = 1;
    CoutCapture out;
    EXPECT_THROW(lumo.exportTriangulation(counted, false, true), LumoException) << "not empty";
    EXPECT_NE(out.take().find("lumoExport."), std::string::npos);
    EXPECT_EQ(lumo.numberOfPoints(), 3U) << "not cleared either";
    lumo.exportTriangulation(record, false, true);
    EXPECT_EQ(record.numTriangles, 1);
    EXPECT_EQ(record.aCustomIndices, nullptr);
    EXPECT_EQ(lumo.numberOfPoints(), 0U);
    EXPECT_EQ(lumo.getImpl()->numCPU, 3);
    EXPECT_THROW(lumo.exportTriangulation(record, true, true), LumoException);
}

TEST(LumoExportTest, objFileLosesBitsOrFollowsTheLocale)
{
    const TempWorkDir directory;
    const CommaLocale locale;
    Points vPoints; // enough for vertex numbers with a separator of thousands, if any
    for (int i = 0; i < 1200; ++i)
        vPoints.emplace_back(2e7 + 0.001 * (i * 7 % 1201), 6e7 + 0.1 * (i * i % 1301), 1. / i);
    vPoints[0] = Point2(2e7, std::nextafter(6e7, 1e9), -5e-324);
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
    for (int i = 0; i < 3 * record.numTriangles; ++i) vFaces.push_back(record.aTriangles[i] + 1);
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
    EXPECT_TRUE(x == 0.0 && y == 2.0 && z == 0.0);
    CoutCapture out;
    ASSERT_TRUE(flat.writeObj("flat.obj"));
    EXPECT_EQ(readFile("flat.obj"), "# Written by Lumo2D\nv 0.5 0 0\nv 1 0 0\nv 0 2 0\nf 1 2 3\n");
    ASSERT_TRUE(LumoExport().writeObj("empty.obj"));
    EXPECT_EQ(readFile("empty.obj"), "# Written by Lumo2D\n");
    out.take();
    EXPECT_FALSE(flat.writeObj("missing/dir.obj"));
    EXPECT_EQ(out.take(), "Can't write missing/dir.obj\n");
    EXPECT_FALSE(flat.writeObj(nullptr));
    EXPECT_FALSE(flat.writeObj("/dev/full")) << "a full disk goes unnoticed";
}

} // namespace
