#include "dsp/TarvoDspMultiRampSignal.h"

namespace ondo
{
MultiRampSignal::MultiRampSignal(std::uint32_t numChannels)
{
    setNumChannels(numChannels);
    setup(sampleRate, bufferSize, true);
}

void MultiRampSignal::setTarget(std::uint32_t channel, float value, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setTarget(value, immediately);
}

void MultiRampSignal::setTargetAll(float value, bool immediately)
{
    for (RampSignal* channel : channels)
        channel->setTarget(value, immediately);
}

void MultiRampSignal::setRampTime(float ms)
{
    for (RampSignal* channel : channels)
        channel->setRampTime(ms);
}
} // namespace ondo
