// Five meshes without thin triangles: a square, an L, a plate with holes, an island, a piece of terrain. Tells what each is
// like and draws it.
//
//     meshes COAST.xyz TERRAIN.xyz DIRECTORY

#include "Lumo_2D.h"
#include "MeshGenParams.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

using Corners = std::vector<Point2>;
using Rings = std::vector<Corners>;

/// The area on the left of the rings: outer ones counterclockwise, holes clockwise.
Zone2* zoneInside(Lumo_2D& lumo, const Rings& vRings)
{
    std::vector<Segment2> vSegments;
    for (const Corners& v : vRings) {
        for (std::size_t i = 0; i < v.size(); ++i) vSegments.emplace_back(v[i], v[(i + 1) % v.size()]);
    }
    return lumo.createZone(lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
}

Corners circle(int n, double x, double y, double radius, bool bHole)
{
    Corners v;
    for (int i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * i / n;
        v.emplace_back(x + radius * std::cos(t), y + radius * std::sin(t), 0.0);
    }
    if (bHole) std::reverse(v.begin(), v.end());
    return v;
}

void tell(const std::string& name, const Lumo_2D& lumo, const Zone2& zone, const std::string& directory)
{
    std::vector<Triangle2*> vT;
    zone.getTriangles(vT);
    double smallest = 180.0, growth = 1.0;
    std::size_t numSharp = 0;
    for (Triangle2* pT : vT) {
        const double angle =
            std::min({pT->getInteriorAngle25D(0), pT->getInteriorAngle25D(1), pT->getInteriorAngle25D(2)});
        smallest = std::min(smallest, angle);
        numSharp += angle < 25.0 - 1e-9 ? 1U : 0U;
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN != nullptr && !lumo.isConstraint(pT, i))
                growth = std::max(growth, pT->getArea25D() / pN->getArea25D());
        }
    }
    std::printf("%-8s %6zu triangles, smallest angle %.1f, %zu below 25, neighbours differ up to %.1f times\n",
                name.c_str(), vT.size(), smallest, numSharp, growth);
    zone.debug((directory + "/mesh_" + name + ".ps").c_str());
}

/// An angle of 25 degrees wherever the outline leaves room for it, and edges of at most that length.
void meshOf(const std::string& name, const Rings& vRings, double maxEdgeLength, const std::string& directory)
{
    Lumo_2D lumo;
    Zone2* const pZone = zoneInside(lumo, vRings);
    lumo.refine(pZone, 25.0, 0.001, maxEdgeLength, true);
    tell(name, lumo, *pZone, directory);
}

/// A round piece of a terrain, with few triangles where it is even: at the middle of each, the mesh is right to 10 units.
void meshOfTerrain(const std::vector<Point2>& vPoints, const std::string& directory)
{
    Lumo_2D terrain, lumo;
    terrain.insert(vPoints);
    const Bbox2 box = terrain.computeBoundingBox();
    Corners vRing = circle(400, (box.get_minX() + box.get_maxX()) / 2, (box.get_minY() + box.get_maxY()) / 2,
                           0.3 * (box.get_maxX() - box.get_minX()), false);
    for (Point2& p : vRing) {
        double height = 0.0;
        if (terrain.getHeight(p.x(), p.y(), height)) p.setHeight(height);
    }
    MeshGenParams params(zoneInside(lumo, {vRing}));
    params.minAngleDegree = 25.0;
    params.minEdgeLength = 10.0;
    params.pGuideTriangulation = &terrain;
    params.maxGuideHeightError = 10.0;
    lumo.refineAdvanced(&params);
    tell("terrain", lumo, *params.pZone, directory);
}

} // namespace

int main(int argc, char** argv)
{
    Corners vCoast;
    std::vector<Point2> vTerrain;
    if (argc != 4 || !readXYZ(argv[1], vCoast) || !readXYZ(argv[2], vTerrain) || vCoast.empty() || vTerrain.empty()) {
        std::printf("usage: meshes COAST.xyz TERRAIN.xyz DIRECTORY\n");
        return 1;
    }
    const std::string directory = argv[3];
    meshOf("square", {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}}, 0.1, directory);
    meshOf("L", {{{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {1, 1, 0}, {1, 3, 0}, {0, 3, 0}}}, 0.3, directory);
    meshOf("plate",
           {{{0, 0, 0}, {10, 0, 0}, {10, 6, 0}, {0, 6, 0}},
            circle(48, 2.5, 3, 1.5, true),
            circle(12, 5, 1.2, 0.3, true),
            {{6, 2, 0}, {6.6, 4.8, 0}, {9, 5, 0}}},
           2.0, directory);
    // Degrees to kilometres, at 65 degrees north.
    for (Point2& p : vCoast) p.setCoords(p.x() * 111.2 * std::cos(65.0 / 57.29577951), p.y() * 111.2, 0.0);
    meshOf("island", {vCoast}, 50.0, directory);
    meshOfTerrain(vTerrain, directory);
    return 0;
}
