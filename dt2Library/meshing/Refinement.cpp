// Delaunay refinement: J. Ruppert, "A Delaunay refinement algorithm for quality 2-dimensional mesh generation", J. of
// Algorithms 18 (1995), with the walks towards circumcentres of L. P. Chew, "Guaranteed-quality mesh generation for curved
// surfaces", SoCG 1993. What is particular here: angles, lengths and areas are those on the surface, while the mesh is
// Delaunay in the plane.

#include "meshing/Refinement.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "engine/Dt2.h"
#include "geometry/distances.h"
#include "meshing/ConcentricShells.h"
#include "meshing/TriangleShape.h"
#include "support/check.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"

#include "ConstraintGraph2.h"
#include "MeshGenParams.h"
#include "Zone2.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <utility>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

constexpr int maxRounds = 50;

/// How many insertions for the sake of angles are more than any sound input needs: in all, for each triangle, for each time
/// that one is as long as wide, and for each insertion that size has asked for. Between two borders, it takes as many cells
/// as they fit in; at a sharp corner fewer.
constexpr double forcedAtLeast = 1000.0;
constexpr double forcedPerTriangle = 24.0;
constexpr double forcedPerAspect = 6.0;
constexpr double forcedPerDueToSize = 8.0;
constexpr double forcedPerGuideTriangle = 20.0;

/// How many times as long as wide a triangle is, but for a factor of 2, as far as that can be cured.
double curableAspect(const TriangleShape& shape, double minEdgeLength)
{
    const double sine = std::sqrt(shape.sqSineSmallest2D());
    return std::min(1.0 / sine, std::sqrt(shape.maxSq2D()) / minEdgeLength);
}

} // namespace

Refinement::Refinement(Dt2& dt2_, MeshGenParams& params, Dt2* pGuide)
    : dt2(dt2_), limits(params, pGuide), pCG(params.pZone->getConstraintGraph()),
      bAllAreCandidates(limits.hasGrowthLimit() || limits.hasHeightLimit())
{
}

// ---- rounds -----------------------------------------------------------------------------------------------------------

/// A round in which every bad triangle was cured needs none after it that finds nothing.
void Refinement::run()
{
    for (int round = 0; round < maxRounds; ++round) {
        bLookAgain = bBorderInside;
        getInitialRefineCandidates();
        bool bChanged = false;
        if (!runRound(bChanged)) {
            msgWarning("Dt2::refineMain3()", "The limits ask for more vertices than the input can need, giving up");
            break;
        }
        if (!bChanged || !bLookAgain) break;
    }
    rememberAreas();
}

/// The bad triangles of the zone, in an order that doesn't depend on addresses.
void Refinement::getInitialRefineCandidates()
{
    std::vector<Triangle2*> vT;
    limits.params.pZone->getTriangles(vT);
    std::vector<std::pair<std::size_t, Triangle2*>> vBad;
    double numForcedAtMost = forcedAtLeast;
    for (Triangle2* pT : vT) {
        const TriangleShape shape(*pT);
        numForcedAtMost += forcedPerTriangle + forcedPerAspect * curableAspect(shape, limits.params.minEdgeLength);
        if (bAllAreCandidates || limits.isBad(shape, pT)) vBad.emplace_back(dt2.poolTriangles.indexOf(pT), pT);
    }
    if (limits.hasHeightLimit()) {
        numForcedAtMost += forcedPerGuideTriangle * static_cast<double>(limits.pGuide->numberOfTriangles());
    }
    if (numForcedLeft < 0.0) {
        numForcedLeft = numForcedAtMost; // what later rounds find is our own work
        bBorderInside = hasBorderInside(vT);
    }
    std::sort(vBad.begin(), vBad.end());
    for (const auto& [number, pT] : vBad) {
        addRefCand(pT);
    }
}

/// Whether the zone is on both sides of a part of its own border: only one of them gets candidates when that is split.
bool Refinement::hasBorderInside(const std::vector<Triangle2*>& vT) const
{
    const PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, 1);
    std::vector<Point2*> vVertices;
    pCG->getPolygonVertices(vVertices);
    for (std::size_t i = 0; i + 1 < vVertices.size(); i += 2) {
        const Triangle2* const pRight = dt2.getAdjacentTriangle(vVertices[i + 1], vVertices[i]);
        if (pRight != nullptr && marks[pRight] != 0) return true;
    }
    return false;
}

void Refinement::addRefCand(Triangle2* pT)
{
    const TriangleShape shape(*pT);
    if (bAllAreCandidates || limits.isBad(shape, pT)) queue.push(shape.sqSineSmallest25D(), pT);
}

/// False when there have been too many insertions.
bool Refinement::runRound(bool& bChanged)
{
    CandidateQueue::Entry entry;
    while (queue.pop(entry)) {
        if (!entry.isAlive()) continue;
        RefCand3 candidate(dt2, entry.pT);
        if (!candidate.needRefinement(limits) || !tryRefine(candidate)) {
            // What is around it may be different later.
            bLookAgain = true;
            continue;
        }
        bChanged = true;
        // A split may leave it as it was.
        if (entry.isAlive()) addRefCand(entry.pT);
        // Where heights jump, as between a constraint and a guide that runs above it, nothing ever gets short enough.
        const bool bForced = candidate.getReason() != RefCand3::SIZE || candidate.isSteep();
        numForcedLeft += bForced ? -1.0 : forcedPerDueToSize;
        if (numForcedLeft < 0.0) return false;
    }
    return true;
}

bool Refinement::tryRefine(const RefCand3& candidate)
{
    LUMO_CHECK(candidate.isAlive(), "pRC->isAlive()");
    const int splitIndex = candidate.getContainingAndIndex().second;
    if (splitIndex == RefCand3::atCorner) return false;
    if (splitIndex >= 0) return splitSegment(candidate);
    insertCircumcenter(candidate);
    return true;
}

// ---- inside -----------------------------------------------------------------------------------------------------------

void Refinement::insertCircumcenter(const RefCand3& candidate)
{
    Triangle2* const pT = candidate.getContainingAndIndex().first;
    const Point2& center = candidate.getCircumcenter();
    Point2* const pVtx = newVertex(center.x(), center.y(), heightAt(center.x(), center.y(), *pT));
    dt2.innerVtxMgr.add(pVtx);
    insertVertexForRefinement(pVtx, pT, candidate.getEdgeBelow());
}

/// As any insertion, but where it goes is known, and all triangles that arise become candidates: they are those around the
/// vertex, which is their first corner.
void Refinement::insertVertexForRefinement(Point2* pVtx, Triangle2* pT, int edge)
{
    dt2.insertAt(pVtx, pT, edge);
    Triangle2* const pFirst = pVtx->getIncidentTriangle();
    Triangle2* pAround = pFirst;
    do {
        addRefCand(pAround);
        pAround = pAround->neighbor(1);
    } while (pAround != pFirst);
}

Point2* Refinement::newVertex(double x, double y, double z)
{
    const Point2 p(x, y, z);
    if (!vUnused.empty()) {
        Point2* const pVtx = vUnused.back();
        vUnused.pop_back();
        return new (pVtx) Point2(p);
    }
    vNew.push_back(new (dt2.poolVertices.alloc()) Point2(p));
    return vNew.back();
}

double Refinement::heightAt(double x, double y, const Triangle2& t)
{
    if (limits.pGuide == nullptr) return Dt2::heightOn(t, x, y);
    double z = 0.0;
    if (!limits.pGuide->getHeight(x, y, z, nullptr, 0.0))
        warnOnce(NO_HEIGHT, "Dt2::refineMain2()", "No height value available");
    return z;
}

// ---- constraints ------------------------------------------------------------------------------------------------------

bool Refinement::splitSegment(const RefCand3& candidate)
{
    const auto [pT, ith] = candidate.getContainingAndIndex();
    Point2* const p1 = pT->corner(L::next(ith));
    Point2* const p2 = pT->corner(L::prev(ith));
    ConstraintSegment2* const pCSeg = candidate.getConstraintSegment(ith);
    if (pCSeg == nullptr) {
        warnOnce(NO_SEGMENT, "Dt2::tryRefine()", "pCSeg==NULL");
        return false;
    }
    LUMO_CHECK((pCSeg->getSrc() == p1 && pCSeg->getTrg() == p2) || (pCSeg->getSrc() == p2 && pCSeg->getTrg() == p1),
               "(pCSeg->getSrc()==p1 && pCSeg->getTrg()==p2) || (pCSeg->getSrc()==p2 && pCSeg->getTrg()==p1)");
    Point2 splitPoint;
    if (!getSplitPoint(pT, ith, splitPoint)) {
        warnOnce(NO_SPLIT_POINT, "Dt2::tryRefine()",
                 "no appropriate splitPoint in double precision arithmetic for a triangle");
        return false;
    }
    const bool bOwn = pCG->isConstraint(pCSeg);
    Point2* const pInserted = dt2.splitStandingConstraint(pCSeg, splitPoint, pT, ith);
    if (pInserted == nullptr || pInserted == p1 || pInserted == p2) {
        if (warnOnce(PRECISION, "Dt2::tryRefine()",
                     "Double precision arithmetic does not allow to split a segment further, giving up")) {
            std::cout << "EdgeLen2D(" << ith << "): " << std::sqrt(sqDistance2D(*p1, *p2)) << '\n';
        }
        return false;
    }
    const double sqRadius = std::min(sqDistance2D(*pInserted, *p1), sqDistance2D(*pInserted, *p2));
    removeEncroaching(pInserted, sqRadius);
    addRefCandsAround(pInserted, p1, p2, bOwn);
    return true;
}

/// Ruppert's rule: what lies in the circle of the segment would keep the vertices near it from ever being at rest.
void Refinement::removeEncroaching(Point2* pSplit, double sqRadius)
{
    vArisen.clear();
    for (Point2* pVtx : dt2.innerVtxMgr.removePreviouslyInsertedVertices(dt2, pSplit, sqRadius, vArisen)) {
        if (pVtx->getIncidentTriangle() == nullptr) vUnused.push_back(pVtx);
    }
    bLookAgain = bLookAgain || vArisen.size() > FanCutter::maxScanned; // the repair of a large hole may go beyond it
    for (Triangle2* pT : vArisen) {
        if (pT->corner(0) != nullptr) addRefCand(pT);
    }
}

/// After the split of a segment from pSrc to pTrg, which had the zone on its left: a constraint inside the zone gives
/// candidates on both sides, the zone's border on the left only.
void Refinement::addRefCandsAround(Point2* pSplit, const Point2* pSrc, Point2* pTrg, bool bBorder)
{
    vArisen.clear();
    if (!bBorder) {
        dt2.getIncidentTriangles(pSplit, vArisen);
    } else {
        Triangle2* const pFirst = dt2.getAdjacentTriangle(pSplit, pTrg);
        for (Triangle2* pT = pFirst;; pT = pT->neighbor(L::next(L::indexOf(pT, pSplit)))) {
            // Not edges, but chains, as rounding can leave them: the next round will see.
            if (pT == nullptr || (pT == pFirst && !vArisen.empty())) {
                bLookAgain = true;
                return;
            }
            vArisen.push_back(pT);
            if (pT->corner(L::prev(L::indexOf(pT, pSplit))) == pSrc) break;
        }
    }
    for (Triangle2* pT : vArisen) {
        addRefCand(pT);
    }
}

/// A point on edge ith, but for rounding, that a split doesn't turn a triangle on either side over with. The neighbouring
/// doubles are tried as well; if none is strictly on the inner side of all other edges, one that is on such an edge does, and
/// if there is none either, one that pT alone allows: earlier splits leave triangles without a width behind a straight
/// border. Such points are inserted like any others, and the parts of the segment established anew.
bool Refinement::getSplitPoint(const Triangle2* pT, int ith, Point2& splitPoint) const
{
    const Point2& a = *pT->corner(L::next(ith));
    const Point2& b = *pT->corner(L::prev(ith));
    const double t = ConcentricShells(dt2).splitFraction(&a, &b);
    const auto between = [t](double from, double to) {
        return t == 0.5 ? 0.5 * from + 0.5 * to : from + t * (to - from);
    };
    const Point2 ideal(between(a.x(), b.x()), between(a.y(), b.y()), between(a.z(), b.z()));
    const double ux =
        std::nextafter(std::fabs(ideal.x()), std::numeric_limits<double>::infinity()) - std::fabs(ideal.x());
    const double uy =
        std::nextafter(std::fabs(ideal.y()), std::numeric_limits<double>::infinity()) - std::fabs(ideal.y());
    const Triangle2* const pN = pT->neighbor(ith);

    const auto isInside = [this](const Triangle2* pSide, int i, const Point2& p, bool bStrictly) {
        for (const int k : {L::next(i), L::prev(i)}) {
            const Orientation2 o =
                dt2.orbiTest.orientationInRange(pSide->corner(L::next(k)), pSide->corner(L::prev(k)), &p);
            if (o == ORIENTATION2_CW || (bStrictly && o != ORIENTATION2_CCW)) return false;
        }
        return true;
    };
    const auto find = [&](int maxSteps, bool bStrictly, bool bBothSides) {
        for (int k = 0; k <= maxSteps; ++k) {
            for (const int fx : {0, -1, 1}) {
                for (const int fy : {0, -1, 1}) {
                    const Point2 p(ideal.x() + fx * k * ux, ideal.y() + fy * k * uy, ideal.z());
                    if (p == a || p == b || !isInside(pT, ith, p, bStrictly)) continue;
                    if (bBothSides && !isInside(pN, L::indexOf(pN, pT), p, bStrictly)) continue;
                    splitPoint = p;
                    return true;
                }
            }
        }
        return false;
    };
    const bool bBothSides = pN != nullptr;
    return find(2, true, bBothSides) || find(4, false, bBothSides) || (bBothSides && find(2, true, false));
}

// ---- the end ----------------------------------------------------------------------------------------------------------

void Refinement::finish()
{
    dt2.innerVtxMgr.clear();
    for (Point2* pVtx : vNew) {
        if (pVtx->getIncidentTriangle() != nullptr) {
            dt2.vertexVault.addVertex(dt2.hilbertCurve.getIndex(*pVtx), pVtx);
        }
    }
    dt2.vertexVault.sortIfNeeded(true);
}

/// For a refinement on the other side of the border.
void Refinement::rememberAreas() const
{
    std::vector<Point2*> vVertices;
    pCG->getPolygonVertices(vVertices);
    for (std::size_t i = 0; i + 1 < vVertices.size(); i += 2) {
        const Triangle2* const pT = dt2.getAdjacentTriangle(vVertices[i], vVertices[i + 1]);
        if (pT == nullptr) continue;
        dt2.getConstraintSegment(vVertices[i], vVertices[i + 1])->setAdjacentArea(TriangleShape(*pT).area25D());
    }
}

bool Refinement::warnOnce(Warning kind, const char* function, const char* message)
{
    const bool bFirst = (warned & kind) == 0;
    if (bFirst) msgWarning(function, message);
    warned |= kind;
    return bFirst;
}

} // namespace ORBI_LUMO25D
