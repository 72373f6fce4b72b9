#include "dsp/TarvoDspFastHadamardTransform.h"

#include "dsp/TarvoDspHadamardColumn.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace ondo
{
namespace
{
// A column of four samples on the baseline, eight in the AVX2 body.
using simd::Floats4;
using simd::Floats8;
using simd::load;
using simd::store;

/// The natural-order network on one column of samples held in registers, then the gain.
template <std::uint32_t size, bool scaled, typename V>
ONDO_KERNEL_INLINE void butterflyColumn(float* const* out, const float* const* in, std::uint32_t at, float gain)
{
    V x[size];
#pragma GCC unroll 16
    for (std::uint32_t c = 0; c < size; ++c)
        load(x[c], in[c] + at);
    hadamardColumn<size>(x);
#pragma GCC unroll 16
    for (std::uint32_t c = 0; c < size; ++c)
    {
        if constexpr (scaled)
            x[c] *= gain;
        store(out[c] + at, x[c]);
    }
}

template <std::uint32_t size, bool scaled, typename V>
ONDO_KERNEL_INLINE void butterflyColumns(float* const* out, const float* const* in, std::uint32_t numSamples,
                                         float gain)
{
    constexpr auto width = static_cast<std::uint32_t>(sizeof(V) / sizeof(float));
    std::uint32_t i = 0;
    for (; i + width <= numSamples; i += width)
        butterflyColumn<size, scaled, V>(out, in, i, gain);
    for (; i < numSamples; ++i)
        butterflyColumn<size, scaled, float>(out, in, i, gain);
}

/// The sizes small enough to keep a column in registers; false for the others.
template <bool scaled, typename V>
ONDO_KERNEL_INLINE bool butterflyColumnsOfSize(std::uint32_t size, float* const* out, const float* const* in,
                                               std::uint32_t numSamples, float gain)
{
    switch (size)
    {
    case 2:
        butterflyColumns<2, scaled, V>(out, in, numSamples, gain);
        return true;
    case 4:
        butterflyColumns<4, scaled, V>(out, in, numSamples, gain);
        return true;
    case 8:
        butterflyColumns<8, scaled, V>(out, in, numSamples, gain);
        return true;
    case 16:
        butterflyColumns<16, scaled, V>(out, in, numSamples, gain);
        return true;
    default:
        return false;
    }
}
template <typename V>
ONDO_KERNEL_INLINE bool butterflyColumnsScaled(std::uint32_t size, float* const* out, const float* const* in,
                                               std::uint32_t numSamples, float gain)
{
    return gain == 1.0f ? butterflyColumnsOfSize<false, V>(size, out, in, numSamples, gain)
                        : butterflyColumnsOfSize<true, V>(size, out, in, numSamples, gain);
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET bool butterflyColumnsWide(std::uint32_t size, float* const* out, const float* const* in,
                                                   std::uint32_t numSamples, float gain)
{
    return butterflyColumnsScaled<Floats8>(size, out, in, numSamples, gain);
}
#endif
} // namespace

FastHadamardTransform::FastHadamardTransform(std::uint32_t n, HadamardOrdering order, bool flagValue)
    : ordering(order), flag(flagValue)
{
    setSize(n);
    // Bit reversal of the index over log2(size) bits, built by doubling.
    permutation.resize(std::bit_ceil(std::max<std::uint32_t>(n, 1)));
    for (std::uint32_t m = 1; m < n; m *= 2)
        for (std::uint32_t i = 0; i < m; ++i)
        {
            permutation[i] *= 2;
            permutation[i + m] = permutation[i] + 1;
        }
    permutationSize = n;
}

void FastHadamardTransform::setSize(std::uint32_t n)
{
    size = n;
    numStages = n == 0 ? 0 : static_cast<std::uint32_t>(std::lround(std::log2(static_cast<double>(n))));
    halfSize = n / 2;
    inverseSize = n == 0 ? 0.0f : 1.0f / static_cast<float>(n);
}

void FastHadamardTransform::swapPass(float** channels, std::uint32_t numSamples) const
{
    for (std::uint32_t i = 0; i < permutationSize; ++i)
    {
        const std::uint32_t j = permutation[i];
        if (i > j && j < size && i < size)
            std::swap_ranges(channels[i], channels[i] + numSamples, channels[j]);
    }
}

void FastHadamardTransform::butterflies(float** channels, std::uint32_t firstStage, std::uint32_t numSamples) const
{
    for (std::uint32_t s = firstStage; s < numStages; ++s)
    {
        const std::uint32_t groups = 1u << s;
        const std::uint32_t span = size >> s;
        const std::uint32_t half = span / 2;
        for (std::uint32_t g = 0; g < groups; ++g)
        {
            // In sequency order the odd groups take the difference on top and the sum below.
            const float sign = (ordering == sequency && (g & 1u) != 0) ? -1.0f : 1.0f;
            for (std::uint32_t c = 0; c < half; ++c)
            {
                float* u = channels[g * span + c];
                float* v = channels[g * span + c + half];
                for (std::uint32_t i = 0; i < numSamples; ++i)
                {
                    const float a = u[i];
                    const float b = v[i];
                    u[i] = a + sign * b;
                    v[i] = a - sign * b;
                }
            }
        }
    }
}

void FastHadamardTransform::transform(float** channels, std::uint32_t numSamples) const
{
    if (ordering != natural)
        swapPass(channels, numSamples);
    butterflies(channels, 0, numSamples);
}

void FastHadamardTransform::transform(float** out, float** in, std::uint32_t numSamples) const
{
    if (ordering != natural || numStages == 0)
    {
        for (std::uint32_t c = 0; c < size; ++c)
            if (out[c] != in[c])
                std::memcpy(out[c], in[c], numSamples * sizeof(float));
        transform(out, numSamples);
        return;
    }
    // The first stage reads `in` and writes pairs into `out`; the others work on `out`.
    for (std::uint32_t c = 0; c < halfSize; ++c)
    {
        const float* a = in[c];
        const float* b = in[c + halfSize];
        float* u = out[c];
        float* v = out[c + halfSize];
        for (std::uint32_t i = 0; i < numSamples; ++i)
        {
            const float x = a[i];
            const float y = b[i];
            u[i] = x + y;
            v[i] = x - y;
        }
    }
    butterflies(out, 1, numSamples);
}

bool FastHadamardTransform::transformColumns(float* const* out, const float* const* in, std::uint32_t numSamples,
                                             float gain) const
{
    if (ordering != natural)
        return false;
#if ONDO_WIDE_VECTORS
    if (simd::useWideVectors())
        return butterflyColumnsWide(size, out, in, numSamples, gain);
#endif
    return butterflyColumnsScaled<Floats4>(size, out, in, numSamples, gain);
}

FastHadamardTransform::HadamardOrdering FastHadamardTransform::orderingFromText(const std::string& text)
{
    if (text == "SequencyWalshOrdering" || text == "sequency")
        return sequency;
    if (text == "DyadicPaleyOrdering" || text == "dyadic")
        return dyadic;
    return natural;
}

std::string FastHadamardTransform::orderingToText(std::uint32_t value)
{
    switch (value)
    {
    case sequency:
        return "sequency";
    case dyadic:
        return "dyadic";
    default:
        return "natural";
    }
}
} // namespace ondo
