#ifndef LUMO25D_ORBI_TOOLS_BLOCKMEMORY_H
#define LUMO25D_ORBI_TOOLS_BLOCKMEMORY_H

#include <cstddef>

namespace ORBI_LUMO25D
{

/// A stretch of raw heap memory, owned. Its content is undefined until it is written.
///
/// A stretch of 4 MB and more begins at a multiple of 2 MB, and the system is asked to back it by huge pages where it
/// knows such a thing: a triangulation is walked in every direction, and with pages of 4 KB the walk spends its time on
/// address translation and on faults of first touch. The part behind the last full 2 MB keeps ordinary pages, so that no
/// memory is spent on rounding up.
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
