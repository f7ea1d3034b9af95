#ifndef LUMO25D_CORE_FANCUTTER_H
#define LUMO25D_CORE_FANCUTTER_H

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
/// to follow where it matters; the convexity of each flip is decided exactly. O(k + m log m) for degree k and m ears.
class FanCutter
{
public:
    explicit FanCutter(const OrbiTest& orbiTest_) : orbiTest(orbiTest_) {}

    /// Up to this degree the next ear is found by a scan instead of a heap.
    static constexpr std::size_t maxScanned = 24;

    /// vFan: the triangles around the vertex, counterclockwise; bClosed when the last one meets the first. Cuts ears until
    /// numLeft triangles remain around the vertex or no ear can be cut. vFan then holds the remaining triangles,
    /// counterclockwise, and vCut receives those that left.
    void run(const Point2* pVtx, std::vector<Triangle2*>& vFan, bool bClosed, std::size_t numLeft,
             std::vector<Triangle2*>& vCut);

private:
    /// A neighbour of the vertex: its position and squared distance relative to the vertex, and the triangle between it
    /// and the next neighbour. The neighbours form a ring, or a chain for an open fan.
    struct Link
    {
        const Point2* p;
        double x, y, lift;
        Triangle2* pT;
        std::size_t previous, next;
        double power;   ///< of the ear at this neighbour; infinite when there is none
        unsigned stamp; ///< counts the changes of power, so that old entries of the heap are known
    };
    struct HeapEntry
    {
        double power;
        std::size_t link;
        unsigned stamp;
    };

    void makeLinks(const std::vector<Triangle2*>& vFan, bool bClosed);
    void addLink(const Point2* p, Triangle2* pT);
    void enter(std::size_t link);
    bool isEar(const Link& b) const;
    double power(const Link& b) const;
    std::size_t takeNextEar();
    bool cut(std::size_t link);

    const OrbiTest& orbiTest;
    const Point2* pVtx = nullptr;
    bool bUseHeap = false;
    bool bFillingHeap = false;
    std::vector<Link> vLinks;
    std::vector<HeapEntry> vHeap;
};

} // namespace ORBI_LUMO25D

#endif
