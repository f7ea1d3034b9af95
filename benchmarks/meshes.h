#ifndef LUMO25D_BENCHMARKS_MESHES_H
#define LUMO25D_BENCHMARKS_MESHES_H

#include "measure.h"

#include "Segment2.h"

#include <vector>

namespace benchmarks
{

/// The inside of oriented segments, and what its triangles have to keep.
struct MeshTask
{
    std::vector<ORBI_LUMO25D::Segment2> vSegments; ///< with the inside on their left
    std::vector<ORBI_LUMO25D::Point2> vHoles;      ///< a point in each hole
    double minAngle;                               ///< degrees
    double maxEdgeLength;                          ///< 0: any
};

/// Refinement alone, the constraints being there; the sum is the number of triangles inside. CGAL's Delaunay_mesher_2 with
/// Delaunay_mesh_size_criteria_2.
Measurement lumoMesh(const MeshTask& task);
Measurement cgalMesh(const MeshTask& task);

} // namespace benchmarks

#endif
