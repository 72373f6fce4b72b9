#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspAudioBufferReference.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspSignalMatrix.h"
#include "math/TarvoDspPoint3.h"
#include "pan/QuorHOAPanning.h"
#include "pan/QuorNFCHOAFilterBank.h"
#include "pan/QuorNFCHOAHighPassFilterBank.h"

#include <cstdint>
#include <memory>

namespace Quor
{
/// One source of a near-field panner: its signal goes through one near-field filter per
/// order (and optionally that order's high-pass), and each order feeds its own Ambisonic
/// components with the plain encoding gains. One input; the Ambisonic channels as outputs,
/// added into. Settings come from one control thread while the audio thread runs.
class NFCHOAPanningOneSource : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr std::uint32_t maximumChunk = 512;

    /// Control thread; allocates. `numChannels` of no Ambisonic form for `dimension`
    /// raises an `ondo::Exception`.
    NFCHOAPanningOneSource(std::uint32_t dimension, std::uint32_t numChannels);

    /// The filters follow the distance (clamped to 0.2 m), the gains the direction.
    /// `immediate` skips fades and ramps. Control thread, also while audio runs; allocates
    /// while the high-passes are redesigned.
    void setSourcePosition(const ondo::Point3& position, bool immediate);
    /// Metres; then the source is placed again. Control thread, as above.
    void setSpeakersRadius(double metres);
    /// As asked; the filters clamp it to 0.2 m.
    double getSpeakersRadius() const { return speakersRadius; }
    /// Whether the high-passes run. Any thread; real-time safe.
    void setUseHighPass(bool enabled) { useHighPass = enabled; }
    bool getUseHighPass() const { return useHighPass; }
    /// As `HOAPanning`; a normalisation of the other dimension raises an `ondo::Exception`
    /// and changes nothing. Control thread; may allocate.
    void setAmbisonicNormalization(ondo::Ambisonics::Normalization normalization);
    void setComputationMode(HoaEncodingVector::Mode mode);
    const HOAPanning& getEncoder() const { return *encoder; }

    /// Adds the source's components into `outputs`. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Marks the voice idle while its panner skips it: when it runs again its filters start
    /// from silence instead of replaying what they held. Audio thread; real-time safe.
    void rest() { resting = true; }
    /// Control thread, between blocks.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    std::uint32_t getOrder() const { return order; }
    const NFCHOAFilterBank& getFilterBank() const { return filterBank; }
    const NFCHOAHighPassFilterBank& getHighPassBank() const { return highPassBank; }
    const ondo::SignalMatrix& getGainsMatrix() const { return gainsMatrix; }

private:
    /// The ACN index of the first component of order l, and how many order l has.
    std::uint32_t firstComponent(std::uint32_t l) const;
    std::uint32_t componentsOf(std::uint32_t l) const;
    void placeAgain() { setSourcePosition(position, false); }

    std::uint32_t dimension;
    /// Built first: it refuses a channel count of no Ambisonic form.
    std::unique_ptr<HOAPanning> encoder;
    std::uint32_t order;
    ondo::AudioBuffer<float> mono;
    NFCHOAFilterBank filterBank;
    NFCHOAHighPassFilterBank highPassBank;
    /// Row l feeds the components of order l.
    ondo::SignalMatrix gainsMatrix;
    ondo::Vector<float> encoded;
    ondo::Vector<float> row;
    /// One channel an order: the filters' outputs, high-passed in place.
    ondo::AudioBuffer<float> filtered;
    ondo::AudioBufferReference<float> outputChunk;
    ondo::Point3 position{0.0f, 1.0f, 0.0f};
    double speakersRadius = 1.0;
    ondo::RelaxedAtomic<bool> useHighPass = false;
    // Audio thread only.
    bool highPassRunning = false;
    bool resting = false;
};
} // namespace Quor
