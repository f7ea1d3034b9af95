#ifndef LUMO25D_TRIANGLEAROUNDVERTEXITERATOR_H
#define LUMO25D_TRIANGLEAROUNDVERTEXITERATOR_H

#include "Lumo25DApi.h"
#include "Point2.h"
#include "Triangle2.h"

namespace ORBI_LUMO25D
{

/// Walks the triangles around a vertex, counterclockwise with ++ and clockwise with --.
///
/// Around an inner vertex the walk goes in a circle. Around a vertex of the hull it steps once out of the hull, where
/// *it is NULL, and the next step in the same direction goes on at the other end of the fan. So one round gives every
/// triangle once, and one NULL around a hull vertex. A round, for a vertex that belongs to a triangle:
///
///     TriangleAroundVertexIterator start(pVtx);
///     TriangleAroundVertexIterator it(start);
///     do {
///         if (*it != NULL) visit(*it);
///     } while (++it != start);
///
/// Nothing may change the triangles around the vertex between two steps. A step takes constant time, the one that
/// comes back into the hull takes the length of the fan.
class LUMO25D_API TriangleAroundVertexIterator
{
public:
    /// Starts at the incident triangle of p; a vertex without one is a failed condition.
    explicit TriangleAroundVertexIterator(const Point2* p);
    /// Starts at t, which must be a triangle at p; NULL is a failed condition.
    TriangleAroundVertexIterator(const Point2* p, Triangle2* t);

    /// The triangle the walk stands on; NULL outside the hull.
    Triangle2* operator*() const { return pTr; }

    /// One step counterclockwise.
    TriangleAroundVertexIterator& operator++()
    {
        if (pTr == nullptr) {
            loop();
            return *this;
        }
        const int i = pTr->getIntraTriangleIndex(pVtx);
        pSavedTr = pTr;
        pTr = pTr->neighbor(i == 2 ? 0 : i + 1);
        return *this;
    }
    /// One step clockwise.
    TriangleAroundVertexIterator& operator--()
    {
        if (pTr == nullptr) {
            loop();
            return *this;
        }
        const int i = pTr->getIntraTriangleIndex(pVtx);
        pSavedTr = pTr;
        pTr = pTr->neighbor(i == 0 ? 2 : i - 1);
        return *this;
    }

    /// What *it would be after one step forwards, backwards.
    Triangle2* previewNextTriangle() const
    {
        TriangleAroundVertexIterator it(*this);
        return *++it;
    }
    Triangle2* previewPrevTriangle() const
    {
        TriangleAroundVertexIterator it(*this);
        return *--it;
    }

    /// The same vertex and the same triangle (or both outside the hull).
    bool operator==(const TriangleAroundVertexIterator& other) const { return pVtx == other.pVtx && pTr == other.pTr; }
    bool operator!=(const TriangleAroundVertexIterator& other) const { return !(*this == other); }

private:
    /// From outside the hull to the far end of the fan.
    void loop();

    const Point2* pVtx;
    Triangle2* pTr;
    Triangle2* pSavedTr = nullptr; // the triangle before the last step
};

} // namespace ORBI_LUMO25D

#endif
