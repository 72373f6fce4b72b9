#pragma once

#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspAudioBufferReference.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspMultiTapOutEconomy.h"

#include <memory>
#include <string>

namespace Quor
{
/// The discrete first reflections: `numOutputs` delayed copies of the room bus, one per
/// internal channel of the reverberator. A second form takes a stereo bus: even taps read
/// the left input, odd taps the right. Other input counts make a stage that stays mute.
///
/// Reflections read the nearest sample with no economy switching: a reflection's position
/// only glides, it never needs a fraction.
class Early : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr float maximumDelayMs = 110.0f;

    /// Taps at the generator's series from 22.22 to 39.71 ms. Control thread; allocates.
    Early(std::uint32_t numOutputs, std::uint32_t numInputs);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// `process` that leaves the reflections of a mono stage in its line where they lie
    /// there whole: returns one pointer an output, to the line (to be read only, until the
    /// next block) or to `scratch`'s channel. Audio thread; real-time safe.
    float* const* processInPlace(float** scratch, float** inputs, std::uint32_t numSamples);
    std::string getInletName(std::int32_t index) const override;
    std::string getOutletName(std::int32_t index) const override;
    /// Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    /// Real-time safe.
    void clear() override;

    /// "/delays" with one number an output (any other count changes nothing), "/numdelays" and
    /// "/numinputs" (true when they equal the counts, which never change). No "/dsp" subtree:
    /// the stage is reached through its owner.
    /// Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, "/numdelays", "/numinputs", "/delays". Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getDocumentation() const override;

    /// Output `i` takes `delays[i]` (ms), gliding unless `immediate`. A hand-over safe while
    /// the audio thread runs, unless a delay is beyond a line's maximum, which enlarges it.
    void setDelays(const ondo::Vector<float>& delays, bool immediate);
    /// The taps' target delays (ms) in output order; empty for a mute stage. Allocates.
    ondo::Vector<float> getDelays() const;
    /// The longest target delay minus the shortest (ms); 0 for a mute stage.
    float getDelaySpread() const;
    /// Sets the output count; new outputs get delays spread from 20 to 40 ms. Control
    /// thread, before audio starts; allocates.
    void setNumberOfTaps(std::uint32_t n);

private:
    /// The line and tap that feed output `i`, or null.
    ondo::MultiTapOutEconomy* lineOf(std::uint32_t output, std::uint32_t& tap) const;

    std::unique_ptr<ondo::MultiTapOutEconomy> tapsFirst;
    std::unique_ptr<ondo::MultiTapOutEconomy> tapsSecond;
    ondo::AudioBuffer<float> firstBuffer{1, defaultBufferSize};
    ondo::AudioBuffer<float> secondBuffer{1, defaultBufferSize};
    ondo::AudioBufferReference<float> outputsReference;
};

/// Fills `gains` with the `N` gains of the early reflections from the envelope `shape`
/// (0: first reflection strongest, 0.5: flat, 1: last strongest) and the delay spread (ms):
/// mean magnitude 1, fixed signs, and above 8 channels a slight random spread and quieter
/// inner channels in a narrow early section. Optionally normalised to the power of N unit
/// gains. Control thread; allocates.
void computeEarlyGains(ondo::Vector<float>& gains, std::uint32_t N, float shape, float spread, bool normalise);
} // namespace Quor
