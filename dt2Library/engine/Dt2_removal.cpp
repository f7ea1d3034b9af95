// Vertices out of the triangle structure.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include "Color.h"
#include "Visualizer2.h"

#include <algorithm>
#include <iostream>

namespace ORBI_LUMO25D
{

void Dt2::remove(Point2* pVtx)
{
    if (pVtx == nullptr) {
        msgWarning("Dt2::remove(..)", "pVtx==NULL, illegal, return.");
        return;
    }
    const RoundToNearest rounding;
    vertexVault.sortIfNeeded(true);
    if (!poolVertices.contains(pVtx) || !vertexVault.isActive(pVtx)) {
        // A foreign pointer isn't read: it may point anywhere.
        if (poolVertices.contains(pVtx)) std::cout << *pVtx << '\n';
        msgWarning("Dt2::remove()", "vertex does not belong to the triangulation, return");
        return;
    }
    if (pConstraintMgr->isConstraintVertex(pVtx)) {
        msgWarning("Dt2::remove()", "Illegal: Can't remove a constraint vertex");
        std::cerr << *pVtx << '\n';
        return;
    }
    if (pVtx->getIncidentTriangle() == nullptr) {
        vertexVault.setInactive(pVtx);
        return;
    }
    if (!collectFan(pVtx, vFan)) {
        removeHullVertex(pVtx, true);
        return;
    }
    removeInnerVertex(pVtx);
    vRemovedVertices.push_back(pVtx);
    vertexVault.setInactive(pVtx);
    LUMO_CHECK(pVtx->getIncidentTriangle() == nullptr, "pVtx->getIncidentTriangle()==NULL");
}

// ---- inside the hull ------------------------------------------------------------------------------------------------

void Dt2::removeInnerVertex(Point2* pVtx)
{
    using L = TriangleLinks;
    vHole.clear();
    fanCutter.run(pVtx, vFan, true, 3, vHole);
    if (vFan.size() != 3) reportStubbornFan(pVtx, vFan.size());
    LUMO_CHECK(vFan.size() == 3, "vRemainingT.size()==3");

    Point2* aCorners[3];
    Triangle2* aOuter[3];
    for (int k = 0; k < 3; ++k) {
        const Triangle2* const pT = vFan[static_cast<std::size_t>(k)];
        const int i = L::indexOf(pT, pVtx);
        aCorners[k] = pT->corner(L::next(i));
        aOuter[k] = pT->neighbor(i);
    }
    Triangle2* const pT0 = vFan[0];
    pT0->setProperties(aCorners[0], aCorners[1], aCorners[2]);
    for (int k = 0; k < 3; ++k) {
        // The outer edge of the k-th triangle runs from corner k to corner k+1: opposite corner k+2.
        Triangle2* const pOuter = aOuter[k];
        if (pOuter != nullptr) connect(pT0, L::prev(k), pOuter, L::indexOf(pOuter, vFan[static_cast<std::size_t>(k)]));
    }
    for (std::size_t k = 1; k < 3; ++k) {
        vFan[k]->clearProperties();
        vDeadTriangles.push_back(vFan[k]);
    }
    vHole.push_back(pT0);
    repairHole();
}

void Dt2::removeFreeVertex(Point2* pVtx, std::vector<Triangle2*>& vArisen)
{
    if (pRefinement == nullptr) {
        remove(pVtx);
        return;
    }
    const bool bClosed = collectFan(pVtx, vFan);
    LUMO_CHECK(bClosed, "collectFan(pVtx,vFan)");
    removeInnerVertex(pVtx);
    pVtx->setIncidentTriangle(nullptr);
    vArisen.insert(vArisen.end(), vHole.begin(), vHole.end());
}

/// No ear in a whole turn, which can't be in a sound mesh: leaves a picture, then fails.
void Dt2::reportStubbornFan(const Point2* pVtx, std::size_t numTriangles) const
{
    Visualizer2 visualizer("watchDogFailed.ps");
    show(visualizer);
    visualizer.addObject(*pVtx, Color(1.0, 0.0, 0.0, 0.1, false));
    visualizer.writeFile();
    std::cout << "vUmbrellaT.size()=" << numTriangles << '\n';
    LUMO_CHECK(false, "false");
}

// ---- at the convex hull ---------------------------------------------------------------------------------------------

/// The part of the star that stays convex without the vertex is filled by flips; what is left around the vertex goes.
void Dt2::removeHullVertex(Point2* pVtx, bool bUpdateVault)
{
    vHole.clear();
    collectFan(pVtx, vFan);
    fanCutter.run(pVtx, vFan, false, 1, vHole);
    detachFan(pVtx);
    repairHole();
    if (bUpdateVault) {
        vRemovedVertices.push_back(pVtx);
        vertexVault.setInactive(pVtx);
    } else {
        pVtx->setIncidentTriangle(nullptr);
    }
}

/// Fills vFan with the triangles around a vertex, counterclockwise; on the hull, from one hull edge to the other. True
/// when the fan is closed, that is, for an inner vertex.
bool Dt2::collectFan(const Point2* pVtx, std::vector<Triangle2*>& vT) const
{
    vT.clear();
    using L = TriangleLinks;
    Triangle2* const pStart = pVtx->getIncidentTriangle();
    Triangle2* pT = pStart;
    do {
        vT.push_back(pT);
        const int i = L::indexOf(pT, pVtx);
        // The neighbours and what lies behind them come next: ask for them while the turn goes on.
        __builtin_prefetch(pT->corner(L::next(i)));
        __builtin_prefetch(pT->neighbor(i));
        pT = pT->neighbor(L::next(i));
    } while (pT != nullptr && pT != pStart);
    if (pT == pStart) return true;

    std::vector<Triangle2*> vBefore;
    for (pT = pStart->neighbor(L::prev(L::indexOf(pStart, pVtx))); pT != nullptr;
         pT = pT->neighbor(L::prev(L::indexOf(pT, pVtx)))) {
        vBefore.push_back(pT);
    }
    vT.insert(vT.begin(), vBefore.rbegin(), vBefore.rend());
    return false;
}

/// Takes the triangles of vFan out of the mesh; what lies behind them becomes the hull. Without anything behind them
/// the triangulation has no area any more.
void Dt2::detachFan(const Point2* pVtx)
{
    using L = TriangleLinks;
    bool bSurvivor = false;
    for (Triangle2* pT : vFan) {
        const int i = L::indexOf(pT, pVtx);
        Triangle2* const pN = pT->neighbor(i);
        if (pN == nullptr) continue;
        bSurvivor = true;
        L::setNeighbor(pN, L::indexOf(pN, pT), nullptr);
        pT->corner(L::next(i))->setIncidentTriangle(pN);
        pT->corner(L::prev(i))->setIncidentTriangle(pN);
    }
    if (!bSurvivor) {
        bFullDimensional = false;
        for (Triangle2* pT : vFan) {
            for (int i = 0; i < 3; ++i) {
                pT->corner(i)->setIncidentTriangle(nullptr);
            }
        }
    }
    for (Triangle2* pT : vFan) {
        pT->clearProperties();
        vDeadTriangles.push_back(pT);
    }
}

// ---- repair ---------------------------------------------------------------------------------------------------------

/// Lawson's flips until every edge of the triangles in vHole is locally Delaunay.
///
/// The triangles around the hole keep their empty circles when a vertex goes, so that the edges between them and the hole
/// need no test: in a small hole they are left out, which spares the look at the triangles beyond. A mesh that isn't
/// Delaunay everywhere is repaired as far as the flips reach.
void Dt2::repairHole()
{
    using L = TriangleLinks;
    const bool bInsideOnly = !bFastMode && !bCutMode && vHole.size() <= FanCutter::maxScanned;
    const auto isBeyond = [this, bInsideOnly](const Triangle2* pN) {
        return pN == nullptr || (bInsideOnly && std::find(vHole.begin(), vHole.end(), pN) == vHole.end());
    };
    vFresh.assign(vHole.begin(), vHole.end());
    while (!vFresh.empty()) {
        vNextFresh.clear();
        for (Triangle2* pT : vFresh) {
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pN = pT->neighbor(i);
                if (isBeyond(pN)) continue;
                const Point2* const q = pN->corner(L::indexOf(pN, pT));
                if (orbiTest.circleInc3state(pT, q) != CINC2_INCIRCLE) continue;
                if (pConstraintMgr->isConstraint(pT->corner(L::next(i)), pT->corner(L::prev(i)))) continue;
                flip(pT, i);
                vNextFresh.push_back(pT);
                vNextFresh.push_back(pN);
            }
        }
        vFresh.swap(vNextFresh);
    }
}

} // namespace ORBI_LUMO25D
