// Makes a triangle mesh watertight: finds the rims of its holes and fills each one.
//
//     close_mesh IN.stl|IN.obj OUT.obj [--no-points]
//
// By default new points are added, so that the patches have triangles like those around them.

#include "HoleFiller.h"
#include "Mesh3.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

bool writeObj(const char* pName, const Mesh3& mesh)
{
    std::FILE* const pFile = std::fopen(pName, "w");
    if (pFile == nullptr) return false;
    std::vector<Point2*> vVertices;
    std::vector<Triangle2*> vTriangles;
    mesh.getVertexPointers(vVertices);
    mesh.getTrianglePointers(vTriangles);
    std::map<const Point2*, std::size_t> mVertexToNumber;
    for (const Point2* p : vVertices) {
        mVertexToNumber.emplace(p, mVertexToNumber.size() + 1);
        std::fprintf(pFile, "v %.17g %.17g %.17g\n", p->x(), p->y(), p->z());
    }
    for (const Triangle2* pT : vTriangles) {
        std::fprintf(pFile, "f %zu %zu %zu\n", mVertexToNumber[pT->getCorner(0)], mVertexToNumber[pT->getCorner(1)],
                     mVertexToNumber[pT->getCorner(2)]);
    }
    const bool bOK = std::ferror(pFile) == 0;
    return std::fclose(pFile) == 0 && bOK;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Point2> vCorners; // three in a row for each triangle
    if (argc < 3 || !Mesh3::readCorners(argv[1], vCorners)) {
        std::printf("usage: close_mesh IN.stl|IN.obj OUT.obj [--no-points]\n");
        return 2;
    }
    const bool bAddPoints = argc < 4 || std::strcmp(argv[3], "--no-points") != 0;
    const bool bVerbose = true;

    Mesh3 mesh(vCorners); // equal corners become one vertex
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    std::printf("%zu vertices, %zu triangles, %zu holes\n", mesh.numberOfVertices(), mesh.numberOfTriangles(),
                vRings.size());

    std::size_t numFilled = 0;
    for (std::vector<Edge2>& vRing : vRings) {
        std::vector<Point2> vPatch;
        if (!fillHole(&mesh, vRing, bAddPoints, bVerbose, vPatch)) continue;
        ++numFilled;
        std::printf("hole of %zu edges: %zu triangles\n", vRing.size(), vPatch.size() / 3);
        // The patch is given as coordinates; its vertices are in the mesh already, its triangles aren't.
        for (std::size_t i = 0; i < vPatch.size(); i += 3) {
            mesh.createTriangle(mesh.getVertex(vPatch[i]), mesh.getVertex(vPatch[i + 1]),
                                mesh.getVertex(vPatch[i + 2]));
        }
    }
    std::vector<Edge2> vBorder;
    mesh.getBorderEdges(vBorder);
    std::printf("%zu of %zu holes filled, %zu border edges left, %zu triangles\n", numFilled, vRings.size(),
                vBorder.size(), mesh.numberOfTriangles());
    if (!writeObj(argv[2], mesh)) {
        std::printf("can't write %s\n", argv[2]);
        return 2;
    }
    return vBorder.empty() ? 0 : 1;
}
