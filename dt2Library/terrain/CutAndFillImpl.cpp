#include "terrain/CutAndFillImpl.h"

#include "engine/Dt2.h"
#include "support/messages.h"
#include "terrain/ZeroLineCutter.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace ORBI_LUMO25D
{

CutAndFillImpl::CutAndFillImpl(Zone2* pZone0, Zone2* pZone1, double threshold_)
    : pDt(std::make_unique<Dt2>(3)), heights(pDt->poolVertices), overlay(pZone0, pZone1, *pDt, heights),
      threshold(threshold_)
{
}

CutAndFillImpl::~CutAndFillImpl() = default;

bool CutAndFillImpl::go()
{
    if (bDone) return pCombinedZone != nullptr;
    bDone = true;
    bool bOK = false;
    try {
        bOK = runPipeline();
    } catch (...) { // told where it was thrown; a listener may have thrown anything
    }
    if (!bOK) {
        pCombinedZone = nullptr;
        vComponents.clear();
    }
    return bOK;
}

bool CutAndFillImpl::runPipeline()
{
    progress.start("CutAndFill", 150);
    pCombinedZone = overlay.makeCommonZone(progress);
    if (pCombinedZone == nullptr) {
        msgError("CutAndFill", "pCombinedZone==NULL. Make sure that the two input areas overlap.");
        return false;
    }
    progress.step(4);
    overlay.insertEdges(pCombinedZone->getBoundingBox(), progress);
    overlay.findHeightsOnEdges(progress);

    const Dt2& dt2 = *pDt;
    std::vector<Triangle2*> vT;
    std::vector<Point2*> vVertices;
    pCombinedZone->getTriangles(vT);
    getCorners(dt2, vT, vVertices);
    overlay.complementHeights(vVertices);
    for (Point2* pVtx : vVertices) heights.settle(pVtx, threshold);
    progress.step(5);

    ZeroLineCutter cutter(*pDt, vT, overlay, heights, threshold);
    cutter.run();
    vT.clear();
    vVertices.clear();
    pCombinedZone->getTriangles(vT);
    getCorners(dt2, vT, vVertices);
    cutter.findMissingHeights(vVertices);
    progress.step(10);
    groupT2(vT);
    progress.finish();
    return true;
}

CutAndFillImpl::TriType CutAndFillImpl::getTriangleType(const Triangle2* pT)
{
    bool bPositive = false, bNegative = false;
    for (int i = 0; i < 3; ++i) {
        if (pT->corner(i)->z() > 0.0) bPositive = true;
        if (pT->corner(i)->z() < 0.0) bNegative = true;
    }
    if (bPositive) return bNegative ? TT_INVALID : TT_POSITIVE;
    return bNegative ? TT_NEGATIVE : TT_ZERO;
}

/// Where an edge was too short for a cut, a triangle still has both signs: the sign goes that costs less.
void CutAndFillImpl::postRound(const std::vector<Triangle2*>& vT)
{
    for (const Triangle2* pT : vT) {
        if (getTriangleType(pT) != TT_INVALID) continue;
        double aLargest[2] = {0.0, 0.0}; // of the positive, of the negative heights
        for (int i = 0; i < 3; ++i) {
            const double z = pT->corner(i)->z();
            double& largest = aLargest[z < 0.0];
            largest = std::max(largest, std::fabs(z));
        }
        const bool bNegativeGoes = aLargest[1] < aLargest[0];
        for (int i = 0; i < 3; ++i) {
            const double z = pT->corner(i)->z();
            if (z != 0.0 && (z < 0.0) == bNegativeGoes) roundToZero(pT->corner(i));
        }
    }
}

void CutAndFillImpl::roundToZero(Point2* pVtx)
{
    std::vector<Triangle2*> vAround;
    pDt->getIncidentTriangles(pVtx, vAround);
    const double volume = std::fabs(pVtx->z()) * sumArea2D(vAround) / 3.0;
    if (volume > 0.001) {
        msgWarning("CutAndFillImpl::postRound()", "The height of a vertex must be rounded to 0");
        std::ostringstream values;
        values << *pVtx << ", volume " << volume;
        printLine(values.str());
    }
    heights.unite(pVtx);
}

void CutAndFillImpl::groupT2(const std::vector<Triangle2*>& vT)
{
    postRound(vT);
    std::vector<Triangle2*> aByType[4];
    for (Triangle2* pT : vT) aByType[getTriangleType(pT)].push_back(pT);
    LUMO_CHECK(aByType[TT_INVALID].empty(), "getTriangleType(pT)!=TT_INVALID");
    progress.step(5);
    for (const TriType type : {TT_ZERO, TT_POSITIVE, TT_NEGATIVE}) {
        std::vector<std::vector<Triangle2*>> vvComponents;
        getConnectedComponents(*pDt, aByType[type], vvComponents);
        for (const std::vector<Triangle2*>& vComponent : vvComponents) {
            const int label = static_cast<int>(vComponents.size());
            vComponents.emplace_back(new CAF_Component(vComponent, heights, label));
        }
    }
    progress.step(10);
}

} // namespace ORBI_LUMO25D
