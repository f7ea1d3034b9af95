#include "core/FanCutter.h"

#include "core/MeshSurgery.h"
#include "geometry/OrbiTest.h"

#include <algorithm>
#include <limits>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

constexpr std::size_t noLink = static_cast<std::size_t>(-1);

/// An ear that turns right as far as doubles can tell: it waits till the end, and the exact test decides.
constexpr double lastPower = std::numeric_limits<double>::max();
/// No ear, or one that the exact test has refused.
constexpr double noPower = std::numeric_limits<double>::infinity();

/// std heaps have the largest element on top: the ear with the smallest power comes first, ties by position.
struct LaterEar
{
    template <class Entry>
    bool operator()(const Entry& a, const Entry& b) const
    {
        return a.power != b.power ? a.power > b.power : a.link > b.link;
    }
};

} // namespace

void FanCutter::run(const Point2* pVtx_, std::vector<Triangle2*>& vFan, bool bClosed, std::size_t numLeft,
                    std::vector<Triangle2*>& vCut)
{
    pVtx = pVtx_;
    bUseHeap = vFan.size() > maxScanned;
    makeLinks(vFan, bClosed);
    std::size_t numRemaining = vFan.size();
    std::size_t first = 0;
    while (numRemaining > numLeft) {
        const std::size_t ear = takeNextEar();
        if (ear == noLink) break;
        Triangle2* const pT = vLinks[vLinks[ear].previous].pT;
        if (!cut(ear)) continue;
        vCut.push_back(pT);
        if (first == ear) first = vLinks[ear].next;
        --numRemaining;
    }
    vFan.clear();
    for (std::size_t i = first; vFan.size() < numRemaining; i = vLinks[i].next) {
        vFan.push_back(vLinks[i].pT);
    }
}

void FanCutter::addLink(const Point2* p, Triangle2* pT)
{
    const double x = p->x() - pVtx->x();
    const double y = p->y() - pVtx->y();
    const std::size_t i = vLinks.size();
    vLinks.push_back({p, x, y, x * x + y * y, pT, i == 0 ? noLink : i - 1, i + 1, noPower, 0});
}

void FanCutter::makeLinks(const std::vector<Triangle2*>& vFan, bool bClosed)
{
    vLinks.clear();
    vHeap.clear();
    for (Triangle2* pT : vFan) {
        addLink(pT->corner(L::next(L::indexOf(pT, pVtx))), pT);
    }
    if (bClosed) {
        vLinks.front().previous = vLinks.size() - 1;
        vLinks.back().next = 0;
    } else {
        Triangle2* const pLast = vFan.back();
        addLink(pLast->corner(L::prev(L::indexOf(pLast, pVtx))), nullptr);
        vLinks.back().next = noLink;
    }
    bFillingHeap = true;
    for (std::size_t i = 0; i < vLinks.size(); ++i) {
        enter(i);
    }
    bFillingHeap = false;
    std::make_heap(vHeap.begin(), vHeap.end(), LaterEar());
}

/// Computes the power of the ear at a neighbour anew, after its own neighbours have changed. On the heap are only what
/// the exact tests call ears: around a vertex beside a convex hull of many vertices, nearly all neighbours are none.
void FanCutter::enter(std::size_t link)
{
    Link& b = vLinks[link];
    if (b.previous == noLink || b.next == noLink) return;
    ++b.stamp;
    if (bUseHeap && !isEar(b)) return;
    b.power = power(b);
    if (!bUseHeap) return;
    vHeap.push_back({b.power, link, b.stamp});
    if (!bFillingHeap) std::push_heap(vHeap.begin(), vHeap.end(), LaterEar());
}

/// Whether the flip of the spoke gives two triangles that turn left, the one at the vertex possibly flat.
bool FanCutter::isEar(const Link& b) const
{
    const Link& a = vLinks[b.previous];
    const Link& d = vLinks[b.next];
    return orbiTest.orientationInRange(a.p, d.p, pVtx) != ORIENTATION2_CW &&
           orbiTest.orientationInRange(a.p, b.p, d.p) == ORIENTATION2_CCW;
}

/// The squared tangent from the vertex to the ear's circle, negated: r^2 - |v - c|^2, as the quotient of the in-circle
/// determinant and the ear's doubled area.
double FanCutter::power(const Link& b) const
{
    const Link& a = vLinks[b.previous];
    const Link& d = vLinks[b.next];
    const double twiceArea = (b.x - a.x) * (d.y - a.y) - (b.y - a.y) * (d.x - a.x);
    const double inCircle =
        a.lift * (b.x * d.y - b.y * d.x) + b.lift * (d.x * a.y - d.y * a.x) + d.lift * (a.x * b.y - a.y * b.x);
    const double result = inCircle / twiceArea;
    return twiceArea > 0.0 && result < lastPower ? result : lastPower;
}

/// The neighbour whose ear is the next to be cut, or noLink. The ear is taken off the list.
std::size_t FanCutter::takeNextEar()
{
    std::size_t best = noLink;
    if (bUseHeap) {
        while (!vHeap.empty() && best == noLink) {
            std::pop_heap(vHeap.begin(), vHeap.end(), LaterEar());
            if (vHeap.back().stamp == vLinks[vHeap.back().link].stamp) best = vHeap.back().link;
            vHeap.pop_back();
        }
        return best;
    }
    double bestPower = noPower;
    for (std::size_t i = 0; i < vLinks.size(); ++i) {
        if (vLinks[i].power < bestPower) {
            best = i;
            bestPower = vLinks[i].power;
        }
    }
    if (best != noLink) vLinks[best].power = noPower;
    return best;
}

bool FanCutter::cut(std::size_t link)
{
    Link& b = vLinks[link];
    Link& a = vLinks[b.previous];
    Link& d = vLinks[b.next];
    if (!bUseHeap && !isEar(b)) return false;
    // The flip leaves the triangle before the spoke as the ear, and the one behind it at the vertex.
    flipDiagonal(a.pT, L::indexOf(a.pT, a.p));
    a.pT = b.pT;
    const std::size_t previous = b.previous;
    const std::size_t next = b.next;
    a.next = next;
    d.previous = previous;
    b.power = noPower;
    ++b.stamp;
    enter(previous);
    enter(next);
    return true;
}

} // namespace ORBI_LUMO25D
