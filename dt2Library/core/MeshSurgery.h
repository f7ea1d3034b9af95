#ifndef LUMO25D_CORE_MESHSURGERY_H
#define LUMO25D_CORE_MESHSURGERY_H

#include "geometry/TriangleLinks.h"
#include "support/check.h"

/// Operations that only rearrange the links of triangles: no coordinates, no predicates, no allocation.
///
/// Everything here keeps two laws: links are symmetric (a triangle's neighbour knows it), and each corner's incident
/// triangle has that corner. Whether a result is geometrically sound is the caller's business.
namespace ORBI_LUMO25D
{

/// Makes pT0 and pT1 neighbours across edge i0 of the one and edge i1 of the other.
inline void connect(Triangle2* pT0, int i0, Triangle2* pT1, int i1)
{
    LUMO_CHECK(pT1 != nullptr, "toTriangle!=NULL");
    TriangleLinks::setNeighbor(pT0, i0, pT1);
    TriangleLinks::setNeighbor(pT1, i1, pT0);
}

/// Exchanges the diagonal between pT and its neighbour across edge ith. With a, b, c the corners ith, ith+1, ith+2 of
/// pT and d the far corner of the neighbour: pT becomes (a, b, d), the neighbour (a, d, c).
inline void flipDiagonal(Triangle2* pT, int ith)
{
    using L = TriangleLinks;
    const int ith1 = L::next(ith);
    const int ith2 = L::prev(ith);
    Triangle2* const pN = pT->neighbor(ith);
    const int j = L::indexOf(pN, pT);
    Point2* const a = pT->corner(ith);
    Point2* const b = pT->corner(ith1);
    Point2* const c = pT->corner(ith2);
    Point2* const d = pN->corner(j);
    Triangle2* const pBD = pN->neighbor(L::next(j));
    Triangle2* const pDC = pN->neighbor(L::prev(j));
    Triangle2* const pCA = pT->neighbor(ith1);
    Triangle2* const pAB = pT->neighbor(ith2);

    L::set(pT, a, b, d, pBD, pN, pAB);
    L::set(pN, a, d, c, pDC, pCA, pT);
    // The edges (b, d) and (c, a) changed hands; (a, b) and (d, c) stay with their triangles.
    if (pBD != nullptr) L::setNeighbor(pBD, L::indexOf(pBD, pN), pT);
    if (pCA != nullptr) L::setNeighbor(pCA, L::indexOf(pCA, pT), pN);
    a->setIncidentTriangle(pT);
    b->setIncidentTriangle(pT);
    d->setIncidentTriangle(pN);
    c->setIncidentTriangle(pN);
}

/// Splits pT at a new vertex inside it: pT becomes (v, c0, c1), pT1 (v, c1, c2), pT2 (v, c2, c0), where c0, c1, c2 are
/// the corners before. pT1 and pT2 are blank triangles.
inline void split13(Triangle2* pT, Triangle2* pT1, Triangle2* pT2, Point2* pVtx)
{
    using L = TriangleLinks;
    Point2* const c0 = pT->corner(0);
    Point2* const c1 = pT->corner(1);
    Point2* const c2 = pT->corner(2);
    Triangle2* const n0 = pT->neighbor(0);
    Triangle2* const n1 = pT->neighbor(1);
    Triangle2* const n2 = pT->neighbor(2);

    L::set(pT, pVtx, c0, c1, n2, pT1, pT2);
    L::set(pT1, pVtx, c1, c2, n0, pT2, pT);
    L::set(pT2, pVtx, c2, c0, n1, pT, pT1);
    if (n0 != nullptr) L::setNeighbor(n0, L::indexOf(n0, pT), pT1);
    if (n1 != nullptr) L::setNeighbor(n1, L::indexOf(n1, pT), pT2);
    pVtx->setIncidentTriangle(pT);
    c0->setIncidentTriangle(pT);
    c1->setIncidentTriangle(pT);
    c2->setIncidentTriangle(pT1);
}

/// Splits the inner edge ith of pT at a new vertex. With a, b, c the corners ith, ith+1, ith+2 of pT and d the far
/// corner of the neighbour pN: pT becomes (v, c, a), pN (v, a, b), pT2 (v, b, d), pT3 (v, d, c).
inline void split24(Triangle2* pT, int ith, Triangle2* pT2, Triangle2* pT3, Point2* pVtx)
{
    using L = TriangleLinks;
    const int ith1 = L::next(ith);
    const int ith2 = L::prev(ith);
    Triangle2* const pN = pT->neighbor(ith);
    LUMO_CHECK(pN != nullptr, "pNeigA!=0");
    const int j = L::indexOf(pN, pT);
    Point2* const a = pT->corner(ith);
    Point2* const b = pT->corner(ith1);
    Point2* const c = pT->corner(ith2);
    Point2* const d = pN->corner(j);
    Triangle2* const pCA = pT->neighbor(ith1);
    Triangle2* const pAB = pT->neighbor(ith2);
    Triangle2* const pBD = pN->neighbor(L::next(j));
    Triangle2* const pDC = pN->neighbor(L::prev(j));

    // One triangle may be the neighbour of both pT and pN (where b or c has three triangles): where it links to which has
    // to be found before anything changes.
    const int backAB = pAB == nullptr ? 0 : L::indexOf(pAB, pT);
    const int backBD = pBD == nullptr ? 0 : L::indexOf(pBD, pN);
    const int backDC = pDC == nullptr ? 0 : L::indexOf(pDC, pN);

    L::set(pT, pVtx, c, a, pCA, pN, pT3);
    L::set(pN, pVtx, a, b, pAB, pT2, pT);
    L::set(pT2, pVtx, b, d, pBD, pT3, pN);
    L::set(pT3, pVtx, d, c, pDC, pT, pT2);
    if (pAB != nullptr) L::setNeighbor(pAB, backAB, pN);
    if (pBD != nullptr) L::setNeighbor(pBD, backBD, pT2);
    if (pDC != nullptr) L::setNeighbor(pDC, backDC, pT3);
    pVtx->setIncidentTriangle(pT);
    a->setIncidentTriangle(pT);
    b->setIncidentTriangle(pN);
    c->setIncidentTriangle(pT);
    d->setIncidentTriangle(pT2);
}

} // namespace ORBI_LUMO25D

#endif
