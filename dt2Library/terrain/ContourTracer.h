#ifndef LUMO25D_TERRAIN_CONTOURTRACER_H
#define LUMO25D_TERRAIN_CONTOURTRACER_H

#include "terrain/HeightIndex.h"
#include "terrain/PlanarPoint.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// A part of a contour: the points first to end - 1 of an array, at least two, of which no two in a row are equal. A closed
/// one goes back from the last to the first, which aren't equal either.
struct ContourPiece
{
    std::size_t first, end;
    bool bClosed;
};

/// Follows the contours of a height from triangle to neighbour.
///
/// Goes on where two triangles of the index name each other as neighbours and share both vertices of the edge between them.
/// Where they don't, a piece ends: at the border, and at every edge of triangles that know of no neighbours. So a piece is
/// made without looking at coordinates.
///
/// An object keeps its memory for the next height: that of the largest one yet, and a bit for each triangle.
class ContourTracer
{
public:
    /// The index must outlive this object.
    explicit ContourTracer(const HeightIndex& heightIndex) : index(heightIndex), vDone(heightIndex.size() / 64 + 1) {}

    /// Finds all pieces. False when a vertex has this height: then there are none.
    bool trace(double height);

    const std::vector<PlanarPoint>& points() const { return vPoints; }
    const std::vector<ContourPiece>& pieces() const { return vPieces; }
    /// The smallest extent in x or y, whichever is larger, of a triangle's section; infinite without any. Sections that
    /// are shorter than the doubles' distance there have shrunk to points and are in no piece, but they count here.
    double shortestSection() const { return shortest; }

private:
    /// An edge that the plane cuts, on the way out of a triangle.
    struct Exit
    {
        std::uint32_t number; ///< of the triangle
        int edge;             ///< by the opposite corner
        const Point2 *pLow, *pHigh;
        bool bLowFirst; ///< it goes up, with the triangle on its left; this is so on the whole way, or nowhere
    };

    bool selectCut(double height);
    void follow(std::uint32_t number, double height);
    Exit exitOf(std::uint32_t number, int edge) const;
    bool advance(Exit exit, std::size_t first, double height);
    int entryOf(const Exit& exit, const Triangle2* pNext) const;
    void addPoint(const Exit& exit, std::size_t first, double height);

    bool isDone(std::uint32_t number) const { return (vDone[number / 64] >> (number % 64) & 1U) != 0; }
    void setDone(std::uint32_t number) { vDone[number / 64] |= std::uint64_t(1) << (number % 64); }

    const HeightIndex& index;
    HeightIndex::Found found;         ///< the triangles cut, after selectCut()
    std::vector<std::uint64_t> vDone; ///< a bit for each triangle, all 0 between calls
    std::vector<PlanarPoint> vPoints;
    std::vector<ContourPiece> vPieces;
    double shortest = 0.0;
};

} // namespace ORBI_LUMO25D

#endif
