#include "engine/ValidityCheck.h"

#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "support/messages.h"

#include <sstream>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

ValidityCheck::ValidityCheck(const Dt2& dt2_) : dt2(dt2_)
{
    dt2.getTrianglePointers(vT);
}

void ValidityCheck::report(const char* layer, const std::string& what)
{
    ++numViolations;
    msgError(std::string("checkValidity(), ") + layer, what);
}

void ValidityCheck::report(const char* layer, const char* what, const Triangle2* pT)
{
    std::ostringstream text;
    text << what << ": " << *pT;
    report(layer, text.str());
}

bool ValidityCheck::run(bool bCheckEmptyCircleProperty)
{
    if (!dt2.bFullDimensional) return checkVault();
    return checkLinks() && checkOrientation() && checkIncidentTriangles() && checkHull() && checkVault() &&
           (!bCheckEmptyCircleProperty || checkEmptyCircles());
}

// ---- links ----------------------------------------------------------------------------------------------------------

bool ValidityCheck::isAlive(const Triangle2* pT) const
{
    return dt2.poolTriangles.contains(pT) && pT->corner(0) != nullptr;
}

bool ValidityCheck::checkLinks()
{
    const std::size_t before = numViolations;
    if (vT.size() != dt2.numberOfTriangles()) report("links", "the count of alive triangles is wrong");
    for (const Triangle2* pT : vT) {
        const Point2* const a = pT->corner(0);
        const Point2* const b = pT->corner(1);
        const Point2* const c = pT->corner(2);
        if (b == nullptr || c == nullptr || a == b || b == c || c == a) {
            report("links", "a triangle without three corners");
            continue;
        }
        for (int i = 0; i < 3; ++i) {
            if (pT->neighbor(i) != nullptr && !checkNeighbor(pT, i)) report("links", "neighbour is wrong", pT);
        }
    }
    return numViolations == before;
}

bool ValidityCheck::checkNeighbor(const Triangle2* pT, int i)
{
    const Triangle2* const pN = pT->neighbor(i);
    if (pN == pT || !isAlive(pN)) return false;
    int numLinks = 0;
    bool bSharesEdge = false;
    for (int j = 0; j < 3; ++j) {
        if (pN->neighbor(j) != pT) continue;
        ++numLinks;
        bSharesEdge =
            pN->corner(L::next(j)) == pT->corner(L::prev(i)) && pN->corner(L::prev(j)) == pT->corner(L::next(i));
    }
    return numLinks == 1 && bSharesEdge;
}

// ---- orientation and incident triangles -----------------------------------------------------------------------------

bool ValidityCheck::checkOrientation()
{
    const std::size_t before = numViolations;
    for (const Triangle2* pT : vT) {
        if (dt2.orbiTest.getOrientation2(pT->corner(0), pT->corner(1), pT->corner(2)) != ORIENTATION2_CCW) {
            report("orientation", "corners don't turn counterclockwise", pT);
        }
    }
    return numViolations == before;
}

bool ValidityCheck::checkIncidentTriangles()
{
    const std::size_t before = numViolations;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pIncident = pT->corner(i)->getIncidentTriangle();
            if (pIncident == nullptr || !isAlive(pIncident) || !pIncident->hasVertex(pT->corner(i))) {
                report("incident triangles", "a corner's incident triangle is wrong", pT);
            }
        }
    }
    return numViolations == before;
}

// ---- hull -----------------------------------------------------------------------------------------------------------

bool ValidityCheck::checkHull()
{
    const std::size_t before = numViolations;
    std::size_t numBorderEdges = 0;
    const Triangle2* pStart = nullptr;
    int start = 0;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            if (pT->neighbor(i) != nullptr) continue;
            ++numBorderEdges;
            pStart = pT;
            start = i;
        }
    }
    if (pStart == nullptr || walkBorder(pStart, start) != numBorderEdges)
        report("hull", "the border isn't one closed chain");
    // Euler's formula for a triangulated disk.
    const std::size_t numVertices = dt2.vertexVault.numActive();
    if (vT.size() + numBorderEdges + 2 != 2 * numVertices) report("hull", "Euler's formula doesn't hold");
    return numViolations == before;
}

/// Goes once round the border, counterclockwise, and reports reflex corners; the number of edges.
std::size_t ValidityCheck::walkBorder(const Triangle2* pStart, int ith)
{
    std::size_t numEdges = 0;
    const Triangle2* pT = pStart;
    int i = ith;
    do {
        const Point2* const pSrc = pT->corner(L::next(i));
        const Point2* const pMid = pT->corner(L::prev(i));
        i = L::next(i);
        while (const Triangle2* const pN = pT->neighbor(i)) {
            i = L::next(L::indexOf(pN, pT));
            pT = pN;
        }
        const Point2* const pTrg = pT->corner(L::prev(i));
        if (dt2.orbiTest.getOrientation2(pSrc, pMid, pTrg) == ORIENTATION2_CW) {
            report("hull", "the border isn't convex", pT);
        }
        ++numEdges;
    } while ((pT != pStart || i != ith) && numEdges <= 3 * vT.size());
    return numEdges;
}

// ---- vault ----------------------------------------------------------------------------------------------------------

namespace
{

/// What is known of a vertex of the pool.
enum Mark : char
{
    UNSEEN,
    CORNER, ///< of an alive triangle
    ITEM    ///< that, and of an active item
};

} // namespace

bool ValidityCheck::checkVault()
{
    const std::size_t before = numViolations;
    if (!dt2.vertexVault.checkVault()) ++numViolations;
    if (!dt2.bFullDimensional) {
        if (!vT.empty() || dt2.numberOfTriangles() != 0) report("vault", "triangles without area");
        return numViolations == before;
    }
    std::vector<char> vMarks(dt2.poolVertices.size(), UNSEEN);
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            if (dt2.poolVertices.contains(pT->corner(i))) {
                vMarks[dt2.poolVertices.indexOf(pT->corner(i))] = CORNER;
            } else {
                report("vault", "a corner is no vertex of this triangulation", pT);
            }
        }
    }
    checkItems(vMarks);
    return numViolations == before;
}

/// Active items and corners are paired, one to one.
void ValidityCheck::checkItems(std::vector<char>& vMarks)
{
    const auto reportVertex = [this](const char* what, const Point2* pVtx) {
        std::ostringstream text;
        text << what << ": " << *pVtx;
        report("vault", text.str());
    };
    for (const IdxVtxAct* pItem = dt2.vertexVault.begin(); pItem != dt2.vertexVault.end(); ++pItem) {
        if (!pItem->bActive) continue;
        if (!dt2.poolVertices.contains(pItem->pVtx)) {
            report("vault", "an item's vertex is none of this triangulation");
            continue;
        }
        char& mark = vMarks[dt2.poolVertices.indexOf(pItem->pVtx)];
        if (mark == UNSEEN) reportVertex("an active vertex is no corner", pItem->pVtx);
        if (mark == ITEM) reportVertex("two items hold one vertex", pItem->pVtx);
        mark = ITEM;
    }
    for (std::size_t i = 0; i < vMarks.size(); ++i) {
        if (vMarks[i] == CORNER) reportVertex("a corner has no active item", dt2.poolVertices.at(i));
    }
}

// ---- empty circles --------------------------------------------------------------------------------------------------

bool ValidityCheck::checkEmptyCircles()
{
    const std::size_t before = numViolations;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN == nullptr) continue;
            if (dt2.orbiTest.circleInc3state(pT, pN->corner(L::indexOf(pN, pT))) == CINC2_INCIRCLE &&
                !dt2.isConstraint(pT, i)) {
                report("empty circles", "a neighbour's corner lies in the circumcircle", pT);
            }
        }
    }
    return numViolations == before;
}

} // namespace ORBI_LUMO25D
