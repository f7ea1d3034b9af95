#ifndef LUMO25D_LUMO_2D_H
#define LUMO25D_LUMO_2D_H

#include "Bbox2.h"
#include "Lumo25DApi.h"
#include "LumoExport.h"
#include "MsgBase.h"
#include "Orientation2.h"
#include "Point2.h"
#include "Triangle2.h"
#include "Visualizer2.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;

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
    /// Takes a vertex out; its handle stays valid as memory and may not be used for anything else. NULL and a pointer that
    /// is no vertex in use get a warning, and nothing changes. About constant time for an ordinary vertex; O(k log k) for
    /// one with k neighbours.
    void remove(Point2* pVertex);

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

    /// True when there are triangles.
    bool hasArea() const;
    bool is2D() const;
    std::size_t numberOfPoints() const;
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
    /// Writes a Wavefront OBJ file. False, with a message, when it can't be written.
    bool writeObj(const char* filename) const;
    /// Copies vertices and triangles into an empty record of arrays, with the custom indices if wanted. With bClear, the
    /// triangulation is emptied then: all handles die; the number of threads and fast mode stay.
    void exportTriangulation(LumoExport& lumoExport, bool bCustomIndices, bool bClear);

    // ---- progress -----------------------------------------------------------------------------------------------

    /// Subscribes a listener, which stays the caller's and must live until it is unsubscribed or this object ends.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

    /// The engine: for the library's own classes.
    Dt2* getImpl() const { return pImpl; }

protected:
    void initLumo(std::size_t numExpectedVertices);

private:
    Dt2* pImpl = nullptr;
};

} // namespace ORBI_LUMO25D

#endif
