#ifndef LUMO25D_EDGE2_H
#define LUMO25D_EDGE2_H

#include "Lumo25DApi.h"
#include "Triangle2.h"

#include <functional>

namespace ORBI_LUMO25D
{

/// An edge of a triangulation: a triangle and the index of the corner opposite the edge.
///
/// The edge is directed along its triangle: walking from getSrc() to getTrg() has the triangle on the left. The two
/// sides of an inner edge are two different Edge2. An edge is valid as long as its triangle isn't changed.
class LUMO25D_API Edge2
{
public:
    /// The edge of pT opposite its corner oppIdx, which must be 0, 1 or 2.
    Edge2(Triangle2* pT_, int oppIdx_) : pT(pT_), oppIdx(oppIdx_) {}

    /// The ends: the triangle is on the left on the way from source to target.
    Point2* getSrc() const { return pT->getCorner(incIndexBy1(oppIdx)); }
    Point2* getTrg() const { return pT->getCorner(incIndexBy2(oppIdx)); }
    void getPoints(Point2*& p0, Point2*& p1) const
    {
        p0 = getSrc();
        p1 = getTrg();
    }

    /// The triangle that was given, and the index of the corner opposite the edge.
    Triangle2* getTriangle() const { return pT; }
    int getIndex() const { return oppIdx; }
    /// This side (triangle and opposite index) and the other side. On the hull pT1 is NULL and idx1 is -1.
    void getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& idx0, int& idx1) const;

    /// The SQUARED length of the edge in the plane, in space, whatever the names say.
    double getLength2D() const { return pT->getSquaredEdgeLength2D(oppIdx); }
    double getLength25D() const { return pT->getSquaredEdgeLength25D(oppIdx); }

    /// The same side of the same edge; the other side isn't equal.
    bool operator==(const Edge2& other) const { return pT == other.pT && oppIdx == other.oppIdx; }
    bool operator!=(const Edge2& other) const { return !(*this == other); }
    /// By the triangle's address, then by the index; differs from run to run.
    bool operator<(const Edge2& other) const
    {
        if (pT != other.pT) return std::less<Triangle2*>()(pT, other.pT);
        return oppIdx < other.oppIdx;
    }

private:
    Triangle2* pT;
    int oppIdx;
};

} // namespace ORBI_LUMO25D

#endif
