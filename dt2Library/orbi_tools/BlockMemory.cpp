#include "orbi_tools/BlockMemory.h"

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t cacheLine = 64;
constexpr std::size_t hugePage = std::size_t(2) << 20;
constexpr std::size_t minAdvised = 2 * hugePage;
constexpr std::size_t minAligned = 16 * hugePage;

void adviseHugePages(std::byte* pBegin, std::size_t numBytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    void* pFirst = pBegin;
    if (std::align(hugePage, hugePage, pFirst, numBytes) == nullptr) return;
    // Advice only: a kernel that refuses it serves the same memory in small pages.
    static_cast<void>(madvise(pFirst, numBytes / hugePage * hugePage, MADV_HUGEPAGE));
#else
    static_cast<void>(pBegin);
    static_cast<void>(numBytes);
#endif
}

} // namespace

BlockMemory::BlockMemory(std::size_t numBytes)
{
    if (numBytes > PTRDIFF_MAX) return;
    alignment = numBytes >= minAligned ? hugePage : cacheLine;
    pData = static_cast<std::byte*>(::operator new(numBytes, std::align_val_t(alignment), std::nothrow));
    if (pData != nullptr && numBytes >= minAdvised) adviseHugePages(pData, numBytes);
}

BlockMemory::BlockMemory(BlockMemory&& other) noexcept
    : pData(std::exchange(other.pData, nullptr)), alignment(other.alignment)
{
}

BlockMemory& BlockMemory::operator=(BlockMemory&& other) noexcept
{
    std::swap(pData, other.pData);
    std::swap(alignment, other.alignment);
    return *this;
}

BlockMemory::~BlockMemory()
{
    if (pData != nullptr) ::operator delete(pData, std::align_val_t(alignment));
}

} // namespace ORBI_LUMO25D
