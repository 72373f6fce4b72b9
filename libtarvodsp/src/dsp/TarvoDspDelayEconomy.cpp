#include "dsp/TarvoDspDelayEconomy.h"

namespace ondo
{
DelayEconomy::DelayEconomy(float maximumDelayMs, Delay::InterpolationMode mode)
    : AudioProcessorWithOscInAudioInterrupt(1, 1), requestedMode(mode), delay(maximumDelayMs, mode)
{
    setup(sampleRate, bufferSize, true);
}

void DelayEconomy::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (economyEnabled)
        Delay::economise(delay.interpolationMode, delay.delayRamp);
    delay.process(outputs, inputs, numSamples);
}

void DelayEconomy::processWritten(float* output, std::uint32_t numSamples)
{
    if (economyEnabled)
        Delay::economise(delay.interpolationMode, delay.delayRamp);
    delay.processWritten(output, numSamples);
}

void DelayEconomy::setDelay(float ms, bool immediate)
{
    delay.setDelay(ms, immediate);
    delay.setInterpolationMode(requestedMode);
}

void DelayEconomy::setDelayInSamples(float samples, bool immediate)
{
    delay.setDelayInSamples(samples, immediate);
    delay.setInterpolationMode(requestedMode);
}

void DelayEconomy::setInterpolationMode(Delay::InterpolationMode mode)
{
    requestedMode = mode;
    delay.setInterpolationMode(mode);
}

void DelayEconomy::setEconomy(bool enabled)
{
    economyEnabled = enabled;
    if (!enabled)
        delay.setInterpolationMode(requestedMode);
}
} // namespace ondo
