#ifndef LUMO25D_CORE_CHUNKREGION_H
#define LUMO25D_CORE_CHUNKREGION_H

#include "Bbox2.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

class CircleBound;
class Dt2;
class Triangle2;

/// The part of the plane that the work of a chunk can touch.
///
/// Why it suffices. Let S be the vertices of the coarse triangulation, and let D be an open disk without a point of S in
/// it. Blow D up about the vertex s nearest to its centre, till the centre reaches the border of the Voronoi cell of s:
/// there it lies between two Voronoi vertices, and the disk is covered by the circumdisks of two adjacent coarse
/// triangles. So every disk that is free of S and has a point in the chunk's box lies in the circumdisks of two adjacent
/// coarse triangles, one of which meets the box. The region holds the box, all coarse circumdisks that meet the box, and
/// those of their neighbours. Hence, whatever other chunks have inserted meanwhile:
/// 1. A triangle that a new point of the chunk puts out has the point in its disk, which is free of S: its corners lie in
///    the region.
/// 2. A triangle that meets the box has its corners in the region, because its disk lies in it.
/// 3. A triangle beside those of 1 and 2 shares two corners in the region with them. Were it written by a chunk whose
///    region has no vertex in common with this one, it would have two corners there, too; but it has three corners only.
/// So two chunks whose regions have no vertex in common neither write nor read what the other writes.
///
/// The vertices are the points of the input and the four corners of the fake box. Of the disks, therefore, what lies in
/// the box of the input counts, and which of the corners they hold. The disks are computed with a proven margin
/// (CircleBound); where that fails the region is the whole plane, and the chunk runs alone. In fast mode a disk may hold a
/// point of S within the error of the filter, for which the disks are larger by a twentieth: far more than that error.
class ChunkRegion
{
public:
    /// The region for a chunk whose points lie in the box, from the coarse triangulation, which is only read. pStartT is a
    /// triangle near the box; inputBox holds all vertices, those to come too, but for the fake box.
    void determine(const Dt2& dt2, const Bbox2& inputBox, const Bbox2& box, Triangle2* pStartT);

    /// True when the regions may have a vertex in common.
    bool overlaps(const ChunkRegion& other) const
    {
        return bWholePlane || other.bWholePlane || (cornerMask & other.cornerMask) != 0 ||
               extBox.doIntersect(other.extBox);
    }
    /// Circumcircles that couldn't be trusted: of all triangles looked at; and how often one came up as a neighbour's.
    std::size_t numBadAtBox() const { return numBad1; }
    std::size_t numBadBeside() const { return numBad2; }

private:
    void add(const Dt2& dt2, const Bbox2& inputBox, const CircleBound& disk);

    Bbox2 extBox;            ///< what of the disks lies within the input's box
    unsigned cornerMask = 0; ///< bit i: a disk may hold corner i of the fake box
    bool bWholePlane = false;
    std::size_t numBad1 = 0, numBad2 = 0;
};

} // namespace ORBI_LUMO25D

#endif
