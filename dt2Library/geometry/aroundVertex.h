#ifndef LUMO25D_GEOMETRY_AROUNDVERTEX_H
#define LUMO25D_GEOMETRY_AROUNDVERTEX_H

#include "geometry/TriangleLinks.h"

#include "TriangleAroundVertexIterator.h"

namespace ORBI_LUMO25D
{

/// Calls f(pT) for the triangles around a vertex, counterclockwise, until one answers true. Whether one did.
template <class F>
bool anyTriangleAround(const Point2* pVtx, const F& f)
{
    const TriangleAroundVertexIterator itStart(pVtx);
    TriangleAroundVertexIterator it(itStart);
    do {
        if (*it != nullptr && f(*it)) return true;
    } while (++it != itStart);
    return false;
}

template <class F>
void forEachTriangleAround(const Point2* pVtx, const F& f)
{
    anyTriangleAround(pVtx, [&f](Triangle2* pT) {
        f(pT);
        return false;
    });
}

/// Calls f(pNeighbor) for the other ends of the edges at a vertex until one answers true. Most of them come twice.
template <class F>
bool anyNeighborOf(const Point2* pVtx, const F& f)
{
    return anyTriangleAround(pVtx, [pVtx, &f](const Triangle2* pT) {
        const int i = TriangleLinks::indexOf(pT, pVtx);
        return f(pT->corner(TriangleLinks::next(i))) || f(pT->corner(TriangleLinks::prev(i)));
    });
}

} // namespace ORBI_LUMO25D

#endif
