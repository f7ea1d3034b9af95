#ifndef LUMO25D_GEOMETRY_FIXEDINT_H
#define LUMO25D_GEOMETRY_FIXEDINT_H

#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

__extension__ typedef __int128 Int128;
__extension__ typedef unsigned __int128 UInt128;

/// A signed integer of N words of 64 bits, two's complement, the lowest word first. Just what determinants need. The
/// caller sees to it that sums fit; products always do.
template <std::size_t N>
struct FixedInt
{
    std::uint64_t aWords[N];

    bool isNegative() const { return (aWords[N - 1] >> 63U) != 0; }
    int sign() const
    {
        std::uint64_t bits = 0;
        for (const std::uint64_t word : aWords) bits |= word;
        return isNegative() ? -1 : (bits != 0 ? 1 : 0);
    }

    FixedInt operator+(const FixedInt& other) const
    {
        FixedInt sum;
        UInt128 carry = 0;
        for (std::size_t i = 0; i < N; ++i) {
            carry += static_cast<UInt128>(aWords[i]) + other.aWords[i];
            sum.aWords[i] = static_cast<std::uint64_t>(carry);
            carry >>= 64U;
        }
        return sum;
    }
    FixedInt operator-(const FixedInt& other) const
    {
        FixedInt diff = *this;
        diff.takeOff(other.aWords, ~std::uint64_t{0}, 0);
        return diff;
    }
    /// The product as unsigned numbers; then, as a negative factor counts 2^(64 N) too much, the other factor is taken
    /// off the upper half for it.
    FixedInt<2 * N> operator*(const FixedInt& other) const
    {
        FixedInt<2 * N> product{};
        for (std::size_t i = 0; i < N; ++i) {
            std::uint64_t carry = 0;
            for (std::size_t j = 0; j < N; ++j) {
                const UInt128 t = static_cast<UInt128>(aWords[i]) * other.aWords[j] + product.aWords[i + j] + carry;
                product.aWords[i + j] = static_cast<std::uint64_t>(t);
                carry = static_cast<std::uint64_t>(t >> 64U);
            }
            product.aWords[i + N] = carry;
        }
        // By masks: signs are random, and branches on them would be mispredicted.
        product.takeOff(other.aWords, -static_cast<std::uint64_t>(isNegative()), N);
        product.takeOff(aWords, -static_cast<std::uint64_t>(other.isNegative()), N);
        return product;
    }

    /// Subtracts the masked words from those at first and above; what is borrowed beyond the end is lost.
    template <std::size_t M>
    void takeOff(const std::uint64_t (&aOther)[M], std::uint64_t mask, std::size_t first)
    {
        std::uint64_t borrow = 0;
        for (std::size_t i = 0; i < M; ++i) {
            const UInt128 d = static_cast<UInt128>(aWords[first + i]) - (aOther[i] & mask) - borrow;
            aWords[first + i] = static_cast<std::uint64_t>(d);
            borrow = static_cast<std::uint64_t>(d >> 64U) & 1U;
        }
    }
};

inline FixedInt<2> toFixedInt(Int128 v)
{
    const UInt128 bits = static_cast<UInt128>(v);
    return {{static_cast<std::uint64_t>(bits), static_cast<std::uint64_t>(bits >> 64U)}};
}

} // namespace ORBI_LUMO25D

#endif
