#pragma once

#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspFadedCascade.h"

#include <cstdint>

namespace Quor
{
/// The high-pass that keeps the low-frequency boost of a close source in check at one
/// order l: a Butterworth of order l whose cut-off rises as the source comes closer, at
/// k c / (2 pi r) with k a linear law in l fitted per dimension. One input, one output;
/// new sections reach the audio thread as pending coefficients of a crossfading cascade.
class NFCHOAHighPass : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Control thread; allocates.
    NFCHOAHighPass(std::uint32_t dimension, std::uint32_t order);

    /// The cut-off of order l at `metres` (clamped to 0.2 m), Hz.
    static double cutoffFrequency(std::uint32_t dimension, std::uint32_t order, double metres);

    /// Metres; redesigns only when the clamped distance changed, `immediate` skipping the
    /// crossfade. Control thread, also while audio runs; allocates while designing.
    void setDistance(double metres, bool immediate);
    float getDistance() const { return distance; }

    /// Audio thread; real-time safe; `outputs` may be `inputs`.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Redesigns for the new rate. Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    /// Control thread, between blocks; allocates.
    void setBufferSize(std::uint32_t size) override { cascade.changeBufferSize(size); }
    void clear() override { cascade.clear(); }

    const ondo::FadedCascade& getCascade() const { return cascade; }
    /// The sections of the present design.
    const ondo::CascadeCoefficients& getSections() const { return filter; }

private:
    void design(bool immediate);

    std::uint32_t dimension;
    std::uint32_t order;
    ondo::FadedCascade cascade;
    float distance = 1.0f;
    ondo::CascadeCoefficients filter;
};
} // namespace Quor
