#ifndef LUMO25D_LUMOEXPORT_H
#define LUMO25D_LUMOEXPORT_H

#include "Lumo25DApi.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

/// A triangulation as plain arrays: filled by Lumo_2D::exportTriangulation(), independent of it afterwards.
///
/// The record owns its arrays; copies are deep. Before an export it must be empty, as it is when new.
class LUMO25D_API LumoExport
{
public:
    /// Empty arrays; a deep copy; one that takes the arrays over and leaves the other record empty.
    LumoExport() = default;
    LumoExport(const LumoExport& other);
    LumoExport(LumoExport&& other) noexcept;
    LumoExport& operator=(LumoExport other) noexcept;
    /// Frees the arrays.
    ~LumoExport();

    /// The corners of triangle t, counterclockwise, as numbers of vertices from 0. No check: 0 <= t < numTriangles.
    void getCornerIndices(int t, int& a, int& b, int& c) const;
    /// The coordinates of vertex v; z is 0 when there are only two for each vertex. No check: 0 <= v < numPoints.
    void getCoordinates(int v, double& x, double& y, double& z) const;
    /// Appends the pairs of triangles that share an edge, each pair once and in ascending order, sorted by the
    /// vertex numbers of the edge. O(n log n).
    void extractTriangleNeighborships(std::vector<std::pair<int, int>>& vNeigs) const;
    /// Writes a Wavefront OBJ file, with digits enough to read every coordinate back. False, with a message, when it
    /// can't be written.
    bool writeObj(const char* name) const;
    /// Writes everything to the standard output.
    void print() const;

    /// Exchanges the contents of two records in constant time.
    void swap(LumoExport& other) noexcept;

    std::int32_t numCustomIndices = 0;      ///< entries of aCustomIndices; 0 when they weren't asked for
    std::int32_t numTriangles = 0;          ///< triples in aTriangles
    std::int32_t numPoints = 0;             ///< vertices in aCoords
    double* aCoords = nullptr;              ///< dim doubles for each vertex
    std::int32_t* aCustomIndices = nullptr; ///< for each vertex, or NULL
    std::int32_t* aTriangles = nullptr;     ///< three vertex numbers for each triangle
    std::int32_t dim = 3;                   ///< coordinates for each vertex: 3, or 2
};

} // namespace ORBI_LUMO25D

#endif
