#include "EfficientModel.h"

#include "cloud/ModelMesh.h"
#include "cloud/cloudHull.h"
#include "engine/Dt2.h"
#include "geometry/RoundToNearest.h"
#include "geometry/finite.h"
#include "geometry/numericTools.h"
#include "support/Progress.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace ORBI_LUMO25D
{

struct EfficientModelData
{
    std::vector<Point2> vSorted;         ///< ascending, one for each place
    std::vector<std::size_t> vPositions; ///< where they were in the input
    std::vector<Point2> vResult;         ///< of the last go()
    Progress progress{"EfficientModel"};
};

EfficientModel::EfficientModel(const std::vector<Point2>& vPoints) : pData(std::make_unique<EfficientModelData>())
{
    std::vector<std::size_t>& vPositions = pData->vPositions;
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        if (isFinite25D(vPoints[i])) vPositions.push_back(i);
    }
    if (vPositions.size() < vPoints.size()) {
        msgError("EfficientModel::EfficientModel()", std::to_string(vPoints.size() - vPositions.size()) +
                                                         " point(s) refused: a coordinate is not a finite number");
    }
    // Stable: of points at one place, the first one stays first.
    std::stable_sort(vPositions.begin(), vPositions.end(),
                     [&vPoints](std::size_t i, std::size_t j) { return vPoints[i] < vPoints[j]; });
    vPositions.erase(std::unique(vPositions.begin(), vPositions.end(),
                                 [&vPoints](std::size_t i, std::size_t j) { return vPoints[i] == vPoints[j]; }),
                     vPositions.end());
    pData->vSorted.reserve(vPositions.size());
    for (const std::size_t i : vPositions) pData->vSorted.push_back(vPoints[i]);
}

EfficientModel::~EfficientModel() = default;

namespace
{

/// By halving at the worst point: D. H. Douglas and T. K. Peucker, "Algorithms for the reduction of the number of points
/// required to represent a digitized line or its caricature", 1973; here with heights. Marks what stays.
std::vector<bool> simplifyLine(const std::vector<Point2>& vSorted, double maxError)
{
    std::vector<bool> vKeep(vSorted.size(), false);
    vKeep.front() = vKeep.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> vOpen = {{0, vSorted.size() - 1}};
    while (!vOpen.empty()) {
        const auto [first, last] = vOpen.back();
        vOpen.pop_back();
        std::size_t worst = first;
        double error = maxError;
        for (std::size_t i = first + 1; i < last; ++i) {
            const Point2& p = vSorted[i];
            const double e = std::fabs(heightOnSegment(vSorted[first], vSorted[last], p.x(), p.y()) - p.z());
            if (!(e > error)) continue;
            error = e;
            worst = i;
        }
        if (worst == first) continue;
        vKeep[worst] = true;
        vOpen.emplace_back(first, worst);
        vOpen.emplace_back(worst, last);
    }
    return vKeep;
}

/// The points that stay, in the order of the input.
template <class IsKept>
std::vector<std::size_t> inInputOrder(const EfficientModelData& data, const IsKept& isKept)
{
    std::vector<std::size_t> vOrder;
    for (std::size_t i = 0; i < data.vSorted.size(); ++i) {
        if (isKept(i)) vOrder.push_back(i);
    }
    std::sort(vOrder.begin(), vOrder.end(),
              [&data](std::size_t i, std::size_t j) { return data.vPositions[i] < data.vPositions[j]; });
    return vOrder;
}

/// Triangulates the result as a user will, and finds the points that are off by more than maxError there.
std::vector<std::size_t> findOffenders(const EfficientModelData& data, const std::vector<std::size_t>& vResult,
                                       double maxError, Progress& progress)
{
    std::vector<Point2> vModel;
    vModel.reserve(vResult.size());
    for (const std::size_t i : vResult) vModel.push_back(data.vSorted[i]);
    Dt2 dt(vModel.size());
    dt.insertVector(vModel, nullptr);
    std::vector<std::size_t> vOffenders;
    progress.start("check", data.vSorted.size());
    for (std::size_t i = 0; i < data.vSorted.size(); ++i) {
        const Point2& p = data.vSorted[i];
        double height = HUGE_VAL;
        const bool bFound = dt.getHeight(p.x(), p.y(), height, nullptr, 0.0);
        if (!bFound || !(std::fabs(height - p.z()) <= maxError)) vOffenders.push_back(i);
        progress.step(1);
    }
    progress.finish();
    return vOffenders;
}

std::vector<std::size_t> simplifySurface(EfficientModelData& data, const std::vector<std::size_t>& vCorners,
                                         double maxError)
{
    ModelMesh mesh(data.vSorted, vCorners);
    mesh.insertWorst(maxError, data.progress);
    mesh.removeSuperfluous(maxError, data.progress);
    for (;;) {
        std::vector<std::size_t> vResult = inInputOrder(data, [&mesh](std::size_t i) { return mesh.isVertex(i); });
        const std::vector<std::size_t> vOffenders = findOffenders(data, vResult, maxError, data.progress);
        if (vOffenders.empty()) return vResult;
        const std::size_t numBefore = vResult.size();
        mesh.insert(vOffenders, maxError);
        LUMO_CHECK(mesh.numVertices() > numBefore, "a vertex has its own height");
    }
}

std::vector<std::size_t> simplify(EfficientModelData& data, double maxError)
{
    const RoundToNearest rounding;
    const CloudHull hull = hullOfSorted(data.vSorted, false);
    if (hull.bHasArea) return simplifySurface(data, hull.vPositions, maxError);
    const std::vector<bool> vKeep = simplifyLine(data.vSorted, maxError);
    return inInputOrder(data, [&vKeep](std::size_t i) { return vKeep[i]; });
}

} // namespace

std::size_t EfficientModel::extract(double maxError, std::vector<Point2>& vOut)
{
    if (!(maxError >= 0.0)) {
        msgWarning("EfficientModel::extract()", "parameter maxError is negative or not a number, returning");
        return 0;
    }
    if (pData->vSorted.empty()) {
        msgWarning("EfficientModel::extract()", "no points, returning");
        return 0;
    }
    const std::vector<std::size_t> vResult = simplify(*pData, maxError);
    vOut.reserve(vOut.size() + vResult.size());
    for (const std::size_t i : vResult) vOut.push_back(pData->vSorted[i]);
    return vResult.size();
}

std::size_t EfficientModel::go(double maxError)
{
    std::vector<Point2> vResult;
    const std::size_t n = extract(maxError, vResult);
    pData->vResult = std::move(vResult);
    return n;
}

void EfficientModel::getPoints(std::vector<Point2>& vOut) const
{
    vOut.insert(vOut.end(), pData->vResult.begin(), pData->vResult.end());
}

void EfficientModel::subscribe(MsgType msgType, MsgBase* pMsg)
{
    pData->progress.subscribe(msgType, pMsg);
}

void EfficientModel::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    pData->progress.unsubscribe(msgType, pMsg);
}

} // namespace ORBI_LUMO25D
