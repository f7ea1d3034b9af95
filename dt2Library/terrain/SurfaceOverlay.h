#ifndef LUMO25D_TERRAIN_SURFACEOVERLAY_H
#define LUMO25D_TERRAIN_SURFACEOVERLAY_H

#include "Zone2.h"
#include "terrain/SurfaceHeights.h"

#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintGraph2;
class Dt2;
class Progress;

/// Overlays two zones, usually of different triangulations, in a third triangulation: the edges of both become
/// constraints there, so that each triangle of the common area lies in one triangle of either zone.
///
/// Heights follow the edges: a vertex that splits an edge of a surface gets the height of that edge as it was given, not
/// that of the triangle which its rounded place happens to lie in, and steep triangles do no harm.
class SurfaceOverlay
{
public:
    /// The triangles are fetched here. A zone may be NULL: there is no common area then.
    SurfaceOverlay(Zone2* pZone0, Zone2* pZone1, Dt2& dt_, SurfaceHeights& heights_);

    /// Makes the common area, held by its border. NULL when there is none. 10 units of progress.
    Zone2* makeCommonZone(Progress& progress);
    /// Brings the edges of both surfaces in, as far as they touch the box of the common area. 70 units.
    void insertEdges(const Bbox2& bbox, Progress& progress);
    /// Finds the heights on split edges, 2 units; then what is missing at these vertices, inside of triangles.
    void findHeightsOnEdges(Progress& progress);
    void complementHeights(const std::vector<Point2*>& vVertices);
    /// The height of surface ith, 0 or 1, at a vertex; false where there is none within 0.01 of it.
    bool getHeight(int ith, const Point2& p, double& height) const;

private:
    using VertexPairs = std::vector<std::pair<Point2*, Point2*>>;
    struct Surface
    {
        Zone2* pZone = nullptr;
        std::vector<Triangle2*> vT;
        ConstraintGraph2* pGraph = nullptr;
    };

    void keepEdges(const Surface& surface, const Bbox2& bbox, VertexPairs& vEdges) const;
    void insertEnds(int ith, VertexPairs& vEdges);
    void findHeightsOnEdges(int ith);

    Surface aSurfaces[2];
    Dt2& dt;
    SurfaceHeights& heights;
};

} // namespace ORBI_LUMO25D

#endif
