#include "engine/TriangulationLoader.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "engine/GapFiller.h"
#include "engine/TriangleAssembler.h"

#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

TriangulationLoader::TriangulationLoader(Dt2& dt2_) : dt2(dt2_) {}

TriangulationLoader::~TriangulationLoader() = default;

bool TriangulationLoader::fail(const char* what)
{
    error = what;
    return false;
}

// ---- vertices and triangles -----------------------------------------------------------------------------------------

bool TriangulationLoader::readMesh(TriangulationReader& reader)
{
    if (!reader.readCounts(counts) || !readVertices(reader)) return false;
    if (counts.numTriangles == 0) return true;
    setPredicatesRange();
    pTriangles = std::make_unique<TriangleAssembler>(dt2.poolTriangles, counts.numTriangles, pVertices->data(),
                                                     counts.numVertices, orbiTest);
    const auto add = [this](const Index* aCorners, std::size_t n) {
        return pTriangles->add(aCorners, n) || fail(pTriangles->getError());
    };
    return reader.readTriangles(counts.numTriangles, add) && (pTriangles->close() || fail(pTriangles->getError()));
}

void TriangulationLoader::setPredicatesRange()
{
    orbiTest.setStaticBound_MT(std::max(range.box.getMinPoint().getMaxAbs(), range.box.getMaxPoint().getMaxAbs()));
}

bool TriangulationLoader::takeMesh(const std::vector<Point2>& vPoints, const std::vector<Index>& vCorners)
{
    if (vCorners.empty()) return fail("there are no triangles");
    counts.numVertices = vPoints.size();
    pVertices = std::make_unique<PoolRange<Point2>>(dt2.poolVertices, counts.numVertices);
    Point2* pNext = pVertices->data();
    for (const Point2& p : vPoints) {
        range.add(*new (pNext++) Point2(p.x(), p.y(), p.z()));
    }
    setPredicatesRange();
    return (assemble(vCorners) || fail(pTriangles->getError())) && (isConvexBorder() || fillGaps());
}

bool TriangulationLoader::readVertices(TriangulationReader& reader)
{
    pVertices = std::make_unique<PoolRange<Point2>>(dt2.poolVertices, counts.numVertices);
    Point2* pNext = pVertices->data();
    return reader.readVertices(counts.numVertices, [&](double x, double y, double z, std::int32_t customIndex) {
        if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
            return fail("a coordinate is not a finite number");
        Point2* const pVtx = new (pNext++) Point2(x, y, z);
        pVtx->setCustomIndex(customIndex);
        range.add(*pVtx);
        return true;
    });
}

// ---- the border -----------------------------------------------------------------------------------------------------

/// Whether the border is one convex polygon, walked once; vertices in the middle of a straight side are welcome.
bool TriangulationLoader::isConvexBorder() const
{
    const std::vector<TriangleAssembler::Edge>& vBorder = pTriangles->getBorder();
    const auto bySource = [](const auto& a, const auto& b) { return a.first < b.first; };
    const auto sameSource = [](const auto& a, const auto& b) { return a.first == b.first; };
    if (vBorder.empty() || std::adjacent_find(vBorder.begin(), vBorder.end(), sameSource) != vBorder.end())
        return false;

    const auto at = [this](Index i) -> const Point2& { return pVertices->data()[i]; };
    std::size_t numWalked = 0;
    std::size_t numLowest = 0;
    const Index start = vBorder.front().first;
    auto edge = vBorder.front();
    do {
        const auto it =
            std::lower_bound(vBorder.begin(), vBorder.end(), std::make_pair(edge.second, Index(0)), bySource);
        if (it == vBorder.end() || it->first != edge.second) return false;
        const Point2& a = at(edge.first);
        const Point2& b = at(it->first);
        const Point2& c = at(it->second);
        const bool bUpTo = a < b;
        const bool bUpFrom = b < c;
        const Orientation2 turn = orbiTest.orientationInRange(&a, &b, &c);
        const bool bStraight = turn == ORIENTATION2_COLLINEAR && bUpTo == bUpFrom;
        if (turn != ORIENTATION2_CCW && !bStraight) return false;
        if (!bUpTo && bUpFrom) ++numLowest;
        edge = *it;
    } while (++numWalked < vBorder.size() && edge.first != start);
    return edge.first == start && numWalked == vBorder.size() && numLowest == 1;
}

/// Gaps have their corners on the border, and the border tells whether the triangles overlap: no other vertex matters.
bool TriangulationLoader::triangulateGaps(const std::vector<EdgeKey>& vBorder, std::vector<Index>& vCorners) const
{
    std::vector<Index> vVertexOf; // ascending
    for (const auto& [src, trg] : vBorder) {
        vVertexOf.push_back(src);
        vVertexOf.push_back(trg);
    }
    std::sort(vVertexOf.begin(), vVertexOf.end());
    vVertexOf.erase(std::unique(vVertexOf.begin(), vVertexOf.end()), vVertexOf.end());
    const auto numberOf = [&vVertexOf](Index vertex) {
        return static_cast<Index>(std::lower_bound(vVertexOf.begin(), vVertexOf.end(), vertex) - vVertexOf.begin());
    };
    std::vector<Point2> vPoints;
    for (const Index vertex : vVertexOf) vPoints.push_back(pVertices->data()[vertex]);
    EdgeKeys borderKeys(vPoints.size());
    for (const auto& [src, trg] : vBorder) {
        borderKeys.add(numberOf(src), numberOf(trg));
    }
    borderKeys.sort();
    std::vector<Index> vGaps;
    if (!GapFiller(vPoints, borderKeys).run(vGaps)) return false;
    for (const Index i : vGaps) vCorners.push_back(vVertexOf[static_cast<std::size_t>(i)]);
    return true;
}

bool TriangulationLoader::fillGaps()
{
    const std::vector<TriangleAssembler::Edge> vBorder = pTriangles->getBorder();
    std::vector<Index> vCorners;
    vCorners.reserve(3 * counts.numTriangles);
    for (std::size_t t = 0; t < counts.numTriangles; ++t) {
        for (int i = 0; i < 3; ++i) vCorners.push_back(pTriangles->corner(t, i));
    }
    pTriangles.reset();
    if (!triangulateGaps(vBorder, vCorners) || !assemble(vCorners) || !isConvexBorder()) {
        return fail("triangles overlap");
    }

    EdgeKeys standing(counts.numVertices);
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        standing.addUndirected(saved.vSegments[i], saved.vSegments[i + 1]);
    }
    standing.sort();
    const std::vector<TriangleAssembler::Edge>& vHull = pTriangles->getBorder();
    for (const auto& [src, trg] : vBorder) {
        if (std::binary_search(vHull.begin(), vHull.end(), std::make_pair(src, trg)) ||
            standing.findUndirected(src, trg) != EdgeKeys::none) {
            continue;
        }
        saved.vSegments.push_back(src);
        saved.vSegments.push_back(trg);
    }
    return true;
}

/// Once more, from corner numbers.
bool TriangulationLoader::assemble(const std::vector<Index>& vCorners)
{
    for (std::size_t i = 0; i < counts.numVertices; ++i) {
        pVertices->data()[i].setIncidentTriangle(nullptr);
    }
    counts.numTriangles = vCorners.size() / 3;
    pTriangles = std::make_unique<TriangleAssembler>(dt2.poolTriangles, counts.numTriangles, pVertices->data(),
                                                     counts.numVertices, orbiTest);
    return pTriangles->add(vCorners.data(), counts.numTriangles) && pTriangles->close();
}

// ---- segments and zones ---------------------------------------------------------------------------------------------

bool TriangulationLoader::readConstraints(TriangulationReader& reader)
{
    if (!reader.readRest(counts, saved) || !areInRange()) return false;
    if (pTriangles == nullptr) return checkWithoutTriangles();
    return (isConvexBorder() || fillGaps()) && checkEdges();
}

bool TriangulationLoader::areInRange()
{
    const auto allInRange = [n = counts.numVertices](const std::vector<Index>& v) {
        return std::all_of(v.begin(), v.end(), [n](Index i) { return static_cast<std::uint32_t>(i) < n; });
    };
    return (allInRange(saved.vSegments) && std::all_of(saved.vvZones.begin(), saved.vvZones.end(), allInRange)) ||
           fail("there is no vertex of that number");
}

/// Without triangles, all vertices wait on one line, each in a place of its own.
bool TriangulationLoader::checkWithoutTriangles()
{
    std::vector<const Point2*> v;
    for (std::size_t i = 0; i < counts.numVertices; ++i) {
        v.push_back(pVertices->data() + i);
    }
    std::sort(v.begin(), v.end(), [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
    for (std::size_t i = 1; i < v.size(); ++i) {
        if (*v[i - 1] == *v[i]) return fail("two vertices are at one place");
        if (getOrientation2_mt(v.front(), v[i], v.back()) != ORIENTATION2_COLLINEAR) {
            return fail("there are no triangles");
        }
    }
    EdgeKeys keys(v.size());
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        if (saved.vSegments[i] == saved.vSegments[i + 1]) return fail("a segment has no length");
        keys.addUndirected(saved.vSegments[i], saved.vSegments[i + 1]);
    }
    keys.sort();
    if (2 * keys.size() != saved.vSegments.size()) return fail("a segment comes twice");
    const auto isEmpty = [](const std::vector<Index>& vZone) { return vZone.empty(); };
    return std::all_of(saved.vvZones.begin(), saved.vvZones.end(), isEmpty) || fail("a zone has no triangles");
}

namespace
{

/// Whether triangles lie on the left and on the right of an edge from a to b: none where there is no such edge.
struct Sides
{
    bool bLeft;
    bool bRight;
};

/// Walks around a vertex a in search of an edge to b, in steps of constant time: counterclockwise and, from the border on,
/// clockwise from the first triangle.
class EdgeSearch
{
public:
    EdgeSearch(const Point2* pA_, const Point2* pB_) : pA(pA_), pB(pB_), pFirst(pA_->getIncidentTriangle()), pT(pFirst)
    {
    }

    /// False when it has been all around.
    bool step()
    {
        const int i = L::indexOf(pT, pA);
        if (pT->corner(L::next(i)) == pB) return found(true, pT->neighbor(L::prev(i)) != nullptr);
        if (pT->corner(L::prev(i)) == pB) return found(pT->neighbor(L::next(i)) != nullptr, true);
        pT = pT->neighbor(bClockwise ? L::prev(i) : L::next(i));
        if (pT == nullptr && !bClockwise) {
            bClockwise = true;
            pT = pFirst->neighbor(L::prev(L::indexOf(pFirst, pA)));
        }
        return pT != nullptr && pT != pFirst;
    }
    bool hasFound() const { return sides.bLeft || sides.bRight; }
    const Sides& getSides() const { return sides; }

private:
    bool found(bool bLeft, bool bRight)
    {
        sides = {bLeft, bRight};
        return true;
    }

    const Point2* pA;
    const Point2* pB;
    const Triangle2* pFirst;
    const Triangle2* pT;
    bool bClockwise = false;
    Sides sides{false, false};
};

/// Searches at one end and, if many triangles are around it, at both at a time, so that the time is that of the end with
/// fewer. Over all edges of a planar graph that is linear, however many meet at one vertex (N. Chiba, T. Nishizeki:
/// Arboricity and subgraph listing algorithms, SIAM J. Comput. 14, 1985).
Sides sidesOf(const Point2* pA, const Point2* pB)
{
    EdgeSearch fromA(pA, pB);
    for (int numAlone = 10; numAlone > 0; --numAlone) {
        if (!fromA.step() || fromA.hasFound()) return fromA.getSides();
    }
    EdgeSearch fromB(pB, pA);
    while (fromA.step() && !fromA.hasFound() && fromB.step() && !fromB.hasFound()) {
    }
    if (fromB.hasFound()) return {fromB.getSides().bRight, fromB.getSides().bLeft};
    return fromA.getSides();
}

} // namespace

/// Segments are edges, and come once. The edges of each zone close to rings, and have a triangle on their left.
bool TriangulationLoader::checkEdges()
{
    std::vector<EdgeKey> vKeys;
    vKeys.reserve(saved.vSegments.size() / 2);
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        vKeys.push_back(std::minmax(saved.vSegments[i], saved.vSegments[i + 1]));
    }
    // As saveTriangulation() writes them, they are sorted.
    if (!std::is_sorted(vKeys.begin(), vKeys.end())) std::sort(vKeys.begin(), vKeys.end());
    if (std::adjacent_find(vKeys.begin(), vKeys.end()) != vKeys.end()) return fail("a segment comes twice");
    if (!allHaveSides(vKeys, [](const Sides& s) { return s.bLeft || s.bRight; })) {
        return fail("a segment is no edge of the triangles");
    }
    vKeys.clear();
    for (const std::vector<Index>& vZone : saved.vvZones) {
        if (!areRings(vZone)) return fail("the border of a zone isn't closed");
        for (std::size_t i = 0; i < vZone.size(); i += 2) {
            vKeys.emplace_back(vZone[i], vZone[i + 1]);
        }
    }
    std::sort(vKeys.begin(), vKeys.end());
    vKeys.erase(std::unique(vKeys.begin(), vKeys.end()), vKeys.end());
    return allHaveSides(vKeys, [](const Sides& s) { return s.bLeft; }) ||
           fail("the border of a zone is no edge of the triangles");
}

/// Of edges that are all different.
template <class Ask>
bool TriangulationLoader::allHaveSides(const std::vector<EdgeKey>& vEdges, const Ask& ask) const
{
    const Point2* const aVertices = pVertices->data();
    constexpr std::size_t ahead = 8;
    for (std::size_t i = 0; i < vEdges.size(); ++i) {
        if (i + 2 * ahead < vEdges.size()) __builtin_prefetch(aVertices + vEdges[i + 2 * ahead].first);
        if (i + ahead < vEdges.size()) __builtin_prefetch(aVertices[vEdges[i + ahead].first].getIncidentTriangle());
        if (!ask(sidesOf(aVertices + vEdges[i].first, aVertices + vEdges[i].second))) return false;
    }
    return true;
}

/// Whether no edge comes twice, be it in the other direction, and each vertex is left as often as it is reached.
bool TriangulationLoader::areRings(const std::vector<Index>& vZone)
{
    std::vector<Index> vSources, vTargets;
    std::vector<std::pair<Index, Index>> vEdges;
    for (std::size_t i = 0; i < vZone.size(); i += 2) {
        vSources.push_back(vZone[i]);
        vTargets.push_back(vZone[i + 1]);
        vEdges.push_back(std::minmax(vZone[i], vZone[i + 1]));
    }
    std::sort(vSources.begin(), vSources.end());
    std::sort(vTargets.begin(), vTargets.end());
    std::sort(vEdges.begin(), vEdges.end());
    return vSources == vTargets && std::adjacent_find(vEdges.begin(), vEdges.end()) == vEdges.end();
}

// ---- building -------------------------------------------------------------------------------------------------------

void TriangulationLoader::build(std::vector<Zone2*>& vZones)
{
    if (counts.numVertices > 0) dt2.adoptVertices(pVertices->data(), pVertices->size(), range);
    pVertices->keep();
    if (pTriangles != nullptr) {
        pTriangles->keep();
        dt2.bFullDimensional = true;
    }
    const auto pairsOf = [this](const std::vector<Index>& v) {
        std::vector<ConstraintMgr::VertexPair> vPairs;
        vPairs.reserve(v.size() / 2);
        for (std::size_t i = 0; i < v.size(); i += 2) {
            vPairs.emplace_back(pVertices->data() + v[i], pVertices->data() + v[i + 1]);
        }
        return vPairs;
    };
    ConstraintMgr& manager = dt2.getConstraintMgr();
    manager.createConstraint(pairsOf(saved.vSegments), CIS_CONSTRAINED_DELAUNAY, false);
    for (const std::vector<Index>& vZone : saved.vvZones) {
        ConstraintGraph2* const pGraph = manager.createConstraint_oriented(pairsOf(vZone), CIS_CONSTRAINED_DELAUNAY);
        vZones.push_back(pGraph == nullptr ? nullptr : dt2.createZone(pGraph, ZL_INSIDE));
    }
}

} // namespace ORBI_LUMO25D
