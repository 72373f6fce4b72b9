#include "dsp/TarvoDspFastHadamardTransform.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace ondo
{
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
            // In sequency order the odd groups take the difference on top.
            const bool swapped = ordering == sequency && (g & 1u) != 0;
            for (std::uint32_t c = 0; c < half; ++c)
            {
                float* u = channels[g * span + c];
                float* v = channels[g * span + c + half];
                if (swapped)
                    std::swap(u, v);
                for (std::uint32_t i = 0; i < numSamples; ++i)
                {
                    const float a = u[i];
                    const float b = v[i];
                    u[i] = a + b;
                    v[i] = a - b;
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
