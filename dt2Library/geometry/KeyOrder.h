#ifndef LUMO25D_GEOMETRY_KEYORDER_H
#define LUMO25D_GEOMETRY_KEYORDER_H

#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// The position of an item in its container, below 2^34, with its key along a curve, in 64 bits.
class KeyedPosition
{
public:
    static constexpr unsigned keyBits = 30;
    static constexpr std::uint64_t maxPositions = std::uint64_t(1) << (64 - keyBits);

    KeyedPosition() = default;
    /// Both in their ranges, which isn't checked.
    KeyedPosition(std::uint32_t key, std::size_t position) : packed(std::uint64_t(key) << (64 - keyBits) | position) {}

    std::uint32_t key() const { return static_cast<std::uint32_t>(packed >> (64 - keyBits)); }
    std::size_t position() const { return static_cast<std::size_t>(packed & (maxPositions - 1)); }

    /// By key, then by position.
    bool operator<(const KeyedPosition& other) const { return packed < other.packed; }

private:
    std::uint64_t packed = 0;
};

/// Sorts by key; items of equal key keep their order. Linear in n; needs n items of scratch memory.
void sortByKey(KeyedPosition* pItems, KeyedPosition* pScratch, std::size_t n);

} // namespace ORBI_LUMO25D

#endif
