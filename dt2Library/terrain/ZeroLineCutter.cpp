#include "terrain/ZeroLineCutter.h"

#include "ConstraintSegment2.h"
#include "Edge2.h"
#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "geometry/numericTools.h"
#include "support/messages.h"
#include "terrain/SurfaceOverlay.h"
#include "terrain/zeroPlace.h"
#include "zones/triangleSets.h"

#include <algorithm>

namespace ORBI_LUMO25D
{

namespace
{

bool haveOppositeSigns(double a, double b)
{
    return (a < 0.0 && b > 0.0) || (a > 0.0 && b < 0.0);
}

/// The height of surface ith at a place on the edge between two vertices.
double heightOnEdge(const SurfaceHeights& heights, int ith, const Point2& p0, const Point2& p1, const Point2& at)
{
    return heightOnSegment(Point2(p0.x(), p0.y(), heights.get(&p0).aHeights[ith]),
                           Point2(p1.x(), p1.y(), heights.get(&p1).aHeights[ith]), at.x(), at.y());
}

} // namespace

ZeroLineCutter::ZeroLineCutter(Dt2& dt_, const std::vector<Triangle2*>& vT_, const SurfaceOverlay& overlay_,
                               SurfaceHeights& heights_, double threshold_)
    : dt(dt_), overlay(overlay_), heights(heights_), threshold(threshold_), vT(vT_)
{
}

bool ZeroLineCutter::run()
{
    findCuts();
    if (vCuts.empty()) return false;
    planPieces();
    holdEdges();
    for (Cut& cut : vCuts) splitEdge(cut);
    insertPieces();
    return true;
}

void ZeroLineCutter::findCuts()
{
    vCutOfSide.assign(3 * dt.poolTriangles.size(), none);
    std::vector<Edge2> vEdges;
    getUndirectedEdges(dt, vT, vEdges);
    for (const Edge2& edge : vEdges) {
        Point2 *p0 = nullptr, *p1 = nullptr;
        edge.getPoints(p0, p1);
        if (p0->z() == 0.0 && p1->z() == 0.0) vZeroEdges.emplace_back(p0, p1);
        if (!haveOppositeSigns(p0->z(), p1->z()) || !planCut(p0, p1)) continue;
        Triangle2* aTriangles[2] = {nullptr, nullptr};
        int aSides[2] = {0, 0};
        edge.getTriangles(aTriangles[0], aTriangles[1], aSides[0], aSides[1]);
        for (int i = 0; i < 2; ++i) {
            if (aTriangles[i] == nullptr) continue;
            const std::size_t side = 3 * dt.poolTriangles.indexOf(aTriangles[i]) + static_cast<std::size_t>(aSides[i]);
            vCutOfSide[side] = static_cast<std::uint32_t>(vCuts.size() - 1);
        }
    }
    LUMO_CHECK(vCuts.size() < none, "vCuts.size()<none");
}

/// False when there is no place for a point on the edge: at its ends, within the rounding of places, the new vertex might
/// be on the wrong side of the constraints that meet there.
bool ZeroLineCutter::planCut(Point2* p0, Point2* p1)
{
    const ZeroPlace zero = findZeroPlace(*p0, *p1);
    if (!zero.bApart) {
        vZeroEdges.emplace_back(p0, p1);
        warnOfSkippedCut(p0->z(), p1->z());
        return false;
    }
    vCuts.push_back({p0, p1, zero.place, zero.height(*p0, heights.get(p0), *p1, heights.get(p1))});
    return true;
}

void ZeroLineCutter::planPieces()
{
    for (const Triangle2* pT : vT) {
        const std::uint32_t* const aCuts = &vCutOfSide[3 * dt.poolTriangles.indexOf(pT)];
        const auto numCuts = 3 - std::count(aCuts, aCuts + 3, none);
        if (numCuts == 0) continue;
        LUMO_CHECK(numCuts == 1 || numCuts == 2, "numCutHelpers==1 || numCutHelpers==2");
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t next = aCuts[incIndexBy1(i)], other = aCuts[incIndexBy2(i)];
            if (numCuts == 1 && aCuts[i] != none) vPieces.push_back({aCuts[i], none, pT->corner(i)});
            if (numCuts == 2 && aCuts[i] == none) vPieces.push_back({next, other, nullptr});
        }
    }
}

/// Turns the edges into constraints.
void ZeroLineCutter::holdEdges()
{
    const auto isNoConstraint = [this](const Point2* p0, const Point2* p1) { return !dt.isConstraint(p0, p1); };
    VertexPairs vEdges;
    for (const Cut& cut : vCuts) {
        if (isNoConstraint(cut.pP0, cut.pP1)) vEdges.emplace_back(cut.pP0, cut.pP1);
    }
    dt.createConstraint(vEdges, CIS_CONSTRAINED_DELAUNAY);
    dt.createConstraint(vZeroEdges, CIS_CONSTRAINED_DELAUNAY);
    // Dead ones too: where edges are as close as the rounding, one may have been split at an end of another.
    for (Cut& cut : vCuts) cut.pSegment = dt.getConstraintMgr().find(cut.pP0, cut.pP1);
}

void ZeroLineCutter::splitEdge(Cut& cut)
{
    ConstraintSegment2* pSegment = cut.pSegment;
    LUMO_CHECK(pSegment != nullptr, "q_it!=mVtxpCHlp.end()");
    if (!pSegment->isAlive()) { // another split has met this edge
        std::vector<ConstraintSegment2*> vKids;
        pSegment->getChildrenRec(vKids);
        const auto it = std::find_if(vKids.begin(), vKids.end(), [&](const ConstraintSegment2* pKid) {
            return approxHasOn(*pKid->getSrc(), *pKid->getTrg(), cut.splitPoint);
        });
        if (it == vKids.end()) {
            msgWarning("CutAndFill::realCut()", "!bFound, continue");
            return;
        }
        pSegment = *it;
    }
    if (*pSegment->getSrc() == cut.splitPoint) {
        cut.pVertex = pSegment->getSrc();
    } else if (*pSegment->getTrg() == cut.splitPoint) {
        cut.pVertex = pSegment->getTrg();
    } else {
        cut.pVertex = pSegment->insertAndSplit(cut.splitPoint);
    }
    if (cut.pVertex == nullptr) return;
    SurfaceHeights::Pair& pair = heights.at(cut.pVertex);
    if (pair.isKnown()) return; // it was there before
    pair.aHeights[0] = pair.aHeights[1] = cut.height;
    cut.pVertex->setHeight(0.0);
}

void ZeroLineCutter::insertPieces()
{
    VertexPairs vPairs;
    for (const Piece& piece : vPieces) {
        Point2* const pFrom = vCuts[piece.from].pVertex;
        Point2* const pTo = piece.to == none ? piece.pCorner : vCuts[piece.to].pVertex;
        if (pFrom == nullptr || pTo == nullptr) continue;
        if (pFrom == pTo) {
            printLine(piece.to == none ? "realCut (0): Identical split points skipped"
                                       : "realCut (1): Identical split points skipped");
            continue;
        }
        vPairs.emplace_back(pFrom, pTo);
    }
    dt.createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY);
}

void ZeroLineCutter::findMissingHeights(const std::vector<Point2*>& vVertices)
{
    const auto isMissing = [this](const Point2* p) { return !heights.get(p).isKnown(); };
    if (std::none_of(vVertices.begin(), vVertices.end(), isMissing)) return;

    // On the line the difference is exactly zero, whatever the edges that were met there say.
    interpolateMissing(true);
    while (interpolateMissing(false)) {
    }
    for (Point2* pVtx : vVertices) {
        if (!isMissing(pVtx)) continue;
        SurfaceHeights::Pair pair;
        const bool bOK0 = overlay.getHeight(0, *pVtx, pair.aHeights[0]);
        const bool bOK1 = overlay.getHeight(1, *pVtx, pair.aHeights[1]);
        if (!bOK0) msgWarning("CutAndFillImpl::setOneMissingHeight()", "!bOK0");
        if (!bOK1) msgWarning("CutAndFillImpl::setOneMissingHeight()", "!bOK1");
        LUMO_CHECK(bOK0 || bOK1, "bOK0 || bOK1");
        for (double& height : pair.aHeights) {
            if (height == SurfaceHeights::UNKNOWN) height = 0.0;
        }
        heights.at(pVtx) = pair;
        heights.settle(pVtx, threshold);
    }
}

/// Gives heights to vertices without them that split a constraint whose ends have some. Split vertices come after the ends
/// of their segments, so that once usually is enough. False when there was none.
bool ZeroLineCutter::interpolateMissing(bool bOnZeroLines)
{
    std::vector<ConstraintSegment2*> vSegments;
    dt.getAliveAndDeadConstraintSegments(vSegments);
    bool bFound = false;
    for (ConstraintSegment2* pSegment : vSegments) {
        if (pSegment->isAlive()) continue;
        ConstraintSegment2 *pChild0 = nullptr, *pChild1 = nullptr;
        Point2* pSplit = nullptr;
        pSegment->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
        if (pSplit == nullptr || heights.get(pSplit).isKnown()) continue;
        const Point2 &p0 = *pSegment->getSrc(), &p1 = *pSegment->getTrg();
        if (!heights.get(&p0).isKnown() || !heights.get(&p1).isKnown()) continue;
        if (bOnZeroLines && !(p0.z() == 0.0 && p1.z() == 0.0)) continue;
        SurfaceHeights::Pair pair;
        for (int ith = 0; ith < 2; ++ith) pair.aHeights[ith] = heightOnEdge(heights, ith, p0, p1, *pSplit);
        heights.at(pSplit) = pair;
        heights.settle(pSplit, threshold);
        bFound = true;
    }
    return bFound;
}

} // namespace ORBI_LUMO25D
