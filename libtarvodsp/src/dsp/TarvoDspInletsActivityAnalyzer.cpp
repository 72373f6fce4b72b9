#include "dsp/TarvoDspInletsActivityAnalyzer.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
InletsActivityAnalyzer::InletsActivityAnalyzer(std::uint32_t numInlets, std::uint32_t numOutlets)
    : InletsOutletsConnectionsStatus(numInlets, numOutlets), inletsActive(numInlets, 1), silentSamples(numInlets)
{
}

void InletsActivityAnalyzer::resizeAnalysis(std::uint32_t numInlets)
{
    inletsActive.resize(numInlets);
    silentSamples.resize(numInlets);
    noteChange();
}

void InletsActivityAnalyzer::resetAnalysis()
{
    silentSamples.clear();
    inletsActive.fill(1);
    noteChange();
}

void InletsActivityAnalyzer::setActive(std::size_t inlet, std::int16_t value)
{
    if (inletsActive[inlet] == value)
        return;
    inletsActive[inlet] = value;
    noteChange();
}

void InletsActivityAnalyzer::analyze(float** inputs, std::uint32_t numSamples)
{
    for (std::size_t i = 0; i < inletsActive.size(); ++i)
    {
        if (!active)
        {
            setActive(i, inletsConnected[i] == 1 ? 1 : 0);
            continue;
        }
        if (inletsConnected[i] != 1)
        {
            setActive(i, 0);
            continue;
        }
        const float* x = inputs != nullptr ? inputs[i] : nullptr;
        // Any bit pattern other than +0/-0 is signal, so a NaN counts.
        const bool hasSignal = x != nullptr && std::any_of(x, x + numSamples, [](float v) { return !(v == 0.0f); });
        if (hasSignal)
        {
            silentSamples[i] = 0;
            setActive(i, 1);
        }
        else
        {
            silentSamples[i] += numSamples;
        }
        if (silentSamples[i] >= attackSamples)
        {
            silentSamples[i] = attackSamples;
            setActive(i, 0);
        }
    }
}

void InletsActivityAnalyzer::setAttack(float seconds)
{
    if (!(seconds > 0.0f))
    {
        active = false;
        return;
    }
    active = true;
    attackSeconds = std::clamp(seconds, 1.0f, 500.0f);
    // In double: 500 s must give exactly 500 times the rate, which float products miss.
    attackSamples = static_cast<std::uint64_t>(std::floor(static_cast<double>(attackSeconds) * 1000.0 * 0.001 * sampleRate));
}
} // namespace ondo
