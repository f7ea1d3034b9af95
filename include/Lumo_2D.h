#ifndef LUMO25D_LUMO_2D_H
#define LUMO25D_LUMO_2D_H

#include "Bbox2.h"
#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Lumo25DApi.h"
#include "LumoExport.h"
#include "MsgBase.h"
#include "Orientation2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "Visualizer2.h"
#include "Zone2.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class AcceptExperimentalFeature;
class CloudPrepare;
class Dt2;
class MeshGenParams;
class Visualizer3;

/// A Delaunay triangulation of points in the plane that each carry a height.
///
/// Guarantees
/// 1. Decisions about the plane are exact: after every operation the triangles turn counterclockwise and their
///    circumcircles are empty, whatever the coordinates (any finite doubles).
/// 2. Of several points with equal x and y the first one counts; the others get its handle, and its height stays.
/// 3. One thread and the same input give the same result, bit for bit, on every run.
/// 4. Misuse gets a message on the standard output and a neutral result (NULL, false, nothing); a point with a
///    coordinate that isn't a finite number is refused, all others are inserted.
///
/// Handles (Point2*, Triangle2*) belong to the triangulation and stay valid as memory until it is destroyed. There are
/// no triangles before three points that aren't on one line have come: until then the points wait.
///
/// One thread at a time may use an object; different objects may be used by different threads.
///
///     std::vector<Point2> vPoints = {{0, 0, 10}, {10, 0, 12}, {10, 10, 17}, {0, 10, 15}};
///     Lumo_2D lumo;
///     lumo.insert(vPoints);
///     double height = 0;
///     if (lumo.getHeight(4.0, 3.0, height)) std::cout << height << '\n';
class LUMO25D_API Lumo_2D
{
public:
    /// numExpectedVertices sizes the first blocks of memory: a hint, not a limit.
    explicit Lumo_2D(std::size_t numExpectedVertices = 3);
    ~Lumo_2D();
    Lumo_2D(const Lumo_2D&) = delete;
    Lumo_2D& operator=(const Lumo_2D&) = delete;
    Lumo_2D(Lumo_2D&&) = delete;
    Lumo_2D& operator=(Lumo_2D&&) = delete;

    // ---- points in and out --------------------------------------------------------------------------------------

    /// Inserts a point and returns its vertex; for a duplicate, the vertex that was there first; NULL for a point that
    /// isn't finite. About constant time, except when a point far outside makes the working box grow.
    Point2* insert(const Point2& p);
    /// Inserts all points at once: the fastest way. Linear in practice: a million points take a fraction of a second.
    void insert(const std::vector<Point2>& vPoints);
    /// The same; vHandles is made as long as vPoints and filled in its order.
    void insert(const std::vector<Point2>& vPoints, std::vector<Point2*>& vHandles);
    /// numPoints triples x, y, z. aHandles, unless it is NULL, receives numPoints handles. The coordinates are not kept.
    void insert(int numPoints, double* aCoordinates, Point2** aHandles);
    /// Inserts the points of a cloud. With bClear, it gives its memory back while they come in, so that they are in memory
    /// once only, and is empty afterwards, even when a subscriber throws. NULL is warned about.
    void insert(CloudPrepare* pCloudPrepare, bool bClear);
    /// Takes a vertex out; its handle stays valid as memory and may not be used for anything else. NULL and a pointer that
    /// is no vertex in use get a warning, and nothing changes. About constant time for an ordinary vertex; O(k log k) for
    /// one with k neighbours.
    void remove(Point2* pVertex);

    // ---- constraints --------------------------------------------------------------------------------------------

    /// Makes the segments edges of the triangulation, or chains of edges, and returns a handle on them; their ends become
    /// vertices. Constraints that cross are split there, at the mean of their heights; vertices on the way split them, and
    /// so do vertices that come later. The vertices of a chain lie within four units in the last place of the largest
    /// coordinate of the segment's ends; only where rounding makes parts cross that belong to segments that don't, as in
    /// bundles of needles, they may be a few such units farther off. Segments that are points are skipped with a warning,
    /// those with coordinates that aren't finite refused with a message; NULL when none is left.
    ///
    /// While there is no area, the segments wait for applyConstraintsAndZones(). A new constraint may cut into the Delaunay
    /// edges of an earlier conforming one; applyConstraintsAndZones() makes them Delaunay again.
    ///
    /// bOrientedSegments: the graph keeps the segments' directions.
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                       bool bOrientedSegments = false);
    /// Whether an alive constraint lies on the edge opposite corner ith of a triangle. Constant time. False for NULL.
    bool isConstraint(Triangle2* pT, int ith) const;
    /// Whether an alive constraint joins two vertices, whether a vertex is or was the end of one. Likewise.
    bool isConstraint(Point2* pA, Point2* pB) const;
    bool isConstraint(Point2* pVertex) const;
    /// The alive constraint between two vertices, or NULL.
    ConstraintSegment2* getConstraintSegment(Point2* pA, Point2* pB) const;
    /// Append the segments in the order in which they were made.
    void getAliveConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    void getAliveAndDeadConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    /// Establishes all constraints that don't stand in the mesh. Without area, a warning.
    void applyConstraintsAndZones();

    // ---- knives ---------------------------------------------------------------------------------------------------

    /// Cuts the triangulation along a segment, or along each of several: the edges that it crosses are split, new vertices
    /// get their heights from the surface (those of the arguments don't count), and afterwards the segment is a chain of
    /// edges. The surface stays the same but for the rounding of new vertices. A segment may cross other cuts and
    /// constraints, which are split, touch vertices or run along edges; what lies outside of the hull has no effect.
    /// With bTurnEdgesIntoConstraints the chain becomes constraint segments.
    /// A cut triangulation is not Delaunay by nature: checkValidity(false, ...) is what it fulfils. Insertions close to a cut
    /// repair the empty circles there, which may change the surface; a chain that is no constraint may vanish then.
    /// A segment without length or outside of the hull is warned about, one that isn't finite is refused, with a message.
    void cutTriangles(const Point2& knifeStart, const Point2& knifeEnd, bool bTurnEdgesIntoConstraints);
    void cutTriangles(const std::vector<Segment2>& vSegments, bool bTurnEdgesIntoConstraints);

    // ---- zones --------------------------------------------------------------------------------------------------

    // Zones belong to the triangulation. Where NULL is returned, bVerbose adds a warning to what was told before.

    /// All triangles (ZL_GLOBAL, without a graph), or those inside or outside of an oriented graph: a polygon, or segments
    /// with directions of their own that close to rings, with the inside on their left. NULL without area, without a graph,
    /// and for one that isn't oriented or belongs to another triangulation.
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, bool bVerbose = true);
    /// What can be reached from a point without crossing the graphs; only with ZL_GROW, else NULL.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                      const Point2& startPoint, bool bVerbose = true);
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint,
                      bool bVerbose = true);
    /// The area of these triangles, whatever becomes of them: their border becomes constraints. Never NULL. What is no
    /// triangle of this triangulation is ignored with a warning.
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose = true);
    /// Cuts a simple polygon, given in any order and direction, out of the surface: the surface is cut along it as by
    /// cutTriangles() with its bProtectEdges, and the result is what lies inside of the polygon and of the hull as it was.
    /// Corners outside of the hull become vertices with their own heights and widen the triangulation; all others get those
    /// of the surface. NULL, with nothing changed, for a polygon that isn't simple and without area; NULL with a warning
    /// when polygon and hull have no area in common, after points may have come in.
    Zone2* createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bProtectEdges);
    Zone2* createZone_cookieCutter(const std::vector<Segment2*>& vSegments, bool bProtectEdges);
    /// Deletes a zone. One that isn't there (any more) is warned about.
    void deleteZone(Zone2* pZone);
    /// Reports badly shaped triangles of a zone; true when there is none. Looks for angles below minAngle degrees and for
    /// sides more than ten times as long as others; special values of minAngle select other checks: the largest double for
    /// neighbours of very different areas, -500.0 for flat triangles, -999.0 draws the zone into name + ".ps" besides, and
    /// -1000.0 only writes all constraints into binary files. Reports and drawings carry the name. False for NULL.
    bool checkZoneQuality(Zone2* pZone, double minAngle, const char* name, const AcceptExperimentalFeature&);

    // ---- quality meshes -----------------------------------------------------------------------------------------

    /// Inserts vertices into an inside or a bounded zone until its triangles have no angle below minAngleDegree (at most
    /// 30) and no edge longer than maxEdgeLength, both measured in space. Heights of new vertices are those of the surface.
    /// A triangle stays as it is where two constraints meet at a smaller angle, where the terrain alone makes it look bad
    /// (all its angles in the plane are above 29.5 degrees), and where it would take edges shorter than minEdgeLength or the
    /// split of a constraint that may not be split. Another run with the same limits changes nothing.
    /// A zone of another kind or of another triangulation, NULL, an angle above 30 and lengths that aren't positive: a
    /// message, and nothing changes. A zone with several constraint graphs throws LumoException.
    /// Linear in the number of triangles made.
    void refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                bool bAllowConstraintSplitting);
    /// The same with all limits, see MeshGenParams. NULL is warned about.
    void refineAdvanced(MeshGenParams* pParams);

    // ---- segments on the surface, triangles from outside ----------------------------------------------------------

    /// Lays segments on the surface: appends each as pieces that end where it crosses edges or meets vertices, with their
    /// heights; the heights of the input don't count. A vertex on the way is left out where the pieces stay within
    /// zTolerance of its height without it: 0 leaves out what lies in line, a negative value keeps all. False when a part of
    /// a segment lies outside of the hull; what lies inside is appended all the same. Segments that aren't finite, NaN for
    /// the tolerance, and no area: a message and false.
    bool drape(const std::vector<Segment2>& vSegmentsIn, std::vector<Segment2>& vSegmentsOut, double zTolerance) const;
    /// Makes triangles, given by three corners each, the triangles of this object, which must be empty, and a bounded
    /// zone of them. They need not be Delaunay: edges that aren't become constraints, as does the zone's border. Corners at
    /// the same x and y are one vertex, with the height of the first. Gaps and the surroundings up to the convex hull are
    /// filled with Delaunay triangles; with bCreateExtendedBoundingBox up to a box three times as wide and high as the
    /// triangles', too. NULL, with a message and nothing changed, when there are points already, when triangles overlap,
    /// are degenerate or share parts of edges only, and when one is clockwise, unless bReorientIfNeeded turns those.
    /// O(n log n).
    Zone2* importTriangles(const std::vector<Point2>& vPoints, bool bReorientIfNeeded, bool bCreateExtendedBoundingBox);

    // ---- settings -----------------------------------------------------------------------------------------------

    /// The number of threads that a bulk insertion may use: 1 at the start; 0 takes all hardware threads, a negative
    /// number 1. Returns the number now in force.
    int setNumCPU(int numCPU);
    /// setNumCPU(0).
    void enableMultithreading();
    /// In fast mode the empty circles are decided in double precision only, and a doubtful case counts as empty: the
    /// mesh stays valid, but near-cocircular points may leave a triangle that isn't exactly Delaunay.
    void setFastMode(bool bFast);
    /// A name of the caller's choice. NULL is an empty name.
    void setName(const char* s);
    /// The name's characters, valid until the next setName() or the object's end.
    const char* getName() const;
    /// Developer settings, kept and not read.
    void setDev(const char* s, int i, double d);
    void internal(int a, int b, const char* s);

    // ---- state --------------------------------------------------------------------------------------------------

    /// True when there are triangles: when three vertices aren't on one line. Both answer the same.
    bool hasArea() const;
    bool is2D() const;
    /// How many vertices there are: duplicates count once, removed ones not at all, those that wait for area do.
    std::size_t numberOfPoints() const;
    /// How many triangles there are, between constraints and in holes of zones, too. 0 without area.
    std::size_t numberOfTriangles() const;

    // ---- queries ------------------------------------------------------------------------------------------------

    /// How p2 lies seen from the directed line p0 to p1; exact.
    Orientation2 getOrientation(const Point2& p0, const Point2& p1, const Point2& p2) const;
    /// The triangle that holds p, be it on its border; NULL outside the hull and while there is no area.
    Triangle2* locate(const Point2& p) const;
    /// The height of the surface at (x, y): exact at a vertex, linear on each triangle. pApproxT, unless it is NULL, is a
    /// triangle to begin the search at. Outside the hull, the height of the hull's edge at the foot of the perpendicular,
    /// if that is no farther away than tolerance. False, with height unchanged, when there is none.
    bool getHeight(double x, double y, double& height, Triangle2* pApproxT = nullptr, double tolerance = 0.0) const;
    /// Appends the vertices of the convex hull counterclockwise, beginning with the leftmost (of several, the lowest);
    /// with bAllVertices, those in the middle of a straight side too. Linear. Without area: a warning, and nothing.
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHull) const;
    /// The triangle that has the edge from p0 to p1 on its counterclockwise way; NULL when there is none. NULL arguments
    /// and equal ones are failed conditions.
    Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1) const;
    /// Append the triangles around a vertex, counterclockwise; its neighbours, ordered by address. A vertex of another
    /// triangulation or a removed one is warned about; a vertex that waits for area throws LumoException.
    void getIncidentTriangles(Point2* pVertex, std::vector<Triangle2*>& vTriangles) const;
    void getIncidentVertices(Point2* pVertex, std::vector<Point2*>& vVertices) const;
    /// Appends all vertices; all triangles.
    void getVertexPointers(std::vector<Point2*>& vVertices) const;
    void getTrianglePointers(std::vector<Triangle2*>& vTriangles) const;
    /// The tight box of all vertices; invalid when there are none.
    Bbox2 computeBoundingBox() const;
    /// Seconds that the points take in a triangulation of their own, with this object's number of threads.
    double measureTriangulationTime(const std::vector<Point2>& vPoints) const;

    // ---- checks -------------------------------------------------------------------------------------------------

    /// Checks every law of the triangulation exactly: links, orientation, hull, vertices and, if wanted, empty circles.
    /// Each violation is reported with its place, msg (may be NULL) behind them. True when there is none. Linear.
    bool checkValidity(bool bCheckEmptyCircleProperty, const char* msg) const;
    /// Prints counts, degrees, lengths, angles, heights and memory under a title.
    void statistics(const char* s) const;

    // ---- output -------------------------------------------------------------------------------------------------

    /// Draws all edges into a PostScript file.
    void show(const std::string& filename) const;
    /// Adds all edges to a drawing. NULL is warned about.
    void show(Visualizer2* pVisualizer) const;
    /// Writes all triangles, or while there is none the points, into a Geomview file, in the next colour in turn.
    void showGeomview(const std::string& filename) const;
    /// Adds them to a drawing in a colour as told there. NULL is warned about.
    void showGeomview(Visualizer3* pVisualizer, const std::string& color) const;
    /// Writes a Wavefront OBJ file, of all triangles or of those of some zones, each zone a group. False, with a message,
    /// when it can't be written or a zone is none of this triangulation.
    bool writeObj(const char* filename) const;
    bool writeObj(const char* filename, const std::vector<Zone2*>& vZones) const;
    /// Writes the surface as a page that any browser with WebGL 2 shows, with nothing but the one file: turned, zoomed,
    /// exaggerated, tinted by height or slope, with its edges, contours, alive constraints and zones, and the position and
    /// height under the pointer. Titled by the object's name, or the file's; pUnit names the unit of lengths. Triangles with
    /// a height that isn't known (NaN, the largest double) are left out. 24 bytes a triangle. False, with a message, when
    /// it can't be written, without area, and when a zone is none of this triangulation.
    bool writeWebScene(const char* filename, const char* pUnit = "m") const;
    bool writeWebScene(const char* filename, const std::vector<Zone2*>& vZones, const char* pUnit = "m") const;
    /// Copies vertices and triangles into an empty record of arrays, with the custom indices if wanted. With bClear, the
    /// triangulation is emptied then: all handles die; the number of threads, fast mode and subscribers stay.
    void exportTriangulation(LumoExport& lumoExport, bool bCustomIndices, bool bClear);

    // ---- saved states -------------------------------------------------------------------------------------------

    /// Saves the triangulation in a binary file, with zones of it: load() restores it as it is, every edge included,
    /// without any Delaunay work. The zones are restored as insides of their present borders, whatever
    /// their kind; NULL stands for an empty one. Constraints that wait are applied first, so that this may change the
    /// triangulation; what can't be made an edge is left out with a warning. Not saved are dead constraints, strategies, and
    /// which constraints belong to one graph. False, with a message, when the file can't be written, for a zone of another
    /// triangulation, for a height that isn't finite, and beyond 2^31 - 1 vertices or triangles.
    bool saveTriangulation(const char* filename, const std::vector<Zone2*>& vSaveZones);
    /// Saves the triangles of the zones alone, with the constraints on their edges.
    bool saveZones(const char* filename, const std::vector<Zone2*>& vSaveZones);
    /// Restores a saved state in this object, which must be empty: coordinates bit for bit, custom indices, triangles,
    /// constraints (CIS_CONSTRAINED_DELAUNAY, all in one graph), and an inside zone for each that was saved, appended to
    /// vZones, or NULL for an empty one. What is around or between the triangles of saved zones, up to the convex hull, is
    /// filled with Delaunay triangles that belong to no zone, and constraints keep the border towards it. The result is ready
    /// for everything, and saved again it gives the same file, byte by byte.
    ///
    /// Nothing in the file is trusted: false, with a message and nothing changed, for a file that is cut short, for numbers
    /// out of range, coordinates that aren't finite, triangles that overlap, don't share whole edges or aren't
    /// counterclockwise, vertices without a triangle, segments that are no edges or come twice, and zones whose borders
    /// aren't closed rings of edges. Edges that are neither Delaunay nor constraints are accepted, because a triangulation
    /// may have such: after knife cuts, surface optimisation, in fast mode. Linear, but for filling.
    bool load(const char* filename, std::vector<Zone2*>& vZones);

    // ---- progress -----------------------------------------------------------------------------------------------

    /// Subscribes a listener, which stays the caller's and must live until it is unsubscribed or this object ends. What it
    /// throws ends the operation and is handed on. Of a bulk insertion that ends so, some or all points may be in, the
    /// others are forgotten, and all that was there before is still there.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    /// Ends a subscription; one that isn't there is no mistake.
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

    /// The engine: for the library's own classes.
    Dt2* getImpl() const { return pImpl; }

protected:
    /// Makes the engine; for the constructor.
    void initLumo(std::size_t numExpectedVertices);

private:
    void renew();

    Dt2* pImpl = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
