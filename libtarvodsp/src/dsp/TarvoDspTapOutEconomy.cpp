#include "dsp/TarvoDspTapOutEconomy.h"

#include <cstring>

namespace ondo
{
TapOutEconomy::TapOutEconomy(Delay* line, Delay::InterpolationMode mode)
    : requestedMode(mode), delay(line), activeMode(mode)
{
}

void TapOutEconomy::process(float* output, std::uint32_t n)
{
    const float* samples = processInPlace(output, n);
    if (samples != output)
        std::memcpy(output, samples, n * sizeof(float));
}

const float* TapOutEconomy::economiseThenRead(float* scratch, std::uint32_t n)
{
    if (economyEnabled)
        Delay::economise(activeMode, ramp);
    if (const float* run = delay->findReadRun(n, ramp, activeMode, &readStart))
        return run;
    delay->read(scratch, n, ramp, activeMode, allpassState, &readStart);
    return scratch;
}

void TapOutEconomy::setDelay(float ms, bool immediate)
{
    setDelayInSamples(ms * 0.001f * sampleRate, immediate);
}

void TapOutEconomy::setDelayInSamples(float samples, bool immediate)
{
    delay->ensureMaximumDelay(samples * 1000.0f / sampleRate);
    Delay::retarget(ramp, samples, immediate, interpolationTime);
    activeMode = requestedMode.load();
    handOvers.count();
}

void TapOutEconomy::setInterpolationMode(Delay::InterpolationMode mode)
{
    requestedMode = mode;
    activeMode = mode;
    handOvers.count();
}

void TapOutEconomy::setInterpolationTime(float ms)
{
    if (ms > 0.0f)
        interpolationTime = ms;
}

void TapOutEconomy::setEconomy(bool enabled)
{
    economyEnabled = enabled;
    if (!enabled)
        activeMode = requestedMode.load();
    handOvers.count();
}

void TapOutEconomy::setSampleRate(float rate)
{
    // The target in milliseconds is taken at the old rate and set again at the new one.
    const float ms = getDelay();
    sampleRate = rate;
    ramp.setSampleRate(rate);
    delay->ensureMaximumDelay(ms);
    Delay::retarget(ramp, ms * 0.001f * rate, false, interpolationTime);
    handOvers.count();
}
} // namespace ondo
