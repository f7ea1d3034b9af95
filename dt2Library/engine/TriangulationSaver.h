#ifndef LUMO25D_ENGINE_TRIANGULATIONSAVER_H
#define LUMO25D_ENGINE_TRIANGULATIONSAVER_H

#include "orbi_tools/BlockArray.h"
#include "output/triangulationFile.h"

#include "Edge2.h"
#include "Triangle2.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Zone2;

/// Collects what the file of a saved triangulation holds.
///
/// The order is such that a triangulation that was loaded gives the same file again: vertices as they lie in the pool (by
/// position, without triangles), triangles by the lowest of their vertices and then as they lie in the pool, segments and
/// the border edges of zones by the numbers of their ends. Nothing follows addresses or the order in which things came
/// about. Vertices that came in bulk lie along a curve; so triangles that are near each other are so in the file, and in the
/// memory of who loads it, which makes that fast.
///
/// The border edges of the zones are among the segments, because they will be constraints when the zones are restored.
class TriangulationSaver
{
public:
    /// NULL among the zones stands for an empty zone.
    TriangulationSaver(const Dt2& dt2_, const std::vector<Zone2*>& vZones_) : dt2(dt2_), vZones(vZones_) {}

    /// Both are false, with the reason in getError(), for a vertex whose coordinates aren't finite, and for more than 32-bit
    /// counts can tell.
    ///
    /// Collects all triangles, vertices and segments; may be called again.
    bool collectAll();
    /// Alive segments that were left out, because they are no edges of the mesh: zones may not be found then. Without area,
    /// segments wait.
    std::size_t numLeftOut() const { return numSegmentsLeftOut; }
    /// After it: adds the zones, or confines what was collected to their triangles and the segments on the edges of these.
    bool addZones(bool bZonesOnly);
    const std::string& getError() const { return error; }

    /// False, with a message, when the file can't be written.
    bool write(const char* filename) const;

private:
    using Index = SavedIndices::Index;

    bool fail(const char* what);
    template <class IsWanted>
    bool collectMesh(const IsWanted& isWanted);
    void numberVertices();
    void sortTriangles(const Index* aUnsorted);
    bool collectWaiting();
    void begin();
    Index addVertex(const Point2* pVtx);
    bool collectSegments();
    void addBordersToSegments();
    void collectBorder(const std::vector<Edge2>& vBorder, std::vector<Index>& vZone) const;
    Index numberOf(const Point2* pVtx) const;

    const Dt2& dt2;
    const std::vector<Zone2*>& vZones;
    // As they are found, vertices get the form of the file: each is visited once.
    BlockArray<char> aVertices;
    BlockArray<Index> aCorners; ///< three of each triangle
    std::size_t numVertices = 0, numTriangles = 0;
    bool bFinite = true;
    BlockArray<Index> aNumbers; ///< of the vertices, by their places in the pool; -1 without
    SavedIndices saved;
    std::size_t numSegmentsLeftOut = 0;
    std::string error;
};

} // namespace ORBI_LUMO25D

#endif
