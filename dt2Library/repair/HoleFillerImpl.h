#ifndef LUMO25D_REPAIR_HOLEFILLERIMPL_H
#define LUMO25D_REPAIR_HOLEFILLERIMPL_H

#include "repair/CornerGeometry.h"
#include "repair/Front.h"
#include "repair/FrontIndex.h"
#include "repair/HoleFillerItem.h"
#include "repair/PatchSurface.h"
#include "repair/SpatialCheck.h"

#include "Edge2.h"
#include "Mesh3.h"
#include "Point2.h"

#include <cstddef>
#include <memory>
#include <queue>
#include <vector>

namespace ORBI_LUMO25D
{

/// The advancing front behind HoleFiller: rings that wait, each with a queue of its corners, and the steps that cut
/// corners off.
///
/// Queues hold entries that time has passed over; they are recognised when they come up, by computing them anew.
class HoleFillerImpl
{
public:
    HoleFillerImpl(Mesh3* pMesh, bool bAddPoints_, bool bVerbose_, const std::vector<Edge2>& vPolygonEdges);

    bool fill();
    void getNewTriangles(std::vector<Point2>& vCorners) const;

private:
    enum class Pass
    {
        Careful,   ///< sharpest corner first, new points, nothing that crosses the front
        Rough,     ///< shortest gap first
        LastResort ///< as before, with edges a second time and needles where there is no other way
    };
    enum class Step
    {
        Done,
        Refused,
        Split ///< the ring is now two, which wait for their turn
    };
    using Queue = std::priority_queue<HoleFillerItem>;

    bool isProperBorder(const Mesh3* pMesh, const std::vector<Edge2>& vEdges) const;
    bool isOuterRim() const;
    void computeMedianEdgeLength(const std::vector<Edge2>& vEdges);
    std::size_t ringSize(std::size_t node) const { return front.ring(front.node(node).ring).size; }
    CornerGeometry cornerAt(std::size_t node) const;

    bool fillRing(std::size_t ring);
    Step fillLoop(std::size_t ring);
    bool getNextBase(std::size_t ring, std::size_t& node);
    double valueOf(std::size_t node, const CornerGeometry& corner) const;
    void enqueue(std::size_t node);
    void enqueue(std::size_t node, const CornerGeometry& corner);
    void enqueueAll(std::size_t ring);

    Step createTriangleGate(std::size_t node);
    double proposePoints(const CornerGeometry& corner, std::vector<Point2>& vCandidates) const;
    void findCloseVertices(std::size_t node, const std::vector<Point2>& vCandidates, double closeDist,
                           std::vector<std::size_t>& vClose) const;
    bool findPartner(std::size_t node, const CornerGeometry& corner, const std::vector<std::size_t>& vClose,
                     std::size_t& partner) const;
    void splitAndSave(std::size_t node, std::size_t partner);
    bool mayClose(std::size_t node) const;
    bool isFlat(std::size_t first, std::size_t last) const;
    void createTriangle_intra0(std::size_t node);
    bool createTriangle_intraNew(std::size_t node, const std::vector<Point2>& vCandidates);

    bool bAddPoints;
    bool bVerbose;
    bool bOK = false;     ///< the border was a proper ring
    bool bFilled = false; ///< fill() was called, with this result
    bool bResult = false;
    Pass pass = Pass::Careful;
    std::size_t longRunCounter = 0;
    std::size_t numArrivals = 0;
    std::size_t maxNewVertices = 0;
    std::size_t maxStepsWithPoints = 0;
    double medianEdgeLength = 0.0;
    PatchSurface surface;
    Front front;
    FrontIndex index;
    std::unique_ptr<SpatialCheck> pCheck;
    std::vector<Queue> vQueues; ///< one for each ring of the front
    std::vector<std::size_t> vPendingRings;
};

} // namespace ORBI_LUMO25D

#endif
