#ifndef LUMO25D_GEOMETRY_TRIANGLELINKS_H
#define LUMO25D_GEOMETRY_TRIANGLELINKS_H

#include "Triangle2.h"

namespace ORBI_LUMO25D
{

/// Index arithmetic and raw writes without checks, for the engine's inner loops.
struct TriangleLinks
{
    /// Next and previous index modulo 3, by table: no branch, no check.
    static int next(int i) { return aNext[i]; }
    static int prev(int i) { return aPrev[i]; }

    static void setCorner(Triangle2* pT, int i, Point2* pVtx) { pT->aVertexPointer[i] = pVtx; }
    static void setNeighbor(Triangle2* pT, int i, Triangle2* pN) { pT->aOppTriangles[i] = pN; }
    /// Writes all six pointers; incident triangles of the corners are the caller's business.
    static void set(Triangle2* pT, Point2* p0, Point2* p1, Point2* p2, Triangle2* pN0, Triangle2* pN1, Triangle2* pN2)
    {
        pT->aVertexPointer[0] = p0;
        pT->aVertexPointer[1] = p1;
        pT->aVertexPointer[2] = p2;
        pT->aOppTriangles[0] = pN0;
        pT->aOppTriangles[1] = pN1;
        pT->aOppTriangles[2] = pN2;
    }

    /// Index of the edge of pT towards its neighbour pN; pN must be one. Without a branch: which of the three it is can't
    /// be predicted.
    static int indexOf(const Triangle2* pT, const Triangle2* pN)
    {
        return static_cast<int>(pT->aOppTriangles[1] == pN) + 2 * static_cast<int>(pT->aOppTriangles[2] == pN);
    }
    /// Index of corner pVtx in pT; pVtx must be one.
    static int indexOf(const Triangle2* pT, const Point2* pVtx)
    {
        return static_cast<int>(pT->aVertexPointer[1] == pVtx) + 2 * static_cast<int>(pT->aVertexPointer[2] == pVtx);
    }

private:
    static constexpr int aNext[3] = {1, 2, 0};
    static constexpr int aPrev[3] = {2, 0, 1};
};

} // namespace ORBI_LUMO25D

#endif
