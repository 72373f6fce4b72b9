#include "dsp/TarvoDspBiquadIPP.h"

#include "math/TarvoDspVectorPrimitives.h"

namespace ondo
{
BiquadIPP::BiquadIPP() : state(std::make_unique<BiquadSections>(1)), taps(6), scratch(defaultBufferSize)
{
    setCoefficients(BiquadCoefficients{});
}

void BiquadIPP::filter(float* out, const float* in, int numSamples)
{
    if (isGainOnly)
    {
        primitives::vectorMultiplyConstant32(in, taps[0], out, numSamples);
        // A later section starts from silence, not from the memory of an earlier one.
        passBlock();
        return;
    }
    state->process(in, out, numSamples);
}

void BiquadIPP::setCoefficients(const float* values)
{
    setCoefficients(BiquadCoefficients{values[0], values[1], values[2], values[3], values[4], values[5]});
}

void BiquadIPP::setCoefficients(const BiquadCoefficients& newCoefficients)
{
    coefficients = newCoefficients;
    coefficients.normalize();
    coefficients.toFloats(taps.data());
    state->install(taps.data());
    isGainOnly = coefficients.isGainOnly();
    memoryIsSilent = false;
}
} // namespace ondo
