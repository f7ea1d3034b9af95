#include "Mesh3.h"

#include "repair/PatchOracle.h"
#include "support/TestOutput.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

using namespace ORBI_LUMO25D;

TEST(Mesh3, CornersAreWeldedOrLinkedWrongly)
{
    const Point2 a(-0.0, 0, 0), b(1, 0, 0), c(1, 1, 0), d(0.0, 1, 0), up(0, 0, 1), a2(0, -0.0, 0);
    const double nan = std::nan("");
    testing::internal::CaptureStdout();
    Mesh3 mesh({a, b, c, a2, c, d, a, a2, b, a, b, Point2(nan, 0, 0), a});
    EXPECT_NE(testing::internal::GetCapturedStdout().find("3 triangles that aren't proper ones"), std::string::npos);
    EXPECT_EQ(mesh.numberOfVertices(), 4U);
    EXPECT_EQ(mesh.numberOfTriangles(), 2U);
    std::vector<Triangle2*> vT;
    mesh.getTrianglePointers(vT);
    EXPECT_EQ(vT[0]->neighbor(1), vT[1]);
    EXPECT_EQ(vT[1]->neighbor(2), vT[0]);
    EXPECT_EQ(mesh.getVertex(Point2(nan, 0, 0)), nullptr);
    EXPECT_NEAR((mesh.getNormalVector(mesh.getVertex(a)) - Vector2(0, 0, 1)).length(), 0.0, 1e-15);

    // A third triangle at the diagonal unlinks the two, and is what a mesh made of all three warns about.
    mesh.createTriangle(mesh.getVertex(a), mesh.getVertex(c), mesh.createVertex(up, false));
    EXPECT_EQ(vT[0]->neighbor(1), nullptr);
    EXPECT_TRUE(mesh.hasNonManifoldEdges());
    testing::internal::CaptureStdout();
    const Mesh3 three({a, b, c, a2, c, d, a, c, up});
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Mesh3::Mesh3(), WARNING: Non-manifold mesh. Expect trouble"),
              std::string::npos);
    testing::internal::CaptureStdout();
    EXPECT_EQ(mesh.createTriangle(mesh.getVertex(a), mesh.getVertex(b), nullptr), nullptr);
    EXPECT_EQ(mesh.createTriangle(mesh.getVertex(a), mesh.getVertex(a), mesh.getVertex(b)), nullptr);
    EXPECT_EQ(mesh.createVertex(Point2(nan, 0, 0), true), nullptr);
    testing::internal::GetCapturedStdout();
}

// Two holes that touch in two corners, with an island between: their rims are rings, not those of island and surroundings.
TEST(Mesh3, RingsGoAstrayWhereHolesTouch)
{
    const auto plane = [](double u, double v) { return Point2(12 * u, 12 * v, 0); };
    const auto touching = [](double u, double v) {
        const int i = static_cast<int>(12 * u), j = static_cast<int>(12 * v);
        return std::abs(i - 5) < 2 && std::abs(j - 5) < 2 && i != j; // on the diagonal cells stay
    };
    const Mesh3 mesh(oracles::makeGrid(12, 12, false, false, plane, touching));
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    std::multiset<std::size_t> sSizes;
    for (const auto& vRing : vRings) {
        sSizes.insert(vRing.size());
        for (std::size_t i = 0; i < vRing.size(); ++i) {
            EXPECT_EQ(vRing[i].getTrg(), vRing[(i + 1) % vRing.size()].getSrc());
        }
    }
    EXPECT_EQ(sSizes, (std::multiset<std::size_t>{8, 8, 48}));
}

TEST(Mesh3, FilesAreTrusted)
{
    const lumo_test::TempWorkDir directory;
    struct Case
    {
        const char* name;
        const char* text;
        bool bOK;
        std::size_t numCorners;
    };
    const Case aCases[] = {
        {"a.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1/9/9 2//3 3 4 # a square\nf -4 -3 -2\n", true, 9},
        {"b.obj",
         "v 0 0 0\nv 1 0 nan\nv 1 1 0\nf 1 2 3\nf 1 3 4\nf 0 1 3\nf 1 3\nf 1 3 x\nf 1 3 99999999999999999999\n", true,
         0},
        {"c.obj", "f 1 2 3\nvn 0 0 1\nv\nf\n", true, 0},
        {"d.STL", "solid\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n vertex 1 1 0\n endloop\nendsolid", true, 3},
        {"e.stl", "outer loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\n", false, 0},
        {"f.stl", "outer loop\nvertex 0 0\nvertex 1 0 0\nvertex 1 1 1\nendloop\nouter loop\nvertex 1", true, 0},
        {"g.off", "OFF\n", false, 0}};
    for (const Case& c : aCases) {
        SCOPED_TRACE(c.name);
        lumo_test::writeFile(c.name, c.text);
        std::vector<Point2> vCorners;
        EXPECT_EQ(Mesh3::readCorners(c.name, vCorners), c.bOK);
        EXPECT_EQ(vCorners.size(), c.numCorners);
    }
    std::vector<Point2> vCorners;
    EXPECT_FALSE(Mesh3::readCorners("there is none.obj", vCorners));
}
