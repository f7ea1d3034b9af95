#ifndef LUMO25D_ORBI_TOOLS_POOLRANGE_H
#define LUMO25D_ORBI_TOOLS_POOLRANGE_H

#include "orbi_tools/OrbiPool.h"

#include <cstddef>

namespace ORBI_LUMO25D
{

/// Slots in a row that go back to their pool at the end of a scope, unless they are kept: for records that come from outside
/// and may be found wanting after they were made. Nothing else may be taken from the pool meanwhile, or they stay.
template <class T>
class PoolRange
{
public:
    PoolRange(OrbiPool<T>& pool_, std::size_t n) : pPool(&pool_), pFirst(pool_.allocRange(n)), numSlots(n) {}
    ~PoolRange()
    {
        if (pPool != nullptr) pPool->takeBack(pFirst, numSlots);
    }
    PoolRange(const PoolRange&) = delete;
    PoolRange& operator=(const PoolRange&) = delete;

    T* data() const { return pFirst; }
    std::size_t size() const { return numSlots; }
    void keep() { pPool = nullptr; }

private:
    OrbiPool<T>* pPool;
    T* pFirst;
    std::size_t numSlots;
};

} // namespace ORBI_LUMO25D

#endif
