#ifndef LUMO25D_TERRAIN_MESHOVERLAY_H
#define LUMO25D_TERRAIN_MESHOVERLAY_H

#include "Bbox2.h"
#include "geometry/OrbiTest.h"
#include "terrain/SegmentTrace.h"
#include "terrain/SurfaceHeights.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Progress;
class ProgressShare;
class Zone2;

/// The subdivision of the plane by the edges of two surfaces: its vertices and edges. The area between is cells, each the
/// common part of a triangle of one surface and a triangle of the other.
struct OverlayGraph
{
    static constexpr std::uint32_t none = 0xffffffffU;

    /// Half an edge, with the triangles on its left, one of each surface. Outside of their common area it has none.
    struct HalfEdge
    {
        std::uint32_t aTriangles[2];
        std::uint32_t src, trg;

        bool isInside() const { return aTriangles[0] != none && aTriangles[1] != none; }
    };

    std::vector<Point2> vPlaces;
    std::vector<SurfaceHeights::Pair> vHeights; ///< of both surfaces at the vertices
    std::vector<HalfEdge> vHalfEdges;           ///< the halves of edge i are 2 i and 2 i + 1
    std::size_t numTriangles = 0;               ///< of the first surface: a bound of their numbers
};

/// Makes the overlay of two zones, usually of different triangulations.
///
/// Each edge of either surface is traced through the triangulation of the other one. What is within a resolution counts as
/// meeting; apart from that, only the places of crossings are rounded. Where the surfaces' own triangles are as small as
/// that, the places may contradict the subdivision, which whoever uses it must check. Heights follow the edges: at a
/// crossing, each surface has the height that its edge has there.
class MeshOverlay
{
public:
    /// The zones must have triangles. What is within 2 ^ exponent of the largest coordinate counts as meeting.
    MeshOverlay(const Zone2& zone0, const Zone2& zone1, int resolutionExponent_);

    /// Gives what lies in the common area, in 60 units of progress. False when a crossing has no place among the doubles, or a
    /// triangulation contradicts itself. O(n log n) in the edges
    /// and their crossings, in practice linear.
    bool run(OverlayGraph& graph_, Progress& progress);

private:
    static constexpr std::uint32_t none = OverlayGraph::none;

    struct Crossing
    {
        std::uint32_t otherSide, vertex;
    };
    /// Crossings of an edge, in the order of the sides of the other surface.
    struct Range
    {
        std::uint32_t first = 0, last = 0;
    };
    struct Surface
    {
        Surface(const Zone2& zone);
        void peelNeedles(const SegmentTrace& trace);

        std::uint32_t numberOf(const Triangle2* pT) const;
        std::uint32_t sideOf(const Triangle2* pT, int ith) const;

        Dt2& dt;
        std::vector<Triangle2*> vT;
        Bbox2 box;
        std::vector<bool> vInZone;                ///< triangles, by their numbers in the pool, as all that follows
        std::vector<std::uint32_t> vVertices;     ///< of the overlay, by the numbers of the surface's vertices
        std::vector<SegmentTrace::Place> vPlaces; ///< of the surface's vertices in the other triangulation
        std::vector<std::pair<Triangle2*, int>> vEdges; ///< to be traced: those that the other surface may meet
    };

    double maxAbs() const;
    void findEdges(int ith, double resolution);
    void placeVertices(int ith, SegmentTrace& trace);
    void placeVertex(int ith, Point2* pVtx, const SegmentTrace::Place& place);
    bool getHeight(int ith, const Point2& p, const SegmentTrace::Place& place, double& height) const;
    bool traceEdges(int ith, SegmentTrace& trace, ProgressShare& share);
    bool traceEdge(int ith, const Triangle2* pT, int corner, SegmentTrace& trace);
    bool crossingVertex(int ith, std::uint32_t side, const Point2& a, const Point2& b,
                        const SegmentTrace::Meeting& meeting, std::uint32_t& vertex);
    bool addCrossing(const Point2& a, const Point2& b, const Point2& c, const Point2& d);
    std::uint32_t findCrossing(std::uint32_t side0, std::uint32_t side1) const;

    OrbiTest orbiTest;
    Surface aSurfaces[2];
    const int resolutionExponent;
    std::vector<Crossing> vCrossings; ///< of the first surface's edges
    std::vector<Range> vRanges;       ///< by the sides of the first surface
    std::vector<SegmentTrace::Meeting> vMeetings;
    OverlayGraph* pGraph = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
