// Cut and fill: how much earth was moved between two surveys of one place.
//
//     volumes BEFORE.xyz AFTER.xyz THRESHOLD [PICTURE.ps]
//
// Differences in height up to THRESHOLD count as none.

#include "CAF_Component.h"
#include "CutAndFill.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vBefore, vAfter;
    if (argc < 4 || !readXYZ(argv[1], vBefore) || !readXYZ(argv[2], vAfter)) {
        std::printf("usage: volumes BEFORE.xyz AFTER.xyz THRESHOLD [PICTURE.ps]\n");
        return 2;
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
    if (argc > 4) {
        Visualizer2 vis(argv[4]);
        caf.show(&vis);
        vis.writeFile();
    }
    return 0;
}
