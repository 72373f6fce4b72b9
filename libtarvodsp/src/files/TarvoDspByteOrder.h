#pragma once

#include <cstdint>
#include <cstring>

namespace ondo::byteOrder
{
// Byte-wise assembly, so that the host's own byte order never matters and unaligned
// addresses are fine.

inline std::uint64_t loadLittle(const std::uint8_t* p, int bytes)
{
    std::uint64_t value = 0;
    for (int i = bytes; --i >= 0;)
        value = (value << 8) | p[i];
    return value;
}

inline std::uint64_t loadBig(const std::uint8_t* p, int bytes)
{
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value = (value << 8) | p[i];
    return value;
}

inline void storeLittle(std::uint8_t* p, std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i, value >>= 8)
        p[i] = static_cast<std::uint8_t>(value);
}

inline void storeBig(std::uint8_t* p, std::uint64_t value, int bytes)
{
    for (int i = bytes; --i >= 0; value >>= 8)
        p[i] = static_cast<std::uint8_t>(value);
}

inline float floatFromBits(std::uint32_t bits)
{
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

inline double doubleFromBits(std::uint64_t bits)
{
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

inline std::uint32_t bitsOf(float f)
{
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    return bits;
}

inline std::uint64_t bitsOf(double d)
{
    std::uint64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    return bits;
}
} // namespace ondo::byteOrder
