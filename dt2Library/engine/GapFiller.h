#ifndef LUMO25D_ENGINE_GAPFILLER_H
#define LUMO25D_ENGINE_GAPFILLER_H

#include "engine/EdgeKeys.h"

#include "Point2.h"

#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// Fills what triangles leave free of the convex hull of their vertices, and finds out whether they overlap.
///
/// A scratch engine triangulates the border's vertices with its edges as constraints. If that takes no vertex more and
/// splits no edge, the border doesn't cross itself. The number of counterclockwise triangles above a place is the
/// winding number of their border there (see TriangulationLoader). It is 0 outside of the hull, and one more on the left of
/// a border edge than on its right, so a flood over the scratch triangles, which stops at the border, tells it everywhere:
/// nothing overlaps if and only if it is 1 on the left and 0 on the right of each border edge.
class GapFiller
{
public:
    /// The vertices of the border of counterclockwise triangles, and the directed border edges, which have the triangles on
    /// their left, sorted.
    GapFiller(const std::vector<Point2>& vVertices_, const EdgeKeys& border_) : vVertices(vVertices_), border(border_)
    {
    }

    /// Appends the triangles of the gaps, three corners in a row, edges that aren't constraints locally Delaunay. False, and
    /// nothing appended, when the triangles overlap. As fast as the insertion of the vertices and the border.
    bool run(std::vector<std::int32_t>& vTriangles);

private:
    enum Label : char
    {
        Unknown,
        Covered,
        Gap
    };
    struct Side
    {
        bool bLeft;  ///< of a border edge
        bool bRight; ///< of one
    };

    bool insertVertices(Dt2& scratch);
    bool insertBorder(Dt2& scratch) const;
    void label(const Dt2& scratch, const std::vector<Triangle2*>& vT);
    bool isConsistent(const Dt2& scratch, const std::vector<Triangle2*>& vT) const;
    std::int32_t numberOf(const Dt2& scratch, const Point2* pVtx) const;
    Side sideOf(const Dt2& scratch, const Triangle2* pT, int ith) const;

    const std::vector<Point2>& vVertices;
    const EdgeKeys& border;
    std::vector<Point2*> vHandles;
    std::vector<std::int32_t> vNumbers; ///< of the vertices, by their places in the scratch engine's pool
    std::vector<Label> vLabels;         ///< of the scratch engine's triangles, by their places in the pool
};

} // namespace ORBI_LUMO25D

#endif
