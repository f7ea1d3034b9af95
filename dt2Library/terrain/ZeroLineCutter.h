#ifndef LUMO25D_TERRAIN_ZEROLINECUTTER_H
#define LUMO25D_TERRAIN_ZEROLINECUTTER_H

#include "Triangle2.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Dt2;
class SurfaceHeights;
class SurfaceOverlay;

/// Cuts triangles along the line on which the difference of two surfaces is zero, so that no triangle has
/// corners of both signs. The difference is the vertices' z.
///
/// Everything is planned on the triangles as they are; then edges are split, and the pieces of the line are inserted
/// between the vertices that this gave. All edges involved are constraints meanwhile: nothing is flipped away.
class ZeroLineCutter
{
public:
    ZeroLineCutter(Dt2& dt_, const std::vector<Triangle2*>& vT_, const SurfaceOverlay& overlay_,
                   SurfaceHeights& heights_, double threshold_);

    /// False, and nothing done, when there is nothing to cut. Else the triangles given at the construction are gone
    /// afterwards.
    bool run();
    /// Gives heights to those vertices that came in besides, where constraints were close to each other.
    void findMissingHeights(const std::vector<Point2*>& vVertices);

private:
    static constexpr std::uint32_t none = 0xffffffffU;

    using VertexPairs = std::vector<std::pair<Point2*, Point2*>>;

    /// An edge between corners of different signs, with the place where the surfaces meet.
    struct Cut
    {
        Point2 *pP0, *pP1;
        Point2 splitPoint;
        double height;                          ///< of both surfaces there
        ConstraintSegment2* pSegment = nullptr; ///< that holds the edge
        Point2* pVertex = nullptr;              ///< that splits it in the end
    };
    /// A piece of the line, from one cut to another or to a corner.
    struct Piece
    {
        std::uint32_t from, to;
        Point2* pCorner; ///< where there is no second cut
    };

    void findCuts();
    bool planCut(Point2* p0, Point2* p1);
    void planPieces();
    void holdEdges();
    void splitEdge(Cut& cut);
    void insertPieces();
    bool interpolateMissing(bool bOnZeroLines);

    Dt2& dt;
    const SurfaceOverlay& overlay;
    SurfaceHeights& heights;
    double threshold;
    const std::vector<Triangle2*>& vT;
    std::vector<std::uint32_t> vCutOfSide; ///< by the number of the triangle in its pool, times 3, plus the side
    VertexPairs vZeroEdges;                ///< along which the surfaces meet
    std::vector<Cut> vCuts;
    std::vector<Piece> vPieces;
};

} // namespace ORBI_LUMO25D

#endif
