#include "core/PointBlocks.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t smallestBlock = 64;

BlockMemory memoryFor(std::size_t numPoints)
{
    BlockMemory memory(numPoints * sizeof(Coords));
    if (memory.data() == nullptr) throw std::bad_alloc();
    return memory;
}

} // namespace

void PointBlocks::grow()
{
    if (capacity >= blockSize) {
        vBlocks.push_back(memoryFor(blockSize));
        capacity += blockSize;
        return;
    }
    const std::size_t newCapacity = std::max(smallestBlock, 2 * capacity);
    BlockMemory larger = memoryFor(newCapacity);
    if (vBlocks.empty()) {
        vBlocks.push_back(std::move(larger));
    } else {
        std::memcpy(larger.data(), vBlocks[0].data(), numPoints * sizeof(Coords));
        vBlocks[0] = std::move(larger);
    }
    capacity = newCapacity;
}

void PointBlocks::clear()
{
    *this = PointBlocks();
}

void PointBlocks::releaseBefore(std::size_t i)
{
    for (; numReleased < i >> blockBits; ++numReleased) {
        vBlocks[numReleased] = BlockMemory();
    }
}

} // namespace ORBI_LUMO25D
