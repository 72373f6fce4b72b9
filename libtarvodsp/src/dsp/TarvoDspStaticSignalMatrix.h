#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspActivitySnapshot.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspMixTerms.h"

#include <atomic>
#include <cstdint>

namespace ondo
{
/// Mixes N inputs to M outputs with fixed gains that change at once. A gain of input i to
/// output o sits at i * M + o.
class StaticSignalMatrix : public AudioProcessorWithOscInAudioInterrupt
{
public:
    StaticSignalMatrix(std::uint32_t numInputs, std::uint32_t numOutputs);

    /// Zeroes the connected outputs, then adds the mix. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Adds the mix into the outputs as they stand; no output may be an input. Audio thread;
    /// real-time safe.
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples);
    /// Appends to `perOutput[o]` the terms that `processAdd` would add into output `o`, in its
    /// order, for an owner that adds them itself. Audio thread; real-time safe.
    void gatherTerms(MixTerms* perOutput, float** inputs);
    /// Whether `gatherTerms` would now append exactly the terms it appended last, for the
    /// same inputs: no gain written and no inlet or outlet changed since. Audio thread.
    bool termsUnchanged() const;

    /// Any thread; real-time safe. Heard from the next block on.
    void setGain(std::uint32_t input, std::uint32_t output, float value);
    void setGainsForInput(std::uint32_t input, const float* values);
    float getGain(std::uint32_t input, std::uint32_t output) const
    {
        return std::atomic_ref<float>(const_cast<float&>(gains[std::size_t(input) * numOutputs + output]))
            .load(std::memory_order_relaxed);
    }

private:
    /// Rebuilds the audible pairs when a gain changed since they were last listed.
    void refreshAudiblePairs();
    void gatherOutputTerms(MixTerms& into, std::uint32_t output, float** inputs);

    Vector<float> gains;
    MixTerms terms;
    /// Moves on after every gain written, so that the audio thread lists the audible pairs
    /// again instead of looking at every pair in every block.
    std::atomic<std::uint32_t> gainsVersion = 0;
    // The audio thread's list: for each output, from `audibleStart[o]`, the inputs whose gain
    // is heard there and those gains, listed at `listedVersion`.
    std::uint32_t listedVersion = ~0u;
    Vector<std::uint32_t> audibleInputs;
    Vector<float> audibleGains;
    Vector<std::uint32_t> audibleStart;
    // What the last gather stood on, for `termsUnchanged`.
    bool gathered = false;
    ActivitySnapshot gatheredActivity;
};
} // namespace ondo
