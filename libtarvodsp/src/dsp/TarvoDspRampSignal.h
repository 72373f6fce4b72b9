#pragma once

#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspRamp.h"

namespace ondo
{
/// A click-free gain: one channel multiplied by a `Ramp` that starts at 1.
class RampSignal : public AudioProcessorWithOscInAudioInterrupt
{
public:
    RampSignal();

    /// Draws one straight line a block between the ramp's values at the block's two ends.
    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void setSampleRate(float rate) override { ramp.setSampleRate(rate); }

    void setRampTime(float ms) { ramp.setRampTime(ms); }
    void setTarget(float value, bool immediately) { ramp.setTarget(value, immediately); }
    void setTarget(float value, double ms) { ramp.setTarget(value, ms); }
    const Ramp& getRamp() const { return ramp; }

private:
    Ramp ramp;
};
} // namespace ondo
