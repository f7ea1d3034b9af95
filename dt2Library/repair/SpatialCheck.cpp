#include "repair/SpatialCheck.h"

#include "segments/classification.h"

#include "Func_Rot3D.h"
#include "Plane.h"
#include "Segment2.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

using Box = ORBI_LOCATE3::RTree::Box;
using Corners = std::array<const Point2*, 3>;

/// A place closer to a triangle's side than that part of the lengths involved is on it: turning rounds.
constexpr double onSide = 1e-9;

constexpr std::size_t noVertex = std::numeric_limits<std::size_t>::max();

Point2 toPoint(const Vector2& v)
{
    return Point2(v.x(), v.y(), v.z());
}

/// Coordinates relative to an origin, turned so that a direction points up.
class Turn
{
public:
    Turn(const Point2& origin_, const Vector2& up) : origin(origin_), rotation(up, true) {}
    Point2 operator()(const Point2& p) const { return rotation(toPoint(p - origin)); }

private:
    Point2 origin;
    Func_Rot3D rotation;
};

Box boxOf(const Point2* const* ppPoints, std::size_t num, double margin)
{
    Box box = Box::nothing();
    for (std::size_t i = 0; i < num; ++i) addPoint(box, *ppPoints[i]);
    for (std::size_t d = 0; d < 3; ++d) {
        box.lo[d] -= margin;
        box.hi[d] += margin;
    }
    return box;
}

/// Distance of r from the line p q in the plane, positive on its left; relative to the lengths involved.
double relativeSide(const Point2& p, const Point2& q, const Point2& r)
{
    const double dx = q.x() - p.x(), dy = q.y() - p.y(), ex = r.x() - p.x(), ey = r.y() - p.y();
    const double size = std::hypot(dx, dy) * std::max(std::hypot(dx, dy), std::hypot(ex, ey));
    return size > 0.0 ? (dx * ey - dy * ex) / size : 0.0;
}

/// A counterclockwise triangle in the plane with its plane in space.
struct TurnedTriangle
{
    Point2 aP[3];
    Plane plane;

    /// In the closed triangle, or all but on its border.
    bool holds(const Point2& p) const
    {
        for (int i = 0; i < 3; ++i) {
            if (relativeSide(aP[i], aP[incIndexBy1(i)], p) < -onSide) return false;
        }
        return true;
    }
    /// True when p lies beyond one of the two sides at corner i: an edge from that corner to p leaves the triangle.
    bool leavesAt(int i, const Point2& p) const
    {
        return relativeSide(aP[i], aP[incIndexBy1(i)], p) < -onSide ||
               relativeSide(aP[incIndexBy2(i)], aP[i], p) < -onSide;
    }
    bool isBeside(const Point2& a, const Point2& b) const
    {
        bool bLeft = false, bRight = false;
        for (const Point2& p : aP) {
            const double side = relativeSide(a, b, p);
            bLeft = bLeft || side > -onSide;
            bRight = bRight || side < onSide;
        }
        return !(bLeft && bRight);
    }
};

/// A slab in space around a triangle: what lies beyond one of its five sides can't run into the triangle. A quick test
/// for edges in the triangle's box, which are many when the triangle is large.
class Slab
{
public:
    /// Counterclockwise seen along the unit normal.
    Slab(const Point2* const* ppCorners, const Vector2& normal, double reach_)
        : origin(*ppCorners[0]), up(normal), reach(reach_)
    {
        for (int i = 0; i < 3; ++i) {
            const Vector2 side = normalize(*ppCorners[incIndexBy1(i)] - *ppCorners[i]);
            aOutward[i] = crossProduct(side, normal);
            aOffset[i] = aOutward[i] * (*ppCorners[i] - origin);
            margin = std::max(margin, onSide * (*ppCorners[i] - origin).length());
        }
    }
    bool isApart(const Point2& a, const Point2& b) const
    {
        const Vector2 v(a.x() - origin.x(), a.y() - origin.y(), a.z() - origin.z());
        const Vector2 w(b.x() - origin.x(), b.y() - origin.y(), b.z() - origin.z());
        for (int i = 0; i < 3; ++i) {
            if (v * aOutward[i] > aOffset[i] + margin && w * aOutward[i] > aOffset[i] + margin) return true;
        }
        const double hv = v * up, hw = w * up;
        return (hv >= reach && hw >= reach) || (hv <= -reach && hw <= -reach);
    }
    /// True when a triangle doesn't reach over the plane or over one of the sides.
    bool isBeside(const Corners& corners) const
    {
        const Vector2 aV[3] = {*corners[0] - origin, *corners[1] - origin, *corners[2] - origin};
        const auto range = std::minmax({aV[0] * up, aV[1] * up, aV[2] * up});
        if (range.first >= -margin || range.second <= margin) return true;
        for (int i = 0; i < 3; ++i) {
            const double inner = aOffset[i] - margin;
            if (aV[0] * aOutward[i] >= inner && aV[1] * aOutward[i] >= inner && aV[2] * aOutward[i] >= inner)
                return true;
        }
        return false;
    }

private:
    Point2 origin;
    Vector2 up;
    double reach;
    Vector2 aOutward[3];
    double aOffset[3] = {0.0, 0.0, 0.0};
    double margin = 0.0;
};

/// The height of segment s above the place where it crosses the (other) segment, minus that one's.
double heightDifference(const Segment2& s, const Segment2& other)
{
    const double dx = s.trg.x() - s.src.x(), dy = s.trg.y() - s.src.y();
    const double ox = other.trg.x() - other.src.x(), oy = other.trg.y() - other.src.y();
    const double det = dx * oy - dy * ox;
    if (det == 0.0) return s.src.z() - other.src.z(); // on one line
    const double wx = other.src.x() - s.src.x(), wy = other.src.y() - s.src.y();
    const double t = std::clamp((wx * oy - wy * ox) / det, 0.0, 1.0);
    const double u = std::clamp((wx * dy - wy * dx) / det, 0.0, 1.0);
    return s.src.z() + t * (s.trg.z() - s.src.z()) - other.src.z() - u * (other.trg.z() - other.src.z());
}

/// The sign of the volume of three directions; 0 for what may be rounding.
int signOfVolume(const Vector2& u, const Vector2& v, const Vector2& w)
{
    const double volume = crossProduct(u, v) * w, size = u.length() * v.length() * w.length();
    return std::fabs(volume) <= onSide * size ? 0 : volume > 0.0 ? 1 : -1;
}

/// True when the segment p q goes through the inside of a triangle with which it has no corner in common.
bool pierces(const Point2* p, const Point2* q, const Corners& t)
{
    if (std::find(t.begin(), t.end(), p) != t.end() || std::find(t.begin(), t.end(), q) != t.end()) return false;
    const Vector2 u = *t[0] - *p, v = *t[1] - *p, w = *t[2] - *p, axis = *q - *p;
    const int side = signOfVolume(u, v, w);
    if (side == 0 || signOfVolume(*t[0] - *q, *t[1] - *q, *t[2] - *q) != -side) return false;
    const int s = signOfVolume(axis, u, v);
    return s != 0 && signOfVolume(axis, v, w) == s && signOfVolume(axis, w, u) == s;
}

bool cross(const Corners& s, const Corners& t)
{
    for (std::size_t i = 0; i < 3; ++i) {
        if (pierces(s[i], s[(i + 1) % 3], t) || pierces(t[i], t[(i + 1) % 3], s)) return true;
    }
    return false;
}

} // namespace

/// True when the edge and the segment p q have more in common than a common end, within reach of each other's height.
bool SpatialCheck::isAcross(const TurnedEdge& e, const Point2& p, const Point2& q) const
{
    const Segment2 a(e.src, e.trg), b(p, q);
    const SegmentIntersectionType type = classifySegments(orbiTest, a, b);
    if (type != SIT_POINT && type != SIT_SEGMENT) return false;
    return std::fabs(heightDifference(a, b)) < reach;
}

int SpatialCheck::getSpatialQuality(std::size_t node) const
{
    const std::size_t base = front.node(node).vertex, dec = front.dec(node), inc = front.inc(node);
    const std::size_t aVertex[3] = {base, inc, dec};
    const Point2* const apPoint[3] = {&surface.point(base), &surface.point(inc), &surface.point(dec)};
    const Vector2 normal = reliableNormal(*apPoint[0], *apPoint[1], *apPoint[2]);
    if (normal.isDegenerate()) return 1;
    const Turn turn(*apPoint[0], normal);
    TurnedTriangle t{{turn(*apPoint[0]), turn(*apPoint[1]), turn(*apPoint[2])}, Plane()};
    for (int i = 0; i < 3; ++i) { // a needle is degenerate seen from any of its corners
        if (relativeSide(t.aP[i], t.aP[incIndexBy1(i)], t.aP[incIndexBy2(i)]) <= onSide) return 1;
    }
    t.plane = Plane(t.aP[0], t.aP[1], t.aP[2]);

    const Slab slab(apPoint, normal, reach);
    int quality = 0;
    const auto checkEdge = [&](std::size_t edgeNode) {
        const std::size_t a = front.node(edgeNode).vertex, b = front.inc(edgeNode);
        if (quality != 0 || a == base || b == base || (a == inc && b == dec) || (a == dec && b == inc)) return;
        if (slab.isApart(surface.point(a), surface.point(b))) return;
        const TurnedEdge e{turn(surface.point(a)), turn(surface.point(b))};
        for (int i = 1; i < 3; ++i) {
            if ((a == aVertex[i] && t.leavesAt(i, e.trg)) || (b == aVertex[i] && t.leavesAt(i, e.src))) return;
        }
        if (t.isBeside(e.src, e.trg)) return;
        const bool bSrcIsCorner = a == inc || a == dec, bTrgIsCorner = b == inc || b == dec;
        if (!bSrcIsCorner && t.holds(e.src) && t.plane.distance(e.src) < reach) quality = 1;
        if (!bTrgIsCorner && t.holds(e.trg) && t.plane.distance(e.trg) < reach) quality = 2;
        for (int i = 0; i < 3 && quality == 0; ++i) {
            if (isAcross(e, t.aP[i], t.aP[incIndexBy1(i)])) quality = 3;
        }
    };
    index.forEach(front.node(node).ring, boxOf(apPoint, 3, reach), checkEdge);
    if (quality == 0) {
        const Corners corners{apPoint[0], apPoint[1], apPoint[2]};
        surface.forEachNear(boxOf(apPoint, 3, 0.0), [&](const Corners& other) {
            if (quality == 0 && !slab.isBeside(other) && cross(corners, other)) quality = 4;
        });
    }
    return quality;
}

bool SpatialCheck::isLeft(const Point2& p, const Point2& q, const Point2& r) const
{
    orbiTest.ensureStaticBound(&p, &q, &r);
    return orbiTest.getOrientation2(&p, &q, &r) == ORIENTATION2_CCW;
}

/// The opening at base goes counterclockwise from inc to dec.
bool SpatialCheck::isInOpening(const Point2& base, const Point2& dec, const Point2& inc, const Point2& p) const
{
    if (isLeft(base, inc, dec)) return isLeft(base, inc, p) && isLeft(base, p, dec);
    return !(isLeft(base, dec, p) && isLeft(base, p, inc)); // reflex: not between the hands on the other side
}

/// Whether the segment p q crosses no edge of a ring but those at two vertices, seen along nnv.
bool SpatialCheck::crossesNothing(std::size_t ring, const Point2& p, std::size_t pVertex, const Point2& q,
                                  std::size_t qVertex, const Vector2& nnv) const
{
    const Point2* const apEnds[2] = {&p, &q};
    const Turn turn(p, nnv);
    const Point2 src = turn(p), trg = turn(q);
    bool bFree = true;
    index.forEach(ring, boxOf(apEnds, 2, reach), [&](std::size_t edgeNode) {
        const std::size_t a = front.node(edgeNode).vertex, b = front.inc(edgeNode);
        if (!bFree || a == pVertex || b == pVertex || a == qVertex || b == qVertex) return;
        bFree = !isAcross({turn(surface.point(a)), turn(surface.point(b))}, src, trg);
    });
    return bFree;
}

bool SpatialCheck::isRoomForFan(std::size_t node, const std::vector<Point2>& vTips, const Vector2& nnv) const
{
    if (nnv.isDegenerate()) return false;
    const Front::Node& base = front.node(node);
    const Point2 &basePoint = surface.point(base.vertex), &inc = surface.point(front.inc(node));
    const Turn turn(basePoint, nnv);
    const Point2 origin(0.0, 0.0, 0.0), turnedDec = turn(surface.point(front.dec(node))), turnedInc = turn(inc);
    // The fan's spokes, and the new edges of the front from dec over the tips to inc.
    const Point2* pLast = &surface.point(front.dec(node));
    std::size_t lastVertex = front.dec(node);
    for (const Point2& tip : vTips) {
        if (!isInOpening(origin, turnedDec, turnedInc, turn(tip)) ||
            !crossesNothing(base.ring, basePoint, base.vertex, tip, noVertex, nnv) ||
            !crossesNothing(base.ring, *pLast, lastVertex, tip, base.vertex, nnv)) {
            return false;
        }
        pLast = &tip;
        lastVertex = noVertex;
    }
    return crossesNothing(base.ring, *pLast, base.vertex, inc, front.inc(node), nnv);
}

bool SpatialCheck::isVisible(std::size_t node, std::size_t target, const Vector2& nnv) const
{
    if (nnv.isDegenerate()) return false;
    const Front::Node& base = front.node(node);
    const Point2& basePoint = surface.point(base.vertex);
    const std::size_t targetVertex = front.node(target).vertex;
    const Point2& targetPoint = surface.point(targetVertex);
    const Turn turn(basePoint, nnv);
    const Point2 origin(0.0, 0.0, 0.0), turned = turn(targetPoint);
    return isInOpening(origin, turn(surface.point(front.dec(node))), turn(surface.point(front.inc(node))), turned) &&
           isInOpening(turned, turn(surface.point(front.dec(target))), turn(surface.point(front.inc(target))),
                       origin) &&
           crossesNothing(base.ring, basePoint, base.vertex, targetPoint, targetVertex, nnv);
}

} // namespace ORBI_LUMO25D
