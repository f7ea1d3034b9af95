// Closes the holes of a mesh in space, and draws it with the patches in colour.
//
//     holes MESH.obj PICTURE.ps

#include "Color.h"
#include "Func_Rot3D.h"
#include "HoleFiller.h"
#include "Mesh3.h"
#include "Visualizer2.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vCorners; // three in a row for each triangle
    if (argc != 3 || !Mesh3::readCorners(argv[1], vCorners)) return 2;
    Mesh3 mesh(vCorners); // equal corners become one vertex
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);

    std::vector<Point2> vPatches; // likewise, all the new triangles
    for (std::vector<Edge2>& vRing : vRings) {
        std::vector<Point2> vPatch;
        if (!fillHole(&mesh, vRing, true, true, vPatch)) continue;
        std::printf("a hole of %zu edges takes %zu triangles\n", vRing.size(), vPatch.size() / 3);
        vPatches.insert(vPatches.end(), vPatch.begin(), vPatch.end());
        for (auto p = vPatch.begin(); p != vPatch.end(); p += 3) // the mesh has the new vertices already
            mesh.createTriangle(mesh.getVertex(p[0]), mesh.getVertex(p[1]), mesh.getVertex(p[2]));
    }
    std::vector<Edge2> vBorder;
    mesh.getBorderEdges(vBorder);
    std::printf("%zu of the border's edges are left\n", vBorder.size());

    // Drawn from where the light is, the far triangles first.
    const Vector2 towardsUs = normalize(Vector2(0.75, 0.45, -0.6));
    const Func_Rot3D turn(towardsUs);
    const std::size_t numOld = vCorners.size();
    vCorners.insert(vCorners.end(), vPatches.begin(), vPatches.end());
    std::vector<std::pair<double, std::size_t>> vOrder;
    for (std::size_t i = 0; i < vCorners.size(); i += 3) {
        double depth = 0.0;
        for (std::size_t k = i; k < i + 3; ++k) depth += turn(vCorners[k]).z();
        vOrder.emplace_back(depth, i);
    }
    std::sort(vOrder.begin(), vOrder.end());

    Visualizer2 picture(argv[2]);
    for (const auto& [depth, i] : vOrder) {
        Point2 a = turn(vCorners[i]), b = turn(vCorners[i + 1]), c = turn(vCorners[i + 2]);
        Triangle2 t;
        t.setProperties(&a, &b, &c);
        const double light = 0.3 + 0.7 * std::max(0.0, t.getNormalVector().z());
        const bool bNew = i >= numOld;
        picture.addObject(t, Color(light * (bNew ? 0.95 : 0.85), light * (bNew ? 0.45 : 0.8),
                                   light * (bNew ? 0.1 : 0.75), 0.0, true));
    }
    picture.writeFile();
    return 0;
}
