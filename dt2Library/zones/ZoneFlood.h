#ifndef LUMO25D_ZONES_ZONEFLOOD_H
#define LUMO25D_ZONES_ZONEFLOOD_H

#include "zones/PoolMarks.h"

#include "Triangle2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class ConstraintGraph2;
class Dt2;
class Point2;

/// Floods over triangles that stop at constraint graphs, in time linear in what they reach.
///
/// The graphs are looked up once: each edge of the mesh on which an alive piece of theirs lies gets a mark in both of its
/// triangles. The flood itself then reads nothing but triangles and marks. The triangulation must have area and may not
/// change meanwhile.
class ZoneFlood
{
public:
    explicit ZoneFlood(const Dt2& dt2_);

    /// Floods stop at all pieces; seeds() gives nothing.
    void stopAt(const std::vector<ConstraintGraph2*>& vGraphs);
    /// The same, and the triangles on the left of each piece become seeds. A piece that one graph walks both ways, as
    /// along a spike, has the same area on both sides: it gives none.
    void stopInside(const std::vector<ConstraintGraph2*>& vGraphs);
    /// The triangles on the right become seeds. A piece that is walked both ways, be it by two graphs, as where two
    /// polygons meet, has the outside on both sides or on none: it gives no seed, and floods pass it, because spikes may
    /// cut the outside apart.
    void stopOutside(const std::vector<ConstraintGraph2*>& vGraphs);

    const std::vector<Triangle2*>& seeds() const { return vSeeds; }
    /// Appends what can be reached from the starts, each triangle once, in the order of addresses. What an earlier flood
    /// has reached doesn't count.
    void run(const std::vector<Triangle2*>& vStarts, std::vector<Triangle2*>& vOut);

private:
    /// An edge on which alive pieces lie; pLow has the lower address.
    struct Border
    {
        Point2* pLow;
        Point2* pHigh;
        bool bLeft;  ///< the side on the left of the way from pLow to pHigh: on the left of a piece, then: a seed
        bool bRight; ///< the other side
    };
    struct Piece;
    static std::vector<Piece> alivePieces(const std::vector<ConstraintGraph2*>& vGraphs);
    static std::vector<Border> findBorders(const std::vector<ConstraintGraph2*>& vGraphs);
    void mark(const std::vector<Border>& vBorders);
    void markAround(const Border* pFirst, const Border* pEnd);
    void markSide(Triangle2* pT, int ith, bool bSeed);
    void spread(std::size_t first, std::vector<Triangle2*>& v);

    const Dt2& dt2;
    PoolMarks<Triangle2> marks; ///< bits 0 to 2: a border lies on that edge
    std::vector<Triangle2*> vSeeds;
};

} // namespace ORBI_LUMO25D

#endif
