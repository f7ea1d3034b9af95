#include "engine/TriangulationLoader.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "engine/GapFiller.h"
#include "engine/TriangleAssembler.h"
#include "support/check.h"

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
    orbiTest.setStaticBound_MT(std::max(range.box.getMinPoint().getMaxAbs(), range.box.getMaxPoint().getMaxAbs()));
    pTriangles = std::make_unique<TriangleAssembler>(dt2.poolTriangles, counts.numTriangles, pVertices->data(),
                                                     counts.numVertices, orbiTest);
    const auto add = [this](const Index* aCorners, std::size_t n) {
        return pTriangles->add(aCorners, n) || fail(pTriangles->getError());
    };
    return reader.readTriangles(counts.numTriangles, add) && (pTriangles->close() || fail(pTriangles->getError()));
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

bool TriangulationLoader::fillGaps()
{
    const std::vector<TriangleAssembler::Edge> vBorder = pTriangles->getBorder();
    EdgeKeys borderKeys(counts.numVertices);
    for (const auto& [src, trg] : vBorder) {
        borderKeys.add(src, trg);
    }
    borderKeys.sort();
    std::vector<Index> vCorners;
    vCorners.reserve(3 * counts.numTriangles);
    for (std::size_t t = 0; t < counts.numTriangles; ++t) {
        for (int i = 0; i < 3; ++i) vCorners.push_back(pTriangles->corner(t, i));
    }
    pTriangles.reset();
    const std::vector<Point2> vVertices(pVertices->data(), pVertices->data() + counts.numVertices);
    GapFiller filler(vVertices, borderKeys);
    if (!filler.run(vCorners) || !assemble(vCorners) || !isConvexBorder()) return fail("triangles overlap");

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

/// Segments are edges, and come once. The edges of each zone close to rings, and have a triangle on their left.
bool TriangulationLoader::checkEdges()
{
    EdgeKeys keys(counts.numVertices);
    const auto forEachPair = [](const std::vector<Index>& v, const auto& f) {
        for (std::size_t i = 0; i < v.size(); i += 2) f(v[i], v[i + 1]);
    };
    const auto addKey = [&keys](Index src, Index trg) { keys.addUndirected(src, trg); };
    forEachPair(saved.vSegments, addKey);
    for (const std::vector<Index>& vZone : saved.vvZones) {
        if (!areRings(vZone)) return fail("the border of a zone isn't closed");
        forEachPair(vZone, addKey);
    }
    if (keys.size() == 0) return true;
    keys.sort();

    // What is still to be found of each: any triangle at it, one on the left of it, one on the left of its reverse.
    enum : std::uint8_t
    {
        Segment = 1,
        Upward = 2,
        Downward = 4
    };
    std::vector<std::uint8_t> vWanted(keys.size(), 0);
    bool bTwice = false;
    forEachPair(saved.vSegments, [&](Index src, Index trg) {
        std::uint8_t& wanted = vWanted[keys.findUndirected(src, trg)];
        bTwice = bTwice || wanted != 0;
        wanted = Segment;
    });
    if (bTwice) return fail("a segment comes twice");
    for (const std::vector<Index>& vZone : saved.vvZones) {
        forEachPair(vZone, [&](Index src, Index trg) {
            vWanted[keys.findUndirected(src, trg)] |= src < trg ? Upward : Downward;
        });
    }
    for (std::size_t t = 0; t < pTriangles->size(); ++t) {
        const Index c[3] = {pTriangles->corner(t, 0), pTriangles->corner(t, 1), pTriangles->corner(t, 2)};
        if (keys.isEnd(c[0]) + keys.isEnd(c[1]) + keys.isEnd(c[2]) < 2) continue;
        for (int i = 0; i < 3; ++i) {
            const Index src = c[i];
            const Index trg = c[L::next(i)];
            const std::size_t position = keys.findUndirected(src, trg);
            if (position == EdgeKeys::none) continue;
            vWanted[position] &= static_cast<std::uint8_t>(~(Segment | (src < trg ? Upward : Downward)));
        }
    }
    std::uint8_t missing = 0;
    for (const std::uint8_t wanted : vWanted) {
        missing |= wanted;
    }
    if ((missing & Segment) != 0) return fail("a segment is no edge of the triangles");
    return missing == 0 || fail("the border of a zone is no edge of the triangles");
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
