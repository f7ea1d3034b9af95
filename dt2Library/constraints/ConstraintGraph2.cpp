#include "ConstraintGraph2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/RingSort.h"
#include "engine/Dt2.h"
#include "geometry/distances.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/check.h"
#include "support/messages.h"

#include "Color.h"
#include "Visualizer2.h"

#include <algorithm>
#include <iterator>

namespace ORBI_LUMO25D
{

// ---- construction ---------------------------------------------------------------------------------------------------

ConstraintGraph2::ConstraintGraph2(Dt2* pDt_, const std::vector<ConstraintSegment2*>& vSegments,
                                   ConstraintInsertionStrategy cis_)
    : pDt(pDt_), pConstraintMgr(&pDt_->getConstraintMgr()), cis(cis_)
{
    takeSegments(vSegments);
    bOriented = bPolygon;
}

ConstraintGraph2::ConstraintGraph2(Dt2* pDt_, const std::vector<ConstraintSegment2*>& vSegments,
                                   const Directions& mPPReverse, ConstraintInsertionStrategy cis_)
    : pDt(pDt_), pConstraintMgr(&pDt_->getConstraintMgr()), cis(cis_), bOriented(true)
{
    takeSegments(vSegments);
    bool bAllAgainst = bPolygon;
    for (ConstraintSegment2* pCSeg : vCSegParents) {
        const auto q_it = mPPReverse.find({pCSeg->getSrc(), pCSeg->getTrg()});
        LUMO_CHECK(q_it != mPPReverse.end(), "q_it!=mPPReverse.end()");
        bAllAgainst = bAllAgainst && isReverse(pCSeg) != q_it->second;
        setDirection(pCSeg, q_it->second);
    }
    // A ring that was given clockwise is kept in that order, so that its chain is consecutive.
    if (bAllAgainst) std::reverse(vCSegParents.begin(), vCSegParents.end());
    setDirectionsRecursive(vCSegParents);
}

/// Owns the segments and brings them in order: a ring counterclockwise, anything else as given, with the stored
/// directions.
void ConstraintGraph2::takeSegments(const std::vector<ConstraintSegment2*>& vSegments)
{
    for (ConstraintSegment2* pCSeg : vSegments) {
        pCSeg->addOwnerRecursive(this, true);
    }
    std::vector<bool> vReverse;
    bPolygon = RingSort(vSegments).run(vCSegParents, vReverse);
    if (!bPolygon) {
        vCSegParents = vSegments;
        vReverse.assign(vSegments.size(), false);
    }
    for (std::size_t i = 0; i < vCSegParents.size(); ++i) {
        setDirection(vCSegParents[i], vReverse[i]);
    }
    setDirectionsRecursive(vCSegParents);
}

// ---- directions -----------------------------------------------------------------------------------------------------

void ConstraintGraph2::setDirection(ConstraintSegment2* pCSeg, bool bReverse)
{
    ConstraintSegment2::Owner* const pOwner = pCSeg->findOwner(this);
    LUMO_CHECK(pOwner != nullptr, "q_it!=mCSegReverse.end()");
    pOwner->bHasDirection = true;
    pOwner->bReverse = bReverse;
}

bool ConstraintGraph2::isReverse(ConstraintSegment2* pCSeg) const
{
    const ConstraintSegment2::Owner* const pOwner = pCSeg->findOwner(this);
    LUMO_CHECK(pOwner != nullptr && pOwner->bHasDirection, "q_it!=mCSegReverse.end()");
    return pOwner->bReverse;
}

/// Carries the directions of dead segments down to all below them.
void ConstraintGraph2::setDirectionsRecursive(const std::vector<ConstraintSegment2*>& vSegments)
{
    std::vector<ConstraintSegment2*> vWork;
    std::copy_if(vSegments.begin(), vSegments.end(), std::back_inserter(vWork),
                 [](const ConstraintSegment2* pCSeg) { return pCSeg->isDead(); });
    while (!vWork.empty()) {
        ConstraintSegment2* const pParent = vWork.back();
        vWork.pop_back();
        Point2* pSrc = pParent->getSrc();
        Point2* pTrg = pParent->getTrg();
        if (isReverse(pParent)) std::swap(pSrc, pTrg);
        for (ConstraintSegment2* pChild : {pParent->aChildren[0], pParent->aChildren[1]}) {
            const bool bAtSource = pChild->getSrc() == pSrc || pChild->getTrg() == pSrc;
            const bool bReverse = bAtSource ? pChild->getTrg() == pSrc : pChild->getSrc() == pTrg;
            const ConstraintSegment2::Owner* const pOwner = pChild->findOwner(this);
            LUMO_CHECK(pOwner != nullptr, "pChild0Src==pParentSrc || pChild1Src==pParentSrc");
            // What is below a segment follows it already, unless its own direction changes now.
            if (pOwner->bHasDirection && pOwner->bReverse == bReverse) continue;
            setDirection(pChild, bReverse);
            if (pChild->isDead()) vWork.push_back(pChild);
        }
    }
}

void ConstraintGraph2::getDirectChildren(ConstraintSegment2* pParent, ConstraintSegment2*& pChild0,
                                         ConstraintSegment2*& pChild1) const
{
    pChild0 = nullptr;
    pChild1 = nullptr;
    if (!pParent->isDead()) return;
    pChild0 = pParent->aChildren[0]; // at getSrc()
    pChild1 = pParent->aChildren[1];
    if (isReverse(pParent)) std::swap(pChild0, pChild1);
}

void ConstraintGraph2::updateSplittedConstraintSegment(ConstraintSegment2* pParent)
{
    LUMO_CHECK(!pParent->isAlive(), "!pParentCSeg->isAlive()");
    setDirectionsRecursive({pParent});
}

// ---- questions ------------------------------------------------------------------------------------------------------

void ConstraintGraph2::getChildConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    vSegments.clear();
    std::vector<ConstraintSegment2*> vWork(vCSegParents.rbegin(), vCSegParents.rend());
    while (!vWork.empty()) {
        ConstraintSegment2* const pCSeg = vWork.back();
        vWork.pop_back();
        if (pCSeg->isAlive()) vSegments.push_back(pCSeg);
        if (!pCSeg->isDead()) continue;
        ConstraintSegment2* pChild0 = nullptr;
        ConstraintSegment2* pChild1 = nullptr;
        getDirectChildren(pCSeg, pChild0, pChild1);
        vWork.push_back(pChild1);
        vWork.push_back(pChild0);
    }
}

void ConstraintGraph2::getPolygonVertices(std::vector<Point2*>& vVertices) const
{
    std::vector<ConstraintSegment2*> vChain;
    getChildConstraintSegments(vChain);
    vVertices.reserve(vVertices.size() + 2 * vChain.size());
    for (ConstraintSegment2* pCSeg : vChain) {
        const bool bReverse = isReverse(pCSeg);
        vVertices.push_back(bReverse ? pCSeg->getTrg() : pCSeg->getSrc());
        vVertices.push_back(bReverse ? pCSeg->getSrc() : pCSeg->getTrg());
    }
}

bool ConstraintGraph2::isConstraint(Point2* pA, Point2* pB) const
{
    if (pA == nullptr || pB == nullptr) return false;
    return isConstraint(pConstraintMgr->getCSeg(pA, pB));
}

bool ConstraintGraph2::isConstraint(ConstraintSegment2* pCSeg) const
{
    if (pCSeg == nullptr || !pCSeg->isAlive()) return false;
    const ConstraintSegment2::Owner* const pOwner = pCSeg->findOwner(this);
    return pOwner != nullptr && pOwner->bHasDirection;
}

// ---- Delaunay edges -------------------------------------------------------------------------------------------------

namespace
{

/// Moves the split point of the edge a b to a vertex that is so close to the edge that a sliver would remain. Returns
/// true when the search is over.
bool splitAtCloseVertex(const Point2& a, const Point2& b, const Point2& vertex, Point2& splitPoint)
{
    if (!isInRange2D(vertex, a, b)) return false;
    const Point2 foot = footOfPerpendicular(a, b, vertex);
    if (foot == a || foot == b) return false;
    const double d = distance2D(foot, vertex);
    const bool bVeryClose = d < 0.001 && d / distance2D(foot, a) < 0.01 && d / distance2D(foot, b) < 0.01;
    if (bVeryClose || d < 1e-6) {
        splitPoint = vertex;
        return true;
    }
    if (d / distance2D(a, b) < 0.01 && isInRange2D(foot, a, b)) splitPoint = foot;
    return false;
}

} // namespace

/// Whether the edge needs no split; else where to split it.
bool ConstraintGraph2::isDelaunay(const ConstraintSegment2* pCSeg, Point2& splitPoint) const
{
    Point2* const pA = pCSeg->getSrc();
    Point2* const pB = pCSeg->getTrg();
    if (!pDt->hasArea()) return true;
    const Triangle2* const pT0 = pDt->getAdjacentTriangle(pA, pB);
    const Triangle2* const pT1 = pDt->getAdjacentTriangle(pB, pA);
    if (pT0 == nullptr || pT1 == nullptr) return true;
    const Point2* const pApex0 = pT0->corner(pT0->getIntraTriangleIndex(pA, pB));
    const Point2* const pApex1 = pT1->corner(pT1->getIntraTriangleIndex(pA, pB));
    if (pDt->orbiTest.circleInc3state(pT0, pApex1) != CINC2_INCIRCLE) return true;

    splitPoint = Point2((pA->x() + pB->x()) / 2.0, (pA->y() + pB->y()) / 2.0, (pA->z() + pB->z()) / 2.0);
    if (!splitAtCloseVertex(*pA, *pB, *pApex0, splitPoint)) splitAtCloseVertex(*pA, *pB, *pApex1, splitPoint);
    return false;
}

bool ConstraintGraph2::makeDelaunay(double discretizationLength)
{
    const double sqLimit = discretizationLength * discretizationLength;
    bool bResult = true;
    for (bool bSplitAny = true; bSplitAny;) {
        bSplitAny = false;
        std::vector<ConstraintSegment2*> vWork;
        getChildConstraintSegments(vWork);
        while (!vWork.empty()) {
            ConstraintSegment2* const pCSeg = vWork.back();
            vWork.pop_back();
            Point2 splitPoint;
            if (!pCSeg->isAlive()) {
                if (pCSeg->isDead()) pCSeg->getChildrenRec(vWork);
            } else if (!isDelaunay(pCSeg, splitPoint)) {
                const bool bLong = sqLimit <= sqDistance25D(*pCSeg->getSrc(), *pCSeg->getTrg());
                if (bLong && pCSeg->insertAndSplit(splitPoint) != nullptr) {
                    bSplitAny = true;
                    LUMO_CHECK(!pCSeg->isAlive(), "!pCSeg->isAlive()");
                    pCSeg->getChildrenRec(vWork);
                } else {
                    bResult = false;
                }
            }
        }
    }
    return bResult;
}

// ---- pictures -------------------------------------------------------------------------------------------------------

void ConstraintGraph2::show(const char* filename) const
{
    Visualizer2 visualizer(filename);
    show(&visualizer, Color(CRED));
    visualizer.writeFile();
}

void ConstraintGraph2::show(Visualizer2* pVisualizer, const Color& color) const
{
    if (pVisualizer == nullptr) {
        msgWarning("ConstraintGraph2::show()", "pVisualizer==NULL");
        return;
    }
    std::vector<ConstraintSegment2*> vChain;
    getChildConstraintSegments(vChain);
    pVisualizer->addObject(vChain, color);
}

} // namespace ORBI_LUMO25D
