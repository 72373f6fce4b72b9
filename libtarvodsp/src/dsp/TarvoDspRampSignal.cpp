#include "dsp/TarvoDspRampSignal.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <cstring>

namespace ondo
{
RampSignal::RampSignal() : AudioProcessorWithOscInAudioInterrupt(1, 1)
{
    ramp.setTarget(1.0f, true);
    setup(sampleRate, bufferSize, true);
}

void RampSignal::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    float* out = outputs[0];
    const float* in = inputs[0];
    if (!isInletActive(0) || !isOutletConnected(0))
    {
        std::memset(out, 0, numSamples * sizeof(float));
        return;
    }
    const float a = ramp.getCurrentValue();
    const float b = ramp.advance(numSamples);
    if (a == b || numSamples < 2)
    {
        primitives::vectorMultiplyConstant32(in, b, out, static_cast<int>(numSamples));
        return;
    }
    const float slope = (b - a) / static_cast<float>(numSamples - 1);
    for (std::uint32_t i = 0; i + 1 < numSamples; ++i)
        out[i] = in[i] * (a + static_cast<float>(i) * slope);
    out[numSamples - 1] = in[numSamples - 1] * b;
}
} // namespace ondo
