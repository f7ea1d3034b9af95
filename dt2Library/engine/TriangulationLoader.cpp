#include "engine/TriangulationLoader.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Dt2.h"
#include "engine/EdgeKeys.h"
#include "engine/GapFiller.h"
#include "geometry/OrbiTest.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

std::size_t next(std::size_t i)
{
    return i == 2 ? 0 : i + 1;
}

} // namespace

bool TriangulationLoader::fail(const char* what)
{
    error = what;
    return false;
}

bool TriangulationLoader::check()
{
    if (!areFinite() || !areInRange()) return false;
    if (saved.vTriangles.empty()) return checkWithoutTriangles();
    if (!turnCounterclockwise() || !useAllVertices() || !linkTriangles()) return false;
    return (isConvexBorder() || fillGaps()) && checkSegments() && checkZones();
}

// ---- numbers --------------------------------------------------------------------------------------------------------

bool TriangulationLoader::areFinite()
{
    const auto isFinite = [](const Point2& p) {
        return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
    };
    return std::all_of(saved.vVertices.begin(), saved.vVertices.end(), isFinite) ||
           fail("a coordinate is not a finite number");
}

bool TriangulationLoader::areInRange()
{
    const std::size_t n = saved.vVertices.size();
    // Negative ones are far too large.
    const auto isInRange = [n](Index i) { return static_cast<std::uint32_t>(i) < n; };
    const auto allInRange = [&isInRange](const std::vector<Index>& v) {
        return std::all_of(v.begin(), v.end(), isInRange);
    };
    return (allInRange(saved.vTriangles) && allInRange(saved.vSegments) &&
            std::all_of(saved.vvZones.begin(), saved.vvZones.end(), allInRange)) ||
           fail("there is no vertex of that number");
}

/// Without triangles, all vertices wait on one line, each in a place of its own.
bool TriangulationLoader::checkWithoutTriangles()
{
    std::vector<const Point2*> v;
    for (const Point2& p : saved.vVertices) {
        v.push_back(&p);
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

// ---- triangles ------------------------------------------------------------------------------------------------------

bool TriangulationLoader::turnCounterclockwise()
{
    OrbiTest orbiTest;
    for (const Point2& p : saved.vVertices) {
        orbiTest.ensureStaticBound(&p);
    }
    const Point2* const aVertices = saved.vVertices.data();
    for (std::size_t t = 0; t < numTriangles(); ++t) {
        const Point2* const p = aVertices + cornerOf(t, 0);
        const Point2* const q = aVertices + cornerOf(t, 1);
        const Point2* const r = aVertices + cornerOf(t, 2);
        if (orbiTest.orientationInRange(p, q, r) != ORIENTATION2_CCW) {
            return fail("a triangle doesn't turn counterclockwise");
        }
    }
    return true;
}

bool TriangulationLoader::useAllVertices()
{
    std::vector<char> vUsed(saved.vVertices.size(), 0);
    for (const Index i : saved.vTriangles) {
        vUsed[static_cast<std::size_t>(i)] = 1;
    }
    return std::find(vUsed.begin(), vUsed.end(), 0) == vUsed.end() || fail("a vertex has no triangle");
}

namespace
{

// A side that is walked from the lower of its ends to the higher one, kept with the lower: the other end, the triangle and
// the corner across from it.
std::uint64_t packSide(std::int32_t other, std::size_t t, std::size_t i)
{
    return std::uint64_t(static_cast<std::uint32_t>(other)) << 33 | std::uint64_t(t) << 2 | i;
}
constexpr std::size_t maxTriangles = 0x7FFFFFFFU; // 31 bits
std::uint64_t otherEnd(std::uint64_t side)
{
    return side >> 33;
}
std::size_t placeOf(std::uint64_t side)
{
    return 3 * static_cast<std::size_t>(side >> 2 & 0x7FFFFFFFU) + static_cast<std::size_t>(side & 3U);
}

/// More sides than this at one vertex are sorted.
constexpr std::ptrdiff_t manySides = 24;

/// The first side of a bucket with that other end, or the bucket's end.
const std::uint64_t* findSide(const std::uint64_t* pFirst, const std::uint64_t* pEnd, std::uint64_t other)
{
    if (pEnd - pFirst > manySides) {
        pFirst = std::lower_bound(pFirst, pEnd, other,
                                  [](std::uint64_t side, std::uint64_t value) { return otherEnd(side) < value; });
        return pFirst != pEnd && otherEnd(*pFirst) == other ? pFirst : pEnd;
    }
    while (pFirst != pEnd && otherEnd(*pFirst) != other) {
        ++pFirst;
    }
    return pFirst;
}

} // namespace

/// Finds the triangles that share an edge: one of them walks it upwards, from its lower number to its higher one, the other
/// downwards. A counting sort brings the upward sides of one vertex together, among which the downward ones are looked up.
/// Of several equal upward sides one at most gets a neighbour; the others count as border, which isn't sound then.
bool TriangulationLoader::linkTriangles()
{
    std::vector<std::size_t> vStarts(saved.vVertices.size() + 1, 0);
    const auto forEachSide = [this](const auto& f) {
        for (std::size_t t = 0; t < numTriangles(); ++t) {
            const Index* const c = &saved.vTriangles[3 * t];
            f(c[1], c[2], t, 0);
            f(c[2], c[0], t, 1);
            f(c[0], c[1], t, 2);
        }
    };
    forEachSide([&vStarts](Index src, Index trg, std::size_t, std::size_t) {
        vStarts[static_cast<std::size_t>(src)] += src < trg ? 1U : 0U;
    });
    std::size_t sum = 0;
    for (std::size_t& start : vStarts) {
        sum += start;
        start = sum; // the end, from which the bucket is filled down to its start
    }
    // Of huge pages, as the pools: what is filled at random would otherwise be spent on faults.
    const BlockMemory memory(std::max<std::size_t>(1, sum) * sizeof(std::uint64_t));
    neighborMemory = BlockMemory(saved.vTriangles.size() * sizeof(std::uint32_t));
    if (memory.data() == nullptr || neighborMemory.data() == nullptr) throw std::bad_alloc();
    std::uint64_t* const aSides = reinterpret_cast<std::uint64_t*>(memory.data());
    aNeighbors = reinterpret_cast<std::uint32_t*>(neighborMemory.data());
    std::fill_n(aNeighbors, numSides(), noNeighbor);
    forEachSide([&](Index src, Index trg, std::size_t t, std::size_t i) {
        if (src < trg) aSides[--vStarts[static_cast<std::size_t>(src)]] = packSide(trg, t, i);
    });
    for (std::size_t i = 0; i + 1 < vStarts.size(); ++i) {
        std::uint64_t* const pFirst = aSides + vStarts[i];
        std::uint64_t* const pEnd = aSides + vStarts[i + 1];
        if (pEnd - pFirst > manySides) std::sort(pFirst, pEnd);
    }
    bool bOnce = true;
    forEachSide([&](Index src, Index trg, std::size_t t, std::size_t i) {
        if (src < trg) return;
        const auto low = static_cast<std::size_t>(trg);
        const std::uint64_t* const pEnd = aSides + vStarts[low + 1];
        const std::uint64_t* const p = findSide(aSides + vStarts[low], pEnd, static_cast<std::uint64_t>(src));
        if (p == pEnd) return;
        const std::size_t place = placeOf(*p);
        bOnce = bOnce && aNeighbors[place] == noNeighbor;
        aNeighbors[place] = static_cast<std::uint32_t>(t);
        aNeighbors[3 * t + i] = static_cast<std::uint32_t>(place / 3);
    });
    return bOnce || fail("two triangles lie on one side of an edge");
}

// ---- the border -----------------------------------------------------------------------------------------------------

template <class F>
void TriangulationLoader::forEachBorderEdge(const F& f) const
{
    for (std::size_t side = 0; side < numSides(); ++side) {
        if (aNeighbors[side] != noNeighbor) continue;
        const std::size_t t = side / 3;
        const std::size_t i = next(side % 3);
        f(cornerOf(t, i), cornerOf(t, next(i)));
    }
}

/// Whether the border is one convex polygon, walked once; vertices in the middle of a straight side are welcome.
bool TriangulationLoader::isConvexBorder() const
{
    std::vector<Index> vNext(saved.vVertices.size(), -1);
    std::size_t numEdges = 0;
    Index start = -1;
    bool bOneWay = true;
    forEachBorderEdge([&](Index src, Index trg) {
        Index& target = vNext[static_cast<std::size_t>(src)];
        bOneWay = bOneWay && target < 0;
        target = trg;
        start = src;
        ++numEdges;
    });
    if (!bOneWay || start < 0) return false;

    const auto at = [this](Index i) { return &saved.vVertices[static_cast<std::size_t>(i)]; };
    std::size_t numWalked = 0;
    std::size_t numLowest = 0;
    Index a = start;
    Index b = vNext[static_cast<std::size_t>(start)];
    do {
        if (b < 0) return false;
        const Index c = vNext[static_cast<std::size_t>(b)];
        if (c < 0) return false;
        const bool bUpTo = *at(a) < *at(b);
        const bool bUpFrom = *at(b) < *at(c);
        const Orientation2 turn = getOrientation2_mt(at(a), at(b), at(c));
        const bool bStraight = turn == ORIENTATION2_COLLINEAR && bUpTo == bUpFrom;
        if (turn != ORIENTATION2_CCW && !bStraight) return false;
        if (!bUpTo && bUpFrom) ++numLowest;
        a = b;
        b = c;
    } while (++numWalked < numEdges && a != start);
    return a == start && numWalked == numEdges && numLowest == 1;
}

bool TriangulationLoader::fillGaps()
{
    std::vector<std::pair<Index, Index>> vBorder;
    forEachBorderEdge([&vBorder](Index src, Index trg) { vBorder.emplace_back(src, trg); });
    EdgeKeys borderKeys(saved.vVertices.size());
    for (const auto& [src, trg] : vBorder) {
        borderKeys.add(src, trg);
    }
    borderKeys.sort();
    GapFiller filler(saved.vVertices, borderKeys);
    if (!filler.run(saved.vTriangles)) return fail("triangles overlap");
    if (numTriangles() > maxTriangles) return fail("there are too many triangles");
    if (!linkTriangles() || !isConvexBorder()) return fail("triangles overlap");

    EdgeKeys standing(saved.vVertices.size());
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        standing.addUndirected(saved.vSegments[i], saved.vSegments[i + 1]);
    }
    standing.sort();
    EdgeKeys hull(saved.vVertices.size());
    forEachBorderEdge([&hull](Index src, Index trg) { hull.add(src, trg); });
    hull.sort();
    for (const auto& [src, trg] : vBorder) {
        if (hull.find(src, trg) != EdgeKeys::none || standing.findUndirected(src, trg) != EdgeKeys::none) continue;
        saved.vSegments.push_back(src);
        saved.vSegments.push_back(trg);
    }
    return true;
}

// ---- segments and zones ---------------------------------------------------------------------------------------------

/// How many of the keys are edges of triangles; undirected ones have their lower end first.
std::size_t TriangulationLoader::countStanding(const EdgeKeys& keys, bool bDirected) const
{
    if (keys.size() == 0) return 0;
    std::size_t num = 0;
    for (std::size_t t = 0; t < numTriangles(); ++t) {
        const Index* const c = &saved.vTriangles[3 * t];
        const int numEnds = keys.isEnd(c[0]) + keys.isEnd(c[1]) + keys.isEnd(c[2]);
        if (numEnds < 2) continue;
        for (std::size_t i = 0; i < 3; ++i) {
            const Index src = c[next(i)];
            const Index trg = c[next(next(i))];
            if (bDirected) {
                num += keys.find(src, trg) != EdgeKeys::none ? 1U : 0U;
            } else if (src < trg || aNeighbors[3 * t + i] == noNeighbor) {
                num += keys.findUndirected(src, trg) != EdgeKeys::none ? 1U : 0U;
            }
        }
    }
    return num;
}

bool TriangulationLoader::checkSegments()
{
    EdgeKeys keys(saved.vVertices.size());
    for (std::size_t i = 0; i < saved.vSegments.size(); i += 2) {
        keys.addUndirected(saved.vSegments[i], saved.vSegments[i + 1]);
    }
    keys.sort();
    if (2 * keys.size() != saved.vSegments.size()) return fail("a segment comes twice");
    return countStanding(keys, false) == keys.size() || fail("a segment is no edge of the triangles");
}

/// Each border edge must have a triangle on its left, and the edges of a zone must close to rings.
bool TriangulationLoader::checkZones()
{
    EdgeKeys keys(saved.vVertices.size());
    for (const std::vector<Index>& vZone : saved.vvZones) {
        if (!areRings(vZone)) return fail("the border of a zone isn't closed");
        for (std::size_t i = 0; i < vZone.size(); i += 2) {
            keys.add(vZone[i], vZone[i + 1]);
        }
    }
    keys.sort();
    return countStanding(keys, true) == keys.size() || fail("the border of a zone is no edge of the triangles");
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

void TriangulationLoader::build(Dt2& dt2, std::vector<Zone2*>& vZones)
{
    const std::vector<Point2*> vVertices = buildMesh(dt2);
    const auto pairsOf = [&vVertices](const std::vector<Index>& v) {
        std::vector<ConstraintMgr::VertexPair> vPairs;
        for (std::size_t i = 0; i < v.size(); i += 2) {
            vPairs.emplace_back(vVertices[static_cast<std::size_t>(v[i])],
                                vVertices[static_cast<std::size_t>(v[i + 1])]);
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

/// Vertices and linked triangles; the vertices in the order of the file.
std::vector<Point2*> TriangulationLoader::buildMesh(Dt2& dt2) const
{
    std::vector<Point2*> vVertices;
    if (saved.vVertices.empty()) return vVertices;
    dt2.insertToVVault(saved.vVertices, &vVertices);
    LUMO_CHECK(dt2.vertexVault.numActive() == saved.vVertices.size(),
               "vertexVault.numActive()==saved.vVertices.size()");
    if (saved.vTriangles.empty()) return vVertices;
    Triangle2* const aTriangles = dt2.poolTriangles.allocRange(numTriangles());
    const auto neighbor = [&](std::size_t side) {
        return aNeighbors[side] == noNeighbor ? nullptr : aTriangles + aNeighbors[side];
    };
    for (std::size_t t = 0; t < numTriangles(); ++t) {
        Triangle2* const pT = new (aTriangles + t) Triangle2();
        Point2* aCorners[3];
        for (std::size_t i = 0; i < 3; ++i) {
            aCorners[i] = vVertices[static_cast<std::size_t>(cornerOf(t, i))];
            aCorners[i]->setIncidentTriangle(pT);
        }
        L::set(pT, aCorners[0], aCorners[1], aCorners[2], neighbor(3 * t), neighbor(3 * t + 1), neighbor(3 * t + 2));
    }
    dt2.bFullDimensional = true;
    dt2.vertexVault.areaChanged();
    return vVertices;
}

} // namespace ORBI_LUMO25D
