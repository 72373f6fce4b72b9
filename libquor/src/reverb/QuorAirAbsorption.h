#pragma once

#include "reverb/QuorAirAbsorptionSecondOrder.h"

#include <cstdint>

namespace Quor
{
/// The air absorption filter a delay line of the late network holds. The order selects
/// nothing: the second-order shelf is the only form.
class AirAbsorption : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Control thread; allocates.
    explicit AirAbsorption(std::uint32_t order = 2);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void setSampleRate(float rate) override { secondOrder.changeSampleRate(rate); }
    void setBufferSize(std::uint32_t size) override { secondOrder.changeBufferSize(size); }
    void clear() override { secondOrder.clear(); }

    /// Metres; a negative distance counts as its absolute value. Any thread without
    /// `immediate` (also the audio thread during a decay ramp); real-time safe.
    void setDistance(float metres, bool immediate) { secondOrder.setDistance(std::fabs(metres), immediate); }
    /// Hz. Any thread without `immediate`; real-time safe.
    void setCutoff(float hertz, bool immediate) { secondOrder.setCutoff(hertz, immediate); }
    float getCutoff() const { return secondOrder.getCutoff(); }

    /// The shelf over `n` samples, with no check of connections: the late network's call.
    /// Audio thread; real-time safe.
    void filter(float* out, const float* in, std::uint32_t n) { secondOrder.getShelf().filterBlock(out, in, n); }

    std::uint32_t getOrder() const { return order; }
    AirAbsorptionSecondOrder& getSecondOrder() { return secondOrder; }

private:
    std::uint32_t order;
    AirAbsorptionSecondOrder secondOrder;
};
} // namespace Quor
