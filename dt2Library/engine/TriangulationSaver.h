#ifndef LUMO25D_ENGINE_TRIANGULATIONSAVER_H
#define LUMO25D_ENGINE_TRIANGULATIONSAVER_H

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
/// The order is such that a triangulation that was loaded gives the same file again: triangles as they lie in the pool,
/// vertices as the triangles first name them (by position, without triangles), segments by the numbers of their ends, a
/// zone's border edges by their triangles. Nothing follows addresses or the order in which things came about. The border
/// edges of the zones are among the segments, because they will be constraints when the zones are restored.
class TriangulationSaver
{
public:
    /// NULL among the zones stands for an empty zone.
    TriangulationSaver(const Dt2& dt2_, const std::vector<Zone2*>& vZones_) : dt2(dt2_), vZones(vZones_) {}

    /// Whether all alive constraint segments are edges of the mesh, as it must be for the zones to be found; without area
    /// they may wait. Linear.
    bool allSegmentsStand();
    /// Collects everything, or the zones' triangles alone with the segments on their edges. False, with the reason in
    /// getError(), for a vertex whose coordinates aren't finite, and for more than 32-bit counts can tell.
    bool collect(bool bZonesOnly);
    const std::string& getError() const { return error; }

    const SavedTriangulation& getResult() const { return saved; }
    /// Alive segments that were left out, because they are no edges of the mesh.
    std::size_t numLeftOut() const { return numSegmentsLeftOut; }

private:
    using Index = SavedTriangulation::Index;

    bool fail(const char* what);
    void reset();
    bool collectMesh(bool bZonesOnly);
    bool collectWaiting();
    bool numberTriangles(const std::vector<Triangle2*>& vT);
    bool addVertex(const Point2* pVtx);
    void collectZones();
    void collectSegments(bool bZonesOnly);
    Index numberOf(const Point2* pVtx) const;

    const Dt2& dt2;
    const std::vector<Zone2*>& vZones;
    std::vector<std::vector<Edge2>> vvBorders; ///< of the zones
    std::vector<Index> vNumbers;               ///< of the vertices, by their places in the pool; -1 without
    SavedTriangulation saved;
    std::size_t numSegmentsLeftOut = 0;
    std::string error;
};

} // namespace ORBI_LUMO25D

#endif
