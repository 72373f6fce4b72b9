#pragma once

#include "containers/TarvoDspAudioBuffer.h"
#include "dsp/TarvoDspBiquadIPP.h"
#include "pan/QuorPan.h"
#include "pan/QuorVbap2DPanning.h"

#include <memory>
#include <vector>

namespace Quor
{
/// Bass management: the sources, low-passed at 125 Hz, panned over the subwoofers by 2-D VBAP, or
/// summed when there is a single subwoofer.
class SubwoofersPanning : public Pan
{
public:
    /// Control thread; allocates.
    SubwoofersPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Redesigns the low-pass for the rate. Control thread.
    void setSampleRate(float rate) override;
    void clear() override;

    /// Forwarded to the inner panner with two subwoofers or more, and only on a change.
    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void setInterpolationTime(float ms) override { panner.setInterpolationTime(ms); }
    float getInterpolationTime() const override { return panner.getInterpolationTime(); }
    bool is2D() const override { return true; }

    const Vbap2DPanning& getPanner() const { return panner; }

private:
    static constexpr std::uint32_t blockLength = 512;
    static constexpr double crossoverHz = 125.0;
    static constexpr double crossoverQ = 0.7;

    void designLowPass();

    /// One second-order low-pass a source.
    std::vector<std::unique_ptr<ondo::BiquadIPP>> lowPass;
    Vbap2DPanning panner;
    ondo::AudioBuffer<float> filtered;
    /// The outputs seen from an offset into the block, for the pieces of a long block.
    ondo::Vector<float*> outputsAtOffset;
};
} // namespace Quor
