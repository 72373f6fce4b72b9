#include "dsp/TarvoDspMultiDelayEconomy.h"

namespace ondo
{
MultiDelayEconomy::MultiDelayEconomy(std::uint32_t numChannels, float maximumDelayMs)
{
    setNumChannels(numChannels);
    setMaximumDelay(maximumDelayMs);
    setup(sampleRate, bufferSize, true);
}

void MultiDelayEconomy::setMaximumDelay(float ms)
{
    for (DelayEconomy* channel : channels)
        channel->setMaximumDelay(ms);
}

void MultiDelayEconomy::setDelay(std::uint32_t channel, float ms, bool immediate)
{
    if (channel < channels.size())
        channels[channel]->setDelay(ms, immediate);
}

void MultiDelayEconomy::setDelayInSamples(std::uint32_t channel, float samples, bool immediate)
{
    if (channel < channels.size())
        channels[channel]->setDelayInSamples(samples, immediate);
}

void MultiDelayEconomy::setInterpolationMode(Delay::InterpolationMode mode)
{
    for (DelayEconomy* channel : channels)
        channel->setInterpolationMode(mode);
}

void MultiDelayEconomy::setInterpolationTime(float ms)
{
    for (DelayEconomy* channel : channels)
        channel->setInterpolationTime(ms);
}

void MultiDelayEconomy::setEconomy(bool enabled)
{
    for (DelayEconomy* channel : channels)
        channel->setEconomy(enabled);
}

Vector<float> MultiDelayEconomy::getDelays() const
{
    Vector<float> delays(channels.size());
    for (std::size_t c = 0; c < channels.size(); ++c)
        delays[c] = channels[c]->getDelay();
    return delays;
}
} // namespace ondo
