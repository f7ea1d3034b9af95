#ifndef LUMO25D_ISOCONTOURS_H
#define LUMO25D_ISOCONTOURS_H

#include "Lumo25DApi.h"
#include "Segment2.h"

#include <memory>
#include <vector>

namespace ORBI_LUMO25D
{

class IsoContoursImpl;
class Point2;
class Triangle2;
class Vector2;

/// Cuts a set of triangles with planes: horizontal ones give contours, others profiles. One index answers many heights;
/// contours are followed from neighbour to neighbour where triangles know theirs, and joined by their points elsewhere.
///
/// Guarantees
/// 1. A contour's points lie on edges of the triangles, computed from the lower end of each edge: triangles that share an
///    edge, or two edges with the same ends, get the same point, bit for bit, and no chain is broken by rounding.
/// 2. Polylines are as long as they can be; all their segments follow each other. Closed ones begin at their leftmost
///    point (of several, the lowest) and are counterclockwise, open ones begin at the smaller of their ends.
/// 3. The object doesn't change after construction: several threads may ask it at once. It keeps the working memory of as
///    many queries as have run at once: in the order of the index, 20 bytes a triangle, at most a few times that.
///
/// A plane through a vertex has no clean section with the triangles there. getContours() therefore refuses, or moves, a
/// height that some vertex has.
///
///     IsoContours iso(vTriangles);
///     std::vector<std::vector<Segment2>> vvContours;
///     for (double z = 100.0; z < iso.getMaxHeight(); z += 10.0) iso.getContours(z, vvContours, false, true);
class LUMO25D_API IsoContours
{
public:
    /// For contours. The triangles stay the caller's, must live as long as this object and keep their corners. One that is
    /// given twice counts once; NULL, dead ones and those with coordinates that aren't finite are left out with a warning.
    /// O(n log n) at most, linear in practice.
    explicit IsoContours(const std::vector<Triangle2*>& vTriangles);
    /// For profiles: three corners in a row are a triangle (what remains is warned about and left out), dirVec is the normal
    /// of the cutting planes, of any length but 0, which throws LumoException. The triangles are copied. Directions within
    /// 2.6 degrees of upwards count as vertical, with a warning. getContours() works on the turned triangles.
    IsoContours(const std::vector<Point2>& vTriangleCorners, const Vector2& dirVec);
    ~IsoContours();
    IsoContours(const IsoContours&) = delete;
    IsoContours& operator=(const IsoContours&) = delete;

    /// The lowest and the highest corner; -1.0 without triangles.
    double getMinHeight() const;
    double getMaxHeight() const;

    /// Appends the contours of a height, each a sequence of segments from point to point, all points at that height: first
    /// the open ones, then the closed ones, each kind by its first points. A height outside of the triangles' range gives
    /// true and nothing. Cost: that of the triangles at the height, but for a logarithm.
    ///
    /// At the height of a vertex: false, and vvContours is cleared; with bAutoNoise the contours of a height a little above
    /// it, by the smallest power of two that changes it (or a thousand times that), or as many doublings of it as are
    /// needed to get free of vertices and to tell the points of the contours apart in the plane. LumoException where adding
    /// 1.0 changes nothing.
    ///
    /// False too, with nothing appended, when more than two segments end at one point: where triangles overlap, or where
    /// the height is so close to a vertex that points coincide in rounding (bAutoNoise helps there).
    ///
    /// bVerbose: tells about both on the standard output.
    bool getContours(double height, std::vector<std::vector<Segment2>>& vvContours, bool bVerbose,
                     bool bAutoNoise) const;

    /// Appends the segments, in no particular order, in which the plane through p cuts the triangles of the second
    /// constructor; with the first one, an error is told. Edges in the plane count once. A triangle in the plane makes it
    /// move on by the smallest step.
    void getProfile(const Point2& p, std::vector<Segment2>& vSegments) const;

private:
    std::unique_ptr<IsoContoursImpl> pImpl;
};

} // namespace ORBI_LUMO25D

#endif
