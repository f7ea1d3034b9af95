#ifndef LUMO25D_ENGINE_TRIANGLEASSEMBLER_H
#define LUMO25D_ENGINE_TRIANGLEASSEMBLER_H

#include "core/SimplePool.h"
#include "orbi_tools/BlockArray.h"
#include "orbi_tools/PoolRange.h"

#include "Point2.h"
#include "Triangle2.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class OrbiTest;

/// Makes triangles in a pool of three vertex numbers each, and links them as neighbours while they come.
///
/// A side waits at its source for the triangle that has it in the other direction. Those that wait at one vertex are
/// chained through the very slots that will hold their neighbours: so linking takes no memory but one pointer for each
/// vertex, and where triangles come in an order in which neighbours are near each other, chains are short and what is
/// touched is in the cache. Where they aren't (thousands of triangles around one vertex in a bad order), sides are sorted.
///
/// The triangles go back to the pool with the assembler, unless they are kept.
class TriangleAssembler
{
public:
    using Index = std::int32_t;
    using Edge = std::pair<Index, Index>;

    /// For vertices in a row that belong to no triangle yet. All that are handed in are in the range of the tests.
    TriangleAssembler(SimplePool<Triangle2>& pool, std::size_t numTriangles, Point2* aVertices_,
                      std::size_t numVertices_, const OrbiTest& orbiTest_);

    /// Adds n triangles. False, with the reason in getError(), when there is no such vertex or when one doesn't turn
    /// counterclockwise.
    bool add(const Index* aCorners, std::size_t n);
    /// To be called after the last one. False when two triangles are on one side of an edge, or a vertex has none.
    bool close();
    const char* getError() const { return error; }

    /// After close(): the sides without a neighbour, which have their triangle on the left, sorted.
    const std::vector<Edge>& getBorder() const { return vBorder; }
    std::size_t size() const { return numAdded; }
    Index corner(std::size_t t, int i) const { return static_cast<Index>(triangles.data()[t].corner(i) - aVertices); }
    void keep() { triangles.keep(); }

private:
    bool fail(const char* what)
    {
        error = what;
        return false;
    }
    bool addOne(const Index* aCorners);
    void prefetchVertices(const Index* aCorners) const;
    void prefetchWaiting(const Index* aCorners) const;
    void link(Triangle2* pT, int ith, Index src, Index trg);
    void endWaiting();
    bool linkBySorting();

    PoolRange<Triangle2> triangles;
    Point2* aVertices;
    std::size_t numVertices;
    const OrbiTest& orbiTest;
    std::size_t numAdded = 0;
    std::size_t numVerticesUsed = 0;
    std::size_t numStepsLeft;        ///< along chains; at 0, they are given up
    BlockArray<Triangle2*> aWaiting; ///< for each vertex the first triangle whose side waits there
    std::vector<Edge> vBorder;
    const char* error = "";
};

} // namespace ORBI_LUMO25D

#endif
