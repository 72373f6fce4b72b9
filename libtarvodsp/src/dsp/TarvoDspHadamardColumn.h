#pragma once

#include "math/TarvoDspWideVectors.h"

#include <bit>
#include <cstdint>

namespace ondo
{
/// Every stage of the natural-order Hadamard network on one column of `size` channels held
/// in registers, a vector of samples each: each sum and difference the same as in the
/// stage-by-stage passes. `x[c]` gives channel c's vector (an array of vectors, or rows
/// held otherwise). The loops unroll whole so that the column never leaves the registers.
/// For kernel sources: inlined into each body and compiled for its caller.
template <std::uint32_t size, typename Column>
ONDO_KERNEL_INLINE void hadamardColumn(Column& x)
{
    constexpr std::uint32_t numStages = std::bit_width(size) - 1;
#pragma GCC unroll 4
    for (std::uint32_t s = 0; s < numStages; ++s)
    {
        const std::uint32_t half = (size >> s) / 2;
#pragma GCC unroll 16
        for (std::uint32_t k = 0; k < size / 2; ++k)
        {
            // Pair k of the stage: channel c of its group, and the one half a span on.
            const std::uint32_t c = (k / half) * 2 * half + k % half;
            const auto a = x[c];
            const auto b = x[c + half];
            x[c] = a + b;
            x[c + half] = a - b;
        }
    }
}
} // namespace ondo
