#ifndef LUMO25D_ENGINE_TRIANGULATIONLOADER_H
#define LUMO25D_ENGINE_TRIANGULATIONLOADER_H

#include "orbi_tools/BlockMemory.h"
#include "output/triangulationFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class EdgeKeys;
class Zone2;

/// Makes what a file holds the triangulation of an empty engine, without any Delaunay work.
///
/// Nothing in the file is trusted: all of it is checked, exactly, before the engine is touched. That takes linear time and
/// no search for crossings, because of this: every triangle turns counterclockwise, so the number of triangles above a
/// point of the plane is the sum of their winding numbers around it, and that is the winding number of the border, since
/// inner edges are walked once each way and cancel. If the border is one chain that turns left or goes straight ahead
/// everywhere and has but one vertex that comes before both of its neighbours in the order of x and y, it is a convex
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
    explicit TriangulationLoader(SavedTriangulation& saved_) : saved(saved_) {}

    /// False, with the reason in getError(), when this is no triangulation: see Lumo_2D::load().
    bool check();
    const std::string& getError() const { return error; }

    /// Builds it in an engine without vertices, after a successful check, and appends a zone for each in the file, NULL for
    /// one without edges.
    void build(Dt2& dt2, std::vector<Zone2*>& vZones);

private:
    using Index = SavedIndices::Index;

    bool fail(const char* what);
    bool areFinite();
    bool areInRange();
    bool checkWithoutTriangles();
    bool turnCounterclockwise();
    bool useAllVertices();
    bool linkTriangles();
    bool isConvexBorder() const;
    bool fillGaps();
    std::size_t countStanding(const EdgeKeys& keys, bool bDirected) const;
    bool checkSegments();
    bool checkZones();
    static bool areRings(const std::vector<Index>& vZone);

    std::vector<Point2*> buildMesh(Dt2& dt2) const;

    std::size_t numTriangles() const { return saved.vTriangles.size() / 3; }
    std::size_t numSides() const { return saved.vTriangles.size(); }
    Index cornerOf(std::size_t t, std::size_t i) const { return saved.vTriangles[3 * t + i]; }
    /// Calls f(src, trg) for each edge without a neighbour.
    template <class F>
    void forEachBorderEdge(const F& f) const;

    static constexpr std::uint32_t noNeighbor = 0xFFFFFFFFU;

    SavedTriangulation& saved;
    BlockMemory neighborMemory;
    std::uint32_t* aNeighbors = nullptr; ///< triangle across from each corner
    std::string error;
};

} // namespace ORBI_LUMO25D

#endif
