#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "dsp/TarvoDspDelay.h"
#include "dsp/TarvoDspHandOverCount.h"
#include "dsp/TarvoDspRamp.h"

#include <cstdint>

namespace ondo
{
/// One reader of a shared `Delay`, with a delay, an interpolator and an allpass state of
/// its own. It keeps its delay in time (ms) across a change of sample rate, where a `Delay`
/// keeps its own in samples.
///
/// While the line isn't gliding the tap reads with "nearest" (economy); the next
/// `setDelay` brings the requested interpolator back.
class TapOutEconomy
{
public:
    /// Reads `line`, which it doesn't own, with `mode`. Control thread.
    explicit TapOutEconomy(Delay* line, Delay::InterpolationMode mode = Delay::linear);

    /// Applies the economy rule, then reads `n` samples ending at the line's write position
    /// plus `n`; the line's write position doesn't move. Audio thread; real-time safe.
    void process(float* output, std::uint32_t n);
    /// `process` without the copy where it can: where the `n` samples lie in the line when a
    /// read would copy them as they are, else `scratch` after reading them into it. Valid
    /// until the line is next written. Audio thread; real-time safe.
    const float* processInPlace(float* scratch, std::uint32_t n)
    {
        // A tap already reading with "nearest" is what the economy rule leaves as it is; at a
        // delay whose start it keeps, the run is found inline. Taps are read by the dozen
        // every block, most of them steady.
        if (activeMode.load() == Delay::nearest)
            if (const float* run = delay->findReadRun(n, ramp, Delay::nearest, &readStart))
                return run;
        return economiseThenRead(scratch, n);
    }

    /// Has the hand-overs that may change where the tap reads (delay, interpolator, economy,
    /// rate) counted in `owner` too. A tap that found its run in place reads the same way until
    /// the next one: the owner may then move the run on instead. Control thread, before the
    /// audio thread runs.
    void reportChangesTo(HandOverCount* owner) { handOvers.alsoCountIn(owner); }

    /// Glides to `ms` over the interpolation time, or jumps with `immediate`, and puts the
    /// requested interpolator back into use. Negative values count as 0. A delay beyond the
    /// line's maximum enlarges (and empties) the line, which allocates; otherwise a
    /// hand-over safe while the audio thread runs.
    void setDelay(float ms, bool immediate = false);
    /// `setDelay` in samples.
    void setDelayInSamples(float samples, bool immediate = false);
    /// Stores `mode` as requested and in use. Any thread.
    void setInterpolationMode(Delay::InterpolationMode mode);
    /// Glide time of later delay changes (ms); stored only when above 0. Any thread.
    void setInterpolationTime(float ms);
    /// Switching economy off puts the requested interpolator back into use. Any thread.
    void setEconomy(bool enabled);
    /// Keeps the target delay in milliseconds at the new rate. Control thread, between blocks.
    void setSampleRate(float rate);
    /// Zeroes the allpass state. Real-time safe.
    void clear() { allpassState = 0.0f; }

    /// The target delay in milliseconds.
    float getDelay() const { return ramp.getTargetValue() * 1000.0f / sampleRate; }
    Delay::InterpolationMode getRequestedMode() const { return requestedMode; }
    Delay::InterpolationMode getActiveMode() const { return activeMode; }
    float getInterpolationTime() const { return interpolationTime; }
    bool isEconomyEnabled() const { return economyEnabled; }
    float getSampleRate() const { return sampleRate; }
    const Ramp& getRamp() const { return ramp; }
    /// Where the tap's fixed reads start. Audio thread.
    const Delay::RoundedStart& getReadStart() const { return readStart; }
    Delay* getLine() const { return delay; }

private:
    friend class MultiTapOutEconomy;

    const float* economiseThenRead(float* scratch, std::uint32_t n);

    RelaxedAtomic<Delay::InterpolationMode> requestedMode;
    Delay* delay;
    float sampleRate = AudioProcessorBase::defaultSampleRate;
    RelaxedAtomic<Delay::InterpolationMode> activeMode;
    RelaxedAtomic<float> interpolationTime = Delay::defaultInterpolationTimeMs;
    Ramp ramp;
    float allpassState = 0.0f;
    Delay::RoundedStart readStart;
    RelaxedAtomic<bool> economyEnabled = true;
    HandOverCount handOvers;
};
} // namespace ondo
