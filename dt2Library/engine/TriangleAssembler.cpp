#include "engine/TriangleAssembler.h"

#include "geometry/OrbiTest.h"
#include "geometry/TriangleLinks.h"

#include <algorithm>
#include <new>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

/// Steps along chains for each side, on the average, before they are given up. About one is usual.
constexpr std::size_t maxStepsPerSide = 16;

} // namespace

TriangleAssembler::TriangleAssembler(SimplePool<Triangle2>& pool, std::size_t numTriangles, Point2* aVertices_,
                                     std::size_t numVertices_, const OrbiTest& orbiTest_)
    : triangles(pool, numTriangles), aVertices(aVertices_), numVertices(numVertices_), orbiTest(orbiTest_),
      numStepsLeft(3 * maxStepsPerSide * numTriangles), aWaiting(numVertices_)
{
    std::fill_n(aWaiting.data(), numVertices, nullptr);
}

bool TriangleAssembler::add(const Index* aCorners, std::size_t n)
{
    const auto isInRange = [this](Index i) { return static_cast<std::uint32_t>(i) < numVertices; }; // none is negative
    if (!std::all_of(aCorners, aCorners + 3 * n, isInRange)) return fail("there is no vertex of that number");
    // Vertices are somewhere, and what waits at them is somewhere else: ask for both in time.
    constexpr std::size_t ahead = 12;
    for (std::size_t t = 0; t < n; ++t) {
        if (t + 2 * ahead < n) prefetchVertices(aCorners + 3 * (t + 2 * ahead));
        if (t + ahead < n) prefetchWaiting(aCorners + 3 * (t + ahead));
        if (!addOne(aCorners + 3 * t)) return fail("a triangle doesn't turn counterclockwise");
    }
    return true;
}

void TriangleAssembler::prefetchVertices(const Index* aCorners) const
{
    for (int i = 0; i < 3; ++i) {
        __builtin_prefetch(aVertices + aCorners[i], 1);
        __builtin_prefetch(&aWaiting[static_cast<std::size_t>(aCorners[i])], 1);
    }
}

void TriangleAssembler::prefetchWaiting(const Index* aCorners) const
{
    if (numStepsLeft == 0) return;
    for (int i = 0; i < 3; ++i) {
        __builtin_prefetch(aWaiting[static_cast<std::size_t>(aCorners[i])], 1);
    }
}

bool TriangleAssembler::addOne(const Index* aCorners)
{
    Point2* const p0 = aVertices + aCorners[0];
    Point2* const p1 = aVertices + aCorners[1];
    Point2* const p2 = aVertices + aCorners[2];
    if (orbiTest.orientationInRange(p0, p1, p2) != ORIENTATION2_CCW) return false;
    Triangle2* const pT = new (triangles.data() + numAdded++) Triangle2();
    L::set(pT, p0, p1, p2, nullptr, nullptr, nullptr);
    for (Point2* pVtx : {p0, p1, p2}) {
        if (pVtx->getIncidentTriangle() != nullptr) continue;
        pVtx->setIncidentTriangle(pT);
        ++numVerticesUsed;
    }
    link(pT, 0, aCorners[1], aCorners[2]);
    link(pT, 1, aCorners[2], aCorners[0]);
    link(pT, 2, aCorners[0], aCorners[1]);
    return true;
}

/// Looks for the side among those that wait at its target and end at its source; if there is none, it waits itself.
void TriangleAssembler::link(Triangle2* pT, int ith, Index src, Index trg)
{
    if (numStepsLeft == 0) return;
    const Point2* const pSrc = aVertices + src;
    const Point2* const pTrg = aVertices + trg;
    Triangle2*& pFirst = aWaiting[static_cast<std::size_t>(trg)];
    Triangle2* pBefore = nullptr;
    int sideBefore = 0;
    for (Triangle2* p = pFirst; p != nullptr && numStepsLeft > 0; --numStepsLeft) {
        const int i = L::indexOf(p, pTrg);
        const int side = L::prev(i);
        Triangle2* const pBehind = p->neighbor(side);
        if (p->corner(L::next(i)) == pSrc) {
            if (pBefore == nullptr) {
                pFirst = pBehind;
            } else {
                L::setNeighbor(pBefore, sideBefore, pBehind);
            }
            L::setNeighbor(p, side, pT);
            L::setNeighbor(pT, ith, p);
            return;
        }
        pBefore = p;
        sideBefore = side;
        p = pBehind;
    }
    Triangle2*& pWaiting = aWaiting[static_cast<std::size_t>(src)];
    L::setNeighbor(pT, ith, pWaiting);
    pWaiting = pT;
}

bool TriangleAssembler::close()
{
    if (numVerticesUsed != numVertices) return fail("a vertex has no triangle");
    if (numStepsLeft > 0) {
        endWaiting();
    } else if (!linkBySorting()) {
        return false;
    }
    std::sort(vBorder.begin(), vBorder.end());
    return std::adjacent_find(vBorder.begin(), vBorder.end()) == vBorder.end() ||
           fail("two triangles lie on one side of an edge");
}

/// What still waits is border.
void TriangleAssembler::endWaiting()
{
    for (std::size_t src = 0; src < numVertices; ++src) {
        for (Triangle2* p = aWaiting[src]; p != nullptr;) {
            const int i = L::indexOf(p, aVertices + src);
            const int side = L::prev(i);
            Triangle2* const pBehind = p->neighbor(side);
            vBorder.emplace_back(static_cast<Index>(src), static_cast<Index>(p->corner(L::next(i)) - aVertices));
            L::setNeighbor(p, side, nullptr);
            p = pBehind;
        }
    }
    aWaiting = BlockArray<Triangle2*>();
}

bool TriangleAssembler::linkBySorting()
{
    struct Side
    {
        std::uint64_t edge; ///< the lower number, then the higher one
        Triangle2* pT;
        int ith;
        bool operator<(const Side& other) const { return edge < other.edge; }
    };
    aWaiting = BlockArray<Triangle2*>();
    std::vector<Side> vSides;
    vSides.reserve(3 * numAdded);
    for (std::size_t t = 0; t < numAdded; ++t) {
        for (int i = 0; i < 3; ++i) {
            const auto a = static_cast<std::uint64_t>(corner(t, L::next(i)));
            const auto b = static_cast<std::uint64_t>(corner(t, L::prev(i)));
            vSides.push_back({std::min(a, b) << 32 | std::max(a, b), triangles.data() + t, i});
        }
    }
    std::sort(vSides.begin(), vSides.end());
    const auto sourceOf = [](const Side& s) { return s.pT->corner(L::next(s.ith)); };
    for (std::size_t i = 0; i < vSides.size();) {
        const Side& a = vSides[i];
        std::size_t end = i + 1;
        while (end < vSides.size() && vSides[end].edge == a.edge) {
            ++end;
        }
        const bool bPair = end - i == 2 && sourceOf(a) != sourceOf(vSides[i + 1]);
        if (end - i > 1 && !bPair) return fail("two triangles lie on one side of an edge");
        L::setNeighbor(a.pT, a.ith, bPair ? vSides[i + 1].pT : nullptr);
        if (bPair) {
            L::setNeighbor(vSides[i + 1].pT, vSides[i + 1].ith, a.pT);
        } else {
            vBorder.emplace_back(static_cast<Index>(sourceOf(a) - aVertices),
                                 static_cast<Index>(a.pT->corner(L::prev(a.ith)) - aVertices));
        }
        i = end;
    }
    return true;
}

} // namespace ORBI_LUMO25D
