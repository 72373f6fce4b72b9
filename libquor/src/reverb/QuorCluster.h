#pragma once

#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspMultiDelayEconomy.h"
#include "dsp/TarvoDspSteadyRuns.h"
#include "reverb/QuorShuffle.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Quor
{
/// The diffuse cluster: the early channels are mixed so that each output holds every input,
/// then each mixed channel is delayed by its own time. `numChannels` in and out.
class Cluster : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr float maximumDelayMs = 300.0f;
    /// The only stage that glides longer than the default: its delays are the longest.
    static constexpr float glideTimeMs = 50.0f;

    /// Delays spread evenly from 20 to 80 ms. Control thread; allocates.
    explicit Cluster(std::uint32_t numChannels);

    /// Audio thread; real-time safe once `buffer` has reached the block size.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// `process` that leaves each line's block where it lies there whole: returns one
    /// pointer a channel, to the line (to be read only, until the next block) or to
    /// `scratch`'s channel. Audio thread; real-time safe as `process`.
    float* const* processInPlace(float** scratch, float** inputs, std::uint32_t numSamples);
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    std::string getInletName(std::int32_t index) const override;
    std::string getOutletName(std::int32_t index) const override;

    /// "/delays" with one number a channel, gliding (any other count changes nothing), and
    /// "/numdelays" (accepted, no change). No "/dsp" subtree: reached through its owner.
    /// Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, "/numdelays", "/delays". Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getDocumentation() const override;

    /// Channel i takes delays[i] ms, gliding over 50 ms unless `immediate`. Control thread;
    /// real-time safe below the maximum delay.
    void setDelays(const ondo::Vector<float>& delays, bool immediate);
    /// The target delays in ms. Control thread; allocates.
    ondo::Vector<float> getDelays() const;

private:
    /// Where each line takes the block in one run, into `writeRuns`; false when a line can't.
    /// With `steady`, a line whose kept runs move on takes both, and is marked in `movedOn`.
    bool findWriteRuns(std::uint32_t n, bool steady);

    std::unique_ptr<ondo::MultiDelayEconomy> delays;
    Shuffle shuffle;
    ondo::AudioBuffer<float> buffer;
    ondo::Vector<float*> writeRuns;
    ondo::Vector<float*> readRuns;
    /// Each line's write and read runs found in place, moved on while the lines stand.
    ondo::SteadyRuns lineRuns;
    ondo::Vector<std::uint8_t> movedOn;
    /// The lines' hand-overs, widenings and emptyings, all counted.
    ondo::HandOverCount lineChanges;
};
} // namespace Quor
