#ifndef LUMO25D_ENGINE_TRIANGLEIMPORTER_H
#define LUMO25D_ENGINE_TRIANGLEIMPORTER_H

#include "Point2.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// Makes given triangles the triangles of an empty engine.
///
/// They are checked first: neighbours must share whole edges, and nothing may overlap. A scratch engine then triangulates
/// the corners with all edges of the triangles as constraints, which fills gaps and surroundings, and its triangles are
/// copied. In the engine only those edges become constraints that aren't locally Delaunay.
class TriangleImporter
{
public:
    /// The points are the corners, three for each triangle.
    explicit TriangleImporter(const std::vector<Point2>& vCorners_) : vCorners(vCorners_) {}

    /// Checks the triangles and, if wanted, turns clockwise ones. False, with the reason in getError(), when they can't be
    /// imported. O(n log n).
    bool check(bool bReorient);
    const std::string& getError() const { return error; }

    /// Adds the corners of a box three times as wide and high as that of the triangles, at their mean height. False when its
    /// coordinates would not be finite.
    bool addBox();

    /// Builds the mesh in an engine without points, and appends the imported triangles in the order of input. To be called
    /// after a successful check. False, and nothing done, when a triangle holds a corner of another one.
    bool build(Dt2& dt2, std::vector<Triangle2*>& vT);

private:
    using Corners = std::array<std::size_t, 3>; ///< positions in vPoints
    using Edge = std::pair<std::size_t, std::size_t>;

    bool fail(const char* what);
    bool isSound();
    void mergePoints();
    bool orient(bool bReorient);
    bool collectEdges();
    bool meetAtEdgesOnly() const;
    static std::vector<Triangle2*> copyTriangles(const Dt2& from, const std::vector<Point2*>& vFrom, Dt2& to,
                                                 const std::vector<Point2*>& vTo);
    static void keepEdges(Dt2& dt2);

    const std::vector<Point2>& vCorners;
    std::vector<Point2> vPoints; ///< each place once
    std::vector<Corners> vTriangles;
    std::vector<Edge> vEdges; ///< each once, the lower position first
    std::string error;
};

} // namespace ORBI_LUMO25D

#endif
