#ifndef LUMO25D_TERRAIN_CONTOURCHAINS_H
#define LUMO25D_TERRAIN_CONTOURCHAINS_H

#include "Segment2.h"
#include "terrain/ContourTracer.h"
#include "terrain/PlanarPoint.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Joins the pieces of one height's contours into polylines and polygons, where their ends are equal in x and y.
///
/// Only points that may be equal are compared: a table with bits for hash values tells which have theirs for themselves. The
/// time is linear in the points, but for sorts of the joined ends and of the chains by their starts. An object keeps its
/// memory for the next height.
class ContourChains
{
public:
    /// False when more than two segments end at one point: then there are no chains to be had. The points must stay until
    /// the chains are written.
    bool join(const std::vector<PlanarPoint>& vPoints, const std::vector<ContourPiece>& vPieces);
    /// Appends the chains: open ones by their starts, each from the smaller end; then closed ones by their starts, each
    /// counterclockwise from its smallest point. All points get that height.
    void append(double height, std::vector<std::vector<Segment2>>& vvContours) const;

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    struct Chain
    {
        const PlanarPoint* aPoints;
        std::size_t size;
        bool bClosed;
        std::size_t start; ///< where it is to begin
        bool bBackward;

        const PlanarPoint& startPoint() const { return aPoints[start]; }
        std::size_t after(std::size_t i) const { return i + 1 == size ? 0 : i + 1; }
        std::size_t before(std::size_t i) const { return i == 0 ? size - 1 : i - 1; }
    };

    void findSuspects(const std::vector<PlanarPoint>& vPoints);
    bool findPartners(const std::vector<PlanarPoint>& vPoints, const std::vector<ContourPiece>& vPieces);
    void concatenate(std::size_t end, const std::vector<PlanarPoint>& vPoints,
                     const std::vector<ContourPiece>& vPieces);
    void addChain(const PlanarPoint* aPoints, std::size_t size, bool bClosed);
    static void orient(Chain& ring);
    static bool turnsLeft(const Chain& ring);

    std::vector<Chain> vChains;
    std::vector<PlanarPoint> vJoined;          ///< the points of chains made of several pieces
    std::vector<std::uint64_t> vSeen, vShared; ///< a bit for each hash value: of one point, of several
    std::vector<std::size_t> vSuspects;        ///< points that share their hash value with others
    std::vector<std::size_t> vPartners; ///< the joined ends; ends 2 i and 2 i + 1 are the first and last of piece i
    std::vector<bool> vDone;            ///< pieces that are in a chain
};

} // namespace ORBI_LUMO25D

#endif
