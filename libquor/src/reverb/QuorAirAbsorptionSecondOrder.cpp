#include "reverb/QuorAirAbsorptionSecondOrder.h"

#include <algorithm>
#include <cstring>

namespace Quor
{
AirAbsorptionSecondOrder::AirAbsorptionSecondOrder() : ondo::AudioProcessorWithOscInAudioInterrupt(1, 1)
{
    setup(44100.0f, 512, true);
}

void AirAbsorptionSecondOrder::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (isChannelConnected(0))
        filter.filterBlock(outputs[0], inputs[0], numSamples);
    else
        std::memset(outputs[0], 0, numSamples * sizeof(float));
}

void AirAbsorptionSecondOrder::setSampleRate(float rate)
{
    filter.changeSampleRate(rate);
    setCutoff(highFrequency, false);
}

void AirAbsorptionSecondOrder::setDistance(float metres, bool immediate)
{
    distance = metres;
    update(immediate);
}

void AirAbsorptionSecondOrder::setCutoff(float hertz, bool immediate)
{
    // Above rate/sqrt(10) the shelf would crowd Nyquist.
    const float fh = std::clamp(hertz, 0.0f, filter.getSampleRate() / std::sqrt(10.0f));
    highFrequency = fh;
    lowFrequency = fh / std::sqrt(1000.0f);
    update(immediate);
}

void AirAbsorptionSecondOrder::update(bool immediate)
{
    const float k = highFrequency * 0.001f; // kHz
    const float d = std::clamp(std::fabs(distance.load()), 0.0f, maximumDistance);
    const float Gh = d * 100.0f * coefficient * (k * k);
    const float Gm = Gh * 0.001f;
    filter.setParameters({0.0f, 0.0f, Gm, Gh, lowFrequency, highFrequency}, immediate);
}
} // namespace Quor
