#include "meshing/GridMesher.h"

#include "engine/Dt2.h"
#include "geometry/distances.h"
#include "geometry/snapping.h"
#include "meshing/RefinementLimits.h"
#include "support/check.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"

#include "Bbox2.h"
#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "MeshGenParams.h"
#include "SegmentChecker.h"
#include "Vector2.h"
#include "Zone2.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// A grid needs this many vertices, or it is none.
constexpr std::size_t minNumPoints = 4;
/// The shortest piece that a cut may leave of a constraint, in cells.
constexpr double minPiece = 0.7;
/// How much a stripe is longer than the zone at either end.
constexpr double overhang = 1.1;

std::vector<Segment2*> pointersTo(std::vector<Segment2>& vSegments)
{
    std::vector<Segment2*> vPointers;
    vPointers.reserve(vSegments.size());
    for (Segment2& segment : vSegments) {
        vPointers.push_back(&segment);
    }
    return vPointers;
}

using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

/// The scalar product in the plane of the way from p to q and d.
double along(const Point2& p, const Point2& q, const Vector2& d)
{
    return (q.x() - p.x()) * d.x() + (q.y() - p.y()) * d.y();
}

Vector2 leftNormal(const Vector2& d)
{
    return Vector2(-d.y(), d.x(), 0.0);
}

} // namespace

GridMesher::GridMesher(MeshGenParams* pParams_, Dt2* pGuide_)
    : pParams(pParams_), pZone(pParams_->pZone), dt2(*pZone->getDelaunayTriangulation()), pGuide(pGuide_),
      usedTargetLength(pParams_->gridLength)
{
    LUMO_CHECK(usedTargetLength > 0.0, "usedTargetLength>0");
}

void GridMesher::run(bool bChopConstraints)
{
    const Vector2 direction(pParams->gridVector.x(), pParams->gridVector.y(), 0.0);
    const bool bFinite = std::isfinite(direction.x()) && std::isfinite(direction.y());
    pParams->gridVector = bFinite ? normalize(direction) : direction;
    if (!isFeasible()) {
        msgWarning("GridMesher::run()", "gridLength is too small for the zone, no grid");
        return;
    }
    std::vector<Point2> vPoints;
    Segments vStripeParts;
    computeGridPoints(vPoints, vStripeParts);
    if (vPoints.size() < minNumPoints) return;
    std::vector<Point2*> vHandles;
    insertPoints(vPoints, vHandles);
    removeTooCloseVertices(vHandles, 0.5 * pParams->gridLength);
    for (const Point2* pVtx : vHandles) {
        dt2.innerVtxMgr.add(pVtx);
    }
    dt2.innerVtxMgr.clear();
    if (!bChopConstraints) return;
    dt2.applyConstraintsAndZones();
    chopConstraints(vStripeParts);
    dt2.applyConstraintsAndZones();
}

/// Whether the cells are large enough for the doubles there, and not more than a triangulation can have.
bool GridMesher::isFeasible() const
{
    constexpr double smallestCell = 0x1p-40; // of the largest coordinate
    constexpr double maxNumStripes = 0x1p24;
    constexpr double maxNumCells = 0x1p31;
    Bbox2 box;
    for (const Point2& p : getConstraintPoints()) {
        box.add(p);
    }
    const double maxAbs = std::max(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs());
    const double extent = (box.get_maxX() - box.get_minX()) + (box.get_maxY() - box.get_minY());
    return usedTargetLength > smallestCell * maxAbs && extent / usedTargetLength < maxNumStripes &&
           pZone->getArea2D() / usedTargetLength / usedTargetLength < maxNumCells;
}

// ---- the numbers of the grid ----------------------------------------------------------------------------------------

/// Of several points that lie equally far out, the first.
void GridMesher::findExtremePoints(const Vector2& across, const std::vector<Point2>& vConstraintPoints)
{
    const Point2* p0 = &vConstraintPoints.front();
    const Point2* p1 = p0;
    for (const Point2& p : vConstraintPoints) {
        if (compareAlong(across, *p0, p) > 0) p0 = &p;
        if (compareAlong(across, *p1, p) < 0) p1 = &p;
    }
    extremePoint0 = *p0;
    extremePoint1 = *p1;
}

/// The constraint vertices of the zone by their coordinates.
std::vector<Point2> GridMesher::getConstraintPoints() const
{
    std::vector<ConstraintGraph2*> vGraphs;
    pZone->getConstraintGraphs(vGraphs);
    std::vector<Point2*> vVertices;
    for (const ConstraintGraph2* pGraph : vGraphs) {
        pGraph->getPolygonVertices(vVertices);
    }
    std::vector<Point2> vPoints;
    vPoints.reserve(vVertices.size());
    for (const Point2* pVtx : vVertices) {
        vPoints.push_back(*pVtx);
    }
    std::sort(vPoints.begin(), vPoints.end());
    vPoints.erase(std::unique(vPoints.begin(), vPoints.end()), vPoints.end());
    return vPoints;
}

/// Appends the stripes of one direction, which has length 1. None when the zone is narrower than a cell, or, with a
/// warning, has no width that is a number.
void GridMesher::createStripes(const Vector2& direction, Segments& vStripes)
{
    const std::vector<Point2> vConstraintPoints = getConstraintPoints();
    LUMO_CHECK(!vConstraintPoints.empty(), "!vConstraintPoints.empty()");
    const Vector2 across = leftNormal(direction);
    double width = std::numeric_limits<double>::quiet_NaN();
    if (std::isfinite(direction.x()) && std::isfinite(direction.y())) {
        findExtremePoints(across, vConstraintPoints);
        width = along(extremePoint1, extremePoint0, across);
    }
    if (!std::isfinite(width)) {
        msgWarning("GridMesher::createStripes()", "orthLen is invalid");
        return;
    }
    // Points that all lie in one line along the stripes end here: beyond, the extreme points differ.
    if (width < usedTargetLength) return;

    // One margin on each side, of half a cell to a cell, and whole cells in between.
    const auto numInside = static_cast<std::size_t>(std::max(0.0, std::ceil(width / usedTargetLength) - 2.0));
    const double stopStripeSpace = 0.5 * (width - static_cast<double>(numInside) * usedTargetLength);
    LUMO_CHECK(stopStripeSpace < 1.01 * usedTargetLength, "stopStripeSpace<1.01*usedTargetLength");
    LUMO_CHECK(stopStripeSpace > 0.49 * usedTargetLength, "stopStripeSpace>0.49*usedTargetLength");
    double length = 0.0;
    for (const Point2& p : vConstraintPoints) {
        length = std::max(length, std::fabs(along(extremePoint0, p, direction)));
    }
    if (length == 0.0) return;
    for (std::size_t i = 0; i <= numInside; ++i) {
        // The first extreme point is the leftmost one, so the zone lies on its right. It may be at either end of the zone.
        const double offset = stopStripeSpace + static_cast<double>(i) * usedTargetLength;
        const Point2 middle = extremePoint0 - across * offset;
        const Vector2 half = direction * (overhang * length);
        vStripes.emplace_back(middle - half, middle + half);
    }
}

/// Cuts a stripe where it crosses constraints. vAll gets all parts up to the last constraint, a little longer than they
/// are, so that they cross the constraints at their ends; vParts those that remain when half a cell is taken from both
/// ends.
void GridMesher::cutStripe(const Segment2& stripe, const SegmentChecker& constraints, Segments& vParts,
                           Segments& vAll) const
{
    Intersectors vIntersectors;
    constraints.getIntersectors(&stripe, false, vIntersectors);
    const Vector2 unit = normalize(Vector2(stripe.trg.x() - stripe.src.x(), stripe.trg.y() - stripe.src.y(), 0.0));
    std::vector<double> vCrossings; // distances from the source
    for (const auto& [pConstraint, sit] : vIntersectors) {
        if (sit != SIT_POINT) continue;
        Point2 onStripe, onConstraint;
        constraints.getIntersectionPoint(sit, stripe, *pConstraint, onStripe, onConstraint);
        vCrossings.push_back(along(stripe.src, onStripe, unit));
    }
    std::sort(vCrossings.begin(), vCrossings.end());
    const auto part = [&stripe, &unit](double from, double to) {
        return Segment2(stripe.src + unit * from, stripe.src + unit * to);
    };
    const double d = 0.5 * usedTargetLength;
    const double e = 0.1 * d;
    double current = 0.0;
    for (const double crossing : vCrossings) {
        vAll.push_back(part(current - e, crossing + e));
        if (crossing - current > 2.0 * d) vParts.push_back(part(current + d, crossing - d));
        current = crossing;
    }
}

void GridMesher::computeStripeParts(Segments& vPartsAlong, Segments& vPartsAcross, Segments& vPartsAll)
{
    Segments vStripesAlong, vStripesAcross;
    createStripes(pParams->gridVector, vStripesAlong);
    createStripes(leftNormal(pParams->gridVector), vStripesAcross);

    std::vector<ConstraintSegment2*> vCSegs;
    dt2.getAliveConstraintSegments(vCSegs);
    Segments vConstraints;
    vConstraints.reserve(vCSegs.size());
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        vConstraints.emplace_back(*pCSeg->getSrc(), *pCSeg->getTrg());
    }
    const SegmentChecker constraints(pointersTo(vConstraints));
    for (const Segment2& stripe : vStripesAlong) {
        cutStripe(stripe, constraints, vPartsAlong, vPartsAll);
    }
    for (const Segment2& stripe : vStripesAcross) {
        cutStripe(stripe, constraints, vPartsAcross, vPartsAll);
    }
    keepPartsInZone(vPartsAlong, vPartsAcross);
}

/// Parts end at constraints, so that each lies inside or outside of the zone as its source does.
void GridMesher::keepPartsInZone(Segments& vPartsAlong, Segments& vPartsAcross) const
{
    constexpr std::uint8_t inZone = 1;
    std::vector<Triangle2*> vT;
    pZone->getTriangles(vT);
    const PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, inZone);
    const auto isOutside = [this, &marks](const Segment2& part) {
        const Triangle2* const pT = dt2.locate(part.src);
        return pT == nullptr || marks[pT] != inZone;
    };
    for (Segments* pParts : {&vPartsAlong, &vPartsAcross}) {
        pParts->erase(std::remove_if(pParts->begin(), pParts->end(), isOutside), pParts->end());
    }
}

void GridMesher::computeGridPoints(std::vector<Point2>& vPoints, Segments& vStripeParts)
{
    Segments vPartsAlong, vPartsAcross;
    computeStripeParts(vPartsAlong, vPartsAcross, vStripeParts);
    const SegmentChecker across(pointersTo(vPartsAcross));
    Intersectors vIntersectors;
    for (const Segment2& part : vPartsAlong) {
        vIntersectors.clear();
        across.getIntersectors(&part, false, vIntersectors);
        for (const auto& [pOther, sit] : vIntersectors) {
            if (sit != SIT_POINT) return; // the lines are orthogonal, but for numbers that can't hold them
            Point2 p, onOther;
            across.getIntersectionPoint(sit, part, *pOther, p, onOther);
            if (setHeight(p)) vPoints.push_back(p);
        }
    }
}

bool GridMesher::setHeight(Point2& p) const
{
    double z = 0.0;
    const bool bGuided = pGuide != nullptr && pGuide->getHeight(p.x(), p.y(), z, nullptr, 0.0);
    if (!bGuided && !dt2.getHeight(p.x(), p.y(), z, nullptr, 0.0)) return false;
    p.setZ(z);
    return true;
}

// ---- the mesh -------------------------------------------------------------------------------------------------------

/// Gives the vertices that are new, each once: what was there before isn't the grid's.
void GridMesher::insertPoints(const std::vector<Point2>& vPoints, std::vector<Point2*>& vHandles)
{
    const std::size_t numBefore = dt2.poolVertices.size();
    dt2.insertVector(vPoints, &vHandles);
    PoolMarks<Point2> seen(dt2.poolVertices);
    const auto isNotNew = [this, numBefore, &seen](const Point2* pVtx) {
        return dt2.poolVertices.indexOf(pVtx) < numBefore || !seen.set(pVtx, 1);
    };
    vHandles.erase(std::remove_if(vHandles.begin(), vHandles.end(), isNotNew), vHandles.end());
}

/// Takes vertices of the grid out again that came too close to something, and out of vHandles. Of two, the older one goes;
/// but vertices that have become ends of constraints stay.
void GridMesher::removeTooCloseVertices(std::vector<Point2*>& vHandles, double minDist)
{
    dt2.applyConstraintsAndZones();
    constexpr std::uint8_t removable = 1;
    constexpr std::uint8_t tooClose = 2;
    PoolMarks<Point2> marks(dt2.poolVertices);
    for (const Point2* pVtx : vHandles) {
        if (!dt2.isConstraint(pVtx)) marks[pVtx] = removable;
    }
    std::vector<Triangle2*> vT;
    pZone->getTriangles(vT);
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Point2* a = pT->getCorner(i);
            const Point2* b = pT->getCorner(incIndexBy1(i));
            if (!(sqDistance25D(*a, *b) < minDist * minDist)) continue;
            if (dt2.poolVertices.indexOf(b) < dt2.poolVertices.indexOf(a)) std::swap(a, b);
            if (marks[a] == 0) std::swap(a, b);
            if (marks[a] != 0) marks.set(a, tooClose);
        }
    }
    std::vector<Point2*> vKept;
    for (Point2* pVtx : vHandles) {
        if ((marks[pVtx] & tooClose) == 0) {
            vKept.push_back(pVtx);
        } else {
            dt2.remove(pVtx);
        }
    }
    vHandles.swap(vKept);
}

void GridMesher::chopConstraints(Segments& vStripeParts)
{
    if (!pParams->bAllowConstraintSplitting) return;
    const RefinementLimits limits(*pParams, pGuide);
    const SegmentChecker parts(pointersTo(vStripeParts));
    std::vector<ConstraintSegment2*> vCSegs;
    dt2.getAliveConstraintSegments(vCSegs);
    std::vector<Point2> vCuts;
    for (ConstraintSegment2* pCSeg : vCSegs) {
        if (!mayBeCut(pCSeg, limits)) continue;
        vCuts.clear();
        findCuts(Segment2(*pCSeg->getSrc(), *pCSeg->getTrg()), parts, vCuts);
        for (const Point2& cut : vCuts) {
            chop(pCSeg, cut, limits);
        }
    }
}

bool GridMesher::mayBeCut(const ConstraintSegment2* pCSeg, const RefinementLimits& limits)
{
    if (limits.isLocked(pCSeg)) return false;
    return !(2.0 * limits.params.minEdgeLength > std::sqrt(sqDistance25D(*pCSeg->getSrc(), *pCSeg->getTrg())));
}

/// Finds where parts of stripes cross a segment, from its source to its target. In the order of the parts, what would
/// leave too short a piece is passed over: so it comes to the same as to cut at once and to test the pieces anew, but each
/// crossing is computed once, and on the segment as it was.
void GridMesher::findCuts(const Segment2& segment, const SegmentChecker& parts, std::vector<Point2>& vCuts) const
{
    Intersectors vIntersectors;
    parts.getIntersectors(&segment, false, vIntersectors);
    if (vIntersectors.empty()) return;
    const double sqMinPiece = minPiece * usedTargetLength * minPiece * usedTargetLength;
    const Vector2 direction(segment.trg.x() - segment.src.x(), segment.trg.y() - segment.src.y(), 0.0);
    std::map<double, Point2> mCuts{{0.0, segment.src}, {along(segment.src, segment.trg, direction), segment.trg}};
    for (const auto& [pPart, sit] : vIntersectors) {
        if (sit != SIT_POINT) continue;
        Point2 c, onPart;
        parts.getIntersectionPoint(sit, segment, *pPart, c, onPart);
        const double position = along(segment.src, c, direction);
        const auto next = mCuts.upper_bound(position);
        if (next == mCuts.begin() || next == mCuts.end()) continue;
        if (sqDistance25D(c, next->second) < sqMinPiece || sqDistance25D(c, std::prev(next)->second) < sqMinPiece)
            continue;
        mCuts.emplace_hint(next, position, c);
    }
    for (auto it = std::next(mCuts.begin()); it != std::prev(mCuts.end()); ++it) {
        vCuts.push_back(it->second);
    }
}

/// Splits the part of a constraint that a cut lies on. Parts may be shorter than the cuts make them: a conforming
/// constraint is split further where it needs that.
void GridMesher::chop(ConstraintSegment2* pCSeg, const Point2& cut, const RefinementLimits& limits) const
{
    while (!pCSeg->isAlive()) {
        ConstraintSegment2* aKids[2] = {nullptr, nullptr};
        Point2* pSplit = nullptr;
        pCSeg->getChildrenAndSplitPoint(aKids[0], aKids[1], pSplit);
        pCSeg = aKids[along(*pSplit, cut, *pCSeg->getTrg() - *pCSeg->getSrc()) < 0.0 ? 0 : 1];
    }
    const double sqMinPiece = minPiece * usedTargetLength * minPiece * usedTargetLength;
    if (sqDistance25D(cut, *pCSeg->getSrc()) < sqMinPiece || sqDistance25D(cut, *pCSeg->getTrg()) < sqMinPiece) return;
    if (!mayBeCut(pCSeg, limits)) return;
    LUMO_CHECK(pCSeg->isAlive(), "pCSeg->isAlive()");
    if (pCSeg->insertAndSplit(cut) == nullptr) return;
    LUMO_CHECK(!pCSeg->isAlive(), "!pCSeg->isAlive()");
}

} // namespace ORBI_LUMO25D
