#ifndef LUMO25D_OUTPUT_LITTLEENDIAN_H
#define LUMO25D_OUTPUT_LITTLEENDIAN_H

#include <cstdint>
#include <cstring>

namespace ORBI_LUMO25D
{

// Numbers in binary files, byte by byte and so the same on every machine; compilers make single moves of these where
// the machine is little-endian.

inline void storeLE32(std::uint32_t value, char* pOut)
{
    for (int i = 0; i < 4; ++i) pOut[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
}

inline std::uint32_t loadLE32(const char* pIn)
{
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(static_cast<unsigned char>(pIn[i])) << (8 * i);
    return value;
}

inline void storeLEDouble(double value, char* pOut)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, 8);
    for (int i = 0; i < 8; ++i) pOut[i] = static_cast<char>(static_cast<unsigned char>(bits >> (8 * i)));
}

inline double loadLEDouble(const char* pIn)
{
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(pIn[i])) << (8 * i);
    double value = 0.0;
    std::memcpy(&value, &bits, 8);
    return value;
}

} // namespace ORBI_LUMO25D

#endif
