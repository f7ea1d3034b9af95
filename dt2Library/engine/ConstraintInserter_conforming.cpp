// Constraints that end as chains of Delaunay edges.

#include "engine/ConstraintInserter.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/aroundVertex.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"

#include <cmath>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

/// Splits a standing segment if it is no Delaunay edge; its parts go on the work list.
bool ConstraintInserter::makeConforming(ConstraintSegment2* pCSeg)
{
    EdgeRef edge{nullptr, 0};
    if (isDelaunayEdge(pCSeg, edge)) return true;
    Point2 p;
    if (numConformingSplitsLeft == 0 || !conformingSplitPoint(pCSeg, p)) {
        bLeftAsItIs = true;
        return true;
    }
    --numConformingSplitsLeft;
    if (insertOnEdge(pCSeg, nullptr, p, edge.pT, edge.ith) == nullptr) return false;
    pushParts(pCSeg);
    return true;
}

bool ConstraintInserter::isDelaunayEdge(const ConstraintSegment2* pCSeg, EdgeRef& edge) const
{
    edge.pT = dt2.getAdjacentTriangle(pCSeg->getSrc(), pCSeg->getTrg());
    if (edge.pT == nullptr) return true;
    edge.ith = edge.pT->getIntraTriangleIndex(pCSeg->getSrc(), pCSeg->getTrg());
    const Triangle2* const pN = edge.pT->neighbor(edge.ith);
    return pN == nullptr || !dt2.isInCircle(edge.pT, pN->corner(L::indexOf(pN, edge.pT)));
}

/// Where to split a segment: in the middle, or, if another constraint meets it at an acute angle at just one of its ends,
/// at the power of two from there that is nearest to half of its length. False when it is too short.
bool ConstraintInserter::conformingSplitPoint(const ConstraintSegment2* pCSeg, Point2& p) const
{
    // Below this, rounding would bend the parts visibly.
    constexpr double smallest = 256.0;
    const bool bForward = *pCSeg->getSrc() < *pCSeg->getTrg();
    const Point2* pA = bForward ? pCSeg->getSrc() : pCSeg->getTrg();
    const Point2* pB = bForward ? pCSeg->getTrg() : pCSeg->getSrc();
    const double length = std::hypot(pB->x() - pA->x(), pB->y() - pA->y());
    if (!(length > smallest * snapDistance(*pA, *pB))) return false;

    const bool bAcuteA = hasAcuteNeighbor(pA, pB);
    const bool bAcuteB = hasAcuteNeighbor(pB, pA);
    double t = 0.5;
    if (bAcuteA != bAcuteB) {
        const double shell = std::exp2(std::round(std::log2(length / 2.0)));
        t = bAcuteA ? shell / length : 1.0 - shell / length;
    }
    p = Point2(pA->x() + t * (pB->x() - pA->x()), pA->y() + t * (pB->y() - pA->y()), 0.0);
    const bool bLevel = pCSeg->getCIS() == CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL;
    const Point2& heightA = bLevel ? *pCSeg->pCarrier->getSrc() : *pA;
    const Point2& heightB = bLevel ? *pCSeg->pCarrier->getTrg() : *pB;
    if (bLevel) {
        const Point2 foot = footOfPerpendicular(heightA, heightB, p);
        p.setCoords(foot.x(), foot.y(), 0.0);
    }
    p.setHeight(heightOnSegment(heightA, heightB, p.x(), p.y()));
    return p != *pA && p != *pB;
}

/// Whether another constraint leaves the vertex at less than a right angle to the one that goes to pEnd.
bool ConstraintInserter::hasAcuteNeighbor(const Point2* pVtx, const Point2* pEnd) const
{
    const double dx = pEnd->x() - pVtx->x();
    const double dy = pEnd->y() - pVtx->y();
    return anyNeighborOf(pVtx, [&](const Point2* p) {
        if (p == pEnd || dx * (p->x() - pVtx->x()) + dy * (p->y() - pVtx->y()) <= 0.0) return false;
        return manager.isConstraint(pVtx, p);
    });
}

} // namespace ORBI_LUMO25D
