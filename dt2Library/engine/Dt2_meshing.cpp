// Quality meshes: parameters are checked here, the work is done by meshing/Refinement.

#include "engine/Dt2.h"

#include "geometry/RoundToNearest.h"
#include "meshing/GridMesher.h"
#include "meshing/Refinement.h"
#include "support/check.h"
#include "support/messages.h"

#include "MeshGenParams.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

namespace
{

/// The defaults of the class, without a word of our own.
class MyLocalParams : public MeshGenParams
{
public:
    using MeshGenParams::MeshGenParams;
};

/// Makes a refinement known to its engine, and mutes the progress of single insertions.
class Running
{
public:
    Running(Dt2& dt2_, Refinement& refinement_) : dt2(dt2_), muted(dt2_.progress) { dt2.pRefinement = &refinement_; }
    ~Running() { dt2.pRefinement = nullptr; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    Dt2& dt2;
    const Progress::Muted muted;
};

bool isPositive(double limit)
{
    return limit > 0.0;
}

bool areLimitsSound(const MeshGenParams& params)
{
    return isPositive(params.minEdgeLength) && isPositive(params.maxEdgeLength) && isPositive(params.maxTriangleArea) &&
           isPositive(params.maxGuideHeightError) && !std::isnan(params.minAngleDegree) &&
           !std::isnan(params.growthFactor) && !std::isnan(params.capAspectLimit) &&
           !std::isnan(params.growthFactorMinArea) && params.gridLength >= 0.0;
}

} // namespace

void Dt2::refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                 bool bAllowConstraintSplitting)
{
    MyLocalParams params(pZone);
    params.minAngleDegree = minAngleDegree;
    params.minEdgeLength = minEdgeLength;
    params.maxEdgeLength = maxEdgeLength;
    params.bAllowConstraintSplitting = bAllowConstraintSplitting;
    refineMain3(&params, nullptr);
}

void Dt2::refineAdvanced(MeshGenParams* pParams, Dt2* pGuide)
{
    refineMain3(pParams, pGuide);
}

bool Dt2::refineMain2(const MeshGenParams& params) const
{
    if (params.pZone == nullptr) {
        msgError("Dt2::refineMain2(..)", "pZone==NULL");
        return false;
    }
    const bool bOwn = std::any_of(vZones.begin(), vZones.end(),
                                  [&params](const std::unique_ptr<Zone2>& pOwn) { return pOwn.get() == params.pZone; });
    if (!bOwn) {
        msgError("Dt2::refineMain2()", "The zone does not belong to the triangulation, return");
        return false;
    }
    if (params.pZone->getZoneLocation() != ZL_INSIDE && params.pZone->getZoneLocation() != ZL_BOUNDED) {
        msgError("Dt2::refineMain2()",
                 "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
                 "pZone->convertToBoundedZone(..)");
        return false;
    }
    if (params.minAngleDegree > 30.0) {
        msgError("Dt2::refine(..)", "minAngleDegree must be <=30.0, return");
        return false;
    }
    if (!areLimitsSound(params)) {
        msgError("Dt2::refineMain2()", "limits of lengths, areas and heights must be positive numbers, return");
        return false;
    }
    return true;
}

void Dt2::refineMain3(MeshGenParams* pParams, Dt2* pGuide)
{
    LUMO_CHECK(pRefinement == nullptr, "pmmAng2RC==0");
    if (!refineMain2(*pParams)) return;
    LUMO_CHECK(pParams->pZone->getConstraintGraph() != nullptr, "pCG!=0");
    const RoundToNearest rounding;
    if (!pParams->bKeepExistingSteinerPoints) removeEarlierSteinerPoints(*pParams->pZone);
    if (hasGrid(*pParams)) {
        GridMesher(pParams, pGuide).run(true);
        applyConstraintsAndZones();
    }
    // Behind the grid, which may have split what is locked: a conforming constraint can't do without.
    Refinement refinement(*this, *pParams, pGuide);
    const Running running(*this, refinement);
    try {
        refinement.run();
    } catch (...) {
        refinement.finish();
        throw;
    }
    refinement.finish();
}

void Dt2::removeEarlierSteinerPoints(const Zone2& zone)
{
    std::vector<Point2*> vVertices;
    zone.getVertices(vVertices);
    for (Point2* pVtx : vVertices) {
        if (!innerVtxMgr.isFromEarlierRefinement(pVtx) || isConstraint(pVtx)) continue;
        innerVtxMgr.forget(pVtx);
        remove(pVtx);
    }
}

} // namespace ORBI_LUMO25D
