#ifndef LUMO25D_ORBI_TOOLS_BLOCKMEMORY_H
#define LUMO25D_ORBI_TOOLS_BLOCKMEMORY_H

#include <cstddef>

namespace ORBI_LUMO25D
{

/// A stretch of raw heap memory, owned. Its content is undefined until it is written.
///
/// From 4 MB on, the system is asked to back the full 2 MB in it by huge pages, where it knows such a thing: a
/// triangulation is walked in every direction, and with pages of 4 KB the walk spends its time on address translation and
/// on faults of first touch. What is before and behind keeps ordinary pages, so that no memory is spent on rounding up.
/// From 32 MB on, the stretch begins at a multiple of 2 MB itself; in smaller ones that would cost too much of the heap.
class BlockMemory
{
public:
    BlockMemory() = default;
    /// NULL in data() when there isn't that much memory. Aligned for every fundamental type, and to a cache line at
    /// least.
    explicit BlockMemory(std::size_t numBytes);
    BlockMemory(BlockMemory&& other) noexcept;
    BlockMemory& operator=(BlockMemory&& other) noexcept;
    BlockMemory(const BlockMemory&) = delete;
    BlockMemory& operator=(const BlockMemory&) = delete;
    ~BlockMemory();

    std::byte* data() const { return pData; }

private:
    std::byte* pData = nullptr;
    std::size_t alignment = 0;
};

} // namespace ORBI_LUMO25D

#endif
