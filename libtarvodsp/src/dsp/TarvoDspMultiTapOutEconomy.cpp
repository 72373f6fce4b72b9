#include "dsp/TarvoDspMultiTapOutEconomy.h"

#include "dsp/TarvoDspDelayReaders.h"

#include <algorithm>

namespace ondo
{
MultiTapOutEconomy::MultiTapOutEconomy(std::uint32_t numTaps, float maximumDelayMs, Delay::InterpolationMode mode)
    : AudioProcessorWithOscInAudioInterrupt(1, 0), delay(maximumDelayMs, mode)
{
    delay.reportChangesTo(&changes);
    setNumTaps(numTaps);
    setup(sampleRate, bufferSize, true);
}

MultiTapOutEconomy::~MultiTapOutEconomy()
{
    taps.deletePointees();
}

void MultiTapOutEconomy::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    // The line moves on here without the runs kept for `processInPlace`.
    steadyRuns.forget();
    for (std::uint32_t start = 0; start < numSamples; start += Delay::maximumBlockSize)
    {
        const std::uint32_t n = std::min(numSamples - start, Delay::maximumBlockSize);
        delay.write(inputs[0] + start, n);
        for (std::uint32_t t = 0; t < taps.size(); ++t)
            if (isOutletConnected(t))
                taps[t]->process(outputs[t] + start, n);
        delay.advance(n);
    }
}

void MultiTapOutEconomy::setSampleRate(float rate)
{
    sampleRate = clampSampleRate(rate);
    delay.changeSampleRate(sampleRate);
    for (TapOutEconomy* tap : taps)
        tap->setSampleRate(sampleRate);
}

void MultiTapOutEconomy::clear()
{
    delay.clear();
    delayreaders::forEach(taps, [](TapOutEconomy& t) { t.clear(); });
}

std::string MultiTapOutEconomy::getOutletName(std::int32_t index) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= taps.size())
        return "dumpout";
    return "tap out #" + std::to_string(index + 1);
}

float* const* MultiTapOutEconomy::processInPlace(float** scratch, float** inputs, std::uint32_t numSamples)
{
    if (numSamples > Delay::maximumBlockSize)
    {
        process(scratch, inputs, numSamples);
        return scratch;
    }
    delay.write(inputs[0], numSamples);
    readTaps(scratch, numSamples);
    delay.advance(numSamples);
    return reads.data();
}

void MultiTapOutEconomy::readTaps(float** scratch, std::uint32_t n)
{
    // Taps that read steadily find their runs where they found them last block, moved on;
    // a run that reaches the window's end, and a tap that glides, are read again.
    const std::uint32_t counted = changes.get();
    const bool steady = steadyRuns.serves(n, counted) && outletsConnected();
    if (!steady)
        steadyRuns.start(n, counted);
    std::uint64_t window = delay.getWindowSize();
    bool widened = false;
    for (std::uint32_t t = 0; t < taps.size(); ++t)
    {
        // After a widening, the runs kept lie where the samples no longer are.
        if (steady && !widened && steadyRuns.moveOn(t, reads[t]))
            continue;
        reads[t] = isOutletConnected(t) ? const_cast<float*>(taps[t]->processInPlace(scratch[t], n)) : scratch[t];
        steadyRuns.keep(t, delay, reads[t] != scratch[t] ? reads[t] : nullptr, taps[t]->getReadStart());
        if (delay.getWindowSize() == window)
            continue;
        // This tap widened the line's window, which moved the samples that the taps before it
        // found in place. Those are steady taps reading whole samples, whose reads change
        // nothing: they find their runs again. The widening is counted, so the next block
        // starts over.
        window = delay.getWindowSize();
        widened = true;
        for (std::uint32_t before = 0; before < t; ++before)
            if (reads[before] != scratch[before])
                reads[before] = const_cast<float*>(taps[before]->processInPlace(scratch[before], n));
    }
}

bool MultiTapOutEconomy::outletsConnected() const
{
    bool connected = true;
    for (std::uint32_t t = 0; t < taps.size(); ++t)
        connected &= isOutletConnected(t);
    return connected;
}

void MultiTapOutEconomy::setNumTaps(std::uint32_t n)
{
    const auto old = static_cast<std::uint32_t>(taps.size());
    if (n < old)
        taps.deletePointees(n);
    taps.resize(n);
    reads.resize(n);
    steadyRuns.resize(n);
    // New taps read like tap 0; the first tap of all reads like the line.
    const Delay::InterpolationMode mode = old > 0 ? taps[0]->getActiveMode() : delay.getInterpolationMode();
    const float glideMs = old > 0 ? taps[0]->getInterpolationTime() : delay.getInterpolationTime();
    for (std::uint32_t t = old; t < n; ++t)
    {
        auto* tap = new TapOutEconomy(&delay, mode);
        tap->reportChangesTo(&changes);
        tap->interpolationTime = glideMs;
        tap->sampleRate = sampleRate;
        tap->ramp.setSampleRate(sampleRate);
        Delay::retarget(tap->ramp, tap->ramp.getTargetValue(), false, glideMs);
        taps[t] = tap;
    }
    setNumberOfOutputs(n);
}

void MultiTapOutEconomy::setDelay(std::uint32_t tap, float ms, bool immediate)
{
    delayreaders::atIndex(taps, tap, [&](TapOutEconomy& t) { t.setDelay(ms, immediate); });
}

void MultiTapOutEconomy::setDelayInSamples(std::uint32_t tap, float samples, bool immediate)
{
    delayreaders::atIndex(taps, tap, [&](TapOutEconomy& t) { t.setDelayInSamples(samples, immediate); });
}

void MultiTapOutEconomy::setInterpolationMode(Delay::InterpolationMode mode)
{
    delay.setInterpolationMode(mode);
    delayreaders::forEach(taps, [mode](TapOutEconomy& t) { t.setInterpolationMode(mode); });
}

void MultiTapOutEconomy::setInterpolationTime(float ms)
{
    delay.setInterpolationTime(ms);
    delayreaders::forEach(taps, [ms](TapOutEconomy& t) { t.setInterpolationTime(ms); });
}

void MultiTapOutEconomy::setEconomy(bool enabled)
{
    delayreaders::forEach(taps, [enabled](TapOutEconomy& t) { t.setEconomy(enabled); });
}

Vector<float> MultiTapOutEconomy::getDelays() const
{
    return delayreaders::targetDelays(taps);
}
} // namespace ondo
