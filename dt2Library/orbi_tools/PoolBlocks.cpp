#include "orbi_tools/PoolBlocks.h"

#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

namespace ORBI_LUMO25D
{

PoolBlocks::PoolBlocks(std::size_t itemSize_, const char* outOfMemoryText_)
    : itemSize(itemSize_), outOfMemoryText(outOfMemoryText_)
{
}

void PoolBlocks::init(std::size_t initialSize, std::ptrdiff_t increaseSize_)
{
    if (initialized) {
        printLine("SimplePool::init(..), ERROR: This pool is already initialized");
        LUMO_CHECK(false, "false");
    }
    increaseSize = increaseSize_;
    increaseLimit = 10000000 / itemSize;
    if (increaseLimit == 0) {
        printLine("OrbiPool::init(..), Warning: increaseLimit=1");
        increaseLimit = 1;
    }
    addBlock(initialSize);
    openRun(0);
    initialized = true;
}

std::size_t PoolBlocks::bytes() const
{
    std::size_t sum = 0;
    for (const Block& block : vBlocks) {
        if (block.memory.data() != nullptr) sum += block.numSlots * itemSize;
    }
    return sum;
}

void PoolBlocks::killContainer(std::size_t killIndex)
{
    LUMO_CHECK(killIndex < vBlocks.size(), "killIndex<vContainers.size()");
    LUMO_CHECK(vBlocks[killIndex].memory.data() != nullptr, "vContainers[killIndex]!=NULL");
    if (pRunBegin != nullptr && vRuns.back().block == killIndex) closeRun();
    vRests.erase(std::remove(vRests.begin(), vRests.end(), killIndex), vRests.end());
    for (Run& run : vRuns) {
        if (run.block != killIndex) continue;
        const std::byte* const pBegin = std::exchange(run.pBegin, nullptr);
        vByAddress.erase(std::find_if(vByAddress.begin(), vByAddress.end(),
                                      [pBegin](const RunStart& start) { return start.pBegin == pBegin; }));
    }
    vBlocks[killIndex].memory = BlockMemory();
}

void PoolBlocks::openNextRun()
{
    LUMO_CHECK(initialized, "initialized");
    closeRun();
    if (vRests.empty()) {
        addBlock(nextBlockSize());
        openRun(vBlocks.size() - 1);
    } else {
        const std::size_t block = vRests.back();
        vRests.pop_back();
        openRun(block);
    }
}

void PoolBlocks::reserveSlots(std::size_t n)
{
    LUMO_CHECK(initialized, "initialized");
    if (static_cast<std::size_t>(pEnd - pNext) / itemSize >= n) return;
    closeRun();
    const auto hasRoom = [this, n](std::size_t i) { return vBlocks[i].numSlots - vBlocks[i].numUsed >= n; };
    const auto rest_it = std::find_if(vRests.begin(), vRests.end(), hasRoom);
    if (rest_it == vRests.end()) {
        // Never less than what growth asks for: a stream of small reservations must not end in small blocks.
        addBlock(std::max(n, nextBlockSize()));
        openRun(vBlocks.size() - 1);
    } else {
        const std::size_t block = *rest_it;
        vRests.erase(rest_it);
        openRun(block);
    }
}

void PoolBlocks::takeBackSlots(std::byte* pFirst, std::size_t n)
{
    if (n == 0 || pFirst + n * itemSize != pNext) return;
    pNext = pFirst;
    const std::size_t last = vBlocks.size() - 1;
    if (last == 0 || vRuns.back().block != last || pNext != vBlocks[last].memory.data()) return;
    closeRun(); // without a slot, the run is gone
    vRests.pop_back();
    vBlocks.pop_back();
}

void PoolBlocks::getBlock(std::size_t i, std::byte*& pBlock, std::size_t& numUsed) const
{
    LUMO_CHECK(i < vBlocks.size(), "i<vContainers.size()");
    pBlock = vBlocks[i].memory.data();
    const bool bOpen = pRunBegin != nullptr && vRuns.back().block == i;
    numUsed = bOpen ? static_cast<std::size_t>(pNext - pBlock) / itemSize : vBlocks[i].numUsed;
}

bool PoolBlocks::isSlot(const void* p) const
{
    // std::less orders pointers of unrelated objects; the built-in comparison need not.
    const std::less<const void*> before;
    const auto isOf = [p, &before, this](const std::byte* pBegin, std::size_t numSlots) {
        return pBegin != nullptr && !before(p, pBegin) && before(p, pBegin + numSlots * itemSize) &&
               static_cast<std::size_t>(static_cast<const std::byte*>(p) - pBegin) % itemSize == 0;
    };
    for (std::size_t i = 0; i < vRuns.size(); ++i) {
        if (isOf(vRuns[i].pBegin, runSlots(i))) return true;
    }
    return false;
}

std::byte* PoolBlocks::slot(std::size_t number) const
{
    LUMO_CHECK(number < size(), "number<size()");
    const auto run_it = std::prev(std::upper_bound(
        vRuns.begin(), vRuns.end(), number, [](std::size_t value, const Run& run) { return value < run.firstNumber; }));
    return run_it->pBegin == nullptr ? nullptr : run_it->pBegin + (number - run_it->firstNumber) * itemSize;
}

/// Slots of the next block when nothing asks for more.
std::size_t PoolBlocks::nextBlockSize() const
{
    if (increaseSize >= 0) {
        LUMO_CHECK(increaseSize > 0, "increaseSize>0");
        return static_cast<std::size_t>(increaseSize);
    }
    LUMO_CHECK(!vBlocks.empty(), "!vSizes.empty()");
    const std::size_t last = vBlocks.back().numSlots;
    LUMO_CHECK(last > 0, "vSizes.back()>0");
    const std::size_t wanted = vBlocks.size() > 1 ? 2 * last : std::max(last / 2, std::size_t(1));
    return std::min(wanted, increaseLimit);
}

void PoolBlocks::addBlock(std::size_t numSlots)
{
    BlockMemory memory;
    if (numSlots <= PTRDIFF_MAX / itemSize) memory = BlockMemory(numSlots * itemSize);
    if (memory.data() == nullptr) {
        printLine(outOfMemoryText);
        LUMO_CHECK(false, "false");
    }
    vBlocks.push_back(Block{std::move(memory), numSlots, 0});
}

void PoolBlocks::openRun(std::size_t block)
{
    const Block& b = vBlocks[block];
    std::byte* const pBegin = b.memory.data() + b.numUsed * itemSize;
    const auto behind = [](const std::byte* p, const RunStart& start) { return p < start.pBegin; };
    vByAddress.insert(std::upper_bound(vByAddress.begin(), vByAddress.end(), pBegin, behind),
                      RunStart{pBegin, numClosed});
    vRuns.push_back(Run{pBegin, 0, numClosed, block});
    pRunBegin = pNext = pBegin;
    pEnd = b.memory.data() + b.numSlots * itemSize;
}

/// Leaves the open run; what its block has left is remembered. Without an open run nothing happens.
void PoolBlocks::closeRun()
{
    if (pRunBegin == nullptr) return;
    Run& run = vRuns.back();
    Block& block = vBlocks[run.block];
    run.numSlots = static_cast<std::size_t>(pNext - pRunBegin) / itemSize;
    block.numUsed += run.numSlots;
    numClosed += run.numSlots;
    if (block.numUsed < block.numSlots) vRests.push_back(run.block);
    if (run.numSlots == 0) {
        const std::byte* const pBegin = pRunBegin;
        vByAddress.erase(std::find_if(vByAddress.begin(), vByAddress.end(),
                                      [pBegin](const RunStart& start) { return start.pBegin == pBegin; }));
        vRuns.pop_back();
    }
    pRunBegin = pNext = pEnd = nullptr;
}

} // namespace ORBI_LUMO25D
