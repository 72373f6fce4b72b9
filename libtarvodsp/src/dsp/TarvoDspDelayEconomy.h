#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspDelay.h"

namespace ondo
{
/// A `Delay` that reads with "nearest" whenever its delay isn't gliding, which costs one
/// block copy, and with the requested interpolator during a glide. The requested
/// interpolator comes back at each `setDelay`.
class DelayEconomy : public AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Control thread; allocates.
    explicit DelayEconomy(float maximumDelayMs = 200.0f, Delay::InterpolationMode mode = Delay::linear);

    /// Applies the economy rule, then runs the line. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Where the line would take the next `n` samples in one run, else null; the owner that
    /// builds them there calls `processWritten` instead of `process`. Audio thread; real-time
    /// safe.
    float* findWriteRun(std::uint32_t n) { return delay.findWriteRun(n); }
    /// `process` for a block already in the line. Audio thread; real-time safe.
    void processWritten(float* output, std::uint32_t numSamples);
    /// The same, leaving the block in the line where it can (`Delay::processWrittenInPlace`).
    float* processWrittenInPlace(float* scratch, std::uint32_t numSamples)
    {
        if (economyEnabled)
            Delay::economise(delay.interpolationMode, delay.delayRamp);
        return delay.processWrittenInPlace(scratch, numSamples);
    }
    /// The rest of `processWrittenInPlace` for a block whose runs its owner moved on from the
    /// last block's (`SteadyRuns`), which no change (`reportChangesTo`) came between: the line
    /// moves on. Audio thread; real-time safe.
    void moveOn(std::uint32_t n) { delay.advance(n); }
    /// `Delay::reportChangesTo`. Control thread, before the audio thread runs.
    void reportChangesTo(HandOverCount* owner) { delay.reportChangesTo(owner); }
    /// Control thread, between blocks; allocates.
    void setSampleRate(float rate) override { delay.changeSampleRate(rate); }
    void setBufferSize(std::uint32_t size) override { delay.changeBufferSize(size); }
    /// Real-time safe.
    void clear() override { delay.clear(); }

    /// Resizes and empties the line; negative values are ignored. Between blocks; allocates.
    void setMaximumDelay(float ms) { delay.setMaximumDelay(ms); }
    /// Glides (or jumps) to `ms` and puts the requested interpolator back into use. A hand-over
    /// safe while the audio thread runs, unless the delay enlarges the line.
    void setDelay(float ms, bool immediate = false);
    void setDelayInSamples(float samples, bool immediate = false);
    /// Stored as requested and in use. Any thread.
    void setInterpolationMode(Delay::InterpolationMode mode);
    void setInterpolationTime(float ms) { delay.setInterpolationTime(ms); }
    /// Switching economy off puts the requested interpolator back into use. Any thread.
    void setEconomy(bool enabled);

    float getDelay() const { return delay.getDelay(); }
    Delay::InterpolationMode getRequestedMode() const { return requestedMode; }
    Delay::InterpolationMode getActiveMode() const { return delay.getInterpolationMode(); }
    bool isEconomyEnabled() const { return economyEnabled; }
    const Delay& getLine() const { return delay; }

private:
    RelaxedAtomic<Delay::InterpolationMode> requestedMode;
    Delay delay;
    RelaxedAtomic<bool> economyEnabled = true;
};
} // namespace ondo
