// Vertices out of the triangle structure.

#include "engine/Dt2.h"

#include "core/MeshSurgery.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include "Color.h"
#include "Visualizer2.h"

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
    if (pVtx->getIncidentTriangle() == nullptr) {
        vertexVault.setInactive(pVtx);
        return;
    }
    std::vector<Triangle2*> vFan;
    if (!collectFan(pVtx, vFan)) {
        removeHullVertex(pVtx, true);
        return;
    }
    removeInnerVertex(pVtx, vFan);
    vRemovedVertices.push_back(pVtx);
    vertexVault.setInactive(pVtx);
    LUMO_CHECK(pVtx->getIncidentTriangle() == nullptr, "pVtx->getIncidentTriangle()==NULL");
}

// ---- inside the hull ------------------------------------------------------------------------------------------------

void Dt2::removeInnerVertex(Point2* pVtx, std::vector<Triangle2*>& vFan)
{
    using L = TriangleLinks;
    std::vector<Triangle2*> vRewritten;
    fanCutter.run(pVtx, vFan, true, 3, vRewritten);
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
    vRewritten.push_back(pT0);
    repairByRounds(vRewritten);
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
    std::vector<Triangle2*> vFan;
    std::vector<Triangle2*> vPeeled;
    collectFan(pVtx, vFan);
    fanCutter.run(pVtx, vFan, false, 1, vPeeled);
    detachFan(pVtx, vFan);
    repairByRounds(vPeeled);
    if (bUpdateVault) {
        vRemovedVertices.push_back(pVtx);
        vertexVault.setInactive(pVtx);
    } else {
        pVtx->setIncidentTriangle(nullptr);
    }
}

/// Fills vFan with the triangles around a vertex, counterclockwise; on the hull, from one hull edge to the other. True
/// when the fan is closed, that is, for an inner vertex.
bool Dt2::collectFan(const Point2* pVtx, std::vector<Triangle2*>& vFan) const
{
    using L = TriangleLinks;
    Triangle2* const pStart = pVtx->getIncidentTriangle();
    Triangle2* pT = pStart;
    do {
        vFan.push_back(pT);
        pT = pT->neighbor(L::next(L::indexOf(pT, pVtx)));
    } while (pT != nullptr && pT != pStart);
    if (pT == pStart) return true;

    std::vector<Triangle2*> vBefore;
    for (pT = pStart->neighbor(L::prev(L::indexOf(pStart, pVtx))); pT != nullptr;
         pT = pT->neighbor(L::prev(L::indexOf(pT, pVtx)))) {
        vBefore.push_back(pT);
    }
    vFan.insert(vFan.begin(), vBefore.rbegin(), vBefore.rend());
    return false;
}

/// Takes the triangles of a fan out of the mesh; what lies behind them becomes the hull. Without anything behind them
/// the triangulation has no area any more.
void Dt2::detachFan(const Point2* pVtx, const std::vector<Triangle2*>& vFan)
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

/// Lawson's flips until every edge of the given triangles, and of those that flips rewrite, is locally Delaunay.
void Dt2::repairByRounds(std::vector<Triangle2*>& vT)
{
    using L = TriangleLinks;
    std::vector<Triangle2*> vNext;
    while (!vT.empty()) {
        vNext.clear();
        for (Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pN = pT->neighbor(i);
                if (pN == nullptr) continue;
                const Point2* const q = pN->corner(L::indexOf(pN, pT));
                if (orbiTest.circleInc3state(pT, q) != CINC2_INCIRCLE) continue;
                flip(pT, i);
                vNext.push_back(pT);
                vNext.push_back(pN);
            }
        }
        vT.swap(vNext);
    }
}

} // namespace ORBI_LUMO25D
