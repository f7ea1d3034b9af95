#ifndef LUMO25D_CORE_POINTBLOCKS_H
#define LUMO25D_CORE_POINTBLOCKS_H

#include "orbi_tools/BlockMemory.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <vector>

namespace ORBI_LUMO25D
{

/// A point of a cloud.
struct Coords
{
    double x, y, z;
    std::int32_t customIndex; ///< -1 for none
};
static_assert(std::is_trivially_copyable_v<Coords> && sizeof(Coords) == 32, "a power of two: never across cache lines");

/// A sequence of points in blocks of a million: it grows without a second copy of itself, and it can give back its
/// memory from the front while the points behind are still in use.
///
/// A block has 32 MB: of that size the C library returns memory to the system as soon as it is free. The first block
/// grows by doubling, so that a small sequence is small.
class PointBlocks
{
public:
    static constexpr unsigned blockBits = 20;
    static constexpr std::size_t blockSize = std::size_t(1) << blockBits;

    std::size_t size() const { return numPoints; }
    bool empty() const { return numPoints == 0; }

    /// i must be below size(), and its block not given back.
    const Coords& operator[](std::size_t i) const { return block(i >> blockBits)[i & (blockSize - 1)]; }
    Coords& operator[](std::size_t i) { return block(i >> blockBits)[i & (blockSize - 1)]; }

    /// Without memory: std::bad_alloc, and nothing is added.
    void push_back(const Coords& p)
    {
        if (__builtin_expect(numPoints == capacity, 0)) grow();
        new (&(*this)[numPoints]) Coords(p);
        ++numPoints;
    }
    /// Gives all memory back.
    void clear();
    /// Gives back the blocks that hold only points before position i, which must not be asked for any more.
    void releaseBefore(std::size_t i);

    /// Bytes of heap memory in use.
    std::size_t bytes() const { return (capacity - numReleased * blockSize) * sizeof(Coords); }

private:
    Coords* block(std::size_t b) const { return reinterpret_cast<Coords*>(vBlocks[b].data()); }
    void grow();

    std::vector<BlockMemory> vBlocks;
    std::size_t numPoints = 0;
    std::size_t capacity = 0;
    std::size_t numReleased = 0; ///< blocks given back
};

} // namespace ORBI_LUMO25D

#endif
