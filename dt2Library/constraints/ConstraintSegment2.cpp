#include "ConstraintSegment2.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/RoundToNearest.h"
#include "geometry/distances.h"
#include "geometry/finite.h"
#include "geometry/snapping.h"
#include "support/check.h"
#include "support/messages.h"

#include "ConstraintGraph2.h"
#include "Segment2.h"
#include "Visualizer2.h"
#include "Visualizer3.h"

#include <atomic>
#include <cmath>
#include <functional>
#include <iostream>
#include <unordered_set>

namespace ORBI_LUMO25D
{

namespace
{

/// Numbers the segments of the whole process.
std::atomic<std::int32_t> nextLabel{0};

/// Beyond all rounding; false where squares leave the range of doubles.
bool isClearlyShorter(double squaredLength, double thanSquaredLength)
{
    return squaredLength < thanSquaredLength * (1.0 - 1e-14) && std::isnormal(squaredLength) &&
           std::isfinite(thanSquaredLength);
}

/// Whether a vertex lies farther off the line of the carrier than all roundings of crossings together can move it.
bool isFarOff(const Point2* pVtx, const ConstraintSegment2& carrier)
{
    const Point2& a = *carrier.getSrc();
    const Point2& b = *carrier.getTrg();
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    const double det = dx * (pVtx->y() - a.y()) - dy * (pVtx->x() - a.x());
    return std::fabs(det) > 32.0 * snapDistance(a, b) * std::hypot(dx, dy);
}

} // namespace

ConstraintSegment2::ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_)
    : p0(p0_), p1(p1_), label(nextLabel.fetch_add(1, std::memory_order_relaxed)), cis(cis_)
{
    LUMO_CHECK(std::less<Point2*>()(p0, p1), "p0<p1");
}

bool ConstraintSegment2::operator<(const ConstraintSegment2& other) const
{
    if (p0 != other.p0) return std::less<Point2*>()(p0, other.p0);
    return std::less<Point2*>()(p1, other.p1);
}

// ---- owners ---------------------------------------------------------------------------------------------------------

unsigned int ConstraintSegment2::getNumberOfOwners() const
{
    unsigned int n = 0;
    for (const Owner* p = &owner; p != nullptr && p->pGraph != nullptr; p = p->pNext) {
        ++n;
    }
    return n;
}

ConstraintSegment2::Owner* ConstraintSegment2::findOwner(const ConstraintGraph2* pGraph)
{
    for (Owner* p = &owner; p != nullptr; p = p->pNext) {
        if (p->pGraph == pGraph) return p;
    }
    return nullptr;
}

/// False when the graph is an owner already. One that is being made, if it is an owner, is the last that was added.
bool ConstraintSegment2::addOwner(ConstraintGraph2* pGraph, bool bBeingMade)
{
    if (owner.pGraph == nullptr) {
        owner.pGraph = pGraph;
        return true;
    }
    if (owner.pGraph == pGraph || (owner.pNext != nullptr && owner.pNext->pGraph == pGraph)) return false;
    // Thousands of zones may share a border: one more doesn't look at all of them.
    if (!bBeingMade && findOwner(pGraph) != nullptr) return false;
    Owner* const pOwner = manager().newOwner();
    pOwner->pGraph = pGraph;
    pOwner->pNext = owner.pNext;
    owner.pNext = pOwner;
    return true;
}

/// The owner of a segment owns all below it, so that a part that has this owner needs no second visit.
void ConstraintSegment2::addOwnerRecursive(ConstraintGraph2* pGraph, bool bBeingMade)
{
    std::vector<ConstraintSegment2*> vWork{this};
    while (!vWork.empty()) {
        ConstraintSegment2* const pCSeg = vWork.back();
        vWork.pop_back();
        if (!pCSeg->addOwner(pGraph, bBeingMade) || !pCSeg->isDead()) continue;
        vWork.insert(vWork.end(), pCSeg->aChildren, pCSeg->aChildren + 2);
    }
}

ConstraintMgr& ConstraintSegment2::manager() const
{
    LUMO_CHECK(owner.pGraph != nullptr, "!sOwners.empty()");
    return *owner.pGraph->pConstraintMgr;
}

// ---- the hierarchy --------------------------------------------------------------------------------------------------

void ConstraintSegment2::getChildrenRec(std::vector<ConstraintSegment2*>& vChildren)
{
    LUMO_CHECK(isDead(), "vChildren.size()==2");
    std::vector<ConstraintSegment2*> vWork{aChildren[1], aChildren[0]};
    while (!vWork.empty()) {
        ConstraintSegment2* const pCSeg = vWork.back();
        vWork.pop_back();
        if (pCSeg->isDead()) {
            vWork.push_back(pCSeg->aChildren[1]);
            vWork.push_back(pCSeg->aChildren[0]);
        } else if (pCSeg->isAlive()) {
            vChildren.push_back(pCSeg);
        }
    }
}

void ConstraintSegment2::getChildrenAndSplitPoint(ConstraintSegment2*& pChild0, ConstraintSegment2*& pChild1,
                                                  Point2*& pSplit)
{
    if (isAlive()) {
        msgWarning("ConstraintSegment2::getChildrenAndSplitPoint()", "*this is still alive!");
        return;
    }
    LUMO_CHECK(isDead(), "vChildren.size()==2");
    pChild0 = aChildren[0];
    pChild1 = aChildren[1];
    pSplit = nullptr;
    if (pChild0->p0 == pChild1->p0 || pChild0->p0 == pChild1->p1) pSplit = pChild0->p0;
    if (pChild0->p1 == pChild1->p0 || pChild0->p1 == pChild1->p1) pSplit = pChild0->p1;
}

/// Whether this segment is pStart or below it.
bool ConstraintSegment2::isReachableFrom(ConstraintSegment2* pStart) const
{
    std::vector<ConstraintSegment2*> vWork{pStart};
    std::unordered_set<const ConstraintSegment2*> sSeen;
    while (!vWork.empty()) {
        ConstraintSegment2* const pCSeg = vWork.back();
        vWork.pop_back();
        if (pCSeg == nullptr || !sSeen.insert(pCSeg).second) continue;
        if (pCSeg == this) return true;
        if (pCSeg->isDead()) vWork.insert(vWork.end(), pCSeg->aChildren, pCSeg->aChildren + 2);
    }
    return false;
}

/// Gives this segment its children. While every child is shorter than its parent, no cycle can come up; only after a
/// split that isn't, which rounding can cause between neighbouring doubles, the hierarchy has to be searched.
bool ConstraintSegment2::linkChildren(Point2* pSplit)
{
    ConstraintMgr& mgr = manager();
    const double length = sqDistance2D(*p0, *p1);
    const bool bShorter =
        isClearlyShorter(sqDistance2D(*p0, *pSplit), length) && isClearlyShorter(sqDistance2D(*p1, *pSplit), length);
    if (!bShorter || mgr.bLongChildren) {
        if (isReachableFrom(mgr.find(p0, pSplit)) || isReachableFrom(mgr.find(p1, pSplit))) return false;
    }
    mgr.bLongChildren = mgr.bLongChildren || !bShorter;
    const bool bOwnCarriers = isFarOff(pSplit, *pCarrier);
    bool bAllNew = true;
    for (int i = 0; i < 2; ++i) {
        bool bNew = false;
        ConstraintSegment2* const pChild = mgr.findOrAdd(i == 0 ? p0 : p1, pSplit, cis, bNew);
        if (bNew) {
            if (!bOwnCarriers) pChild->pCarrier = pCarrier;
            pChild->inheritOwners(*this, i == 0 ? pChild->p0 != p0 : pChild->p1 != p1);
        } else {
            bAllNew = false;
            for (const Owner* p = &owner; p != nullptr; p = p->pNext) {
                pChild->addOwnerRecursive(p->pGraph, false);
            }
        }
        aChildren[i] = pChild;
    }
    if (bAllNew) return true;
    for (const Owner* p = &owner; p != nullptr; p = p->pNext) {
        p->pGraph->updateSplittedConstraintSegment(this);
    }
    return true;
}

/// A new part gets the owners and their directions; bAgainst when it is directed against its parent.
void ConstraintSegment2::inheritOwners(const ConstraintSegment2& parent, bool bAgainst)
{
    Owner* pLast = &owner;
    for (const Owner* p = &parent.owner; p != nullptr; p = p->pNext) {
        if (p != &parent.owner) pLast = pLast->pNext = parent.manager().newOwner();
        *pLast = *p;
        pLast->pNext = nullptr;
        pLast->bReverse = p->bReverse != bAgainst;
    }
}

// ---- splits ---------------------------------------------------------------------------------------------------------

bool ConstraintSegment2::split_combinatorialOnly(Point2* pSplit)
{
    LUMO_CHECK(pSplit != nullptr, "pSplit!=0");
    LUMO_CHECK(isAlive(), "isAlive()");
    LUMO_CHECK(p0 != pSplit && p1 != pSplit, "p0!=pSplit && p1!=pSplit");
    LUMO_CHECK(owner.pGraph != nullptr, "!sOwners.empty()");
    return linkChildren(pSplit);
}

Point2* ConstraintSegment2::insertAndSplit(const Point2& splitPoint)
{
    LUMO_CHECK(bAlive, "bAlive");
    LUMO_CHECK(!isDead(), "vChildren.empty()");
    LUMO_CHECK(owner.pGraph != nullptr, "!sOwners.empty()");
    Dt2* const pDt = owner.pGraph->pDt;
    LUMO_CHECK(pDt != nullptr, "pOwnerDt!=0");
    const RoundToNearest rounding;
    LUMO_CHECK(isFinite25D(splitPoint), "isfinite(splitPoint)");

    Point2* pSplit = nullptr;
    {
        // Out of force while the point goes in: the repair must not stop at an edge that is about to be replaced.
        const ConstraintMgr::OutOfForce outOfForce(*this);
        pSplit = pDt->insert(splitPoint);
    }
    LUMO_CHECK(pSplit != nullptr, "pSplit!=0");
    if (pSplit == p0 || pSplit == p1) {
        msgWarning("ConstraintSegment2::insertAndSplit",
                   "Trying to split a Constraint segment at one of its endpoints");
        return nullptr;
    }
    ConstraintMgr& mgr = manager();
    if (!linkChildren(pSplit)) {
        msgWarning("ConstraintSegment2::insertAndSplit", "The split point lies off the segment, not split");
        mgr.establish({this});
        return nullptr;
    }
    // The edge stands yet if the split point lies off it.
    if (pDt->hasArea()) pDt->killAndUnestablishConstraintSegment(this);
    mgr.establish({aChildren[0], aChildren[1]});
    if (pSplit->getIncidentTriangle() != nullptr) pDt->bfsFlipIncident(pSplit);
    return pSplit;
}

bool ConstraintSegment2::splitAndRemovePrev(const Point2& splitPoint)
{
    Point2* const pSplit = insertAndSplit(splitPoint);
    if (pSplit == nullptr) return false;
    Dt2* const pDt = owner.pGraph->pDt;
    std::vector<Triangle2*> vArisen;
    pDt->innerVtxMgr.removePreviouslyInsertedVertices(*pDt, pSplit, sqDistance2D(*p0, *pSplit), vArisen);
    return true;
}

// ---- printing -------------------------------------------------------------------------------------------------------

bool ConstraintSegment2::check() const
{
    std::cout << (isAlive() ? "alive" : "dead") << ", owners: " << getNumberOfOwners() << '\n';
    bool bOK = true;
    for (const Owner* p = &owner; p != nullptr && p->pGraph != nullptr; p = p->pNext) {
        std::cout << "For one owner CG2: " << (p->bHasDirection ? " has Direction, true" : " NO Direction, NOK NOK NOK")
                  << '\n';
        bOK = bOK && p->bHasDirection;
    }
    return bOK;
}

std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment)
{
    stream << "ConstraintSegment2 label " << segment.label << ": (" << *segment.p0 << ", " << *segment.p1 << ')';
    if (segment.isAlive()) {
        stream << " [alive]";
    } else {
        stream << " [DEAD, numChildren=" << (segment.isDead() ? 2 : 0) << ']';
    }
    return stream << "length=" << std::sqrt(sqDistance2D(*segment.p0, *segment.p1));
}

namespace
{

std::vector<Segment2> toSegments(const std::vector<ConstraintSegment2*>& vSegments)
{
    std::vector<Segment2> vCopies;
    vCopies.reserve(vSegments.size());
    for (const ConstraintSegment2* pCSeg : vSegments) {
        if (pCSeg != nullptr) vCopies.emplace_back(*pCSeg->getSrc(), *pCSeg->getTrg());
    }
    return vCopies;
}

} // namespace

void Visualizer2::addObject(const std::vector<ConstraintSegment2*>& vSegments, const Color& color)
{
    addObject(toSegments(vSegments), color);
}

void Visualizer3::addObject(const std::vector<ConstraintSegment2*>& vSegments, const std::string& color)
{
    addObject(toSegments(vSegments), color);
}

} // namespace ORBI_LUMO25D
