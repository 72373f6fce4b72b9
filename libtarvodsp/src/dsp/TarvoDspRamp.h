#pragma once

#include "common/TarvoDspRelaxedAtomic.h"

#include <cstdint>

namespace ondo
{
/// A value that travels linearly to a target over a time in milliseconds, read as a block
/// of per-sample values or as one value. Allocates nothing.
///
/// Targets may be set on a control thread while the audio thread reads and advances the
/// ramp: every field is handed over on its own, so a block sees the old or the new value of
/// each, and a glide always ends on the target it was last given.
class Ramp
{
public:
    static constexpr float defaultRampTimeMs = 30.0f;

    Ramp() = default;
    virtual ~Ramp() = default;

    /// Sets the time of later glides (ms, floored at 0); a running glide is not touched.
    void setRampTime(float ms);
    /// Jumps to `value` when `immediately`, else glides over the ramp time in force.
    void setTarget(float value, bool immediately);
    /// Glides to `value` over `ms`; a time of exactly 0 jumps.
    void setTarget(float value, double ms);
    /// Keeps the remaining glide time in milliseconds.
    void setSampleRate(float rate);

    /// Writes the next `n` values and advances. Audio thread; real-time safe.
    void fill(float* out, std::uint32_t n);
    /// The value `k` samples from now, without moving. Inline: settled ramps are read many
    /// times a block.
    float getValue(std::uint64_t k = 0) const
    {
        if (totalSamples == 0)
            return currentValue;
        if (k >= remainingSamples)
            return targetValue;
        return currentValue + static_cast<float>(k) * increment;
    }
    bool isRunning() const { return remainingSamples != 0; }

    float getCurrentValue() const { return currentValue; }
    float getTargetValue() const { return targetValue; }
    float getIncrement() const { return increment; }
    float getRampTime() const { return rampTime; }
    float getSampleRate() const { return sampleRate; }
    std::uint64_t getRemainingSamples() const { return remainingSamples; }
    std::uint64_t getTotalSamples() const { return totalSamples; }

    /// Moves `k` samples on at once (at most to the end of the glide) and returns the value
    /// reached; the target is taken exactly when the glide ends.
    float advance(std::uint64_t k)
    {
        // A settled ramp answers here, without the call.
        if (remainingSamples == 0)
            return currentValue;
        return advanceGlide(k);
    }

private:
    float advanceGlide(std::uint64_t k);
    void jumpTo(float value);

    RelaxedAtomic<float> startValue = 0.0f;
    RelaxedAtomic<float> currentValue = 0.0f;
    RelaxedAtomic<float> targetValue = 0.0f;
    RelaxedAtomic<float> increment = 0.0f;
    RelaxedAtomic<float> sampleRate = 44100.0f;
    RelaxedAtomic<std::uint64_t> remainingSamples = 0;
    RelaxedAtomic<std::uint64_t> totalSamples = 0;
    RelaxedAtomic<float> rampTime = defaultRampTimeMs;
};
} // namespace ondo
