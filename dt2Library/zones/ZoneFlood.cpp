#include "zones/ZoneFlood.h"

#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/aroundVertex.h"

#include "ConstraintGraph2.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

constexpr std::uint8_t reached = 8;

std::uint8_t edgeBit(int ith)
{
    return static_cast<std::uint8_t>(1U << static_cast<unsigned>(ith));
}

} // namespace

ZoneFlood::ZoneFlood(const Dt2& dt2_) : dt2(dt2_), marks(dt2_.poolTriangles) {}

// ---- borders --------------------------------------------------------------------------------------------------------

/// What one graph has on an edge.
struct ZoneFlood::Piece
{
    Point2* pLow;
    Point2* pHigh;
    bool bUp;    ///< walked from pLow to pHigh
    bool bTwice; ///< and back
};

/// By edges, so that the pieces of several graphs on one edge follow each other.
std::vector<ZoneFlood::Piece> ZoneFlood::alivePieces(const std::vector<ConstraintGraph2*>& vGraphs)
{
    const auto isBefore = [](const Piece& a, const Piece& b) {
        if (a.pLow != b.pLow) return std::less<Point2*>()(a.pLow, b.pLow);
        return std::less<Point2*>()(a.pHigh, b.pHigh);
    };
    std::vector<Piece> vPieces;
    std::vector<Point2*> vVertices;
    for (const ConstraintGraph2* pGraph : vGraphs) {
        vVertices.clear();
        pGraph->getPolygonVertices(vVertices);
        const auto first = static_cast<std::ptrdiff_t>(vPieces.size());
        for (std::size_t i = 0; i + 1 < vVertices.size(); i += 2) {
            const bool bUp = std::less<Point2*>()(vVertices[i], vVertices[i + 1]);
            vPieces.push_back({vVertices[bUp ? i : i + 1], vVertices[bUp ? i + 1 : i], bUp, false});
        }
        std::sort(vPieces.begin() + first, vPieces.end(), isBefore);
        // A segment has one direction in a graph: walked both ways, it comes twice.
        const auto itEnd = std::unique(vPieces.begin() + first, vPieces.end(), [](Piece& a, const Piece& b) {
            const bool bSame = a.pLow == b.pLow && a.pHigh == b.pHigh;
            a.bTwice = a.bTwice || bSame;
            return bSame;
        });
        vPieces.erase(itEnd, vPieces.end());
    }
    if (vGraphs.size() > 1) std::sort(vPieces.begin(), vPieces.end(), isBefore);
    return vPieces;
}

std::vector<ZoneFlood::Border> ZoneFlood::findBorders(const std::vector<ConstraintGraph2*>& vGraphs)
{
    std::vector<Border> vBorders;
    for (const Piece& piece : alivePieces(vGraphs)) {
        if (vBorders.empty() || vBorders.back().pLow != piece.pLow || vBorders.back().pHigh != piece.pHigh) {
            vBorders.push_back({piece.pLow, piece.pHigh, false, false});
        }
        if (piece.bTwice) continue;
        bool& bSide = piece.bUp ? vBorders.back().bLeft : vBorders.back().bRight;
        bSide = true;
    }
    return vBorders;
}

void ZoneFlood::stopAt(const std::vector<ConstraintGraph2*>& vGraphs)
{
    std::vector<Border> vBorders = findBorders(vGraphs);
    for (Border& border : vBorders) {
        border.bLeft = border.bRight = false;
    }
    mark(vBorders);
}

void ZoneFlood::stopInside(const std::vector<ConstraintGraph2*>& vGraphs)
{
    mark(findBorders(vGraphs));
}

void ZoneFlood::stopOutside(const std::vector<ConstraintGraph2*>& vGraphs)
{
    std::vector<Border> vBorders = findBorders(vGraphs);
    const auto isPassed = [](const Border& border) { return border.bLeft == border.bRight; };
    vBorders.erase(std::remove_if(vBorders.begin(), vBorders.end(), isPassed), vBorders.end());
    for (Border& border : vBorders) {
        std::swap(border.bLeft, border.bRight);
    }
    mark(vBorders);
}

void ZoneFlood::mark(const std::vector<Border>& vBorders)
{
    const Border* const pEnd = vBorders.data() + vBorders.size();
    for (const Border* pFirst = vBorders.data(); pFirst != pEnd;) {
        const Border* pNext = pFirst;
        while (pNext != pEnd && pNext->pLow == pFirst->pLow) {
            ++pNext;
        }
        markAround(pFirst, pNext);
        pFirst = pNext;
    }
}

/// One round about the vertex that the borders have in common finds the triangles on both sides of all of them. Those that
/// aren't in the mesh have none.
void ZoneFlood::markAround(const Border* pFirst, const Border* pEnd)
{
    Point2* const pVtx = pFirst->pLow;
    if (pVtx->getIncidentTriangle() == nullptr) return;
    const auto find = [pFirst, pEnd](Point2* pOther) {
        const Border* const p = std::lower_bound(pFirst, pEnd, pOther, [](const Border& border, Point2* pHigh) {
            return std::less<Point2*>()(border.pHigh, pHigh);
        });
        return p != pEnd && p->pHigh == pOther ? p : nullptr;
    };
    forEachTriangleAround(pVtx, [&](Triangle2* pT) {
        const int i = L::indexOf(pT, pVtx);
        const Border* const pAhead = find(pT->corner(L::next(i)));
        if (pAhead != nullptr) markSide(pT, L::prev(i), pAhead->bLeft);
        const Border* const pBehind = find(pT->corner(L::prev(i)));
        if (pBehind != nullptr) markSide(pT, L::next(i), pBehind->bRight);
    });
}

void ZoneFlood::markSide(Triangle2* pT, int ith, bool bSeed)
{
    marks.set(pT, edgeBit(ith));
    if (bSeed) vSeeds.push_back(pT);
}

// ---- the flood ------------------------------------------------------------------------------------------------------

void ZoneFlood::run(const std::vector<Triangle2*>& vStarts, std::vector<Triangle2*>& vOut)
{
    const std::size_t first = vOut.size();
    for (Triangle2* pT : vStarts) {
        if (marks.set(pT, reached)) vOut.push_back(pT);
    }
    spread(first, vOut);
    marks.takeByAddress(vOut, first, reached);
}

/// The output is the work list as well: what is behind position i is yet to be left. What will be needed soon is asked for
/// ahead, and whether a neighbour is new decides no branch: it can't be predicted.
void ZoneFlood::spread(std::size_t first, std::vector<Triangle2*>& v)
{
    constexpr std::size_t farAhead = 16; // the triangle itself
    constexpr std::size_t ahead = 8;     // the marks of its neighbours
    std::size_t end = v.size();
    for (std::size_t i = first; i < end; ++i) {
        if (end + 3 > v.size()) {
            // A large zone gets its room at once: what isn't filled is never touched.
            if (end - first > dt2.poolTriangles.size() / 16) v.reserve(first + dt2.numberOfTriangles() + 3);
            v.resize(v.size() + v.size() / 8 + 64);
        }
        if (i + farAhead < end) __builtin_prefetch(v[i + farAhead]);
        if (i + ahead < end) {
            for (int ith = 0; ith < 3; ++ith) {
                const Triangle2* const pN = v[i + ahead]->neighbor(ith);
                if (pN != nullptr) marks.prefetch(pN);
            }
        }
        Triangle2* const pT = v[i];
        const unsigned borders = marks[pT];
        for (unsigned ith = 0; ith < 3; ++ith) {
            Triangle2* pN = pT->neighbor(static_cast<int>(ith));
            pN = pN == nullptr ? pT : pN; // which is reached already
            std::uint8_t& mark = marks[pN];
            const unsigned isNew = ~(mark / reached | borders >> ith) & 1U;
            mark = static_cast<std::uint8_t>(mark | isNew * reached);
            v[end] = pN;
            end += isNew;
        }
    }
    v.resize(end);
}

} // namespace ORBI_LUMO25D
