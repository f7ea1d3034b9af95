#include "engine/TriangleAssembler.h"

#include "geometry/OrbiTest.h"
#include "geometry/TriangleLinks.h"

#include <algorithm>
#include <new>

namespace ORBI_LUMO25D
{

TriangleAssembler::TriangleAssembler(SimplePool<Triangle2>& pool, std::size_t numTriangles, Point2* aVertices_,
                                     std::size_t numVertices_, const OrbiTest& orbiTest_)
    : triangles(pool, numTriangles), aVertices(aVertices_), numVertices(numVertices_), orbiTest(orbiTest_),
      linker(triangles.data())
{
}

bool TriangleAssembler::add(const Index* aCorners, std::size_t n)
{
    const auto isInRange = [this](Index i) { return static_cast<std::uint32_t>(i) < numVertices; }; // none is negative
    if (!std::all_of(aCorners, aCorners + 3 * n, isInRange)) return fail("there is no vertex of that number");
    constexpr std::size_t most = 256; // are in the cache still when they are linked
    for (std::size_t begin = 0; begin < n; begin += most) {
        const std::size_t numHere = std::min(most, n - begin);
        if (!make(aCorners + 3 * begin, numHere)) return fail("a triangle doesn't turn counterclockwise");
        linker.add(aCorners + 3 * begin, numHere);
    }
    return true;
}

bool TriangleAssembler::make(const Index* aCorners, std::size_t n)
{
    constexpr std::size_t ahead = 12;
    for (std::size_t t = 0; t < n; ++t) {
        const Index* const c = aCorners + 3 * t;
        for (std::size_t i = 3 * ahead; i < 3 * ahead + 3 && t + ahead < n; ++i) {
            __builtin_prefetch(aVertices + c[i], 1);
        }
        if (!makeOne(aVertices + c[0], aVertices + c[1], aVertices + c[2])) return false;
    }
    return true;
}

bool TriangleAssembler::makeOne(Point2* p0, Point2* p1, Point2* p2)
{
    if (orbiTest.orientationInRange(p0, p1, p2) != ORIENTATION2_CCW) return false;
    Triangle2* const pT = new (triangles.data() + numAdded++) Triangle2();
    TriangleLinks::set(pT, p0, p1, p2, nullptr, nullptr, nullptr);
    for (Point2* pVtx : {p0, p1, p2}) {
        Triangle2* const pFirst = pVtx->getIncidentTriangle();
        pVtx->setIncidentTriangle(pFirst == nullptr ? pT : pFirst);
        numVerticesUsed += pFirst == nullptr ? 1 : 0;
    }
    return true;
}

bool TriangleAssembler::close()
{
    if (numVerticesUsed != numVertices) return fail("a vertex has no triangle");
    if (!linker.close(numVertices, vBorder)) return fail("two triangles lie on one side of an edge");
    std::sort(vBorder.begin(), vBorder.end());
    return true;
}

} // namespace ORBI_LUMO25D
