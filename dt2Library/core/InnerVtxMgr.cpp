#include "core/InnerVtxMgr.h"

#include "engine/Dt2.h"
#include "geometry/aroundVertex.h"
#include "geometry/distances.h"

namespace ORBI_LUMO25D
{

void InnerVtxMgr::add(const Point2* pVtx)
{
    const std::size_t number = pool.indexOf(pVtx);
    if (number >= vMarks.size()) vMarks.resize(number + number / 4 + 64, 0);
    if ((vMarks[number] & running) == 0) vRunning.push_back(number);
    vMarks[number] |= running;
}

void InnerVtxMgr::forget(const Point2* pVtx)
{
    const std::size_t number = pool.indexOf(pVtx);
    if (number < vMarks.size()) vMarks[number] = 0;
}

void InnerVtxMgr::clear()
{
    for (const std::size_t number : vRunning) {
        if (vMarks[number] == running) vMarks[number] = earlier;
    }
    vRunning.clear();
}

/// Notes a vertex that is met for the first time, unless it is outside.
void InnerVtxMgr::collectWithin(const Point2& center, double sqRadius, Point2* pVtx)
{
    if (!(sqDistance2D(*pVtx, center) < sqRadius) || !sVisited.insert(pVtx).second) return;
    vWork.push_back(pVtx);
    if (isFree(pVtx)) vInside.push_back(pVtx);
}

const std::vector<Point2*>& InnerVtxMgr::removePreviouslyInsertedVertices(Dt2& dt2, Point2* pCenter, double sqRadius,
                                                                          std::vector<Triangle2*>& vArisen)
{
    vInside.clear();
    sVisited.clear();
    sVisited.insert(pCenter);
    vWork.assign(1, pCenter);
    while (!vWork.empty()) {
        const Point2* const pVtx = vWork.back();
        vWork.pop_back();
        forEachTriangleAround(pVtx, [&](const Triangle2* pT) {
            for (int i = 0; i < 3; ++i) {
                collectWithin(*pCenter, sqRadius, pT->corner(i));
            }
        });
    }
    for (Point2* pVtx : vInside) {
        forget(pVtx);
        if (!dt2.isConstraint(pVtx)) dt2.removeFreeVertex(pVtx, vArisen);
    }
    return vInside;
}

} // namespace ORBI_LUMO25D
