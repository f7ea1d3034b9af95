#ifndef LUMO25D_ENGINE_TRIANGULATIONLOADER_H
#define LUMO25D_ENGINE_TRIANGULATIONLOADER_H

#include "core/CoordinateRange.h"
#include "geometry/OrbiTest.h"
#include "orbi_tools/PoolRange.h"
#include "output/triangulationFile.h"

#include "Point2.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class TriangleAssembler;
class Zone2;

/// Makes what a file holds the triangulation of an empty engine, without any Delaunay work.
///
/// Vertices and triangles are made in the pools of the engine as they are read, and go back to them unless all turns out
/// well. Nothing in the file is trusted: all of it is checked, exactly, before it becomes part of the engine. That takes
/// linear time and no search for crossings, because of this: every triangle turns counterclockwise, so the number of
/// triangles above a point of the plane is the sum of their winding numbers around it, and that is the winding number of the
/// border, since inner edges are walked once each way and cancel. If the border is one chain that turns left or goes straight
/// ahead everywhere and has but one vertex that comes before both of its neighbours in the order of x and y, it is a convex
/// polygon walked once: its winding number is 1 inside and 0 outside, every place inside has exactly one triangle, and
/// nothing overlaps. Two vertices at one place, or a vertex with two fans around it, would mean two triangles above some
/// place next to it.
///
/// Triangles whose border isn't such a polygon, as those of zones, are checked by GapFiller, which fills what is missing up
/// to the convex hull; the border towards what was filled becomes constraint, so that the triangles of the file stay.
/// Edges need not be Delaunay: knife cuts and optimised surfaces are restored as they were.
class TriangulationLoader
{
public:
    explicit TriangulationLoader(Dt2& dt2_);
    ~TriangulationLoader();
    TriangulationLoader(const TriangulationLoader&) = delete;
    TriangulationLoader& operator=(const TriangulationLoader&) = delete;

    /// Read and check, in this order, what comes behind the file's type. False when this is no triangulation: see
    /// Lumo_2D::load(). The reason is in getError(), which is empty when the file ends too early or has a wrong end mark.
    bool readMesh(TriangulationReader& reader);
    bool readConstraints(TriangulationReader& reader);
    /// Instead of both: checks a mesh without constraints, three corners for each triangle, that is in memory.
    bool takeMesh(const std::vector<Point2>& vPoints, const std::vector<SavedIndices::Index>& vCorners);
    const std::string& getError() const { return error; }

    /// After that: makes it the engine's, and appends a zone for each in the file, NULL for one without edges.
    void build(std::vector<Zone2*>& vZones);

private:
    using Index = SavedIndices::Index;
    using EdgeKey = std::pair<Index, Index>;

    bool fail(const char* what);
    bool readVertices(TriangulationReader& reader);
    bool areInRange();
    bool checkWithoutTriangles();
    bool isConvexBorder() const;
    void setPredicatesRange();
    bool fillGaps();
    bool triangulateGaps(const std::vector<EdgeKey>& vBorder, std::vector<Index>& vCorners) const;
    bool assemble(const std::vector<Index>& vCorners);
    bool checkEdges();
    template <class Ask>
    bool allHaveSides(const std::vector<EdgeKey>& vEdges, const Ask& ask) const;
    static bool areRings(const std::vector<Index>& vZone);

    Dt2& dt2;
    OrbiTest orbiTest;
    SavedCounts counts;
    CoordinateRange range;
    std::unique_ptr<PoolRange<Point2>> pVertices;
    std::unique_ptr<TriangleAssembler> pTriangles; ///< null without triangles
    SavedIndices saved;
    std::string error;
};

} // namespace ORBI_LUMO25D

#endif
