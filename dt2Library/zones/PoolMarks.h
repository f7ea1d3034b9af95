#ifndef LUMO25D_ZONES_POOLMARKS_H
#define LUMO25D_ZONES_POOLMARKS_H

#include "core/SimplePool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

/// A byte of marks for each record of a pool, 0 at first. The pool may not grow meanwhile.
template <class T>
class PoolMarks
{
public:
    /// Large arrays come from the system as zeros: what isn't touched costs next to nothing.
    explicit PoolMarks(const SimplePool<T>& pool_)
        : pool(pool_), pMarks(static_cast<std::uint8_t*>(std::calloc(pool_.size() + 1, 1)))
    {
        if (pMarks == nullptr) throw std::bad_alloc();
    }

    /// The same, and the records given get a bit.
    PoolMarks(const SimplePool<T>& pool_, const std::vector<T*>& v, std::uint8_t bit) : PoolMarks(pool_)
    {
        for (const T* p : v) {
            (*this)[p] = bit;
        }
    }

    std::uint8_t& operator[](const T* p) { return pMarks.get()[pool.indexOf(p)]; }
    std::uint8_t operator[](const T* p) const { return pMarks.get()[pool.indexOf(p)]; }

    /// Asks the memory for a mark that will be needed soon.
    void prefetch(const T* p) const { __builtin_prefetch(pMarks.get() + pool.indexOf(p), 1); }

    /// Sets a bit; false if it was set.
    bool set(const T* p, std::uint8_t bit)
    {
        std::uint8_t& mark = (*this)[p];
        if ((mark & bit) != 0) return false;
        mark = static_cast<std::uint8_t>(mark | bit);
        return true;
    }

    /// Brings the records from position first on, which must be all those with that bit, into the order of their addresses,
    /// and takes the bit from them.
    void takeByAddress(std::vector<T*>& v, std::size_t first, std::uint8_t bit)
    {
        // Where a good part of the pool is marked, its blocks are read through; that takes no comparison at all.
        constexpr std::size_t fewOf = 16;
        const auto others = static_cast<std::uint8_t>(~bit);
        auto it = v.begin() + static_cast<std::ptrdiff_t>(first);
        if ((v.size() - first) * fewOf < pool.size()) {
            std::sort(it, v.end(), std::less<T*>());
            for (; it != v.end(); ++it) {
                (*this)[*it] &= others;
            }
            return;
        }
        std::vector<std::pair<T*, std::size_t>> vRuns;
        pool.forEachRun([&vRuns](T* pFirst, std::size_t n) { vRuns.emplace_back(pFirst, n); });
        std::sort(vRuns.begin(), vRuns.end(),
                  [](const auto& a, const auto& b) { return std::less<T*>()(a.first, b.first); });
        for (const auto& [pFirst, n] : vRuns) {
            if (n == 0) continue;
            std::uint8_t* const pRunMarks = pMarks.get() + pool.indexOf(pFirst);
            for (std::size_t i = 0; i < n && it != v.end(); ++i) {
                *it = pFirst + i; // stays only if it has the bit: a branch couldn't be predicted
                it += (pRunMarks[i] & bit) != 0 ? 1 : 0;
                pRunMarks[i] &= others;
            }
        }
    }

private:
    struct Free
    {
        void operator()(std::uint8_t* p) const { std::free(p); }
    };
    const SimplePool<T>& pool;
    std::unique_ptr<std::uint8_t, Free> pMarks;
};

} // namespace ORBI_LUMO25D

#endif
