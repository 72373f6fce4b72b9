#pragma once

#include "dsp/TarvoDspBiquadIPP.h"
#include "dsp/TarvoDspFadedFilters.h"

namespace ondo
{
/// A crossfading biquad: six pending values, b0 b1 b2 a0 a1 a2.
class FadedBiquad : public FadedFilters<BiquadIPP>
{
public:
    /// Control thread; allocates.
    explicit FadedBiquad(Crossfade::Type type = Crossfade::linear) : FadedFilters<BiquadIPP>(type, 6) {}

    using FadedFilters<BiquadIPP>::setCoefficients;
    /// Narrowed to float on the way in. Any thread without `immediately`; real-time safe.
    void setCoefficients(const BiquadCoefficients& coefficients, bool immediately)
    {
        setPending([&](float* six) { coefficients.toFloats(six); }, immediately);
    }
};
} // namespace ondo
