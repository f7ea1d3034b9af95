#ifndef LUMO25D_ENGINE_DRAPER_H
#define LUMO25D_ENGINE_DRAPER_H

#include "Point2.h"
#include "Segment2.h"

#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class OrbiTest;
class Triangle2;

/// Lays segments on the surface of a triangulation with area. The way through the triangles is decided exactly; crossings
/// with edges are rounded once.
class Draper
{
public:
    /// See Dt2::drape().
    Draper(Dt2& dt2_, double zTolerance_);

    /// Appends the pieces of one segment with finite coordinates. False when a part of it lies outside of the hull.
    bool drape(const Segment2& segment, std::vector<Segment2>& vPieces);

private:
    bool walk();
    void walkFromOutside();
    bool walkFromEdge(Triangle2* pT, int ith);
    bool walkFromInside(Triangle2* pT);
    bool walkFromVertex(Point2* pV);
    bool leaveVertex(Point2*& pV, Triangle2*& pT, int& ith);
    bool walkThrough(Triangle2* pT, int ith);

    int sideOf(const Point2& p) const;
    bool isAhead(const Point2& from, const Point2& p) const;
    bool isBeyond(const Triangle2* pT, int ith) const;
    void addCrossing(const Triangle2* pT, int ith);
    void addEnd(const Triangle2* pT);
    void add(const Point2& p);
    void appendPieces(std::vector<Segment2>& vPieces) const;

    Dt2& dt2;
    const OrbiTest& orbiTest;
    const double zTolerance;
    Point2 a, b; ///< the segment
    std::vector<Point2> vPath;
};

} // namespace ORBI_LUMO25D

#endif
