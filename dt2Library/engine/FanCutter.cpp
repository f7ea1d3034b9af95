#include "engine/FanCutter.h"

#include "core/MeshSurgery.h"
#include "geometry/OrbiTest.h"

#include <algorithm>
#include <limits>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

constexpr std::size_t noPosition = static_cast<std::size_t>(-1);

/// std heaps have the largest element on top: the ear with the smallest power comes first, ties by position.
struct LaterEar
{
    template <class Ear>
    bool operator()(const Ear& a, const Ear& b) const
    {
        return a.power != b.power ? a.power > b.power : a.fan > b.fan;
    }
};

} // namespace

void FanCutter::run(const Point2* pVtx_, std::vector<Triangle2*>& vFan, bool bClosed, std::size_t numLeft,
                    std::vector<Triangle2*>& vCut)
{
    pVtx = pVtx_;
    pFan = &vFan;
    link(bClosed);
    vHeap.clear();
    for (std::size_t i = 0; i < vFan.size(); ++i) {
        enter(i);
    }
    std::size_t numRemaining = vFan.size();
    std::size_t first = 0;
    while (numRemaining > numLeft && !vHeap.empty()) {
        std::pop_heap(vHeap.begin(), vHeap.end(), LaterEar());
        const Ear ear = vHeap.back();
        vHeap.pop_back();
        if (ear.stamp != vStamp[ear.fan] || !cut(ear.fan)) continue;
        vCut.push_back(vFan[ear.fan]);
        if (first == ear.fan) first = vNext[ear.fan];
        --numRemaining;
    }
    std::vector<Triangle2*> vRemaining;
    for (std::size_t i = first; vRemaining.size() < numRemaining; i = vNext[i]) {
        vRemaining.push_back(vFan[i]);
    }
    vFan.swap(vRemaining);
}

void FanCutter::link(bool bClosed)
{
    const std::size_t k = pFan->size();
    vNext.resize(k);
    vPrevious.resize(k);
    vStamp.assign(k, 0);
    for (std::size_t i = 0; i < k; ++i) {
        vNext[i] = i + 1 < k ? i + 1 : (bClosed ? 0 : noPosition);
        vPrevious[i] = i > 0 ? i - 1 : (bClosed ? k - 1 : noPosition);
    }
}

FanCutter::Spoke FanCutter::spokeBehind(std::size_t fan) const
{
    const Triangle2* const pT = (*pFan)[fan];
    const Triangle2* const pN = (*pFan)[vNext[fan]];
    const int i = L::indexOf(pT, pVtx);
    return {pT->corner(L::next(i)), pT->corner(L::prev(i)), pN->corner(L::prev(L::indexOf(pN, pVtx)))};
}

void FanCutter::enter(std::size_t fan)
{
    if (fan == noPosition || vNext[fan] == noPosition) return;
    vHeap.push_back({power(spokeBehind(fan)), fan, ++vStamp[fan]});
    std::push_heap(vHeap.begin(), vHeap.end(), LaterEar());
}

/// The squared tangent from the vertex to the ear's circle, negated: r^2 - |v - c|^2. Infinite where the ear turns right
/// or can't be told; such an ear waits till the end, and the exact test decides.
double FanCutter::power(const Spoke& s) const
{
    const double ax = s.a->x() - pVtx->x(), ay = s.a->y() - pVtx->y();
    const double bx = s.b->x() - pVtx->x(), by = s.b->y() - pVtx->y();
    const double dx = s.d->x() - pVtx->x(), dy = s.d->y() - pVtx->y();
    const double twiceArea = (bx - ax) * (dy - ay) - (by - ay) * (dx - ax);
    const double inCircle = (ax * ax + ay * ay) * (bx * dy - by * dx) + (bx * bx + by * by) * (dx * ay - dy * ax) +
                            (dx * dx + dy * dy) * (ax * by - ay * bx);
    const double result = inCircle / twiceArea;
    return twiceArea > 0.0 && result == result ? result : std::numeric_limits<double>::infinity();
}

bool FanCutter::cut(std::size_t fan)
{
    const Spoke s = spokeBehind(fan);
    if (orbiTest.orientationInRange(s.a, s.d, pVtx) == ORIENTATION2_CW) return false;
    if (orbiTest.orientationInRange(s.a, s.b, s.d) != ORIENTATION2_CCW) return false;
    Triangle2* const pT = (*pFan)[fan];
    flipDiagonal(pT, L::next(L::indexOf(pT, pVtx)));
    const std::size_t next = vNext[fan];
    const std::size_t previous = vPrevious[fan];
    vPrevious[next] = previous;
    if (previous != noPosition) vNext[previous] = next;
    ++vStamp[fan];
    enter(previous);
    enter(next);
    return true;
}

} // namespace ORBI_LUMO25D
