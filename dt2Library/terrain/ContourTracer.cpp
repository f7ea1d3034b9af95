#include "terrain/ContourTracer.h"

#include <algorithm>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

int next(int corner)
{
    return corner == 2 ? 0 : corner + 1;
}

int previous(int corner)
{
    return corner == 0 ? 2 : corner - 1;
}

} // namespace

bool ContourTracer::trace(double height)
{
    vPoints.clear();
    vPieces.clear();
    shortest = std::numeric_limits<double>::infinity();
    index.findAt(height, found);
    if (!selectCut(height)) return false;
    for (std::size_t i = 0; i < found.size; ++i) {
        if (!isDone(found.vNumbers[i])) follow(found.vNumbers[i], height);
    }
    for (std::size_t i = 0; i < found.size; ++i) vDone[found.vNumbers[i] / 64] = 0;
    return true;
}

/// Keeps those of the found triangles that have corners on both sides. False when a corner has the height.
bool ContourTracer::selectCut(double height)
{
    // What a triangle's corners are is somewhere, and they are somewhere else: both are asked for in time.
    constexpr std::size_t ahead = 12;
    std::uint32_t* const aNumbers = found.vNumbers.data();
    std::size_t numCut = 0;
    for (std::size_t i = 0; i < found.size; ++i) {
        if (i + 2 * ahead < found.size) __builtin_prefetch(index.triangle(aNumbers[i + 2 * ahead]));
        if (i + ahead < found.size) {
            const Triangle2* const pT = index.triangle(aNumbers[i + ahead]);
            for (int k = 0; k < 3; ++k) __builtin_prefetch(pT->corner(k));
        }
        const Triangle2* const pT = index.triangle(aNumbers[i]);
        const double z0 = pT->corner(0)->z(), z1 = pT->corner(1)->z(), z2 = pT->corner(2)->z();
        if (z0 == height || z1 == height || z2 == height) return false;
        const bool b0 = z0 < height, b1 = z1 < height, b2 = z2 < height;
        aNumbers[numCut] = aNumbers[i];
        numCut += static_cast<std::size_t>(b0 != b1 || b1 != b2);
    }
    found.size = numCut;
    return true;
}

/// The piece through a triangle: from its one cut edge on and, unless that led round, from the other one.
void ContourTracer::follow(std::uint32_t number, double height)
{
    const Triangle2* const pT = index.triangle(number);
    const bool b0 = pT->corner(0)->z() < height, b1 = pT->corner(1)->z() < height, b2 = pT->corner(2)->z() < height;
    const int alone = b1 == b2 ? 0 : (b0 == b2 ? 1 : 2); // on its side of the plane
    const Exit one = exitOf(number, previous(alone)), other = exitOf(number, next(alone));
    const std::size_t first = vPoints.size();
    setDone(number);
    addPoint(one, first, height);
    addPoint(other, first, height);
    const bool bClosed = advance(other, first, height);
    if (bClosed) {
        vPoints.pop_back(); // it came back to the first one
    } else {
        std::reverse(vPoints.begin() + static_cast<std::ptrdiff_t>(first), vPoints.end());
        advance(one, first, height);
    }
    if (vPoints.size() < first + 2) {
        vPoints.resize(first);
    } else {
        vPieces.push_back({first, vPoints.size(), bClosed});
    }
}

ContourTracer::Exit ContourTracer::exitOf(std::uint32_t number, int edge) const
{
    const Triangle2* const pT = index.triangle(number);
    const Point2 *const pA = pT->corner(next(edge)), *const pB = pT->corner(previous(edge));
    const bool bLowFirst = pA->z() < pB->z();
    return {number, edge, bLowFirst ? pA : pB, bLowFirst ? pB : pA, bLowFirst};
}

/// Goes on over the edge as far as it can, with a point for each further edge. True when it has come back to the start.
///
/// Each triangle has two cut edges, each with one neighbour at most by entryOf(): so the only triangle that can be met again
/// is the one where the way began.
bool ContourTracer::advance(Exit exit, std::size_t first, double height)
{
    const std::uint32_t start = exit.number;
    for (;;) {
        const Triangle2* const pNext = index.triangle(exit.number)->neighbor(exit.edge);
        if (pNext == nullptr) return false;
        const std::uint32_t number = index.numberOf(pNext, exit.number);
        if (number == HeightIndex::none) return false;
        const int entry = entryOf(exit, pNext);
        if (entry < 0) return false;
        if (number == start) return true;
        setDone(number);
        // Where it goes on waits for the third corner; the memory needn't.
        __builtin_prefetch(pNext->neighbor(next(entry)));
        __builtin_prefetch(pNext->neighbor(previous(entry)));
        // Out between the third corner and that one which is on the other side of the plane.
        const Point2* const pThird = pNext->corner(entry);
        const bool bAbove = pThird->z() > height;
        exit.number = number;
        exit.edge = bAbove == exit.bLowFirst ? next(entry) : previous(entry);
        (bAbove ? exit.pHigh : exit.pLow) = pThird;
        addPoint(exit, first, height);
    }
}

/// The same edge in the neighbour; negative unless both agree on being neighbours there. This is a condition on the edge,
/// the same from both sides. Without branches that depend on the place, for they can't be predicted.
int ContourTracer::entryOf(const Exit& exit, const Triangle2* pNext) const
{
    const Point2* const pFrom = exit.bLowFirst ? exit.pHigh : exit.pLow;
    const Point2* const pTo = exit.bLowFirst ? exit.pLow : exit.pHigh;
    int entry = 0;
    for (const int i : {1, 2}) {
        const int isThere =
            static_cast<int>(pNext->corner(next(i)) == pFrom) & static_cast<int>(pNext->corner(previous(i)) == pTo);
        entry = isThere != 0 ? i : entry;
    }
    const bool bShared = pNext->corner(next(entry)) == pFrom && pNext->corner(previous(entry)) == pTo &&
                         pNext->neighbor(entry) == index.triangle(exit.number);
    return bShared ? entry : -1;
}

void ContourTracer::addPoint(const Exit& exit, std::size_t first, double height)
{
    const PlanarPoint p = placeAt(*exit.pLow, *exit.pHigh, height);
    if (vPoints.size() > first) {
        const PlanarPoint& before = vPoints.back();
        shortest = std::min(shortest, std::max(std::fabs(p.x - before.x), std::fabs(p.y - before.y)));
        if (p == before) return;
    }
    vPoints.push_back(p);
}

} // namespace ORBI_LUMO25D
