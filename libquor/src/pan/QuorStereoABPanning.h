#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "dsp/TarvoDspDelay.h"
#include "dsp/TarvoDspRampSignal.h"
#include "pan/QuorPan.h"

#include <memory>
#include <vector>

namespace Quor
{
/// A spaced pair of cardioids: each source reaches the two outputs with a level and a
/// time difference. Each source is a voice with a delay line and a gain ramp an output;
/// muted sources are skipped.
class StereoABPanning : public Pan
{
public:
    static constexpr float defaultInterpolationTimeMs = 30.0f;

    /// Control thread; allocates.
    StereoABPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Control thread, between blocks; allocates (the delay lines are emptied).
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    /// Sets the voice's gains and delays; `immediate` jumps. Control thread; real-time safe.
    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;
    void setInterpolationTime(float ms) override;
    float getInterpolationTime() const override { return interpolationTime; }
    bool is2D() const override { return false; }

    /// The gain ramp of a source's left (0) or right (1) output.
    const ondo::Ramp& getGain(std::uint32_t source, int side) const { return voices[source]->gains[side].getRamp(); }
    /// The delay (ms) of a source's left (0) or right (1) output.
    float getDelay(std::uint32_t source, int side) const { return voices[source]->delays[side].getDelay(); }

private:
    /// The longest delay a voice needs: 1 ms and a quarter either way, with room.
    static constexpr float maximumDelayMs = 5.0f;

    struct Voice
    {
        Voice();

        ondo::Delay delays[2];
        ondo::RampSignal gains[2];
    };

    std::vector<std::unique_ptr<Voice>> voices;
    ondo::Vector<float> delayed;
    ondo::Vector<float> scaled;
    float interpolationTime = defaultInterpolationTimeMs;
};
} // namespace Quor
