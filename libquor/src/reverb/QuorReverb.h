#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspAudioBufferReference.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspDelay.h"
#include "dsp/TarvoDspFadedBiquadBatch.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"
#include "dsp/TarvoDspRamp.h"
#include "dsp/TarvoDspSteadyRuns.h"
#include "dsp/TarvoDspTapOutEconomy.h"
#include "reverb/QuorAirAbsorption.h"
#include "reverb/QuorDelgen.h"
#include "reverb/QuorShuffle.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
/// The late reverberation: a feedback delay network of N lines. Each line loses, at every
/// pass, exactly the dB that the decay law asks for its length, so lines of any length decay
/// at one rate and a single `tr0` with three band ratios sets the whole tail. The unitary
/// mixer in the loop never changes the decay.
class Reverb : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// The loop runs in chunks of at most this many samples and never longer than the
    /// shortest delay, so that a chunk never reads what it writes into its lines.
    static constexpr std::uint32_t chunkSize = 64;
    static constexpr float maximumDelayMs = 1500.0f;
    /// The first delay's default: the reverberator's default late onset after the cluster.
    static constexpr float defaultShortestDelayMs = 52.91f;
    static constexpr float defaultDelaySumMs = 800.0f;
    static constexpr float decayCrossfadeTimeMs = 50.0f;

    /// Control thread; allocates.
    explicit Reverb(std::uint32_t numChannels);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// `process`, and besides each line's mix of its input and output into `sums`: the
    /// input times `dry`, plus the output times `wet`, in that order. In the same
    /// pass as the network where it can. `sums` are neither inputs nor outputs. With null
    /// `outputs`, only the sums are written. Audio thread; real-time safe.
    void processWithSums(float** outputs, float** inputs, float** sums, float dry, float wet,
                         std::uint32_t numSamples);
    /// "/delays" (one number a line; any other count changes nothing), "/numdelays"
    /// (accepted, no change), "/tr0" (floored at 0.1 s), "/trl", "/trm", "/trh", "/fl", "/fh",
    /// "/air" and "/air/enable" b, "/air/freq" n, "/infinite" b; decay changes glide. No "/dsp"
    /// subtree: reached through its owner.
    /// Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, "/numdelays", "/delays", "/air/enable", "/air/freq", "/infinite",
    /// then "/tr0" to "/fh". Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getDocumentation() const override;

    /// Empties the network and restarts the input gain from 1. Control thread, between
    /// blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    /// Empties the lines and filters; no ramp changes. Between blocks.
    void clear() override;

    // Decay. Control thread; real-time safe, no lock: the audio thread follows.
    /// Seconds, floored at 0.1.
    void setTr0(float seconds, bool immediate);
    /// Band decay times as ratios of `tr0`.
    void setTrl(float ratio, bool immediate);
    void setTrm(float ratio, bool immediate);
    void setTrh(float ratio, bool immediate);
    /// Crossover frequencies of the decay, Hz.
    void setFl(float hertz, bool immediate);
    void setFh(float hertz, bool immediate);
    /// A frozen tail: the shelves go to 0 dB and only air absorption remains in the loop.
    void setInfinite(bool enabled);
    void setAirEnabled(bool enabled) { airEnabled = enabled; }
    /// Hz, floored at 10, to every line's air filter.
    void setAirCutoff(float hertz);

    /// A series of delays (ms) from a shortest delay, their sum and a distribution. Control
    /// thread; allocates only when a line must grow.
    void setDelayRange(float minimum, float sum, float distribution, bool immediate);
    /// Line i takes delays[i] ms, limited to one chunk .. 1500 ms. Control thread; allocates
    /// only when a line must grow.
    void setDelays(const ondo::Vector<float>& delays, bool immediate);
    /// Re-designs the decay shelves and the input gain from the decay times and the lines'
    /// delays. Runs on the control thread from the setters and on the audio thread while
    /// `tr0` glides; real-time safe.
    void updateDecay(bool immediate);

    std::uint32_t getNumChannels() const { return numChannels; }
    float getTr0() const { return tr0; }
    float getTrl() const { return trl; }
    float getTrm() const { return trm; }
    float getTrh() const { return trh; }
    float getFl() const { return fl; }
    float getFh() const { return fh; }
    /// The air absorption's cutoff of the first line (Hz).
    float getAirCutoff() const { return airFilters.empty() ? 0.0f : airFilters[0]->getCutoff(); }
    bool isInfinite() const { return infinite; }
    bool isAirEnabled() const { return airEnabled; }
    float getShortestDelay() const { return shortestDelay; }
    /// The lines' target delays, ms. Control thread; allocates.
    ondo::Vector<float> getDelays() const;
    const ondo::Ramp& getInputGain() const { return inputGain; }
    const ondo::Ramp& getDecayRamp() const { return decayRamp; }
    const ondo::FadedHLShelf& getFilter(std::uint32_t channel) const { return filters.getChannel(channel); }
    AirAbsorption& getAirFilter(std::uint32_t channel) { return *airFilters[channel]; }
    /// The shortest delay allowed at the present rate: one chunk, in ms.
    float getDelayFloor() const { return 1000.0f * static_cast<float>(chunkSize) / sampleRate; }
    /// Samples in the chunks the next block is cut into.
    std::uint32_t getChunkLimit() const;

private:
    /// Every line's chunk from its tap, into `lineReads`: in place, or in `tap`; and where
    /// the line takes its next chunk, into `lineWrites`: in place, or in the mix buffer.
    void findRuns(float** tap, std::uint32_t n);
    void runChunk(std::uint32_t n);
    /// The mix of `processWithSums` over the chunk's lines, after the network ran into `out`.
    void mixSums(float* const* out, std::uint32_t n);
    /// Whether every line's shelf plays one instance alone through the chunk that does the
    /// work of a biquad, as the one-pass chunk needs.
    bool playsSteadily(ondo::BiquadIPP* const* begun) const;

    std::uint32_t numChannels;
    ondo::RelaxedAtomic<float> tr0 = 1.995f;
    ondo::RelaxedAtomic<float> trl = 1.0f;
    ondo::RelaxedAtomic<float> trm = 1.0f;
    ondo::RelaxedAtomic<float> trh = 0.5f;
    ondo::RelaxedAtomic<float> fl = 250.0f;
    ondo::RelaxedAtomic<float> fh = 8000.0f;
    ondo::RelaxedAtomic<bool> infinite = false;
    ondo::RelaxedAtomic<bool> airEnabled = true;
    std::vector<std::unique_ptr<ondo::Delay>> delays;
    std::vector<std::unique_ptr<ondo::TapOutEconomy>> taps;
    /// The decay shelves, one a line; steady ones run side by side in the vector unit.
    ondo::MultiFadedHLShelf filters;
    std::vector<std::unique_ptr<AirAbsorption>> airFilters;
    /// Runs every line's decay shelf, and its air filter in series, side by side with the
    /// other lines.
    ondo::FadedBiquadBatch shelves;
    /// Where each line's chunk is read from and written to: in the line, or a buffer.
    ondo::Vector<const float*> lineReads;
    ondo::Vector<float*> lineWrites;
    /// Each line's read and write found in place, moved on together while its tap and the
    /// line stand as they were.
    ondo::SteadyRuns lineRuns;
    /// The taps' hand-overs and the lines' widenings and emptyings, all counted.
    ondo::HandOverCount lineChanges;
    /// Whether the block asks for sums, where the chunk's go, and their factors.
    bool summing = false;
    ondo::AudioBufferReference<float> sumsReference;
    /// Whether the block wants the lines' outputs, or only their sums.
    bool outputsWanted = true;
    float dryFactor = 0.0f;
    float wetFactor = 0.0f;
    Delgen delgen;
    ondo::AudioBuffer<float> tapBuffer;
    ondo::AudioBuffer<float> mixBuffer;
    /// Where the chunk's outputs go when the block wants only the sums.
    ondo::AudioBuffer<float> unwantedOutputs;
    Shuffle shuffle;
    ondo::Ramp inputGain;
    ondo::RelaxedAtomic<float> shortestDelay = defaultShortestDelayMs;
    bool normalizeOutput = true;
    ondo::Ramp decayRamp;
    ondo::AudioBufferReference<float> inputsReference;
    ondo::AudioBufferReference<float> outputsReference;
};
} // namespace Quor
