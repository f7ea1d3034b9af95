#ifndef LUMO25D_ORBI_TOOLS_BLOCKARRAY_H
#define LUMO25D_ORBI_TOOLS_BLOCKARRAY_H

#include "orbi_tools/BlockMemory.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <type_traits>

namespace ORBI_LUMO25D
{

/// An array of numbers in raw memory (see BlockMemory): its elements have no value until they get one.
template <class T>
class BlockArray
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>, "numbers and pointers");

public:
    BlockArray() = default;
    explicit BlockArray(std::size_t n) : memory(std::max<std::size_t>(n, 1) * sizeof(T))
    {
        if (memory.data() == nullptr) throw std::bad_alloc();
    }

    T* data() const { return reinterpret_cast<T*>(memory.data()); }
    T& operator[](std::size_t i) const { return data()[i]; }

private:
    BlockMemory memory;
};

} // namespace ORBI_LUMO25D

#endif
