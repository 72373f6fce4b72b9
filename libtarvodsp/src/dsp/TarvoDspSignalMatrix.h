#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspActivitySnapshot.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspMixTerms.h"

#include <atomic>
#include <cstdint>

namespace ondo
{
/// Mixes N inputs to M outputs with one gain a pair, gliding between gain sets along ramps
/// of one fixed length that run in lockstep: a new gain waits for the next ramp boundary
/// and is reached one ramp later. A gain of input i to output o sits at i * M + o.
///
/// Gains are set by one control thread at a time while the audio thread mixes: they are
/// written as pending values, and the audio thread takes the whole pending set at a
/// boundary only when no write was under way (a sequence count tells), so a row set in one
/// call is never heard half old, half new.
class SignalMatrix : public AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr float defaultRampTimeMs = 30.0f;

    SignalMatrix(std::uint32_t numInputs, std::uint32_t numOutputs);

    /// Zeroes the connected outputs, then adds the mix. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Adds the mix into the outputs as they stand; no output may be an input. Audio thread;
    /// real-time safe.
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples);
    /// For an owner that mixes several matrices into the same outputs in one pass: when the
    /// gains stand still through the whole block, appends to `perOutput[o]` the terms that
    /// `processAdd` would add into output `o`, in its order, moves the ramps on as
    /// `processAdd` would, and returns true. Otherwise returns false, having changed nothing
    /// that `processAdd` wouldn't, which must then run. The inputs must stay as they are
    /// until the terms are added. Audio thread; real-time safe.
    bool gatherSteadyTerms(MixTerms* perOutput, float** inputs, std::uint32_t numSamples);
    /// Whether `gatherSteadyTerms` would now append exactly the terms it appended last, for
    /// the same inputs: it last succeeded with every gain settled, and since then no gain was
    /// written, the grid kept its length and no inlet or outlet changed. Audio thread.
    bool steadyTermsUnchanged() const;
    /// When `steadyTermsUnchanged`: takes the block as `gatherSteadyTerms` would, without
    /// appending, for an owner that kept the terms. Audio thread; real-time safe.
    void repeatSteadyTerms(std::uint32_t numSamples);

    /// Control thread; real-time safe. With `immediately`, or with no ramp, the gain jumps.
    void setGain(std::uint32_t input, std::uint32_t output, float value, bool immediately);
    void setGains(float value, bool immediately);
    /// One row of `getNumOutputs()` gains for `input`.
    void setGainsForInput(std::uint32_t input, const float* values, bool immediately);

    /// Ramp time in ms, floored at 0; below one sample there is no ramp. Restarts the grid.
    void setRampTime(float ms);
    float getRampTime() const { return rampTime; }
    std::int32_t getRampLength() const { return rampLength; }
    /// Control thread; allocates when the counts change. Zeroes all gains.
    void setSize(std::uint32_t numInputs, std::uint32_t numOutputs);
    void setSampleRate(float rate) override;

    float getStartGain(std::uint32_t input, std::uint32_t output) const;
    float getTargetGain(std::uint32_t input, std::uint32_t output) const;
    float getPendingGain(std::uint32_t input, std::uint32_t output) const;

    /// Adds `in` times a gain gliding from `from` (first sample) to `to` (last sample) into
    /// `out`. Real-time safe.
    static void addRamped(const float* in, float* out, std::uint32_t n, float from, float to);

private:
    template <typename Write>
    void writeGains(bool immediately, Write&& write);
    void advanceGrid();
    /// The inlets in use, into `activeInputs`; returns how many.
    std::uint32_t gatherActiveInputs();
    void addStatic(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n);
    void addSegment(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n, std::int32_t position);
    /// After a boundary: when no gain glides, lists each output's audible terms, so that the
    /// ramp's blocks visit only those. Audio thread.
    void findSteadyTerms();
    void addSteady(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n);

    Vector<float> startGains;
    Vector<float> targetGains;
    Vector<float> pendingGains;
    Vector<std::uint32_t> activeInputs;
    MixTerms terms;
    RelaxedAtomic<std::int32_t> rampPosition = 0;
    RelaxedAtomic<std::int32_t> rampLength = 0;
    RelaxedAtomic<float> rampStep = 1.0f;
    RelaxedAtomic<float> rampTime = defaultRampTimeMs;
    /// Odd while a control thread writes gains; moves on with every change of the gains.
    std::atomic<std::uint32_t> writeSequence{0};
    // The audio thread's list of audible terms while no gain glides: output o's inputs and
    // gains are entries steadyStart[o] to steadyStart[o + 1], inputs ascending. Valid while
    // `writeSequence` stays at `steadySequence`.
    Vector<std::uint32_t> steadyInputs;
    Vector<float> steadyGains;
    Vector<std::uint32_t> steadyStart;
    Vector<std::uint8_t> inputActive;
    bool steady = false;
    /// Every start gain equals its target, not just within the tolerance of `steady`.
    bool steadyIsExact = false;
    /// The last boundary took a whole pending set and found every gain standing at it, so
    /// boundaries are idle while `writeSequence` stays at `steadySequence`. Audio thread.
    bool settled = false;
    std::uint32_t steadySequence = 0;
    // What the last successful gather stood on, for `steadyTermsUnchanged`.
    bool gatheredSettled = false;
    std::int32_t gatheredLength = 0;
    ActivitySnapshot gatheredActivity;
};
} // namespace ondo
