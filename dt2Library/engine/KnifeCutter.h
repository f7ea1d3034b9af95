#ifndef LUMO25D_ENGINE_KNIFECUTTER_H
#define LUMO25D_ENGINE_KNIFECUTTER_H

#include "Segment2.h"
#include "VertexPair2.h"

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class OrbiTest;
class Triangle2;

/// Cuts a triangulation along segments, the knives: afterwards each knife, as far as it lies in the hull, is a chain of
/// edges, and the surface is the one that it was. Edges that a knife crosses are split there, nothing is flipped.
///
/// All decisions are exact; what is rounded are the new vertices.
/// - Crossings are computed on the whole knife. A new vertex is within snapDistance() (four units in the last place of the
///   largest coordinate) of the crossing; where the nearest doubles would turn a triangle over, a farther one is taken.
/// - A vertex within snapDistance() of a knife counts as on it, and no crossing is made that close to a vertex.
/// - Where edges lie so close that no double fits between them, all of them are split at one vertex; if need be, also edges
///   beside the knife that are as high there, and a vertex within twice that distance is taken.
/// - A new vertex on the hull lies on or outside of the edge that it splits.
/// So the height at a place changes by no more than moving the place by a few snapDistance() does.
///
/// The engine must have area and be in cut mode while this works. O(k) for k triangles met, and the search for the start.
class KnifeCutter
{
public:
    using Piece = std::pair<Point2*, Point2*>;

    explicit KnifeCutter(Dt2& dt2_);

    /// Cuts along one knife with finite coordinates. False when it has no length or misses the hull: nothing was done.
    bool cut(const Segment2& knife);
    /// The edges that all knives so far run along, each once, in the direction of the first knife there.
    const std::vector<Piece>& getPieces() const { return vPieces; }

private:
    /// An edge that the knife crosses.
    struct Crossed
    {
        Point2* p0;
        Point2* p1;
        bool bHull;
    };

    void setKnife(const Segment2& knife);
    Point2* enter();
    Point2* advance(Point2* pV);
    Point2* leaveAlongEdge(Point2* pV, Triangle2*& pWedge) const;
    bool isOnTheWay(const Point2& p, const Point2& from) const;
    bool isNear(const Point2& p) const;

    Point2* enterAcross(Triangle2* pT, int j);
    Point2* splitFromInside(const std::vector<Crossed>& vEdges, const std::vector<Triangle2*>& vInner,
                            const Point2& innermost);
    Point2* passEdges(Triangle2* pT, int ith);
    Point2* passEdgesAhead(Triangle2* pT, int ith);
    bool crossing(const Crossed& edge, const Point2& from, Point2& p) const;
    Point2* nearEnd(const Crossed& edge, const Point2& at, const Point2& from) const;
    Point2* splitCrossed(const Point2& at, const Point2& from);
    bool isCrossed(const Point2* pA, const Point2* pB) const;
    bool isStarCenter(const Point2& p) const;
    bool becomesStar(const Point2& p);
    bool widen(const Point2& p);
    bool isSameHeight(const Point2& p, const Point2& p0, const Point2& p1) const;
    bool makeStarAt(Point2* pHub);
    void makeStar(Point2* pHub);
    void splitOwner(const Crossed& edge, Point2* pHub);
    Point2* newHub(const Point2& p);
    void growHull(Point2* pHub, Crossed& edge);

    Point2* vertexAt(const Point2& p);

    void addPiece(Point2* pA, Point2* pB);
    void splitPiece(Point2* pA, Point2* pB, Point2* pVtx);

    Dt2& dt2;
    const OrbiTest& orbiTest;
    std::vector<Piece> vPieces;
    std::map<VertexPair2, std::size_t> mPieces; ///< their positions

    // The edges that are about to be split at one vertex, and the triangles on both sides of them
    std::vector<Crossed> vCrossed;
    std::vector<Triangle2*> vZone;

    // The running cut
    Point2 a, b;
    Point2* pEnd = nullptr; ///< the vertex at b; null when b lies outside of the hull
    double dx = 0.0, dy = 0.0;
    double snap = 0.0;
    bool bStuck = false;   ///< no double did
    bool bWiden = false;   ///< edges beside the knife may be split, too
    bool bOutside = false; ///< the hull was left
};

} // namespace ORBI_LUMO25D

#endif
