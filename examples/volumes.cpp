// Cut and fill: how much earth was moved between two surveys of one place.
//
//     volumes BEFORE.xyz AFTER.xyz THRESHOLD [PICTURE.ps [UNIT]]
//
// Differences in height up to THRESHOLD count as none. UNIT is the length of a unit of the files' heights in units of x and
// y, e.g. 0.3048 for heights in feet. In the picture, cuts are red and fills blue, the paler the less was moved.

#include "CAF_Component.h"
#include "CutAndFill.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

double depth(const Triangle2& t)
{
    return std::fabs(t.getCorner(0)->z() + t.getCorner(1)->z() + t.getCorner(2)->z()) / 3.0; // differences, not heights
}

/// What was moved, with the outlines of the areas, and the volumes of those that count.
void draw(const CutAndFill& caf, double moved, const char* filename)
{
    double deepest = 0.0;
    std::vector<std::vector<Triangle2*>> vvT(caf.getNumberOfComponents());
    for (unsigned int i = 0; i < vvT.size(); ++i) {
        caf.getComponent(i)->getTriangles(vvT[i]);
        for (const Triangle2* pT : vvT[i]) deepest = std::max(deepest, depth(*pT));
    }
    Visualizer2 vis(filename);
    for (unsigned int i = 0; i < vvT.size(); ++i) {
        const CAF_Component& component = *caf.getComponent(i);
        const Triangle2* pLargest = vvT[i].front();
        for (const Triangle2* pT : vvT[i]) {
            const double pale = std::round(64.0 * (0.85 - 0.85 * std::sqrt(depth(*pT) / deepest))) / 64.0;
            const bool bCut = component.getCAFType() == CT_CUT, bFill = component.getCAFType() == CT_FILL;
            vis.addObject(*pT, Color(bFill ? pale : 0.85, bCut || bFill ? pale : 0.85, bCut ? pale : 0.85, 0.0, true));
            if (pT->getArea2D() > pLargest->getArea2D()) pLargest = pT;
        }
        std::vector<Segment2> vBorder;
        component.getBorder(vBorder);
        vis.addObject(vBorder, Color(CBLACK, 0.3F, false));
        if (component.getVolume() < 0.005 * moved) continue;
        const std::string volume =
            (component.getCAFType() == CT_CUT ? "cut " : "fill ") + std::to_string(std::lround(component.getVolume()));
        vis.addObject(Label(pLargest->getBarycenter(), volume.c_str(), false, 12), Color(CBLACK));
    }
    vis.addHeaderLine("Red: cut, blue: fill");
    vis.writeFile();
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Point2> vBefore, vAfter;
    if (argc < 4 || !readXYZ(argv[1], vBefore) || !readXYZ(argv[2], vAfter)) {
        std::printf("usage: volumes BEFORE.xyz AFTER.xyz THRESHOLD [PICTURE.ps [UNIT]]\n");
        return 2;
    }
    const double unit = argc > 5 ? std::atof(argv[5]) : 1.0;
    for (std::vector<Point2>* pPoints : {&vBefore, &vAfter}) {
        for (Point2& p : *pPoints) p.setZ(p.z() * unit);
    }
    Lumo_2D before, after;
    before.insert(vBefore);
    after.insert(vAfter);

    // All triangles of each; any zone would do, e.g. the inside of a building site's border.
    ConstraintGraph2* const pNone = nullptr;
    CutAndFill caf(before.createZone(pNone, ZL_GLOBAL), after.createZone(pNone, ZL_GLOBAL), std::atof(argv[3]));
    if (!caf.go()) return 1;

    double aVolumes[3] = {0.0, 0.0, 0.0};
    unsigned int aNumbers[3] = {0, 0, 0};
    for (unsigned int i = 0; i < caf.getNumberOfComponents(); ++i) {
        const CAF_Component* pComponent = caf.getComponent(i);
        aVolumes[pComponent->getCAFType()] += pComponent->getVolume();
        ++aNumbers[pComponent->getCAFType()];
    }
    Zone2* pDifferences = nullptr;
    std::map<Point2*, std::pair<double, double>> mHeights;
    caf.getDiffZone(pDifferences, mHeights);
    std::printf("common area %.3f\n", pDifferences->getArea2D());
    std::printf("unchanged   %u areas\n", aNumbers[CT_NULL]);
    std::printf("cut  %12.3f in %u areas\n", aVolumes[CT_CUT], aNumbers[CT_CUT]);
    std::printf("fill %12.3f in %u areas\n", aVolumes[CT_FILL], aNumbers[CT_FILL]);
    std::printf("net  %12.3f\n", aVolumes[CT_FILL] - aVolumes[CT_CUT]);
    if (argc > 4) draw(caf, aVolumes[CT_CUT] + aVolumes[CT_FILL], argv[4]);
    return 0;
}
