#include "TriangleAroundVertexIterator.h"

#include "support/check.h"

namespace ORBI_LUMO25D
{

TriangleAroundVertexIterator::TriangleAroundVertexIterator(const Point2* p) : pVtx(p), pTr(nullptr)
{
    LUMO_CHECK(pVtx != nullptr, "pVtx!=NULL");
    pTr = pVtx->getIncidentTriangle();
    LUMO_CHECK(pTr != nullptr, "pTr!=NULL");
}

TriangleAroundVertexIterator::TriangleAroundVertexIterator(const Point2* p, Triangle2* t) : pVtx(p), pTr(t)
{
    LUMO_CHECK(pTr != nullptr, "pTr!=NULL");
}

void TriangleAroundVertexIterator::loop()
{
    LUMO_CHECK(pTr == nullptr && pSavedTr != nullptr, "pTr==NULL && pSavedTr!=NULL");

    // pSavedTr is one end of the fan, so that at most one of its neighbours at the vertex exists: the fan extends
    // into that direction, and the step out of the hull went into the other one.
    enum Direction
    {
        DIRECTION_NONE,
        DIRECTION_BACKWARD,
        DIRECTION_FORWARD
    };
    Direction direction = DIRECTION_NONE;
    const int i = pSavedTr->getIntraTriangleIndex(pVtx);
    if (pSavedTr->neighbor(incIndexBy2(i)) != nullptr) direction = DIRECTION_BACKWARD;
    if (pSavedTr->neighbor(incIndexBy1(i)) != nullptr) {
        LUMO_CHECK(direction == DIRECTION_NONE, "direction==DIRECTION_NONE");
        direction = DIRECTION_FORWARD;
    }

    pTr = pSavedTr;
    if (direction != DIRECTION_NONE) {
        while (pTr != nullptr) {
            if (direction == DIRECTION_FORWARD) {
                ++*this;
            } else {
                --*this;
            }
        }
        pTr = pSavedTr;
    }
}

} // namespace ORBI_LUMO25D
