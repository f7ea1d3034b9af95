#ifndef LUMO25D_MESHING_GRIDMESHER_H
#define LUMO25D_MESHING_GRIDMESHER_H

#include "Point2.h"

#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Dt2;
class MeshGenParams;
class RefinementLimits;
class Segment2;
class SegmentChecker;
class Vector2;
class Zone2;

/// Lays a regular grid over a zone before it is refined.
///
/// Two families of parallel lines, stripes, run along and across the wanted direction, one cell apart, centred in the zone;
/// where they cross inside the zone, a vertex comes in, on the surface of the guide or else of the triangulation. Along
/// each line, vertices keep half a cell away from all constraints. Then constraints are split where stripes cross them,
/// so that the mesh between the last cells and the border follows the grid, too; triangles there, which are of any shape,
/// are left to the refinement.
///
/// To the next refinement, these vertices are those of an earlier one.
///
/// The parameters are borrowed. Their zone must have area and constraint graphs; its area and outline stay as they are.
class GridMesher
{
public:
    /// pGuide_ is the engine that gives the heights, null for the zone's own, which does where the guide has none.
    GridMesher(MeshGenParams* pParams_, Dt2* pGuide_);

    /// Brings gridVector to length 1 in the plane. bChopConstraints tells whether constraints are split; those that the
    /// parameters lock or hold together never are. A zone narrower than a cell in one of the two directions gets no grid,
    /// and nor does, with a message, one that has no width, or too much for so small cells.
    void run(bool bChopConstraints);

private:
    using Segments = std::vector<Segment2>;

    bool isFeasible() const;
    // The numbers of the grid
    std::vector<Point2> getConstraintPoints() const;
    void findExtremePoints(const Vector2& across, const std::vector<Point2>& vConstraintPoints);
    void createStripes(const Vector2& direction, Segments& vStripes);
    void cutStripe(const Segment2& stripe, const SegmentChecker& constraints, Segments& vParts, Segments& vAll) const;
    void keepPartsInZone(Segments& vPartsAlong, Segments& vPartsAcross) const;
    void computeStripeParts(Segments& vPartsAlong, Segments& vPartsAcross, Segments& vPartsAll);
    bool setHeight(Point2& p) const;
    void computeGridPoints(std::vector<Point2>& vPoints, Segments& vStripeParts);
    // The mesh
    void insertPoints(const std::vector<Point2>& vPoints, std::vector<Point2*>& vHandles);
    void removeTooCloseVertices(std::vector<Point2*>& vHandles, double minDist);
    void chopConstraints(Segments& vStripeParts);
    void findCuts(const Segment2& segment, const SegmentChecker& parts, std::vector<Point2>& vCuts) const;
    static bool mayBeCut(const ConstraintSegment2* pCSeg, const RefinementLimits& limits);
    void chop(ConstraintSegment2* pCSeg, const Point2& cut, const RefinementLimits& limits) const;

    MeshGenParams* pParams;
    Zone2* pZone;
    Dt2& dt2;
    Dt2* pGuide;
    double usedTargetLength;
    /// The two constraint vertices that are furthest apart across the direction of the stripes made last: the first one
    /// lies on the left.
    Point2 extremePoint0, extremePoint1;
};

} // namespace ORBI_LUMO25D

#endif
