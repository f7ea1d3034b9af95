#ifndef LUMO25D_ENGINE_FANCUTTER_H
#define LUMO25D_ENGINE_FANCUTTER_H

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class OrbiTest;
class Point2;
class Triangle2;

/// Reduces the degree of a vertex by flipping its spokes away, ear by ear, so that the vertex can be taken out.
///
/// A spoke is the edge from the vertex to a neighbour b, between the triangles (v, a, b) and (v, b, d). Where a, b, d turn
/// left, the flip cuts the ear (a, b, d) off the star of the vertex. The ears are cut in the order of the power of the
/// vertex with respect to their circles, the nearest first: then each of them is a Delaunay triangle of what remains
/// (Devillers, "On deletion in Delaunay triangulations", 1999). The order is computed in doubles, so that a repair has
/// to follow where it matters; the convexity of each flip is decided exactly. O(k log k) for degree k.
class FanCutter
{
public:
    explicit FanCutter(const OrbiTest& orbiTest_) : orbiTest(orbiTest_) {}

    /// vFan: the triangles around the vertex, counterclockwise; bClosed when the last one meets the first. Cuts ears until
    /// numLeft triangles remain around the vertex or no ear can be cut. vFan then holds the remaining triangles,
    /// counterclockwise, and vCut receives those that left.
    void run(const Point2* pVtx, std::vector<Triangle2*>& vFan, bool bClosed, std::size_t numLeft,
             std::vector<Triangle2*>& vCut);

private:
    /// A spoke waiting to be flipped: the one behind the triangle at position fan, as it stood at the time of the stamp.
    struct Ear
    {
        double power;
        std::size_t fan;
        unsigned stamp;
    };
    struct Spoke
    {
        const Point2* a;
        const Point2* b;
        const Point2* d;
    };

    void link(bool bClosed);
    void enter(std::size_t fan);
    bool cut(std::size_t fan);
    Spoke spokeBehind(std::size_t fan) const;
    double power(const Spoke& s) const;

    const OrbiTest& orbiTest;
    const Point2* pVtx = nullptr;
    std::vector<Triangle2*>* pFan = nullptr;
    // A ring (or chain) of positions in the fan; no position for the ends of a chain.
    std::vector<std::size_t> vNext, vPrevious;
    std::vector<unsigned> vStamp;
    std::vector<Ear> vHeap;
};

} // namespace ORBI_LUMO25D

#endif
