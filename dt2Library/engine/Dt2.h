#ifndef LUMO25D_ENGINE_DT2_H
#define LUMO25D_ENGINE_DT2_H

#include "core/FanCutter.h"
#include "core/HC2.h"
#include "core/InnerVtxMgr.h"
#include "core/SimplePool.h"
#include "core/StarRepair.h"
#include "core/VertexVault.h"
#include "geometry/OrbiTest.h"
#include "support/Progress.h"

#include "Bbox2.h"
#include "ConstraintSegment2.h"
#include "Triangle2.h"
#include "Zone2.h"
#include "freeFunctions.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class CloudPrepare;
class ConstraintInserter;
class ConstraintMgr;
struct CoordinateRange;
class Edge2;
class LumoExport;
class MeshGenParams;
class ObjWriter;
class Refinement;
class Segment2;
class Visualizer2;
class Visualizer3;

/// The engine: everything that makes up one triangulation, behind the facade Lumo_2D.
///
/// Laws, whenever no operation runs
/// 1. Links are symmetric; alive triangles turn counterclockwise; the border is the convex hull, where a neighbour is
///    null. There is no infinite vertex.
/// 2. Every edge is locally Delaunay or a constraint: circumcircles are empty of what can be seen from inside (exactly; in
///    fast mode up to what the double-precision filter can't decide).
/// 3. Vertices and triangles live in pools and never move; dead triangles wait for reuse.
/// 4. All coordinates lie in bbox, whose bounds the predicates know: their filters need no range check.
///
/// One caller's thread at a time. An exception that reports a broken invariant leaves the structure as it stands.
class Dt2
{
public:
    // ==== Dt2.cpp: life, settings, the road of points from the caller to the mesh and back ==========================

    /// numExpectedVertices sizes the first blocks of the pools: a hint, not a limit.
    explicit Dt2(std::size_t numExpectedVertices);
    ~Dt2();
    Dt2(const Dt2&) = delete;
    Dt2& operator=(const Dt2&) = delete;

    Point2* insert(const Point2& p);
    /// pHandles, when given, is resized and filled in input order; duplicates get the vertex that was there first.
    void insertVector(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pHandles);
    /// n triples x, y, z; aHandles (may be null) gets n handles. Below 1000 points it has no threaded form.
    void insert(std::size_t numPoints, const double* aCoordinates, Point2** aHandles);
    /// A cloud's points; with bClear, the cloud gives its memory back while the vertices are made, and is empty then.
    void insert(CloudPrepare* pCloudPrepare, bool bClear);
    /// Puts points into the vault only: no triangle is touched, and the caller builds the triangles itself.
    void insertToVVault(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pHandles);
    /// The same with n vertices in a row, at places of their own, that lie in the pool already. No other may be active.
    void adoptVertices(Point2* aVertices, std::size_t n, const CoordinateRange& range);

    int setNumCPU(int n);
    void setFastMode(bool bFast);
    void setDev(const char* s, int i, double d);
    bool hasArea() const { return bFullDimensional; }
    std::size_t numberOfTriangles() const;
    /// Seconds that a fresh engine with the same number of threads takes for the points.
    double measureTriangulationTime(const std::vector<Point2>& vPoints) const;
    /// Bytes taken by vertices, triangles, items and lists.
    std::size_t bytes() const;

    // ==== Dt2_insertion.cpp: vertices into the triangle structure ===================================================

    /// Makes the first triangle and inserts all waiting vertices: the first numPreExisting items, then the others,
    /// because each of the two runs is in curve order. False when all points lie on one line.
    bool createFullDimTriangle(std::size_t numPreExisting);
    /// Inserts the active items of a range that isn't empty, on one thread or on several. When threads don't pay, the fake
    /// box is removed; should there be no area without it, nothing has been inserted.
    void triangulateRange(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint);
    /// Middle-first recursion over a run in curve order: each walk starts near its goal. Returns an alive triangle.
    Triangle2* triangulateRec(const IdxVtxAct* pFirst, const IdxVtxAct* pLast, Triangle2* pHint);
    /// Inserts one vertex and repairs the Delaunay property. Returns a triangle around *ppVtx; for a duplicate, *ppVtx
    /// becomes the vertex that was there first.
    Triangle2* insertOneVertex(Point2** ppVtx, Triangle2* pHint);
    /// Repairs around an existing vertex whose star came about without the empty-circle property.
    void bfsFlipIncident(Point2* pVtx);

    /// Puts a vertex that is known to nobody yet into a triangle, or on its inner edge if that isn't -1, and repairs the
    /// Delaunay property. It is corner 0 of all triangles around it then.
    void insertAt(Point2* pVtx, Triangle2* pT, int edge);

    // Mesh operations

    /// n blank slots in a row for a worker; thread-safe. Each must be constructed, or go back by handBackTriangles().
    Triangle2* getFreshTriangles(std::size_t n);
    void handBackTriangles(Triangle2* pFirst, Triangle2* pLast);
    /// A repair with this engine's filter settings and an empty work list.
    StarRepair emptyStarRepair() const;
    /// Whether q lies strictly inside the circumcircle; in fast mode, as far as the filter can tell.
    bool isInCircle(const Triangle2* pT, const Point2* q) const;

    Triangle2* getNewTriangle();
    Triangle2* getNewTriangle(Point2* pA, Point2* pB, Point2* pC);
    void flip(Triangle2* pT, int ith);
    /// True when the quadrilateral of pT and its neighbour across edge ith is strictly convex.
    bool canBeFlipped(const Triangle2* pT, int ith) const;

    // ==== Dt2_location.cpp: the walk, and read-only queries ========================================================

    /// Walks from *ppStartT to p and moves *ppStartT to the result. The state:
    ///   -1      in the triangle; *pEdgeIdx is -1 strictly inside, else the inner edge that p lies on
    ///   0 to 2  outside the hull beyond that hull edge, or on it
    ///   4       at a corner of the triangle
    /// p must lie within the predicates' bound.
    int locateConflictTriangle(const Point2& p, Triangle2** ppStartT, int* pEdgeIdx) const;
    /// The triangle that holds p; null outside the hull, without area, or for a position that isn't finite.
    Triangle2* locate(const Point2& p);
    void getVertexPointers(std::vector<Point2*>& vVertices) const { vertexVault.getActiveVertices(vVertices); }
    /// The same from a given alive triangle. p must be finite.
    Triangle2* locateFrom(const Point2& p, Triangle2* pT);
    /// Appends all alive triangles in the order in which they were made.
    void getTrianglePointers(std::vector<Triangle2*>& vT) const;
    Bbox2 computeBoundingBox() const { return vertexVault.getBoundingBox(); }

    // ==== Dt2_queries.cpp: heights, neighbourhoods, the hull =======================================================

    bool isAliveTriangle(const Triangle2* pT) const;
    /// True for a vertex of this triangulation that has triangles; any pointer may be asked.
    bool isMeshVertex(const Point2* pVtx) const;
    /// Height of the surface at (x, y). pApproxT (may be null) is where the search begins. Outside the hull, a positive
    /// tolerance allows the height of the hull edge beneath, if it is no farther away than that. False without a height.
    bool getHeight(double x, double y, double& height, Triangle2* pApproxT, double tolerance);
    /// The height of a triangle at a position in it.
    static double heightOn(const Triangle2& t, double x, double y);
    /// The height at a position outside the hull.
    bool getNearbyHeight(double x, double y, double& height, double tolerance);
    /// The triangle with the edge from p0 to p1 on its counterclockwise way; null when there is none.
    Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1) const;
    /// Appends the triangles around a vertex, counterclockwise. A vertex without a triangle throws LumoException.
    void getIncidentTriangles(const Point2* pVtx, std::vector<Triangle2*>& vT) const;
    /// Appends the neighbours of a vertex, by address.
    void getIncidentVertices(const Point2* pVtx, std::vector<Point2*>& vVtx) const;
    /// Appends the hull counterclockwise from its lowest leftmost vertex, with or without collinear vertices.
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHull) const;
    struct HullEdge
    {
        Triangle2* pT;
        int ith;
    };
    /// Where a segment that starts outside of the hull gets in: at a vertex, or across an edge; both null if it doesn't.
    struct HullEntry
    {
        Point2* pVtx;
        HullEdge edge;
    };
    /// The predicates must know the range of both points.
    HullEntry enterHull(const Point2& src, const Point2& trg);
    /// Where the segment from src, outside of the hull, to trg enters the hull: exact up to one rounding, never outside.
    /// bOK tells whether it does.
    Point2 cutLineAtCH(const Point2& src, const Point2& trg, bool& bOK);

    // ==== Dt2_removal.cpp: vertices out of the triangle structure ===================================================

    /// Takes a vertex out and restores the empty circles; the last vertices leave a triangulation without area. NULL, and
    /// a pointer that is no vertex in use, get a warning, and nothing changes. O(k log k) for a vertex of degree k.
    void remove(Point2* pVtx);
    /// Takes a free vertex inside out and appends the triangles that fill its place. While a refinement runs, the vault
    /// doesn't know of it.
    void removeFreeVertex(Point2* pVtx, std::vector<Triangle2*>& vArisen);
    /// Takes a vertex on the hull out. With bUpdateVault false the vault does not hear of it: for the fake box.
    void removeHullVertex(Point2* pVtx, bool bUpdateVault);

    // ==== Dt2_constraints.cpp: constraints ===========================================================================

    /// See ConstraintMgr. An empty sequence is warned about and gives null.
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                       bool bOrientedSegments);
    ConstraintGraph2* createConstraint(const std::vector<Edge2>& vEdges, ConstraintInsertionStrategy cis);
    /// Between vertices of this triangulation.
    ConstraintGraph2* createConstraint(const std::vector<std::pair<Point2*, Point2*>>& vPairs,
                                       ConstraintInsertionStrategy cis);
    /// Establishes all constraints that aren't, or not any more. Zones on them are in force then: they have no state.
    void applyConstraintsAndZones();
    /// Whether an alive constraint segment lies on the edge opposite corner ith; joins two vertices; whether any segment
    /// ever made ends at a vertex.
    bool isConstraint(const Triangle2* pT, int ith) const;
    bool isConstraint(const Point2* pA, const Point2* pB) const;
    bool isConstraint(const Point2* pVtx) const;
    /// The alive segment between two vertices, or null.
    ConstraintSegment2* getConstraintSegment(const Point2* pA, const Point2* pB) const;
    /// Append the segments in the order in which they were made.
    void getAliveConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    void getAliveAndDeadConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    /// To be called before and after a run of establishConstraint().
    void beginEstablishing();
    void endEstablishing();
    /// Makes an alive segment stand in the mesh, which must have area. False when it could not.
    bool establishConstraint(ConstraintSegment2* pCSeg);
    /// Takes a segment out of force for good and repairs the mesh around its edge.
    void killAndUnestablishConstraintSegment(ConstraintSegment2* pCSeg);
    /// See ConstraintInserter::splitStanding().
    Point2* splitStandingConstraint(ConstraintSegment2* pCSeg, const Point2& p, Triangle2* pT, int ith);
    ConstraintMgr& getConstraintMgr() const { return *pConstraintMgr; }

    // ==== Dt2_cat_cutt.cpp: knife cuts, draping, import, save and load ==============================================

    /// Cuts the triangulation along segments (see KnifeCutter): the surface stays as it is, and heights of new vertices are
    /// those of the surface; what lies outside of the hull has no effect. Appends the edges that the segments run along.
    /// Without area, and for segments that have no effect, a warning; segments that aren't finite are refused.
    /// The edges are no constraints, and the mesh around them is not Delaunay: law 2 is suspended there, until insertions
    /// close by repair it, which may change the surface and flip the edges.
    void cutAlong(const std::vector<Segment2>& vSegments, std::vector<std::pair<Point2*, Point2*>>& vPieces);
    /// The same, and makes constraint segments of these edges, which are appended to vCSegs. With bProtectEdges the other
    /// edges of the triangles around become constraints, too: insertions later on then leave the surface along the cut
    /// as it is.
    void CUTT_cutTriangles(const std::vector<Segment2>& vSegments, bool bProtectEdges,
                           std::vector<ConstraintSegment2*>& vCSegs);

    /// Lays segments on the surface: appends each as pieces that end where it crosses edges or meets vertices, with their
    /// heights; the heights of the input don't count. Where such a vertex can be left out so that the pieces stay within
    /// zTolerance of the surface's height at all vertices that are left out, it is; a negative zTolerance keeps all, 0
    /// leaves out what lies in line. False, when a segment or a part of one lies outside of the hull: what lies inside is
    /// appended then. Segments that aren't finite, and NaN for the tolerance: a message and false. O(k) for k crossings.
    bool drape(const std::vector<Segment2>& vSegmentsIn, std::vector<Segment2>& vSegmentsOut, double zTolerance);
    /// Makes triangles, given by three corners each, the triangles of an engine that is empty yet (see TriangleImporter),
    /// and appends them to vT. Gaps and surroundings up to the convex hull are filled with Delaunay triangles, up to a larger
    /// box if wanted. False, with a message and nothing changed, when there are points already, for triangles that overlap,
    /// are degenerate or don't share whole edges, and for clockwise ones, unless they are to be turned.
    bool importTriangles(const std::vector<Point2>& vPoints, bool bReorientIfNeeded, bool bCreateExtendedBoundingBox,
                         std::vector<Triangle2*>& vT);

    /// Writes a file for load(): all triangles, or those of the zones alone. See Lumo_2D::saveTriangulation().
    bool saveInternal(const char* filename, const std::vector<Zone2*>& vSaveZones, bool bZonesOnly);
    /// See Lumo_2D::load(). False, with a message and nothing changed, for a file that isn't sound. Should memory run out in
    /// the middle of building, the engine can only be destroyed.
    bool load(const char* filename, std::vector<Zone2*>& vZones);
    /// Makes points and triangles, three corners for each, the mesh of an engine without points, as load() does: edges need
    /// not be Delaunay. Vertices and triangles come first in their pools, in this order, those that fill the convex hull
    /// behind them. False, and nothing done, when they aren't sound.
    bool takeMesh(const std::vector<Point2>& vPoints, const std::vector<std::int32_t>& vCorners);

    // ==== Dt2_zones.cpp: zones ======================================================================================

    /// The zone belongs to the engine. Null, with a message, and nothing changed, for wrong locations, for null graphs
    /// where one is needed and graphs of another triangulation, and for a single graph that isn't oriented. What Zone2's
    /// constructors reject throws.
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc);
    /// Inside or outside of several graphs.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc);
    /// What can be reached from a point.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                      const Point2& startPoint);
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint);
    /// Bounded by edges that have the zone on their left; they become constraints.
    Zone2* createZone(const std::vector<Edge2>& vEdges, ZoneLocation zoneLoc);
    /// Holds the area of triangles: their border becomes constraints, and a zone grows from a point in each component.
    /// Never null. A component without a triangle that has its rounded barycentre inside is lost, with a message; what is
    /// no triangle of this triangulation is ignored with a warning.
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles);
    /// The surface inside a simple polygon, which is cut along it, as far as the hull reached before. Null, with a message
    /// but for a polygon that isn't simple, when there is none; points and cuts may have been made by then.
    Zone2* createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bProtectEdges);
    /// A pointer that is no zone is warned about. Linear in the number of zones.
    void deleteZone(Zone2* pZone);
    /// Appends, for each start point, all triangles that can be reached from it without crossing an alive segment of the
    /// graphs, in the order of addresses. Start points outside of the hull are warned about.
    void growZoneAreas(const std::vector<ConstraintGraph2*>& vConstraintGraphs, const std::vector<Point2>& vStartPoints,
                       std::vector<Triangle2*>& vOut);
    /// Applies the constraints and reports bad triangles; true when there is none. minAngle in degrees, but: the largest
    /// double checks neighbours' areas, -500.0 heights of triangles, -999.0 draws the zone besides, and -1000.0 only
    /// writes the constraints into binary files. See ZoneQuality.
    bool checkZoneQuality(Zone2* pZone, double minAngle, const char* zoneName);

    // ==== Dt2_meshing.cpp: quality meshes ===========================================================================

    /// See Lumo_2D::refine().
    void refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                bool bAllowConstraintSplitting);
    /// The parameters must be given; pGuide is the engine of their guide triangulation, or null.
    void refineAdvanced(MeshGenParams* pParams, Dt2* pGuide);

    // ==== Dt2_output.cpp: pictures, arrays, files ==================================================================

    /// Adds every edge once; without area, the waiting points.
    void show(Visualizer2& visualizer) const;
    /// Fills an empty record: vertices in curve order, triangles in the order in which they were made. False, with a
    /// message, when there are too many for the record's counts.
    bool exportTriangulationArray(LumoExport& lumoExport, bool bCustomIndices) const;
    /// Adds the triangles; without area, the waiting points. An empty colour is the next in turn.
    void showGeomview(Visualizer3& visualizer, const std::string& color) const;
    /// Write a Wavefront OBJ file, of everything or of the zones' triangles; false, with a message, when it can't be
    /// written or a zone is none of this triangulation.
    bool writeObj(const char* filename) const;
    bool writeObj(const char* filename, const std::vector<const Zone2*>& vChosen) const;
    /// Writes a page for a browser (see WebSceneExport); false, with a message, as above and without area.
    bool writeWebScene(const char* filename, const std::vector<const Zone2*>& vChosen, const char* lengthUnit) const;

    // ==== Dt2_validity.cpp: self-check and statistics ==============================================================

    /// Checks every law of the structure exactly, and reports each violation with its place. True when there is none.
    bool checkValidity(bool bCheckEmptyCircleProperty, const char* msg) const;
    /// Prints counts, degrees, lengths, angles, heights and memory.
    void statistics(const char* s) const;

    // ==== Data: in the order in which they depend on one another ====================================================

    std::mutex mtxTriangles; ///< guards the triangle pool while chunks fetch triangles
    std::mutex mtxDead;      ///< guards vDeadTriangles while chunks hand triangles back
    int numCPU = 1;
    std::map<std::string, std::pair<int, double>> mDev; ///< developer settings; nothing reads them
    std::vector<Point2*> vRemovedVertices;
    HC2 hilbertCurve;
    VertexVault vertexVault;
    bool& bFullDimensional; ///< the vault's flag
    OrbiTest orbiTest;
    Bbox2 bbox; ///< the working box: contains all points, grows by doubling, and moves the predicates' bound
    SimplePool<Triangle2> poolTriangles;
    SimplePool<Point2> poolVertices;
    std::vector<Triangle2*> vDeadTriangles; ///< out of use, given out again before the pool is touched
    bool bFastMode = false;
    std::string name;
    std::unique_ptr<ConstraintMgr> pConstraintMgr;
    std::vector<std::unique_ptr<Zone2>> vZones; ///< in the order in which they were made
    bool bCutMode = false; ///< set during a knife cut: insertion does not repair the Delaunay property
    Progress progress;
    InnerVtxMgr innerVtxMgr{poolVertices}; ///< free vertices that refinements have inserted
    Refinement* pRefinement = nullptr;     ///< the one that runs

private:
    friend class ConstraintInserter;
    friend class Draper;
    friend class GapFiller;
    friend class KnifeCutter;
    friend class Refinement;
    friend class TriangleImporter;

    class Walk;
    // Dt2.cpp
    template <class Iterator>
    bool admit(Iterator first, Iterator last);
    bool admitPoints(const std::vector<Point2>& vPoints);
    bool admitRange(const CoordinateRange& range);
    bool admitCoordinates(std::size_t n, const double* aCoordinates);
    void rescale();
    Point2* insertWithoutArea(const Point2& p);
    Point2* newVertex(const Point2& p, std::uint32_t& idx);
    template <class AppendToVault>
    void insertBulk(const char* stepName, std::size_t numPoints, std::vector<Point2*>* pHandles, bool bFakeBox,
                    const AppendToVault& append);
    void triangulateNewItems(std::size_t firstWaiting, std::size_t firstNew);
    void giveUpBulk(std::size_t numWaiting);

    // Dt2_constraints.cpp
    /// If a constraint stood between two vertices, it is split at a vertex that has come onto its edge.
    void splitConstraintAt(const Point2* pA, const Point2* pB, Point2* pVtx);
    Point2* newVertexInVault(const Point2& p);
    Point2* insertNear(const Point2& p, Triangle2* pHint);
    void splitEdgeAt(Point2* pVtx, Triangle2* pT, int ith);

    // Dt2_cat_cutt.cpp
    void protectStars(const std::vector<std::pair<Point2*, Point2*>>& vEdges);

    // Dt2_insertion.cpp
    bool mayUseThreads(std::size_t rangeSize) const;
    void runStarRepair(const Point2* pVtx);
    Triangle2* triangulateCoplanarOrDuplicate(Point2** ppVtx, Triangle2* pT, int state);
    Triangle2* insertVertexCH(Point2* pVtx, Triangle2* pT, int ith);
    void collectVisible(const Point2* pVtx, Triangle2* pT, int ith);
    static HullEdge previousHullEdge(HullEdge e);
    static HullEdge nextHullEdge(HullEdge e);
    Triangle2* splitHullEdge(Point2* pVtx, Triangle2* pT, int ith);
    Triangle2* fanOverVisibleEdges(Point2* pVtx);
    void flipCollinearOnly(const Point2* pVtx);

    // Dt2_meshing.cpp
    bool refineMain2(const MeshGenParams& params) const;
    void refineMain3(MeshGenParams* pParams, Dt2* pGuide);
    void removeEarlierSteinerPoints(const Zone2& zone);

    // Dt2_output.cpp
    std::vector<std::size_t> numberActiveVertices() const;
    bool areOwn(const std::vector<const Zone2*>& vChosen, const char* functionName) const;
    void putTriangle(ObjWriter& writer, const Triangle2& t, const std::vector<std::size_t>& vNumber) const;

    // Dt2_queries.cpp
    HullEdge someHullEdge() const;
    HullEdge entryEdge(const Point2& src, const Point2& trg, HullEdge e, bool& bAtVertex) const;
    bool pullInside(const HullEdge& e, Point2& p);

    // Dt2_removal.cpp
    void removeInnerVertex(Point2* pVtx);
    [[noreturn]] void reportStubbornFan(const Point2* pVtx, std::size_t numTriangles) const;
    bool collectFan(const Point2* pVtx, std::vector<Triangle2*>& vT) const;
    void detachFan(const Point2* pVtx);
    void repairHole();

    // Dt2_zones.cpp
    Zone2* enterZone(std::unique_ptr<Zone2> pZone);

    std::unique_ptr<ConstraintInserter> pConstraintInserter;
    StarRepair starRepair; ///< the work list of Delaunay repair
    FanCutter fanCutter{orbiTest};
    // Scratch lists of the insertion at the hull and of removal: kept, so that neither allocates for every point.
    std::vector<HullEdge> vVisibleBefore, vVisible;
    std::vector<Triangle2*> vFresh, vNextFresh, vFan, vHole;
};

} // namespace ORBI_LUMO25D

#endif
