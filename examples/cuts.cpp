// A road is planned across a hill. Its centre line is laid on the surface, the surface is cut along both of its edges
// without being changed, and the parcel that it runs through is cut out and measured.
//
//     cuts [PICTURE.ps]

#include "Relief.h"

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <cmath>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    for (int y = 0; y <= 20; ++y) {
        for (int x = 0; x <= 20; ++x) {
            vPoints.emplace_back(10.0 * x, 10.0 * y, 30.0 * std::exp(-0.01 * std::hypot(10 * x - 90, 10 * y - 110)));
        }
    }
    Lumo_2D lumo;
    lumo.insert(vPoints);
    double before = 0.0, after = 0.0;
    lumo.getHeight(101.0, 97.0, before);

    // The profile: vertices that matter for less than 1 cm are left out.
    std::vector<Segment2> vRoad{Segment2(Point2(-20, 60, 0), Point2(220, 140, 0))}, vProfile;
    const bool bInside = lumo.drape(vRoad, vProfile, 0.01);
    std::printf("profile of %zu pieces from %.2f m to %.2f m, %s\n", vProfile.size(), vProfile.front().src.z(),
                vProfile.back().trg.z(), bInside ? "inside" : "beyond the surface at the ends");

    // Both edges of the road become edges of the mesh, and constraints.
    lumo.cutTriangles(
        {Segment2(Point2(-20, 56, 0), Point2(220, 136, 0)), Segment2(Point2(-20, 64, 0), Point2(220, 144, 0))}, true);
    lumo.getHeight(101.0, 97.0, after);
    std::printf("%zu triangles, the height is off by %.9f m\n", lumo.numberOfTriangles(), std::fabs(after - before));

    // A parcel, cut out of the surface, which it sticks out of.
    std::vector<Segment2> vParcel;
    pointsToPolyline({{150, 60, 0}, {240, 60, 0}, {240, 180, 0}, {150, 180, 0}}, true, vParcel);
    const Zone2* const pParcel = lumo.createZone_cookieCutter(vParcel, false);
    std::printf("parcel %.1f m2 on the map, %.1f m2 of surface\n", pParcel->getArea2D(), pParcel->getArea25D());
    if (argc > 1) {
        Visualizer2 picture(argv[1]);
        std::vector<Triangle2*> vTriangles;
        lumo.getTrianglePointers(vTriangles);
        addRelief(vTriangles, picture);
        lumo.show(&picture);
        std::vector<ConstraintSegment2*> vCuts;
        lumo.getAliveConstraintSegments(vCuts);
        picture.addObject(vCuts, Color(CRED, 1.0F));
        pParcel->show(&picture, Color(CBLUE, 0.6F));
    }
    return 0;
}
