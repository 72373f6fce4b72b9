#pragma once

#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

namespace ondo
{
/// A one-channel filter. `process` runs `filter` when the inlet is active and the outlet
/// connected, and zeroes the output otherwise.
class Filter : public AudioProcessorWithOscInAudioInterrupt
{
public:
    Filter() : AudioProcessorWithOscInAudioInterrupt(1, 1) {}

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;

    /// The one-channel kernel; `out` and `in` may be the same. Audio thread; real-time safe.
    virtual void filter(float* out, const float* in, int numSamples) = 0;
    /// Takes `getNumCoefficients()` values. Audio thread or before audio; real-time safe.
    virtual void setCoefficients(const float* values) = 0;
    /// Recursive filters only clear here: another filter's state is not taken over.
    virtual void copyStateFrom(const Filter& other) = 0;
    virtual int getNumCoefficients() const = 0;
};
} // namespace ondo
