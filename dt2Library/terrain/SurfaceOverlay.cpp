#include "terrain/SurfaceOverlay.h"

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Edge2.h"
#include "engine/Dt2.h"
#include "freeFunctions.h"
#include "geometry/numericTools.h"
#include "support/Progress.h"
#include "support/messages.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

Point2 withHeight(const Point2& p, double height)
{
    return Point2(p.x(), p.y(), height);
}

bool isWhollyOutside(const Point2& a, const Point2& b, const Bbox2& box)
{
    return std::max(a.x(), b.x()) < box.get_minX() || std::min(a.x(), b.x()) > box.get_maxX() ||
           std::max(a.y(), b.y()) < box.get_minY() || std::min(a.y(), b.y()) > box.get_maxY();
}

} // namespace

SurfaceOverlay::SurfaceOverlay(Zone2* pZone0, Zone2* pZone1, Dt2& dt_, SurfaceHeights& heights_)
    : dt(dt_), heights(heights_)
{
    aSurfaces[0].pZone = pZone0;
    aSurfaces[1].pZone = pZone1;
    for (Surface& surface : aSurfaces) {
        if (surface.pZone != nullptr) surface.pZone->getTriangles(surface.vT);
    }
}

Zone2* SurfaceOverlay::makeCommonZone(Progress& progress)
{
    ConstraintGraph2* aGraphs[2] = {nullptr, nullptr};
    for (int ith = 0; ith < 2; ++ith) {
        if (aSurfaces[ith].vT.empty()) return nullptr;
        std::vector<Segment2> vBorder;
        aSurfaces[ith].pZone->getBoundarySegments(vBorder);
        aGraphs[ith] = dt.createConstraint(vBorder, CIS_CONSTRAINED_DELAUNAY, true);
        progress.step(1);
    }
    Zone2* aZones[2] = {nullptr, nullptr};
    for (int ith = 0; ith < 2; ++ith) {
        aZones[ith] = dt.createZone(aGraphs[ith], ZL_INSIDE);
        if (aZones[ith] == nullptr) return nullptr;
        progress.step(2);
    }
    Zone2* const pCommon = zoneIntersection(aZones[0], aZones[1]);
    progress.step(4);
    return pCommon == nullptr ? nullptr : pCommon->convertToBoundedZone();
}

/// The edges that aren't outside of the box.
void SurfaceOverlay::keepEdges(const Surface& surface, const Bbox2& bbox, VertexPairs& vEdges) const
{
    std::vector<Edge2> vAll;
    getUndirectedEdges(*surface.pZone->getDelaunayTriangulation(), surface.vT, vAll);
    vEdges.reserve(vAll.size());
    for (const Edge2& edge : vAll) {
        Point2 *p0 = nullptr, *p1 = nullptr;
        edge.getPoints(p0, p1);
        if (!isWhollyOutside(*p0, *p1, bbox)) vEdges.emplace_back(p0, p1);
    }
}

void SurfaceOverlay::insertEdges(const Bbox2& bbox, Progress& progress)
{
    VertexPairs aEdges[2];
    for (int ith = 0; ith < 2; ++ith) keepEdges(aSurfaces[ith], bbox, aEdges[ith]);
    progress.step(30);
    for (int ith = 0; ith < 2; ++ith) {
        insertEnds(ith, aEdges[ith]);
        aSurfaces[ith].pGraph = dt.createConstraint(aEdges[ith], CIS_CONSTRAINED_DELAUNAY);
        LUMO_CHECK(aSurfaces[ith].pGraph != nullptr, "pCG!=0");
        progress.step(20);
    }
}

/// Replaces the vertices of the surface by those of the overlay at their places, which get to know their heights.
void SurfaceOverlay::insertEnds(int ith, VertexPairs& vEdges)
{
    const SimplePool<Point2>& pool = aSurfaces[ith].pZone->getDelaunayTriangulation()->poolVertices;
    constexpr std::uint32_t unseen = 0xffffffffU;
    std::vector<std::uint32_t> vNumbers(pool.size(), unseen);
    std::vector<Point2> vPoints;
    for (const auto& edge : vEdges) {
        for (const Point2* p : {edge.first, edge.second}) {
            std::uint32_t& number = vNumbers[pool.indexOf(p)];
            if (number != unseen) continue;
            LUMO_CHECK(vPoints.size() < unseen, "vPoints.size()<unseen");
            number = static_cast<std::uint32_t>(vPoints.size());
            vPoints.push_back(*p);
        }
    }
    std::vector<Point2*> vHandles;
    dt.insertVector(vPoints, &vHandles);
    for (std::size_t i = 0; i < vPoints.size(); ++i) heights.at(vHandles[i]).aHeights[ith] = vPoints[i].z();
    for (auto& edge : vEdges) {
        edge.first = vHandles[vNumbers[pool.indexOf(edge.first)]];
        edge.second = vHandles[vNumbers[pool.indexOf(edge.second)]];
    }
}

void SurfaceOverlay::findHeightsOnEdges(Progress& progress)
{
    for (int ith = 0; ith < 2; ++ith) {
        findHeightsOnEdges(ith);
        progress.step(1);
    }
}

void SurfaceOverlay::findHeightsOnEdges(int ith)
{
    std::vector<ConstraintSegment2*> vEdges, vDead;
    aSurfaces[ith].pGraph->getOriginalConstraintSegments(vEdges);
    for (ConstraintSegment2* pEdge : vEdges) {
        if (pEdge->isAlive()) continue;
        const double h0 = heights.get(pEdge->getSrc()).aHeights[ith];
        const double h1 = heights.get(pEdge->getTrg()).aHeights[ith];
        LUMO_CHECK(h0 != SurfaceHeights::UNKNOWN && h1 != SurfaceHeights::UNKNOWN, "pInSrc!=0 && pInTrg!=0");
        const Point2 a = withHeight(*pEdge->getSrc(), h0), b = withHeight(*pEdge->getTrg(), h1);
        vDead.assign(1, pEdge);
        while (!vDead.empty()) {
            ConstraintSegment2 *pChild0 = nullptr, *pChild1 = nullptr;
            Point2* pSplit = nullptr;
            vDead.back()->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
            vDead.pop_back();
            LUMO_CHECK(pSplit != nullptr && pChild0 != nullptr && pChild1 != nullptr,
                       "pSplit!=0 && pChildCS0!=0 && pChildCS1!=0");
            for (ConstraintSegment2* pChild : {pChild0, pChild1}) {
                if (!pChild->isAlive()) vDead.push_back(pChild);
            }
            // A vertex of the surface itself keeps its height.
            double& height = heights.at(pSplit).aHeights[ith];
            if (height == SurfaceHeights::UNKNOWN) height = heightOnSegment(a, b, pSplit->x(), pSplit->y());
        }
    }
}

bool SurfaceOverlay::getHeight(int ith, const Point2& p, double& height) const
{
    return aSurfaces[ith].pZone->getDelaunayTriangulation()->getHeight(p.x(), p.y(), height, nullptr, 0.01);
}

void SurfaceOverlay::complementHeights(const std::vector<Point2*>& vVertices)
{
    for (const Point2* pVtx : vVertices) {
        SurfaceHeights::Pair& pair = heights.at(pVtx);
        for (int ith = 0; ith < 2; ++ith) {
            if (pair.aHeights[ith] != SurfaceHeights::UNKNOWN || getHeight(ith, *pVtx, pair.aHeights[ith])) continue;
            msgWarning("CutAndFill::complementHeightMap()", "unexpected case " + std::to_string(ith));
        }
    }
}

} // namespace ORBI_LUMO25D
