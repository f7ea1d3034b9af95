#ifndef LUMO25D_TERRAIN_OVERLAYCELLS_H
#define LUMO25D_TERRAIN_OVERLAYCELLS_H

#include "terrain/MeshOverlay.h"
#include "terrain/SurfaceHeights.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Progress;

/// Makes triangles of the cells of an overlay, cut along the line on which the difference of both surfaces is zero.
///
/// A cell is convex and the difference is linear in it: so the line is a chord, which joins two places on edges, found for
/// both cells of an edge at once, or corners. What is left and right of the chord is triangulated by itself. Where the
/// difference isn't linear, because a threshold has changed it, the cell's Delaunay triangles are cut one by one.
class OverlayCells
{
public:
    /// The triangles' vertices with the difference before minus after as z, and both heights at each.
    struct Result
    {
        std::vector<Point2> vVertices;
        std::vector<std::int32_t> vTriangles; ///< three corners in a row
        std::vector<SurfaceHeights::Pair> vHeights;
    };

    /// Differences up to the threshold are none.
    OverlayCells(OverlayGraph& graph_, double threshold_) : graph(graph_), threshold(threshold_) {}

    /// False where the rounding of places gets in the way: a triangle doesn't turn counterclockwise, or an edge that must
    /// be cut is too short for it. O(n log n), in practice linear; 30 units of progress.
    bool run(Result& result_, Progress& progress);

private:
    static constexpr std::uint32_t none = OverlayGraph::none;

    /// A corner of a cell, and the vertex that cuts the edge to the next one.
    struct Corner
    {
        std::uint32_t vertex, cut;
    };
    using Polygon = std::vector<Corner>;
    using Key = std::pair<std::uint32_t, std::uint32_t>; ///< a triangle of the second surface, half an edge of the cell
    using Vertices = std::vector<std::uint32_t>;

    void settleHeights();
    bool cutEdges();
    bool roundShortEnds();
    std::uint32_t cut(std::uint32_t v0, std::uint32_t v1);
    bool emitCells(Progress& progress);
    bool collectCell(const Key* pFirst, const Key* pEnd);
    bool emitPolygon(const Polygon& polygon);
    bool emitHalves(const Polygon& polygon);
    bool emitHalves(const Polygon& polygon, std::size_t i, std::size_t j);
    bool emitWithChord(const Polygon& polygon);
    bool emitConvex(const Vertices& v, std::size_t first, std::size_t last);
    bool emitTriangle(std::uint32_t v0, std::uint32_t v1, std::uint32_t v2);
    std::size_t findApex(const Vertices& v, std::size_t first, std::size_t last) const;

    const Point2& at(std::uint32_t vertex) const { return graph.vPlaces[vertex]; }
    int signOf(std::uint32_t vertex) const { return at(vertex).z() > 0.0 ? 1 : at(vertex).z() < 0.0 ? -1 : 0; }
    bool haveOppositeSigns(std::uint32_t v0, std::uint32_t v1) const { return signOf(v0) * signOf(v1) < 0; }

    OverlayGraph& graph;
    const double threshold;
    OrbiTest orbiTest;
    std::vector<std::uint32_t> vCuts;   ///< vertices that cut the edges
    std::vector<std::int32_t> vNumbers; ///< of the vertices in the result, or negative
    Polygon cell;
    Vertices vOutline;
    Result* pResult = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
