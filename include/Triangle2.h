#ifndef LUMO25D_TRIANGLE2_H
#define LUMO25D_TRIANGLE2_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <iosfwd>
#include <utility>

namespace ORBI_LUMO25D
{

class Vector2;

/// The next index modulo 3.
inline int incIndexBy1(int num)
{
    return num == 2 ? 0 : num + 1;
}
/// The previous index modulo 3 (two steps on). An index outside 0 to 2 is a failed condition.
LUMO25D_API int incIndexBy2(int num);

/// The triangle, and the only record of the mesh: three corners, three neighbours.
///
/// Laws
/// 1. Corners go counterclockwise, seen from above.
/// 2. Corner i lies opposite the edge between corners i+1 and i+2 (modulo 3); neighbour i lies across that edge and
///    is NULL on the border.
/// 3. A triangle whose six pointers are NULL is dead.
///
/// In names, 2D means that the height is ignored, 25D that it counts. Triangles of a triangulation are owned by it.
class LUMO25D_API Triangle2
{
public:
    Triangle2() = default;

    /// Corner i, neighbour i. An index outside 0 to 2 is a failed condition.
    Point2* getCorner(int ith) const;
    Triangle2* getOppositeTriangle(int ith) const;

    /// The same without a check, for inner loops: ith must be 0, 1 or 2.
    Point2* corner(int ith) const { return aVertexPointer[ith]; }
    Triangle2* neighbor(int ith) const { return aOppTriangles[ith]; }

    /// The index of corner p, or of the edge shared with t, or of the edge between p0 and p1 (in either order), found
    /// by pointer. Finding nothing is a failed condition.
    int getIntraTriangleIndex(const Point2* p) const
    {
        if (aVertexPointer[0] == p) return 0;
        if (aVertexPointer[1] == p) return 1;
        if (aVertexPointer[2] == p) return 2;
        failIndexSearch();
    }
    int getIntraTriangleIndex(const Triangle2* t) const
    {
        if (aOppTriangles[0] == t) return 0;
        if (aOppTriangles[1] == t) return 1;
        if (aOppTriangles[2] == t) return 2;
        failIndexSearch();
    }
    int getIntraTriangleIndex(const Point2* p0, const Point2* p1) const;

    /// True when p is a corner: by pointer; or by exact x, y and z.
    bool hasVertex(const Point2* p) const
    {
        return aVertexPointer[0] == p || aVertexPointer[1] == p || aVertexPointer[2] == p;
    }
    bool hasVertex(const Point2& p) const;
    /// True when p lies on the closed edge opposite corner i of a counterclockwise triangle, decided exactly.
    bool hasOnEdge(int i, const Point2& p) const;

    /// By the lengths of the edges (Heron's formula): needles lose digits; a value that is no number is warned about.
    double getArea2D() const;
    double getArea25D() const;
    /// Angle at corner i in degrees, 0 to 180. An edge without length at this corner is warned about.
    double getInteriorAngle2D(int ith) const;
    double getInteriorAngle25D(int ith) const;
    /// Squared length of the edge opposite corner i.
    double getSquaredEdgeLength(int ith) const { return getSquaredEdgeLength2D(ith); }
    double getSquaredEdgeLength2D(int ith) const;
    double getSquaredEdgeLength25D(int ith) const;
    /// Index of the longest, the shortest edge in the plane; the first one on ties.
    int getMaxIndex() const;
    int getMinIndex() const;
    double getMaxSqEdgeLen2D() const;

    /// Mean of the corners in x, y and z.
    Point2 getBarycenter() const;
    /// The unit normal, pointing up for a counterclockwise triangle; the null vector with a warning when the triangle
    /// has no area in space.
    Vector2 getNormalVector() const;
    /// The circumcentre in the plane and whether it is accurate (the corners' distances from it agree within 1e-6, and
    /// it lies on the proper side of the two shorter edges). An inaccurate centre is the best that doubles could find;
    /// for finite corners it is finite. May be called from any thread. Its z has no meaning.
    std::pair<Point2, bool> getDual() const;

    /// For the triangulation's use: sets the corners, makes this triangle the incident triangle of each of them, and
    /// clears the neighbours, or sets them.
    void setProperties(Point2* pI, Point2* pJ, Point2* pK);
    void setPropertiesAndOppT(Point2* pI, Point2* pJ, Point2* pK, Triangle2* pOppI, Triangle2* pOppJ, Triangle2* pOppK);
    /// For the triangulation's use: makes this a dead triangle.
    void clearProperties();
    void setVertexPointer(int ith, Point2* pVertex);
    void setOppTriangle(int ith, Triangle2* pTriangle);

private:
    friend struct TriangleLinks; // unchecked writes for the engine's inner loops (geometry/TriangleLinks.h)

    [[noreturn]] static void failIndexSearch();
    double computeArea(double len0, double len1, double len2) const;
    void getCommonOffset(double& ox, double& oy) const;
    bool getCC_strategy1(double ox, double oy, Point2& result) const;
    void getCC_strategy2(int ith, double ox, double oy, Point2& result) const;
    bool isAccurateCC(int ith, const Point2& cc) const;

    Point2* aVertexPointer[3] = {nullptr, nullptr, nullptr};
    Triangle2* aOppTriangles[3] = {nullptr, nullptr, nullptr};
};

/// Area in space of the triangle of three points, by the lengths of its edges.
LUMO25D_API double getArea25D(const Point2* p0, const Point2* p1, const Point2* p2);
/// Unit normal of the plane through three points. bOK tells whether there is one; the result is the null vector
/// otherwise.
LUMO25D_API Vector2 getNormalVector(const Point2& p0, const Point2& p1, const Point2& p2, bool& bOK);

/// Address, areas and corners, and the sense in which they turn, in one text without a line end.
LUMO25D_API std::ostream& operator<<(std::ostream& stream, const Triangle2& t);

} // namespace ORBI_LUMO25D

#endif
