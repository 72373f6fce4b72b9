#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspDelay.h"
#include "dsp/TarvoDspSteadyRuns.h"
#include "dsp/TarvoDspTapOutEconomy.h"

#include <string>

namespace ondo
{
/// One input line read by many taps, each with its own delay, interpolator and glide:
/// one output a tap. The line is written once a block whatever the number of taps.
class MultiTapOutEconomy : public AudioProcessorWithOscInAudioInterrupt
{
public:
    /// `numTaps` taps at a delay of 0 on a line holding at least `maximumDelayMs`.
    /// Control thread; allocates.
    MultiTapOutEconomy(std::uint32_t numTaps, float maximumDelayMs = 200.0f,
                       Delay::InterpolationMode mode = Delay::linear);
    ~MultiTapOutEconomy() override;

    /// Writes the input once, then each connected tap reads its output; a tap whose outlet
    /// isn't connected is skipped and its glide doesn't advance. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// `process` that leaves each tap's block in the line where it lies there whole: returns
    /// one pointer a tap, to the line's own samples (to be read only, until the next block)
    /// or to `scratch[t]` holding what `process` would have put there. Audio thread;
    /// real-time safe.
    float* const* processInPlace(float** scratch, float** inputs, std::uint32_t numSamples);
    /// The line keeps its delay in samples, the taps theirs in milliseconds. Control
    /// thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override { delay.changeBufferSize(size); }
    /// Empties the line and the taps' allpass states. Real-time safe.
    void clear() override;
    /// "tap out #" and the tap's number from 1; "dumpout" for an index that isn't a tap.
    std::string getOutletName(std::int32_t index) const override;

    /// Adds taps at the end, set up like tap 0, or destroys the surplus; the outputs follow.
    /// Control thread, before audio starts; allocates.
    void setNumTaps(std::uint32_t n);
    /// Resizes and empties the line; negative values are ignored. Between blocks; allocates.
    void setMaximumDelay(float ms) { delay.setMaximumDelay(ms); }
    /// One tap; an index out of range is ignored. A hand-over safe while the audio thread
    /// runs, unless the delay enlarges the line.
    void setDelay(std::uint32_t tap, float ms, bool immediate = false);
    void setDelayInSamples(std::uint32_t tap, float samples, bool immediate = false);
    /// The line and every tap. Any thread.
    void setInterpolationMode(Delay::InterpolationMode mode);
    void setInterpolationTime(float ms);
    /// Every tap. Any thread.
    void setEconomy(bool enabled);

    /// The taps' target delays in milliseconds. Control thread; allocates.
    Vector<float> getDelays() const;
    std::uint32_t getNumTaps() const { return static_cast<std::uint32_t>(taps.size()); }
    TapOutEconomy& getTap(std::uint32_t tap) { return *taps[tap]; }
    const TapOutEconomy& getTap(std::uint32_t tap) const { return *taps[tap]; }
    const Delay& getLine() const { return delay; }

private:
    /// Every tap's block, in place or in `scratch`.
    void readTaps(float** scratch, std::uint32_t n);
    /// Whether every tap's outlet is connected: a tap not read keeps no run.
    bool outletsConnected() const;

    Delay delay;
    Vector<TapOutEconomy*> taps;
    Vector<float*> reads;
    /// The taps' hand-overs and the line's widenings and emptyings, all counted.
    HandOverCount changes;
    SteadyRuns steadyRuns;
};
} // namespace ondo
