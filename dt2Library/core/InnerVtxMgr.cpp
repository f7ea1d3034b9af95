#include "core/InnerVtxMgr.h"

#include "engine/Dt2.h"
#include "support/check.h"

#include "Point2.h"

#include <cmath>
#include <vector>

namespace ORBI_LUMO25D
{

void InnerVtxMgr::add(Point2* pVtx)
{
    if (sInsertedInnerPoints.insert(pVtx).second) mmX2Vtx.emplace(pVtx->x(), pVtx);
}

void InnerVtxMgr::forget(Point2* pVtx)
{
    if (sInsertedInnerPoints.erase(pVtx) == 0) return;
    for (auto it = mmX2Vtx.lower_bound(pVtx->x()); it != mmX2Vtx.end(); ++it) {
        if (it->second != pVtx) continue;
        mmX2Vtx.erase(it);
        return;
    }
}

void InnerVtxMgr::clear()
{
    sInsertedInnerPoints.clear();
    mmX2Vtx.clear();
}

void InnerVtxMgr::removePreviouslyInsertedVertices(Dt2& dt2, const Point2* pCenter, double sqRadius)
{
    const double r = std::sqrt(sqRadius);
    std::vector<Point2*> vInside;
    const auto itEnd = mmX2Vtx.upper_bound(pCenter->x() + r);
    for (auto it = mmX2Vtx.lower_bound(pCenter->x() - r); it != itEnd; ++it) {
        const double dx = it->second->x() - pCenter->x();
        const double dy = it->second->y() - pCenter->y();
        if (dx * dx + dy * dy < sqRadius) vInside.push_back(it->second);
    }
    for (Point2* pVtx : vInside) {
        LUMO_CHECK(sInsertedInnerPoints.count(pVtx) == 1, "q_it!=sInsertedInnerPoints.end()");
        forget(pVtx);
        if (!dt2.isConstraint(pVtx)) dt2.remove(pVtx);
    }
}

} // namespace ORBI_LUMO25D
