#include "dsp/TarvoDspMultiDelayEconomy.h"

#include "dsp/TarvoDspDelayReaders.h"

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
    delayreaders::forEach(channels, [ms](DelayEconomy& c) { c.setMaximumDelay(ms); });
}

void MultiDelayEconomy::setDelay(std::uint32_t channel, float ms, bool immediate)
{
    delayreaders::atIndex(channels, channel, [&](DelayEconomy& c) { c.setDelay(ms, immediate); });
}

void MultiDelayEconomy::setDelayInSamples(std::uint32_t channel, float samples, bool immediate)
{
    delayreaders::atIndex(channels, channel, [&](DelayEconomy& c) { c.setDelayInSamples(samples, immediate); });
}

void MultiDelayEconomy::setInterpolationMode(Delay::InterpolationMode mode)
{
    delayreaders::forEach(channels, [mode](DelayEconomy& c) { c.setInterpolationMode(mode); });
}

void MultiDelayEconomy::setInterpolationTime(float ms)
{
    delayreaders::forEach(channels, [ms](DelayEconomy& c) { c.setInterpolationTime(ms); });
}

void MultiDelayEconomy::setEconomy(bool enabled)
{
    delayreaders::forEach(channels, [enabled](DelayEconomy& c) { c.setEconomy(enabled); });
}

Vector<float> MultiDelayEconomy::getDelays() const
{
    return delayreaders::targetDelays(channels);
}
} // namespace ondo
