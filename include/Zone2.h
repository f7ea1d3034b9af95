#ifndef LUMO25D_ZONE2_H
#define LUMO25D_ZONE2_H

#include "Bbox2.h"
#include "Edge2.h"
#include "Lumo25DApi.h"
#include "MsgBase.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Color;
class ConstraintGraph2;
class Dt2;
class Progress;
class Visualizer2;
class Visualizer3;

/// The rule by which a zone finds its triangles. The numbers are those of saved files.
enum ZoneLocation
{
    ZL_GLOBAL = 0,                ///< all triangles
    ZL_INSIDE = 1,                ///< inside oriented constraint graphs: on the left of their segments
    ZL_OUTSIDE = 2,               ///< outside of them, as far as the hull
    ZL_GROW = 3,                  ///< what can be reached from start points without crossing the graphs
    ZL_RESULT_UNION = 4,          ///< in one of two zones
    ZL_RESULT_INTERSECTION = 5,   ///< in both
    ZL_RESULT_DIFFERENCE = 6,     ///< in the first and not in the second
    ZL_RESULT_SYM_DIFFERENCE = 7, ///< in one but not in both
    ZL_BOUNDED = 8                ///< inside a graph that was made of the zone's own border
};

/// An area of a triangulation, under a rule.
///
/// Laws
/// 1. A zone holds no triangle. Every query runs the rule on the triangulation as it stands, so that a zone stays right
///    when points are inserted, constraints are split or triangles are refined. Nothing is kept between queries: ask for
///    the triangles once if several things are wanted of them.
/// 2. The triangles that a query gives are valid until the triangulation changes.
/// 3. An area ends at the alive parts of the zone's own graphs; other constraints are crossed.
///
/// Zones are made by Lumo_2D::createZone() and the functions below it, and belong to the triangulation: never delete one,
/// Lumo_2D::deleteZone() does. A zone that combines two others asks them at every query: they must live as long as it
/// does, and nothing watches over that.
///
/// Queries only read, so that several threads may ask at a time while nobody changes the triangulation. A query costs time
/// in proportion to the zone's triangles and the segments of its graphs, a combination that of its parts.
///
///     Zone2* pZone = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
///     std::cout << pZone->getArea25D() << '\n';
class LUMO25D_API Zone2
{
public:
    /// For the triangulation only. Wrong arguments are failed conditions, with a message.
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_);
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, ConstraintGraph2* pConstraintGraph);
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, const std::vector<ConstraintGraph2*>& vConstraintGraphs_);
    Zone2(Dt2* pDt_, const std::vector<ConstraintGraph2*>& vConstraintGraphs_, ZoneLocation zoneLoc_,
          const std::vector<Point2>& vStartPoints_);
    Zone2(const Zone2&) = delete;
    /// This zone gets the rule of the other one; both publish through one channel from then on.
    Zone2& operator=(const Zone2&);
    ~Zone2();

    // ---- the triangles ----------------------------------------------------------------------------------------------

    /// Appends the triangles in the order of their addresses. A grow zone gives them start point by start point, and those
    /// that two start points reach twice. Without area a warning; an inside zone without a triangle is a failed condition:
    /// its graphs don't stand in the triangulation.
    void getTriangles(std::vector<Triangle2*>& vT) const;
    /// Appends the corners of the triangles, each once, in the order of their addresses.
    void getVertices(std::vector<Point2*>& vV) const;
    /// The tight box of the triangles; invalid when there are none.
    Bbox2 getBoundingBox() const;
    std::size_t getNumberOfTriangles() const;
    /// Area in the plane, in space: the sum over getTriangles(). That in the plane is right but for 1e-13 of itself, however
    /// thin the triangles are and however many.
    double getArea2D() const;
    double getArea25D() const;

    // ---- the border -------------------------------------------------------------------------------------------------

    /// Both append the edges behind which the zone ends, each once, with the zone on the left, by the addresses of their
    /// triangles. edgesToPolygons() makes rings of them.
    void getBoundaryEdges(std::vector<Edge2>& vEdges) const;
    void getBorderEdges(std::vector<Edge2>& vEdges) const;
    /// The same border by coordinates, in the order of getTriangles().
    void getBoundarySegments(std::vector<Segment2>& vSegments) const;
    /// A zone of the same area whose border is held by constraints: this zone if it is an inside zone, else a new one, of
    /// the area as it is now. Applies the constraints first. NULL, with a warning, when there is no triangle.
    Zone2* convertToBoundedZone();

    // ---- the rule ---------------------------------------------------------------------------------------------------

    /// The rule's kind.
    ZoneLocation getZoneLocation() const { return zoneLoc; }
    /// The engine that the zone belongs to: for the library's own classes.
    Dt2* getDelaunayTriangulation() const { return pDt; }
    /// How many graphs bound the zone; 0 for combinations.
    std::size_t numberOfConstraintGraphs() const { return vConstraintGraphs.size(); }
    /// Appends them.
    void getConstraintGraphs(std::vector<ConstraintGraph2*>& vGraphs) const;
    /// The only graph; NULL if there is none, and, with a message, if there are several.
    ConstraintGraph2* getConstraintGraph() const;

    // ---- the surface ------------------------------------------------------------------------------------------------

    // The border and constraints stay, and no vertex moves in the plane. What is flipped is not Delaunay by nature:
    // insertions close by may undo it.

    /// Flips edges so that they follow valleys and ridges: as long as that lessens the angles between triangles.
    void slopeValleyRidgeOptimization();
    /// The same only where the diagonals of two triangles differ by more than lowerThreshold25D in height, and if the new
    /// triangles are at least tolerance2D high in the plane. Both finite and not negative, else a warning, and nothing
    /// happens.
    void optimizeValleysAndRidges(double tolerance2D, double lowerThreshold25D);
    /// Brings the heights of inner vertices that are no ends of constraints closer to those of their neighbours,
    /// numIterations times. A negative number: a warning, and nothing happens.
    void smoothing(int numIterations);
    /// Gives the diagonals of grid cells one direction; cells are rectangles up to the tolerance, which must not be
    /// negative.
    void unifyGrid(double tolerance);

    // ---- files --------------------------------------------------------------------------------------------------------

    /// Lumo_2D::saveZones() with this zone alone.
    bool save(const char* filename);

    // ---- inspection -------------------------------------------------------------------------------------------------

    /// Prints a histogram of the angles at the triangles' corners, in space.
    void statistics(const char* name) const;
    /// Prints a histogram of the angles between the normals of neighbouring triangles; those of the border count where
    /// there is a triangle behind it.
    void analyzeAngles(const char* name) const;
    /// Draws the edges of the triangles, each once, into a PostScript file; adds them to a drawing. NULL is warned about.
    void show(const char* filename) const;
    void show(Visualizer2* pVisualizer, const Color& color) const;
    /// Writes the triangles into a Geomview file; adds them to a drawing. Colours are told in Visualizer3. NULL is warned
    /// about.
    void showGeomview(const char* filename, const std::string& color) const;
    void showGeomview(Visualizer3* pVisualizer, const std::string& color) const;
    /// Writes the triangles as a Wavefront OBJ file. False, with a message, when it can't be written.
    bool writeObj(const char* filename) const;
    /// Draws the triangles and, in red, the graphs into a PostScript file, "debug.ps" for no name.
    void debug(const char* name) const;

    /// A listener stays the caller's and must live until it is unsubscribed or the zone is deleted.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

private:
    friend class ZoneExpression;
    friend LUMO25D_API Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1);
    friend LUMO25D_API Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1);
    friend LUMO25D_API Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1);
    friend LUMO25D_API Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1);

    static Zone2* combine(Zone2* pZone0, Zone2* pZone1, ZoneLocation location, const char* function);
    bool isResult() const { return zoneLoc >= ZL_RESULT_UNION && zoneLoc <= ZL_RESULT_SYM_DIFFERENCE; }
    /// getTriangles() for everything but a combination.
    void findTriangles(std::vector<Triangle2*>& vT) const;

    Dt2* pDt;
    std::shared_ptr<Progress> pProgress;
    ZoneLocation zoneLoc;
    std::vector<ConstraintGraph2*> vConstraintGraphs;
    std::vector<Point2> vStartPoints;
    std::vector<Zone2*> vInputZones;
};

} // namespace ORBI_LUMO25D

#endif
