#include "terrain/MeshOverlay.h"

#include "Zone2.h"
#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/check.h"
#include "terrain/ProgressShare.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

MeshOverlay::Surface::Surface(const Zone2& zone) : dt(*zone.getDelaunayTriangulation())
{
    zone.getTriangles(vT);
    LUMO_CHECK(dt.poolTriangles.size() < none / 3, "poolTriangles.size()<none/3");
    vInZone.assign(dt.poolTriangles.size(), false);
    for (const Triangle2* pT : vT) {
        vInZone[dt.poolTriangles.indexOf(pT)] = true;
        for (int i = 0; i < 3; ++i) box.add(*pT->corner(i));
    }
}

/// Takes needles along the border out of the zone: points on a line, but for the last bit, have them on their convex hull. No
/// volume is in them, but their heights are cliffs.
void MeshOverlay::Surface::peelNeedles(const SegmentTrace& trace)
{
    std::vector<Triangle2*> vToCheck = vT;
    bool bFound = false;
    while (!vToCheck.empty()) {
        const Triangle2* const pT = vToCheck.back();
        vToCheck.pop_back();
        if (numberOf(pT) == none) continue;
        for (int i = 0; i < 3; ++i) {
            if (numberOf(pT->neighbor(i)) != none || !trace.isNeedle(*pT, i)) continue;
            bFound = true;
            vInZone[dt.poolTriangles.indexOf(pT)] = false;
            for (const int k : {L::next(i), L::prev(i)}) vToCheck.push_back(pT->neighbor(k));
            break;
        }
    }
    if (!bFound) return;
    vT.erase(std::remove_if(vT.begin(), vT.end(), [this](const Triangle2* pT) { return numberOf(pT) == none; }),
             vT.end());
}

/// none for what isn't in the zone.
std::uint32_t MeshOverlay::Surface::numberOf(const Triangle2* pT) const
{
    if (pT == nullptr) return none;
    const std::size_t i = dt.poolTriangles.indexOf(pT);
    return vInZone[i] ? static_cast<std::uint32_t>(i) : none;
}

/// The number of an edge, from whichever side it is seen: three times the lower triangle in the zone, plus the corner. none
/// for an edge that is none of the zone.
std::uint32_t MeshOverlay::Surface::sideOf(const Triangle2* pT, int ith) const
{
    const Triangle2* const pN = pT->neighbor(ith);
    const std::uint32_t here = numberOf(pT), beyond = numberOf(pN);
    if (here == none && beyond == none) return none;
    return here < beyond ? 3 * here + static_cast<std::uint32_t>(ith)
                         : 3 * beyond + static_cast<std::uint32_t>(L::indexOf(pN, pT));
}

MeshOverlay::MeshOverlay(const Zone2& zone0, const Zone2& zone1, int resolutionExponent_)
    : aSurfaces{Surface(zone0), Surface(zone1)}, resolutionExponent(resolutionExponent_)
{
    for (const Surface& surface : aSurfaces) {
        for (const Point2& p : {surface.box.getMinPoint(), surface.box.getMaxPoint()}) orbiTest.ensureStaticBound(&p);
        for (const Point2& p : {surface.dt.bbox.getMinPoint(), surface.dt.bbox.getMaxPoint()}) {
            orbiTest.ensureStaticBound(&p);
        }
    }
}

/// The largest |x| or |y| of both zones.
double MeshOverlay::maxAbs() const
{
    double largest = 0.0;
    for (const Surface& surface : aSurfaces) {
        largest = std::max({largest, surface.box.getMinPoint().getMaxAbs(), surface.box.getMaxPoint().getMaxAbs()});
    }
    return largest;
}

bool MeshOverlay::run(OverlayGraph& graph_, Progress& progress)
{
    pGraph = &graph_;
    pGraph->numTriangles = aSurfaces[0].vInZone.size();
    const double resolution = std::ldexp(maxAbs(), resolutionExponent);
    SegmentTrace aTraces[2] = {{aSurfaces[1].dt, orbiTest, resolution}, {aSurfaces[0].dt, orbiTest, resolution}};
    // Each trace runs through the other surface.
    for (int ith = 0; ith < 2; ++ith) aSurfaces[ith].peelNeedles(aTraces[1 - ith]);
    for (int ith = 0; ith < 2; ++ith) findEdges(ith, resolution);
    for (int ith = 0; ith < 2; ++ith) placeVertices(ith, aTraces[ith]);
    // What isn't used of it is never touched, while growth would copy all.
    const std::size_t numEdges = aSurfaces[0].vEdges.size() + aSurfaces[1].vEdges.size();
    pGraph->vHalfEdges.reserve(10 * numEdges);
    pGraph->vPlaces.reserve(2 * numEdges);
    pGraph->vHeights.reserve(2 * numEdges);
    vCrossings.reserve(2 * numEdges);
    vRanges.resize(3 * aSurfaces[0].vInZone.size());
    ProgressShare share(progress, 60, numEdges);
    return traceEdges(0, aTraces[0], share) && traceEdges(1, aTraces[1], share);
}

// ---- vertices ---------------------------------------------------------------------------------------------------------

void MeshOverlay::findEdges(int ith, double resolution)
{
    Surface& surface = aSurfaces[ith];
    const Bbox2& box = aSurfaces[1 - ith].box;
    const auto isWhollyOutside = [&](const Point2& a, const Point2& b) {
        return std::max(a.x(), b.x()) < box.get_minX() - resolution ||
               std::min(a.x(), b.x()) > box.get_maxX() + resolution ||
               std::max(a.y(), b.y()) < box.get_minY() - resolution ||
               std::min(a.y(), b.y()) > box.get_maxY() + resolution;
    };
    surface.vEdges.reserve(surface.vT.size() / 2 * 3 + 3);
    for (Triangle2* pT : surface.vT) {
        for (int i = 0; i < 3; ++i) {
            if (surface.sideOf(pT, i) != 3 * surface.numberOf(pT) + static_cast<std::uint32_t>(i)) continue;
            if (isWhollyOutside(*pT->corner(L::next(i)), *pT->corner(L::prev(i)))) continue;
            surface.vEdges.emplace_back(pT, i);
        }
    }
}

void MeshOverlay::placeVertices(int ith, SegmentTrace& trace)
{
    Surface& surface = aSurfaces[ith];
    surface.vVertices.assign(surface.dt.poolVertices.size(), none);
    surface.vPlaces.resize(surface.dt.poolVertices.size());
    for (const auto& [pT, i] : surface.vEdges) {
        for (Point2* pVtx : {pT->corner(L::next(i)), pT->corner(L::prev(i))}) {
            const std::size_t number = surface.dt.poolVertices.indexOf(pVtx);
            if (surface.vVertices[number] != none) continue;
            surface.vPlaces[number] = trace.locate(*pVtx);
            placeVertex(ith, pVtx, surface.vPlaces[number]);
        }
    }
}

/// Vertices at one place are one.
void MeshOverlay::placeVertex(int ith, Point2* pVtx, const SegmentTrace::Place& place)
{
    std::uint32_t& vertex = aSurfaces[ith].vVertices[aSurfaces[ith].dt.poolVertices.indexOf(pVtx)];
    if (ith == 1 && place.pVtx != nullptr) {
        vertex = aSurfaces[0].vVertices[aSurfaces[0].dt.poolVertices.indexOf(place.pVtx)];
    }
    if (vertex == none) {
        LUMO_CHECK(pGraph->vPlaces.size() < none, "vPlaces.size()<none");
        vertex = static_cast<std::uint32_t>(pGraph->vPlaces.size());
        pGraph->vPlaces.emplace_back(pVtx->x(), pVtx->y(), 0.0);
        pGraph->vHeights.emplace_back();
    }
    SurfaceHeights::Pair& pair = pGraph->vHeights[vertex];
    pair.aHeights[ith] = pVtx->z();
    double height = 0.0;
    if (getHeight(1 - ith, *pVtx, place, height)) pair.aHeights[1 - ith] = height;
}

/// False outside of the zone.
bool MeshOverlay::getHeight(int ith, const Point2& p, const SegmentTrace::Place& place, double& height) const
{
    const Surface& surface = aSurfaces[ith];
    if (place.pVtx != nullptr) {
        height = place.pVtx->z();
    } else if (place.edge >= 0) {
        if (surface.sideOf(place.pT, place.edge) == none) return false;
        const Point2 &a = *place.pT->corner(L::next(place.edge)), &b = *place.pT->corner(L::prev(place.edge));
        height = a < b ? heightOnSegment(a, b, p.x(), p.y()) : heightOnSegment(b, a, p.x(), p.y());
    } else {
        if (surface.numberOf(place.pT) == none) return false;
        height = Dt2::heightOn(*place.pT, p.x(), p.y());
    }
    return true;
}

// ---- edges ------------------------------------------------------------------------------------------------------------

bool MeshOverlay::traceEdges(int ith, SegmentTrace& trace, ProgressShare& share)
{
    const auto& vEdges = aSurfaces[ith].vEdges;
    return std::all_of(vEdges.begin(), vEdges.end(), [&](const auto& edge) {
        share.next();
        return traceEdge(ith, edge.first, edge.second, trace);
    });
}

/// Adds the pieces of an edge that lie in the common area. Where edges of both surfaces run along each other, the pieces
/// come with the first one.
bool MeshOverlay::traceEdge(int ith, const Triangle2* pT, int corner, SegmentTrace& trace)
{
    const Surface &surface = aSurfaces[ith], &other = aSurfaces[1 - ith];
    const Point2 *const pA = pT->corner(L::next(corner)), *const pB = pT->corner(L::prev(corner));
    const std::size_t a = surface.dt.poolVertices.indexOf(pA), b = surface.dt.poolVertices.indexOf(pB);
    const std::uint32_t left = surface.numberOf(pT), right = surface.numberOf(pT->neighbor(corner));
    const std::uint32_t side = 3 * left + static_cast<std::uint32_t>(corner);
    const auto firstCrossing = static_cast<std::uint32_t>(vCrossings.size());
    if (!trace.run(*pA, surface.vPlaces[a], *pB, vMeetings)) return false;
    std::uint32_t src = surface.vVertices[a];
    for (const SegmentTrace::Meeting& m : vMeetings) {
        std::uint32_t trg = none;
        if (m.kind == SegmentTrace::Meeting::End) {
            trg = surface.vVertices[b];
        } else if (m.kind == SegmentTrace::Meeting::Vertex) {
            trg = other.vVertices[other.dt.poolVertices.indexOf(m.pVtx)];
        } else if (!crossingVertex(ith, side, *pA, *pB, m, trg)) {
            return false;
        }
        OverlayGraph::HalfEdge there{}, back{};
        there.aTriangles[ith] = left;
        there.aTriangles[1 - ith] = other.numberOf(m.pLeft);
        back.aTriangles[ith] = right;
        back.aTriangles[1 - ith] = m.pLeft == m.pRight ? there.aTriangles[1 - ith] : other.numberOf(m.pRight);
        const bool bAlong = m.pLeft != m.pRight;
        if ((there.isInside() || back.isInside()) && !(ith == 1 && bAlong)) {
            if (src == none || trg == none || src == trg) return false; // as small as the resolution
            there.src = back.trg = src;
            there.trg = back.src = trg;
            pGraph->vHalfEdges.push_back(there);
            pGraph->vHalfEdges.push_back(back);
        }
        src = trg;
    }
    if (ith == 0) {
        std::sort(vCrossings.begin() + firstCrossing, vCrossings.end(),
                  [](const Crossing& c, const Crossing& d) { return c.otherSide < d.otherSide; });
        vRanges[side] = {firstCrossing, static_cast<std::uint32_t>(vCrossings.size())};
    }
    return true;
}

/// The vertex where the edge from a to b crosses one of the other surface: made when the first surface's edges are traced,
/// found when those of the second are. None where the other edge is none of the zone.
bool MeshOverlay::crossingVertex(int ith, std::uint32_t side, const Point2& a, const Point2& b,
                                 const SegmentTrace::Meeting& meeting, std::uint32_t& vertex)
{
    const std::uint32_t otherSide = aSurfaces[1 - ith].sideOf(meeting.pT, meeting.ith);
    vertex = none;
    if (otherSide == none) return true;
    if (ith == 1) {
        vertex = findCrossing(otherSide, side);
        return true;
    }
    const Point2 &c = *meeting.pT->corner(L::next(meeting.ith)), &d = *meeting.pT->corner(L::prev(meeting.ith));
    LUMO_CHECK(pGraph->vPlaces.size() < none && vCrossings.size() < none, "vPlaces.size()<none");
    vertex = static_cast<std::uint32_t>(pGraph->vPlaces.size());
    vCrossings.push_back({otherSide, vertex});
    return a < b ? addCrossing(a, b, c, d) : addCrossing(b, a, c, d);
}

/// Adds the vertex where a b of the first surface and c d of the second one cross. The last digits don't depend on
/// directions, nor on which surface is the first.
bool MeshOverlay::addCrossing(const Point2& a, const Point2& b, const Point2& c, const Point2& d)
{
    if (d < c) return addCrossing(a, b, d, c);
    double x = 0.0, y = 0.0;
    const bool bSwap = c < a || (c == a && d < b);
    if (!(bSwap ? roundedCrossing(orbiTest, c, d, a, b, x, y) : roundedCrossing(orbiTest, a, b, c, d, x, y))) {
        return false;
    }
    pGraph->vPlaces.emplace_back(x, y, 0.0);
    SurfaceHeights::Pair pair;
    pair.aHeights[0] = heightOnSegment(a, b, x, y);
    pair.aHeights[1] = heightOnSegment(c, d, x, y);
    pGraph->vHeights.push_back(pair);
    return true;
}

std::uint32_t MeshOverlay::findCrossing(std::uint32_t side0, std::uint32_t side1) const
{
    const Range& range = vRanges[side0];
    const auto itEnd = vCrossings.begin() + range.last;
    const auto it = std::lower_bound(vCrossings.begin() + range.first, itEnd, side1,
                                     [](const Crossing& c, std::uint32_t side) { return c.otherSide < side; });
    return it != itEnd && it->otherSide == side1 ? it->vertex : none;
}

} // namespace ORBI_LUMO25D
