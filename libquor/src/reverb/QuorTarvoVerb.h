#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspAudioBufferReference.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspHLShelfParameters.h"
#include "dsp/TarvoDspMixTerms.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"
#include "dsp/TarvoDspRamp.h"
#include "math/TarvoDspPoint3Array.h"
#include "pan/QuorPan.h"
#include "reverb/QuorCluster.h"
#include "reverb/QuorDelgen.h"
#include "reverb/QuorEarly.h"
#include "reverb/QuorReverb.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
/// The whole room as one processor: `numSources` sources, `numSpeakers` speakers, and a
/// reverberation chain `numInternals` channels wide. Each source is heard as four sections
/// of its room response (direct sound, early reflections, cluster, late reverberation), each
/// with its own gain and shelf; all sources share one mono room bus into the chain
/// early -> cluster -> late network, and three panners bring the sections to the speakers.
///
/// Setters run on a control thread, compute delays, gains and designs there, and hand them
/// over as ramp targets and pending coefficients; `process` only follows.
class TarvoVerb : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// What the object remembers of the room, as asked (stages may hold clamped values).
    /// Times in ms unless told, gains in dB, frequencies in Hz.
    struct ParametersRecord
    {
        ondo::HLShelfParameters directFilterParams{0.0f, 0.0f, 0.0f, 0.0f, 250.0f, 4000.0f};
        ondo::HLShelfParameters roomFilterParams{0.0f, 0.0f, 0.0f, 0.0f, 250.0f, 4000.0f};
        float earlyMin = 22.22f;
        float earlyMax = 39.71f;
        float earlyDistribution = 0.5f;
        float earlyWidth = 30.0f; ///< degrees between the two early virtual sources
        float earlyShape = 0.5f;
        ondo::HLShelfParameters earlyFilterParams{0.0f, 0.0f, 0.0f, 0.0f, 250.0f, 4000.0f};
        float clusterMin = 42.47f;
        float clusterMax = 105.64f;
        float clusterDistribution = 0.5f;
        ondo::HLShelfParameters clusterFilterParams{0.0f, 0.0f, 0.0f, 0.0f, 250.0f, 4000.0f};
        float tr0 = 1.995f; ///< s
        float reverbMin = 95.37f;
        float reverbDensity = 0.86f; ///< s: the sum of the late delays
        float reverbGainDb = 0.0f;
        float trl = 1.0f;
        float trm = 1.0f;
        float trh = 0.5f;
        float fl = 250.0f;
        float fh = 8000.0f;
        bool airEnabled = true;
        std::uint32_t reserved = 0;
    };

    static constexpr std::uint32_t maximumSources = 64;
    static constexpr std::uint32_t maximumSpeakers = 64;
    static constexpr std::uint32_t minimumInternals = 2;
    static constexpr std::uint32_t maximumInternals = 16;

    /// Stages but no panners: `configure` must run before `process`. Control thread; allocates.
    explicit TarvoVerb(std::uint32_t numInternals);
    ~TarvoVerb() override = default;

    /// Whether the counts make a reverberator, with the panning type `configure` would choose.
    static bool isConfigurationValid(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t numInternals);
    /// Builds the panners and sizes everything for the counts; a second call only applies
    /// the rate and size and clears. Before audio starts; allocates.
    void configure(float sampleRate, std::uint32_t bufferSize, std::uint32_t numSources, std::uint32_t numSpeakers);
    bool isConfigured() const { return configured; }

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    std::string getInletName(std::int32_t index) const override;
    std::string getOutletName(std::int32_t index) const override;
    /// Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    /// Empties stages, filters and panners; ramps keep their values.
    void clear() override;

    /// After the service and "/dsp" addresses: "/direct/filter/params", "/room/filter/params",
    /// "/early/filter/params", "/cluster/filter/params" (six numbers, or "/params/G0" ... with
    /// one), "/reverb/gain", "/reverb/tr0" ... "/reverb/fh", "/reverb/air" and
    /// "/reverb/air/enable", "/reverb/air/cutoff", "/reverb/infinite", "/early/min|max|distr",
    /// "/cluster/min|max|distr", "/reverb/min", "/reverb/density"; addresses below "/viewer",
    /// a filter, or "/reverb/room/size" are taken without effect. Each runs the setter of the
    /// same name. Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, the four filters, the counts, then the room parameters. Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getDocumentation() const override;

    // Room parameters. Control thread; real-time safe hand-overs unless told.
    /// Moves a source (metres): the direct path, the two early virtual sources, and the
    /// distance gains. An index out of range is ignored.
    void setSourcePosition(std::uint32_t index, const ondo::Point3& position);
    /// Places the speakers for the direct and early panners. A layout a panner can't serve
    /// raises `ondo::Exception`. Allocates.
    void setSpeakerPositions(const ondo::Point3Array& positions);
    void setDirectFilter(const ondo::HLShelfParameters& parameters);
    void setRoomFilter(const ondo::HLShelfParameters& parameters);
    void setEarlyFilter(const ondo::HLShelfParameters& parameters);
    void setClusterFilter(const ondo::HLShelfParameters& parameters);
    /// The early section's series; the cluster's follows. Allocates.
    void setEarlyMin(float ms);
    void setEarlyMax(float ms);
    void setEarlyDistribution(float distribution);
    /// Degrees between the two early virtual sources.
    void setEarlyWidth(float degrees);
    /// Envelope of the early gains, 0 to 1. Allocates.
    void setEarlyShape(float shape);
    /// The cluster's series; the late delays follow. Allocates.
    void setClusterMin(float ms);
    void setClusterMax(float ms);
    void setClusterDistribution(float distribution);
    /// The late delays. Allocates.
    void setReverbMin(float ms);
    /// Seconds: the sum of the late delays.
    void setReverbDensity(float seconds);
    void setReverbGain(float dB);
    /// `decay` holds tr0 (s), trl, trm, trh (ratios), fl, fh (Hz) in the six fields, in order.
    void setReverbTimes(const ondo::HLShelfParameters& decay, float dB);
    void setAirEnabled(bool enabled);
    void setAirCutoff(float hertz);
    void setInfinite(bool enabled);

    std::uint32_t getNumInternals() const { return numInternals; }
    const ParametersRecord& getParameters() const { return parameters; }
    const ondo::Point3Array& getSourcePositions() const { return sourcePositions; }
    const ondo::Point3Array& getSpeakerPositions() const { return speakerPositions; }
    const Pan* getDirectPanner() const { return panDirect.get(); }
    const Pan* getEarlyPanner() const { return panEarly.get(); }
    const Pan* getLatePanner() const { return panLate.get(); }
    const Early& getEarly() const { return early; }
    const Cluster& getCluster() const { return cluster; }
    const Reverb& getReverb() const { return reverb; }
    const ondo::Ramp& getSourceDirectGain(std::uint32_t index) const { return sourceDirectGain[index]; }
    const ondo::Ramp& getSourceRoomGain(std::uint32_t index) const { return sourceRoomGain[index]; }
    float getEarlyGain(std::uint32_t channel) const { return earlyGains[channel]; }
    /// Input samples that `process` found unusable (NaN, infinite or beyond 2^64) and replaced
    /// by 0, since construction. Any thread.
    std::uint64_t getNonFiniteInputCount() const { return nonFiniteInputCount; }
    /// The linear gain of a level in dB.
    static float dbToGain(float dB);

private:
    void updateEarly();
    void updateCluster();
    void updateLateDelays();
    void computeEarlyGainsNow();
    void renderBlock(std::uint32_t n);
    /// A section shelf over its own channels, skipped where it is flat. Audio thread.
    void filterInPlace(ondo::MultiFadedHLShelf& shelf, float** channels, std::uint32_t n);
    /// The panner's share of the outputs: its terms, gathered for one pass, or its own
    /// `processAdd` after the terms so far are added. Audio thread.
    void mixIntoOutputs(Pan& pan, float** panned, std::uint32_t n);
    /// Adds the gathered terms into the outputs; the first time in a block it writes them.
    /// With `keep` the terms stay for the next block.
    void flushOutputTerms(std::uint32_t n, bool keep = false);
    /// Whether the terms kept from the last block are those the three panners would gather
    /// now, so that they only need to take the block. Audio thread.
    bool keptTermsHold() const;
    /// Lets the kept terms go: the next block gathers them anew. Real-time safe.
    void forgetKeptTerms();
    /// The panning type for a speaker count.
    static Pan::Type panningTypeFor(std::uint32_t numSpeakers);

    std::uint32_t numInternals;
    ParametersRecord parameters;
    Early early;
    Cluster cluster;
    Reverb reverb;
    std::unique_ptr<Pan> panDirect;
    std::unique_ptr<Pan> panEarly;
    std::unique_ptr<Pan> panLate;
    ondo::MultiFadedHLShelf directFilter;
    ondo::MultiFadedHLShelf roomFilter;
    ondo::MultiFadedHLShelf earlyFilter;
    ondo::MultiFadedHLShelf clusterFilter;
    ondo::Ramp directGain;
    ondo::Ramp earlyGain;
    ondo::Ramp clusterGain;
    ondo::Ramp reverbGain;
    ondo::AudioBuffer<float> directBuffer;
    ondo::AudioBuffer<float> roomBuffer;
    ondo::AudioBuffer<float> earlyPairBuffer;
    ondo::AudioBuffer<float> lateBuffer;
    ondo::AudioBuffer<float> earlyBuffer;
    ondo::AudioBuffer<float> clusterBuffer;
    ondo::AudioBuffer<float> reverbBuffer;
    Delgen delgenEarly;
    Delgen delgenCluster;
    Delgen delgenReverb;
    bool configured = false;
    std::vector<ondo::Ramp> sourceDirectGain;
    std::vector<ondo::Ramp> sourceRoomGain;
    ondo::Point3Array sourcePositions;
    ondo::Point3Array speakerPositions;
    /// Each gain is handed to the audio thread on its own.
    std::vector<ondo::RelaxedAtomic<float>> earlyGains;
    /// The sources' room sends of the present block.
    ondo::Vector<float> roomSendGains;
    /// Each source's direct gain for the block, every factor of the direct path in one.
    ondo::Vector<float> directGains;
    /// The early channels that fold onto each side of the pair.
    std::array<ondo::MixTerms, 2> earlyFoldTerms;
    /// One list a speaker: what the three panners add there in a block.
    std::vector<ondo::MixTerms> outputTerms;
    bool outputsWritten = false;
    /// Every panner gathered its terms in this block.
    bool allGathered = false;
    /// `outputTerms` still hold the last block's terms. They read the direct, pair and late
    /// buffers, which stay in place until the next change of buffer size.
    bool termsKept = false;
    ondo::AudioBufferReference<float> inputsReference;
    ondo::AudioBufferReference<float> outputsReference;
    /// Written by the audio thread alone, read by any.
    ondo::RelaxedAtomic<std::uint64_t> nonFiniteInputCount = 0;
};
} // namespace Quor
