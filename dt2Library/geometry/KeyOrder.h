#ifndef LUMO25D_GEOMETRY_KEYORDER_H
#define LUMO25D_GEOMETRY_KEYORDER_H

#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// The position of an item in its container, with its key along a curve.
struct KeyedPosition
{
    std::uint32_t key;
    std::size_t position;
};

/// Sorts by key; items of equal key keep their order. Linear in n; needs n items of scratch memory.
void sortByKey(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n);

} // namespace ORBI_LUMO25D

#endif
