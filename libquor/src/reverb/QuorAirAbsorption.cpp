#include "reverb/QuorAirAbsorption.h"

#include <cstring>

namespace Quor
{
AirAbsorption::AirAbsorption(std::uint32_t filterOrder)
    : ondo::AudioProcessorWithOscInAudioInterrupt(1, 1), order(filterOrder)
{
    setup(44100.0f, 512, true);
}

void AirAbsorption::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (isChannelConnected(0))
        filter(outputs[0], inputs[0], numSamples);
    else
        std::memset(outputs[0], 0, numSamples * sizeof(float));
}
} // namespace Quor
