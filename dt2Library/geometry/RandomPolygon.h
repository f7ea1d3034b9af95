#ifndef LUMO25D_GEOMETRY_RANDOMPOLYGON_H
#define LUMO25D_GEOMETRY_RANDOMPOLYGON_H

#include "Point2.h"
#include "geometry/OrbiTest.h"
#include "geometry/SplitMix64.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Draws random corners and orders them so that they make a simple polygon, by space partitioning.
///
/// T. Auer, M. Held: Heuristics for the Generation of Random Polygons. CCCG 1996.
///
/// A chain from a to b through a set S of points is made by choosing s in S and a line through s with a and b strictly
/// on its two sides: the points on a's side make the chain from a to s, those on b's side the chain from s to b, both
/// in the same way. No point but s lies on the line, so that the two chains, each within the hull of its points, meet
/// in s alone. The polygon is a chain from a to b through the points right of ab and one from b to a through the points
/// left of it. All sides are decided exactly, and a choice with a point on the line is thrown away: hence the polygon
/// is simple without any tolerance.
class RandomPolygon
{
public:
    /// The box must be finite and have an area, num must be 3 or more.
    RandomPolygon(std::size_t num_, double minX_, double minY_, double maxX_, double maxY_, std::uint64_t seed);

    /// Fills vCorners with the corners in counterclockwise order. False when the box holds too few doubles for that
    /// many points with room between them.
    bool run();

    std::vector<Point2> vCorners;

private:
    /// The corners from begin to end (exclusive) between the fixed corners at begin-1 and at end.
    struct Chain
    {
        std::size_t begin;
        std::size_t end;
    };

    bool drawCorners();
    bool orderCorners();
    bool divideByDiagonal();
    bool divideChain(const Chain& chain);
    bool tryLine(const Chain& chain, const Point2& onLine);
    bool moveSideFirst(std::size_t begin, std::size_t end, const Point2& p0, const Point2& p1, Orientation2 side,
                       std::size_t& middle);

    std::size_t num;
    double minX;
    double minY;
    double maxX;
    double maxY;
    SplitMix64 random;
    OrbiTest orbiTest;
    std::vector<Chain> vChains; // still to be divided
};

} // namespace ORBI_LUMO25D

#endif
