#pragma once

#include "dsp/TarvoDspBiquadIPP.h"

#include <memory>

namespace tarvo::testing
{
/// A section with poles near the unit circle (radius 0.85 + 0.004 index, under 1 up to index
/// 37), different for each index, so that side-by-side kernels show any mix-up of lanes.
inline std::unique_ptr<ondo::BiquadIPP> resonantSection(int index)
{
    auto biquad = std::make_unique<ondo::BiquadIPP>();
    const float r = 0.85f + 0.004f * static_cast<float>(index);
    const float taps[6] = {0.4f, -0.3f + 0.01f * static_cast<float>(index), 0.2f, 1.0f, -1.5f * r, r * r};
    biquad->setCoefficients(taps);
    return biquad;
}
} // namespace tarvo::testing
