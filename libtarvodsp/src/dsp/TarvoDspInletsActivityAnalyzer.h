#pragma once

#include "dsp/TarvoDspInletsOutletsConnectionsStatus.h"

namespace ondo
{
/// Tracks which connected inlets carry signal: an inlet turns inactive after `attackSamples`
/// of exact silence, and active again at its first non-zero sample (a NaN counts as signal).
class InletsActivityAnalyzer : public InletsOutletsConnectionsStatus
{
public:
    /// The rate at which the attack is converted to samples. It is fixed at construction
    /// and deliberately not updated with the processor's rate.
    static constexpr float attackConversionRate = 44100.0f;

    InletsActivityAnalyzer(std::uint32_t numInlets, std::uint32_t numOutlets);

    void resizeAnalysis(std::uint32_t numInlets) override;
    void resetAnalysis() override;

    /// Audio thread; real-time safe.
    void analyze(float** inputs, std::uint32_t numSamples);

    /// A value of 0 or less switches the analysis off and keeps the attack; any other
    /// value switches it on with the attack clamped to 1..500 s.
    void setAttack(float seconds);

    Vector<std::int16_t> inletsActive;
    Vector<std::uint64_t> silentSamples;
    float sampleRate = attackConversionRate;
    bool active = false;
    float attackSeconds = 20.0f;
    std::uint64_t attackSamples = 882000;

private:
    void setActive(std::size_t inlet, std::int16_t value);
};
} // namespace ondo
