// Constraints: from the caller's segments to edges of the mesh.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "engine/ConstraintInserter.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include "Edge2.h"
#include "Segment2.h"

namespace ORBI_LUMO25D
{

// ---- for the caller -------------------------------------------------------------------------------------------------

ConstraintGraph2* Dt2::createConstraint(const std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                        bool bOrientedSegments)
{
    if (vSegments.empty()) {
        msgWarning("Dt2::createConstraint(..)", "vSegments is empty, returning NULL");
        return nullptr;
    }
    const RoundToNearest rounding;
    return bOrientedSegments ? pConstraintMgr->createConstraint_oriented(vSegments, cis)
                             : pConstraintMgr->createConstraint(vSegments, cis, true);
}

ConstraintGraph2* Dt2::createConstraint(const std::vector<Edge2>& vEdges, ConstraintInsertionStrategy cis)
{
    if (vEdges.empty()) {
        msgWarning("Dt2::createConstraint(..)", "vEdges is empty, returning NULL");
        return nullptr;
    }
    const RoundToNearest rounding;
    return pConstraintMgr->createConstraint(vEdges, cis, true);
}

ConstraintGraph2* Dt2::createConstraint(const std::vector<std::pair<Point2*, Point2*>>& vPairs,
                                        ConstraintInsertionStrategy cis)
{
    const RoundToNearest rounding;
    return pConstraintMgr->createConstraint(vPairs, cis, true);
}

void Dt2::applyConstraintsAndZones()
{
    const RoundToNearest rounding;
    pConstraintMgr->apply();
}

bool Dt2::isConstraint(const Triangle2* pT, int ith) const
{
    return isConstraint(pT->getCorner(incIndexBy1(ith)), pT->getCorner(incIndexBy2(ith)));
}

bool Dt2::isConstraint(const Point2* pA, const Point2* pB) const
{
    return pConstraintMgr->isConstraint(pA, pB);
}

bool Dt2::isConstraint(const Point2* pVtx) const
{
    return pConstraintMgr->isConstraintVertex(pVtx);
}

ConstraintSegment2* Dt2::getConstraintSegment(const Point2* pA, const Point2* pB) const
{
    return pConstraintMgr->getCSeg(pA, pB);
}

void Dt2::getAliveConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    pConstraintMgr->getAliveSegments(vSegments);
}

void Dt2::getAliveAndDeadConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    pConstraintMgr->getAllSegments(vSegments);
}

// ---- into the mesh --------------------------------------------------------------------------------------------------

void Dt2::beginEstablishing()
{
    pConstraintInserter->beginRun();
}

void Dt2::endEstablishing()
{
    pConstraintInserter->endRun();
}

bool Dt2::establishConstraint(ConstraintSegment2* pCSeg)
{
    switch (pCSeg->getCIS()) {
    case CIS_CONSTRAINED_DELAUNAY:
    case CIS_CONFORMING_DELAUNAY:
    case CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL:
        return pConstraintInserter->establish(pCSeg);
    }
    msgError("ConstraintMgr::apply()", "Unknown CIS");
    LUMO_CHECK(false, "false");
}

Point2* Dt2::splitStandingConstraint(ConstraintSegment2* pCSeg, const Point2& p, Triangle2* pT, int ith)
{
    return pConstraintInserter->splitStanding(pCSeg, p, pT, ith);
}

void Dt2::killAndUnestablishConstraintSegment(ConstraintSegment2* pCSeg)
{
    const RoundToNearest rounding;
    pConstraintMgr->takeOutOfForce(pCSeg);
    pConstraintInserter->repairReleasedEdge(pCSeg->getSrc(), pCSeg->getTrg());
}

void Dt2::splitConstraintAt(const Point2* pA, const Point2* pB, Point2* pVtx)
{
    ConstraintSegment2* const pCSeg = pConstraintMgr->getCSeg(pA, pB);
    if (pCSeg == nullptr) return;
    const bool bOK = pCSeg->split_combinatorialOnly(pVtx);
    LUMO_CHECK(bOK, "bOK");
}

Point2* Dt2::newVertexInVault(const Point2& p)
{
    std::uint32_t idx = 0;
    if (admit(&p, &p + 1)) rescale();
    Point2* const pVtx = newVertex(p, idx);
    vertexVault.addVertex(idx, pVtx);
    return pVtx;
}

Point2* Dt2::insertNear(const Point2& p, Triangle2* pHint)
{
    Point2* pVtx = newVertexInVault(p);
    Point2* const pNew = pVtx;
    insertOneVertex(&pVtx, pHint);
    if (!vertexVault.dupIsClean()) return vertexVault.treatOneDupGetHandle(pNew);
    vertexVault.sortIfNeeded(true);
    return pVtx;
}

void Dt2::splitEdgeAt(Point2* pVtx, Triangle2* pT, int ith)
{
    Triangle2* const pN = pT->neighbor(ith);
    Triangle2* const pT2 = getNewTriangle();
    Triangle2* const pT3 = getNewTriangle();
    starRepair.begin(pVtx);
    split24(pT, ith, pT2, pT3, pVtx);
    if (!bCutMode) {
        for (Triangle2* pFresh : {pT, pN, pT2, pT3}) {
            starRepair.consider(pFresh);
        }
        runStarRepair(pVtx);
    }
    vertexVault.sortIfNeeded(true);
}

} // namespace ORBI_LUMO25D
