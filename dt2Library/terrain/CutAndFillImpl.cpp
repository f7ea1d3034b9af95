#include "terrain/CutAndFillImpl.h"

#include "engine/Dt2.h"
#include "geometry/RoundToNearest.h"
#include "support/messages.h"
#include "terrain/OverlayCells.h"
#include "terrain/SurfaceOverlay.h"
#include "terrain/ZeroLineCutter.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

namespace ORBI_LUMO25D
{

CutAndFillImpl::CutAndFillImpl(Zone2* pZone0, Zone2* pZone1, double threshold_)
    : aZones{pZone0, pZone1}, pDt(std::make_unique<Dt2>(3)), heights(pDt->poolVertices), threshold(threshold_)
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
    std::vector<Triangle2*> vT;
    if (!overlayDirectly(vT) && !overlayByConstraints(vT)) {
        msgError("CutAndFill", "pCombinedZone==NULL. Make sure that the two input areas overlap.");
        return false;
    }
    groupT2(vT);
    progress.finish();
    return true;
}

/// Gives the triangles of the common area, cut. False, and nothing done, when there are none or rounding gets in the way.
bool CutAndFillImpl::overlayDirectly(std::vector<Triangle2*>& vT)
{
    const auto hasTriangles = [](const Zone2* pZone) {
        return pZone != nullptr && pZone->getDelaunayTriangulation()->hasArea() && pZone->getNumberOfTriangles() > 0;
    };
    if (!hasTriangles(aZones[0]) || !hasTriangles(aZones[1])) return false;
    const RoundToNearest rounding;
    OverlayCells::Result result;
    // Where edges meet in places that can't be told apart, they are seen less sharply.
    const auto isMade = [&](int resolutionExponent) {
        OverlayGraph graph;
        result = {};
        return MeshOverlay(*aZones[0], *aZones[1], resolutionExponent).run(graph, progress) &&
               OverlayCells(graph, threshold).run(result, progress) && !result.vTriangles.empty() &&
               pDt->takeMesh(result.vVertices, result.vTriangles);
    };
    if (!isMade(-50)) {
        const Progress::Muted muted(progress); // its work has been told
        if (!isMade(-46) && !isMade(-42)) return false;
    }
    const std::size_t numTriangles = result.vTriangles.size() / 3;
    progress.step(10);
    for (std::size_t i = 0; i < result.vHeights.size(); ++i) heights.at(pDt->poolVertices.at(i)) = result.vHeights[i];
    pDt->getTrianglePointers(vT);
    vT.resize(numTriangles); // behind them is what fills the convex hull
    std::vector<Edge2> vBorder;
    getBorderEdges(*pDt, vT, vBorder);
    pCombinedZone = pDt->createZone(vBorder, ZL_BOUNDED);
    progress.step(30);
    return true;
}

/// Gives the triangles of the common area, cut. False when there is none.
bool CutAndFillImpl::overlayByConstraints(std::vector<Triangle2*>& vT)
{
    SurfaceOverlay overlay(aZones[0], aZones[1], *pDt, heights);
    pCombinedZone = overlay.makeCommonZone(progress);
    if (pCombinedZone == nullptr) return false;
    progress.step(4);
    overlay.insertEdges(pCombinedZone->getBoundingBox(), progress);
    overlay.findHeightsOnEdges(progress);

    const Dt2& dt2 = *pDt;
    std::vector<Point2*> vVertices;
    pCombinedZone->getTriangles(vT);
    getCorners(dt2, vT, vVertices);
    overlay.complementHeights(vVertices);
    // Not only in the area: rounding may move its border past a vertex later.
    pDt->poolVertices.forEach([this](Point2* pVtx) {
        if (heights.get(pVtx).isKnown()) heights.settle(pVtx, threshold);
    });
    progress.step(5);

    cutAlongZeroLines(vT, overlay);
    progress.step(10);
    return true;
}

/// Takes the triangles of the common area, and gives what has become of them. Where edges are as close to each other as
/// the rounding of places, one cut may be in the way of another: what it leaves is cut again.
void CutAndFillImpl::cutAlongZeroLines(std::vector<Triangle2*>& vT, const SurfaceOverlay& overlay)
{
    constexpr int maxRounds = 5;
    std::vector<Triangle2*> vToCut = vT;
    for (int i = 0; i < maxRounds && !vToCut.empty(); ++i) {
        ZeroLineCutter cutter(*pDt, vToCut, overlay, heights, threshold);
        if (!cutter.run()) return;
        vT.clear();
        pCombinedZone->getTriangles(vT);
        std::vector<Point2*> vVertices;
        getCorners(*pDt, vT, vVertices);
        cutter.findMissingHeights(vVertices);
        vToCut.clear();
        std::copy_if(vT.begin(), vT.end(), std::back_inserter(vToCut),
                     [](const Triangle2* pT) { return getTriangleType(pT) == TT_INVALID; });
    }
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

/// Where an edge is too short for a cut, triangles at it still have both signs. The sign goes that changes the volume
/// less; unless that is more than the triangle holds, as at a cliff between two vertices side by side: it stays then.
void CutAndFillImpl::postRound(const std::vector<Triangle2*>& vT)
{
    for (Triangle2* pT : vT) {
        if (getTriangleType(pT) != TT_INVALID) continue;
        const double aCosts[2] = {volumeToRound(pT, false), volumeToRound(pT, true)};
        const bool bNegative = aCosts[1] < aCosts[0];
        const double largest =
            std::max({std::fabs(pT->corner(0)->z()), std::fabs(pT->corner(1)->z()), std::fabs(pT->corner(2)->z())});
        if (sumArea2D({pT}) * largest < aCosts[bNegative]) continue;
        for (int i = 0; i < 3; ++i) {
            const double z = pT->corner(i)->z();
            if (z != 0.0 && (z < 0.0) == bNegative) roundToZero(pT->corner(i));
        }
    }
}

/// The change of the volume when the triangle's corners of one sign get the height zero.
double CutAndFillImpl::volumeToRound(const Triangle2* pT, bool bNegative) const
{
    double sum = 0.0;
    std::vector<Triangle2*> vAround;
    for (int i = 0; i < 3; ++i) {
        const double z = pT->corner(i)->z();
        if (z == 0.0 || (z < 0.0) != bNegative) continue;
        vAround.clear();
        pDt->getIncidentTriangles(pT->corner(i), vAround);
        sum += std::fabs(z) * sumArea2D(vAround) / 3.0;
    }
    return sum;
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
    for (const Triangle2* pT : aByType[TT_INVALID]) {
        std::ostringstream line;
        line << "TT_INVALID for " << *pT;
        printLine(line.str());
    }
    progress.step(5);
    for (const TriType type : {TT_ZERO, TT_POSITIVE, TT_NEGATIVE}) {
        std::vector<std::vector<Triangle2*>> vvComponents;
        getConnectedComponents(*pDt, aByType[type], vvComponents);
        for (const std::vector<Triangle2*>& vComponent : vvComponents) {
            const int label = static_cast<int>(vComponents.size());
            vComponents.emplace_back(new CAF_Component(vComponent, label));
        }
    }
    progress.step(10);
}

} // namespace ORBI_LUMO25D
