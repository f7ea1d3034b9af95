#ifndef LUMO25D_ORBI_TOOLS_POOLBLOCKS_H
#define LUMO25D_ORBI_TOOLS_POOLBLOCKS_H

#include "orbi_tools/BlockMemory.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// The untyped part of a pool: blocks, and the order in which their slots were given out.
///
/// Slots are given out in runs. A run is a stretch of one block, and it goes on until its block is exhausted or until
/// reserve() needs more room than the block has left. What is left then isn't lost: it becomes a run of its own as soon
/// as a later block is exhausted. So the slots in use are always the first ones of each block, and the number of a slot,
/// its position in the order of allocation, has no gaps.
class PoolBlocks
{
public:
    PoolBlocks(const PoolBlocks&) = delete;
    PoolBlocks& operator=(const PoolBlocks&) = delete;

    /// Makes the first block; once only. increaseSize is the size of every further block, negative for adaptive growth:
    /// the second block has half the slots of the first, which was sized by what the caller expects, and from the third
    /// on sizes double, up to about 10 MB a block.
    void init(std::size_t initialSize, std::ptrdiff_t increaseSize);

    /// Slots given out so far. A killed block's slots count too: numbers don't move.
    std::size_t size() const { return numClosed + static_cast<std::size_t>(pNext - pRunBegin) / itemSize; }
    /// Heap memory of all blocks, in bytes, whether their slots are in use or not.
    std::size_t bytes() const;
    /// Number of blocks made so far, killed ones included.
    std::size_t numContainers() const { return vBlocks.size(); }

    /// Frees block killIndex and everything in it. The numbers of other slots stay as they are.
    void killContainer(std::size_t killIndex);

protected:
    /// Sizes in bytes. outOfMemoryText is printed when a block can't be had; it must outlive the pool.
    PoolBlocks(std::size_t itemSize, const char* outOfMemoryText);
    ~PoolBlocks() = default;

    /// Opens the next run: what an earlier block has left, or a new block. The current run must be exhausted.
    void openNextRun();
    /// Makes sure that the run has n slots left.
    void reserveSlots(std::size_t n);
    void takeBackSlots(std::byte* pFirst, std::size_t n);
    void getBlock(std::size_t i, std::byte*& pBlock, std::size_t& numUsed) const;

    /// Where a run begins, and the number of its first slot.
    struct RunStart
    {
        const std::byte* pBegin;
        std::size_t firstNumber;
    };
    /// The last run that begins at p or before it; p must lie in a slot given out.
    const RunStart& runAt(const std::byte* p) const
    {
        const RunStart* pRun = vByAddress.data();
        for (std::size_t n = vByAddress.size(); n > 1;) { // by halving, without a branch
            const std::size_t half = n / 2;
            pRun = pRun[half].pBegin <= p ? pRun + half : pRun;
            n -= half;
        }
        return *pRun;
    }
    /// True when a slot given out, of a block not killed, begins exactly at p; p may be anything.
    bool isSlot(const void* p) const;
    /// The slot with that number, NULL when its block was killed.
    std::byte* slot(std::size_t number) const;

    /// A stretch of slots given out one after another. pBegin is NULL when the block was killed.
    struct Run
    {
        std::byte* pBegin;
        std::size_t numSlots; ///< of the open run: 0, see runSlots()
        std::size_t firstNumber;
        std::size_t block;
    };
    std::size_t runSlots(std::size_t i) const
    {
        return vRuns[i].pBegin == pRunBegin ? static_cast<std::size_t>(pNext - pRunBegin) / itemSize
                                            : vRuns[i].numSlots;
    }

    std::byte* pNext = nullptr; ///< next free slot of the open run
    std::byte* pEnd = nullptr;  ///< end of the open run's block
    std::vector<Run> vRuns;     ///< in order of allocation; the open run is the last one

private:
    struct Block
    {
        BlockMemory memory;
        std::size_t numSlots;
        std::size_t numUsed; ///< not kept up while the block's run is open
    };

    std::size_t nextBlockSize() const;
    void addBlock(std::size_t numSlots);
    void openRun(std::size_t block);
    void closeRun();

    const std::size_t itemSize;
    const char* const outOfMemoryText;
    bool initialized = false;
    std::ptrdiff_t increaseSize = -1;
    std::size_t increaseLimit = 1;  ///< largest number of slots of a block that grows adaptively
    std::byte* pRunBegin = nullptr; ///< begin of the open run, NULL when none is open
    std::size_t numClosed = 0;      ///< slots given out in runs that are closed
    std::vector<Block> vBlocks;
    std::vector<std::size_t> vRests; ///< blocks that reserve() has left before they were exhausted
    std::vector<RunStart> vByAddress;
};

} // namespace ORBI_LUMO25D

#endif
