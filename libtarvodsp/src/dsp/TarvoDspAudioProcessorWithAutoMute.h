#pragma once

#include "dsp/TarvoDspAudioProcessorBase.h"
#include "dsp/TarvoDspInletsActivityAnalyzer.h"

namespace ondo
{
/// A processor that knows which inlets and outlets are connected and which inlets carry
/// signal, so that silent or unconnected channels can be skipped.
class AudioProcessorWithAutoMute : public AudioProcessorBase
{
public:
    AudioProcessorWithAutoMute(std::uint32_t numInputs, std::uint32_t numOutputs);

    bool isChannelConnected(std::uint32_t i) const override;
    // Final and inline: the stages ask them for each channel of each block.
    bool isOutletConnected(std::uint32_t i) const final { return analyzer.outletsConnected[i] == 1; }
    bool isInletActive(std::uint32_t i) const final { return analyzer.inletsActive[i] == 1; }
    bool isAnyOutletConnected() const override;
    /// Resizes the connection table and the analysis; every inlet counts as connected.
    void numberOfInletsChanged(std::uint32_t n) override;
    void numberOfOutletsChanged(std::uint32_t n) override;
    void analyzeInlets(float** inputs, std::uint32_t numSamples) override;

    /// `counts` holds one entry per inlet, then one per outlet: the number of signals the
    /// host connected there.
    virtual void setConnections(const std::int16_t* counts);
    virtual void setAutoMuteActive(bool active);
    /// 0 or less switches auto-mute off; any other value switches it on, clamped to 1..500 s.
    virtual void setAutoMuteAttack(float seconds);

    const InletsActivityAnalyzer& getInletsAnalyzer() const { return analyzer; }

protected:
    InletsActivityAnalyzer analyzer;
};
} // namespace ondo
