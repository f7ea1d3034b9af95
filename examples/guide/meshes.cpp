// Meshes an island without thin triangles, and finer in its west.
//
//     meshes COAST.xyz PICTURE.ps
//
// The coast is a ring of longitudes and latitudes.

#include "../LocalMetres.h"

#include "Lumo_2D.h"
#include "MeshGenParams.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

/// Edges of at most 40 km in the east, which get shorter towards the west, down to 5 km.
class FinerInTheWest : public MeshGenParams
{
public:
    using MeshGenParams::MeshGenParams;
    double getMaxEdgeLength(Triangle2* pT) override
    {
        return std::clamp(20e3 + 0.1 * pT->getBarycenter().x(), 5e3, 40e3);
    }
};

int main(int argc, char** argv)
{
    std::vector<Point2> vCoast;
    if (argc != 3 || !readXYZ(argv[1], vCoast)) return 2;
    std::transform(vCoast.begin(), vCoast.end(), vCoast.begin(), LocalMetres(-19.0, 65.0, 65.0));
    std::vector<Segment2> vRing;
    pointsToPolyline(vCoast, true, vRing);

    Lumo_2D lumo;
    Zone2* const pLand = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
    std::printf("%zu triangles before\n", pLand->getNumberOfTriangles());

    FinerInTheWest params(pLand);
    params.minAngleDegree = 28.0;
    params.minEdgeLength = 100.0;
    lumo.refineAdvanced(&params);

    std::vector<Triangle2*> vTriangles;
    pLand->getTriangles(vTriangles);
    std::size_t numSharp = 0;
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) numSharp += pT->getInteriorAngle25D(i) < params.minAngleDegree ? 1U : 0U;
    }
    std::printf("%zu triangles after, with %zu angles below 28 degrees\n", vTriangles.size(), numSharp);

    Visualizer2 picture(argv[2]);
    picture.addObject(vTriangles, Color(0.80, 0.87, 0.74, 0.0, true));
    pLand->show(&picture, Color(CBLACK, 0.1F));
    picture.addObject(vRing, Color(CBLUE, 0.6F));
    picture.writeFile();
    return 0;
}
