#include "terrain/OverlayCells.h"

#include "support/check.h"
#include "terrain/ProgressShare.h"
#include "terrain/zeroPlace.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

bool OverlayCells::run(Result& result_, Progress& progress)
{
    pResult = &result_;
    for (const Point2& p : graph.vPlaces) orbiTest.ensureStaticBound(&p);
    settleHeights();
    if (!cutEdges()) return false;
    const std::size_t numVertices = graph.vPlaces.size();
    result_.vVertices.reserve(numVertices);
    result_.vHeights.reserve(numVertices);
    result_.vTriangles.reserve(6 * numVertices);
    return emitCells(progress);
}

// ---- cuts -------------------------------------------------------------------------------------------------------------

/// Vertices outside of the common area keep a z of 0.
void OverlayCells::settleHeights()
{
    for (std::size_t i = 0; i < graph.vPlaces.size(); ++i) {
        if (graph.vHeights[i].isKnown()) SurfaceHeights::settle(graph.vPlaces[i], graph.vHeights[i], threshold);
    }
}

bool OverlayCells::cutEdges()
{
    if (!roundShortEnds()) return false;
    const std::size_t numEdges = graph.vHalfEdges.size() / 2;
    vCuts.assign(numEdges, none);
    for (std::size_t i = 0; i < numEdges; ++i) {
        const OverlayGraph::HalfEdge& edge = graph.vHalfEdges[2 * i];
        if (haveOppositeSigns(edge.src, edge.trg)) vCuts[i] = cut(edge.src, edge.trg);
    }
    return true;
}

/// Where the surfaces meet nearer to a vertex than the rounding of places, they meet in the vertex. False when the edge
/// isn't long against the rounding: then that would be a change.
bool OverlayCells::roundShortEnds()
{
    constexpr double negligible = 0x1p-20;
    for (std::size_t i = 0; i < graph.vHalfEdges.size(); i += 2) {
        const OverlayGraph::HalfEdge& edge = graph.vHalfEdges[i];
        if (!haveOppositeSigns(edge.src, edge.trg)) continue;
        const Point2 &p0 = at(edge.src), &p1 = at(edge.trg);
        const ZeroPlace zero = findZeroPlace(p0, p1);
        if (zero.bApart) continue;
        if (zero.fraction > negligible) return false;
        warnOfSkippedCut(p0.z(), p1.z());
        const std::uint32_t nearer = zero.bNearFirst ? edge.src : edge.trg;
        SurfaceHeights::unite(graph.vPlaces[nearer], graph.vHeights[nearer]);
    }
    return true;
}

/// The vertex that cuts an edge between vertices of opposite signs; none where there is no place for it.
std::uint32_t OverlayCells::cut(std::uint32_t v0, std::uint32_t v1)
{
    const ZeroPlace zero = findZeroPlace(at(v0), at(v1));
    if (!zero.bApart) return none;
    const double height = zero.height(at(v0), graph.vHeights[v0], at(v1), graph.vHeights[v1]);
    LUMO_CHECK(graph.vPlaces.size() < none, "vPlaces.size()<none");
    graph.vPlaces.push_back(zero.place);
    graph.vHeights.emplace_back();
    graph.vHeights.back().aHeights[0] = graph.vHeights.back().aHeights[1] = height;
    return static_cast<std::uint32_t>(graph.vPlaces.size() - 1);
}

// ---- cells ------------------------------------------------------------------------------------------------------------

bool OverlayCells::emitCells(Progress& progress)
{
    // A counting sort by the triangles of the first surface; those of the second are few at each.
    std::vector<std::uint32_t> vEnds(graph.numTriangles + 1, 0);
    std::vector<Key> vKeys;
    LUMO_CHECK(graph.vHalfEdges.size() < none, "vHalfEdges.size()<none");
    for (const auto& half : graph.vHalfEdges) {
        if (half.isInside()) ++vEnds[half.aTriangles[0] + 1];
    }
    for (std::size_t i = 0; i < graph.numTriangles; ++i) vEnds[i + 1] += vEnds[i];
    vKeys.resize(vEnds.back());
    for (std::size_t i = graph.vHalfEdges.size(); i-- > 0;) {
        const auto& half = graph.vHalfEdges[i];
        if (half.isInside())
            vKeys[--vEnds[half.aTriangles[0] + 1]] = {half.aTriangles[1], static_cast<std::uint32_t>(i)};
    }
    Key* pFirst = vKeys.data();
    ProgressShare share(progress, 30, graph.numTriangles);
    for (std::size_t t = 0; t < graph.numTriangles; ++t) {
        share.next();
        Key* const pEnd = vKeys.data() + (t + 2 < vEnds.size() ? vEnds[t + 2] : vKeys.size());
        std::sort(pFirst, pEnd);
        while (pFirst < pEnd) {
            const Key* const pNext =
                std::find_if(pFirst, pEnd, [&](const Key& key) { return key.first != pFirst->first; });
            if (!collectCell(pFirst, pNext) || !emitPolygon(cell)) return false;
            pFirst += pNext - pFirst;
        }
    }
    return true;
}

/// Brings the edges of a cell, which has six at most, into their order. False when they don't close.
bool OverlayCells::collectCell(const Key* pFirst, const Key* pEnd)
{
    const auto numEdges = static_cast<std::size_t>(pEnd - pFirst);
    if (numEdges < 3 || numEdges > 6) return false;
    cell.clear();
    std::uint32_t vertex = graph.vHalfEdges[pFirst->second].src;
    while (cell.size() < numEdges) {
        const Key* const p =
            std::find_if(pFirst, pEnd, [&](const Key& key) { return graph.vHalfEdges[key.second].src == vertex; });
        if (p == pEnd) return false;
        cell.push_back({vertex, vCuts[p->second / 2]});
        vertex = graph.vHalfEdges[p->second].trg;
    }
    return vertex == cell.front().vertex;
}

bool OverlayCells::emitPolygon(const Polygon& polygon)
{
    std::size_t numChanges = 0;
    int last = 0;
    for (std::size_t i = 0; i < 2 * polygon.size(); ++i) { // the second round begins with the last sign of the first
        const int sign = signOf(polygon[i % polygon.size()].vertex);
        if (i >= polygon.size() && sign * last < 0) ++numChanges;
        if (sign != 0) last = sign;
    }
    if (numChanges == 0) {
        vOutline.clear();
        for (const Corner& corner : polygon) vOutline.push_back(corner.vertex);
        return emitConvex(vOutline, 0, vOutline.size() - 1);
    }
    // A threshold bends the difference at the vertices where it is none, rounding may do so: then it is linear in
    // triangles only.
    const bool bLinear = polygon.size() == 3 || (numChanges == 2 && threshold == 0.0);
    return bLinear ? emitWithChord(polygon) : emitHalves(polygon);
}

/// Cuts a polygon along a Delaunay edge between two corners.
bool OverlayCells::emitHalves(const Polygon& polygon)
{
    vOutline.clear();
    for (const Corner& corner : polygon) vOutline.push_back(corner.vertex);
    const std::size_t apex = findApex(vOutline, 0, polygon.size() - 1);
    return apex == 1 ? emitHalves(polygon, 1, polygon.size() - 1) : emitHalves(polygon, 0, apex);
}

/// The same along the diagonal from corner i to corner j.
bool OverlayCells::emitHalves(const Polygon& polygon, std::size_t i, std::size_t j)
{
    const std::uint32_t vI = polygon[i].vertex, vJ = polygon[j].vertex;
    std::uint32_t diagonalCut = none;
    if (haveOppositeSigns(vI, vJ)) {
        diagonalCut = cut(vI, vJ);
        if (diagonalCut == none) return false;
    }
    Polygon inner(polygon.begin() + static_cast<std::ptrdiff_t>(i),
                  polygon.begin() + static_cast<std::ptrdiff_t>(j + 1));
    inner.back().cut = diagonalCut;
    Polygon outer(polygon.begin() + static_cast<std::ptrdiff_t>(j), polygon.end());
    outer.insert(outer.end(), polygon.begin(), polygon.begin() + static_cast<std::ptrdiff_t>(i + 1));
    outer.back().cut = diagonalCut;
    return emitPolygon(inner) && emitPolygon(outer);
}

/// Cuts a polygon with two changes of sign between the zeros that separate its positive from its negative corners.
bool OverlayCells::emitWithChord(const Polygon& polygon)
{
    Vertices v;
    for (const Corner& corner : polygon) {
        v.push_back(corner.vertex);
        if (corner.cut != none) v.push_back(corner.cut);
    }
    std::size_t firstNegative = 0;
    for (int last = 0; !(last > 0 && signOf(v[firstNegative]) < 0); firstNegative = (firstNegative + 1) % v.size()) {
        if (signOf(v[firstNegative]) != 0) last = signOf(v[firstNegative]);
    }
    // To zero, negative, zero, positive. Further zeros stay where they are.
    const std::size_t first = (firstNegative + v.size() - 1) % v.size();
    std::rotate(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(first), v.end());
    const auto isNegative = [this](std::uint32_t vertex) { return signOf(vertex) < 0; };
    const auto itNegative = std::find_if(v.rbegin(), v.rend(), isNegative);
    const auto second = static_cast<std::size_t>(v.rend() - itNegative); // behind the last negative one
    if (signOf(v.front()) != 0 || second >= v.size() || signOf(v[second]) != 0) return false;
    v.push_back(v.front());
    return emitConvex(v, 0, second) && emitConvex(v, second, v.size() - 1);
}

/// Triangulates the convex polygon of the vertices from first to last, whose closing edge runs from last to first:
/// Delaunay, that is by the apex that sees this edge under the largest angle.
bool OverlayCells::emitConvex(const Vertices& v, std::size_t first, std::size_t last)
{
    if (last - first < 2) return true;
    const std::size_t apex = last - first == 2 ? first + 1 : findApex(v, first, last);
    return emitTriangle(v[last], v[first], v[apex]) && emitConvex(v, first, apex) && emitConvex(v, apex, last);
}

/// By the cotangent: the scalar product over the cross product, both in plain arithmetic. What comes of it is checked.
std::size_t OverlayCells::findApex(const Vertices& v, std::size_t first, std::size_t last) const
{
    const Point2 &p = at(v[first]), &q = at(v[last]);
    std::size_t best = first + 1;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = first + 1; i < last; ++i) {
        const Point2& r = at(v[i]);
        const double px = p.x() - r.x(), py = p.y() - r.y(), qx = q.x() - r.x(), qy = q.y() - r.y();
        const double cotangent = (px * qx + py * qy) / std::fabs(px * qy - py * qx);
        if (!(cotangent < least)) continue;
        least = cotangent;
        best = i;
    }
    return best;
}

bool OverlayCells::emitTriangle(std::uint32_t v0, std::uint32_t v1, std::uint32_t v2)
{
    if (orbiTest.orientationInRange(&at(v0), &at(v1), &at(v2)) != ORIENTATION2_CCW) return false;
    LUMO_CHECK(graph.vHeights[v0].isKnown() && graph.vHeights[v1].isKnown() && graph.vHeights[v2].isKnown(),
               "q_it!=mVtx2BeforeAfter.end()");
    vNumbers.resize(graph.vPlaces.size(), -1);
    for (const std::uint32_t v : {v0, v1, v2}) {
        if (vNumbers[v] < 0) {
            LUMO_CHECK(pResult->vVertices.size() < std::size_t(std::numeric_limits<std::int32_t>::max()),
                       "vVertices.size()<2^31");
            vNumbers[v] = static_cast<std::int32_t>(pResult->vVertices.size());
            pResult->vVertices.push_back(at(v));
            pResult->vHeights.push_back(graph.vHeights[v]);
        }
        pResult->vTriangles.push_back(vNumbers[v]);
    }
    return true;
}

} // namespace ORBI_LUMO25D
