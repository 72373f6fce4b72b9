#include "pan/QuorGainNormalization.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
void GainNormalization::constantPower(float* gains, std::uint32_t n)
{
    float sum = 0.0f;
    for (std::uint32_t i = 0; i < n; ++i)
        sum += gains[i] * gains[i];
    const double norm = std::max(std::sqrt(static_cast<double>(sum)), 1e-10);
    const float scale = static_cast<float>(1.0 / norm);
    for (std::uint32_t i = 0; i < n; ++i)
        gains[i] *= scale;
}

void GainNormalization::constantIntensity(float* gains, std::uint32_t n)
{
    float sum = 0.0f;
    for (std::uint32_t i = 0; i < n; ++i)
        sum += gains[i];
    sum = std::max(sum, 1e-20f);
    for (std::uint32_t i = 0; i < n; ++i)
        gains[i] = std::sqrt(gains[i] / sum);
}
} // namespace Quor
