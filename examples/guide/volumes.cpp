// How much earth was moved between two surveys of one place?
//
//     volumes BEFORE.xyz AFTER.xyz PICTURE.ps
//
// Places are in metres, heights in US survey feet.

#include "CAF_Component.h"
#include "CutAndFill.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

/// All of the surface of a survey.
Zone2* zoneOf(std::vector<Point2> vPoints, Lumo_2D& lumo)
{
    for (Point2& p : vPoints) p.setHeight(p.z() * 1200.0 / 3937.0);
    lumo.insert(vPoints);
    ConstraintGraph2* const pNone = nullptr;
    return lumo.createZone(pNone, ZL_GLOBAL);
}

/// Red for a cut, blue for a fill, the paler the less was moved there.
Color colorOf(const Triangle2& t, CAFTYP type)
{
    const double pale = 0.9 - std::min(0.9, std::fabs(t.getBarycenter().z()) / 3.0); // the height is the difference
    return Color(type == CT_CUT ? 0.9 : pale, pale, type == CT_FILL ? 0.9 : pale, 0.0, true);
}

int main(int argc, char** argv)
{
    std::vector<Point2> vBefore, vAfter;
    if (argc != 4 || !readXYZ(argv[1], vBefore) || !readXYZ(argv[2], vAfter)) return 2;

    Lumo_2D before, after;
    CutAndFill caf(zoneOf(vBefore, before), zoneOf(vAfter, after), 0.05); // up to 5 cm count as none
    if (!caf.go()) return 1;

    Visualizer2 picture(argv[3]);
    double aVolumes[3] = {0.0, 0.0, 0.0};
    for (unsigned int i = 0; i < caf.getNumberOfComponents(); ++i) {
        const CAF_Component& component = *caf.getComponent(i); // one connected area
        const CAFTYP type = component.getCAFType();
        aVolumes[type] += component.getVolume();
        std::vector<Triangle2*> vTriangles;
        component.getTriangles(vTriangles);
        for (const Triangle2* pT : vTriangles) picture.addObject(*pT, colorOf(*pT, type));
        std::vector<Segment2> vBorder;
        component.getBorder(vBorder);
        picture.addObject(vBorder, Color(CBLACK, 0.3F));
    }
    std::printf("cut %.1f m3, fill %.1f m3\n", aVolumes[CT_CUT], aVolumes[CT_FILL]);
    picture.writeFile();
    return 0;
}
