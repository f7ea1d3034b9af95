#ifndef LUMO25D_ENGINE_TRIANGLEASSEMBLER_H
#define LUMO25D_ENGINE_TRIANGLEASSEMBLER_H

#include "core/SimplePool.h"
#include "engine/SideLinker.h"
#include "orbi_tools/PoolRange.h"

#include "Point2.h"
#include "Triangle2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

class OrbiTest;

/// Makes triangles in a pool of three vertex numbers each, and links them as neighbours while they come.
///
/// The triangles go back to the pool with the assembler, unless they are kept.
class TriangleAssembler
{
public:
    using Index = SideLinker::Index;
    using Edge = SideLinker::Edge;

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
    bool make(const Index* aCorners, std::size_t n);
    bool makeOne(Point2* p0, Point2* p1, Point2* p2);

    PoolRange<Triangle2> triangles;
    Point2* aVertices;
    std::size_t numVertices;
    const OrbiTest& orbiTest;
    std::size_t numAdded = 0;
    std::size_t numVerticesUsed = 0;
    SideLinker linker;
    std::vector<Edge> vBorder;
    const char* error = "";
};

} // namespace ORBI_LUMO25D

#endif
