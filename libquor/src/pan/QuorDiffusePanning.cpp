#include "pan/QuorDiffusePanning.h"

#include <cmath>

namespace Quor
{
namespace
{
constexpr std::uint32_t order4[] = {1, 2, 3, 0};
constexpr std::uint32_t order6[] = {1, 2, 3, 5, 4, 0};
constexpr std::uint32_t order8[] = {6, 1, 2, 3, 5, 4, 7, 0};
constexpr std::uint32_t order12[] = {11, 10, 0, 4, 3, 7, 9, 8, 6, 2, 1, 5};
constexpr std::uint32_t order16[] = {11, 15, 12, 10, 0, 4, 13, 3, 7, 9, 14, 8, 6, 2, 1, 5};
} // namespace

std::uint32_t DiffusePanning::permutation(std::uint32_t n, std::uint32_t i)
{
    switch (n)
    {
        case 4: return order4[i];
        case 6: return order6[i];
        case 8: return order8[i];
        case 12: return order12[i];
        case 16: return order16[i];
        default: return (i + 1) % n;
    }
}

DiffusePanning::DiffusePanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : Pan(numSources, numSpeakers), matrix(numSources, numSpeakers)
{
    const std::uint32_t n = numSpeakers;
    if (n == 0)
        return;
    // B: which of the four mixed channels feeds each speaker.
    ondo::Vector<float> b(4 * std::size_t(n));
    if (n < 4)
        for (std::uint32_t k = 0; k < 4; ++k)
            b[k * n + permutation(n, k % n)] = 1.0f;
    else
        for (std::uint32_t j = 0; j < n; ++j)
            b[(permutation(n, j) % 4) * n + j] = 1.0f;
    // Source i enters channel i mod 4, which the anti-diagonal (0.5) sends to 3 - (i mod 4).
    ondo::Vector<float> gains(std::size_t(numSources) * n);
    for (std::uint32_t i = 0; i < numSources; ++i)
        for (std::uint32_t j = 0; j < n; ++j)
            gains[i * n + j] = 0.5f * b[(3 - i % 4) * n + j];
    // Each speaker at unit power. A speaker no channel reaches has no norm and is silent.
    for (std::uint32_t j = 0; j < n; ++j)
    {
        float sum = 0.0f;
        for (std::uint32_t i = 0; i < numSources; ++i)
            sum += gains[i * n + j] * gains[i * n + j];
        const float norm = std::sqrt(sum);
        for (std::uint32_t i = 0; i < numSources; ++i)
            matrix.setGain(i, j, gains[i * n + j] / norm);
    }
}

void DiffusePanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    matrix.process(outputs, inputs, numSamples);
}

void DiffusePanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    matrix.processAdd(outputs, inputs, numSamples);
}

void DiffusePanning::setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool)
{
    if (source < numInputs)
        sourcesPosition[source] = position;
}
} // namespace Quor
