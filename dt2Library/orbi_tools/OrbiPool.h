#ifndef LUMO25D_ORBI_TOOLS_ORBIPOOL_H
#define LUMO25D_ORBI_TOOLS_ORBIPOOL_H

#include "orbi_tools/PoolBlocks.h"

#include <cstddef>
#include <type_traits>

namespace ORBI_LUMO25D
{

/// A typed block allocator for records that are counted in millions and never freed one by one.
///
/// Laws
/// 1. A slot never moves: a pointer to it stays valid until the pool dies or the slot's block is killed.
/// 2. A slot is raw memory: the caller constructs in it or fills it. No destructor runs.
/// 3. Every slot has a number, its position in the order of allocation: 0 to size() - 1 without gaps. Marks about
///    records are kept outside of them, in arrays indexed by that number.
///
/// No locks: one thread at a time may allocate. Reading (size, indexOf, at, forEach) is free for all threads while none
/// allocates.
template <class T>
class OrbiPool : public PoolBlocks
{
public:
    OrbiPool() : OrbiPool("SimplePool::alloc(..), ERROR: Out of memory, sorry") {}

    /// The next slot. Before init() a failed condition, as is the end of memory. Constant time.
    T* alloc()
    {
        if (__builtin_expect(pNext == pEnd, 0)) openNextRun();
        T* const pSlot = reinterpret_cast<T*>(pNext);
        pNext += sizeof(T);
        return pSlot;
    }
    /// n slots in a row; NULL for n = 0.
    T* allocRange(std::size_t n)
    {
        if (n == 0) return nullptr;
        reserveSlots(n);
        T* const pFirst = reinterpret_cast<T*>(pNext);
        pNext += n * sizeof(T);
        return pFirst;
    }
    /// Undoes allocRange(n), if nothing was given out since; else nothing happens. What was a block of its own is freed.
    void takeBack(T* pFirst, std::size_t n) { takeBackSlots(reinterpret_cast<std::byte*>(pFirst), n); }
    /// Makes sure that the next n slots lie in a row. Takes memory at once when the current block hasn't that much left;
    /// what it has left is given out later.
    void reserve(std::size_t n) { reserveSlots(n); }

    /// Block i, NULL when it was killed, and how many of its slots are in use: they are its first ones.
    void getContainer(std::size_t i, T*& pBlock, std::size_t& numUsed) const
    {
        std::byte* p = nullptr;
        getBlock(i, p, numUsed);
        pBlock = reinterpret_cast<T*>(p);
    }

    /// The number of a slot given out by this pool; any other pointer gives nonsense. Logarithmic in the number of runs
    /// (see PoolBlocks), of which there are hardly more than blocks.
    std::size_t indexOf(const T* pItem) const
    {
        const std::byte* const p = reinterpret_cast<const std::byte*>(pItem);
        const RunStart& run = runAt(p);
        return run.firstNumber + static_cast<std::size_t>(p - run.pBegin) / sizeof(T);
    }
    /// True when pItem is a slot given out by this pool. Any pointer may be asked, it isn't read. Linear in that number.
    bool contains(const T* pItem) const { return isSlot(pItem); }
    /// The slot with that number, NULL when its block was killed. A number of size() or more is a failed condition.
    T* at(std::size_t number) const { return reinterpret_cast<T*>(slot(number)); }

    /// Calls f(T*) for every slot given out, in order of allocation, without those of killed blocks. f must not allocate
    /// from this pool.
    template <class F>
    void forEach(F&& f) const
    {
        forEachRun([&f](T* pFirst, std::size_t n) {
            for (T* p = pFirst; p != pFirst + n; ++p) {
                f(p);
            }
        });
    }
    /// The same by stretches: f(T* pFirst, std::size_t n) for n slots in a row.
    template <class F>
    void forEachRun(F&& f) const
    {
        for (std::size_t i = 0; i < vRuns.size(); ++i) {
            if (vRuns[i].pBegin != nullptr) f(reinterpret_cast<T*>(vRuns[i].pBegin), runSlots(i));
        }
    }

protected:
    explicit OrbiPool(const char* outOfMemoryText_) : PoolBlocks(sizeof(T), outOfMemoryText_)
    {
        static_assert(std::is_trivially_destructible_v<T>, "a pool runs no destructors");
        static_assert(alignof(T) <= 64, "blocks are aligned to cache lines");
    }
};

} // namespace ORBI_LUMO25D

#endif
