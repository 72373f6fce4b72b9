#include "dsp/TarvoDspAudioProcessorWithAutoMute.h"

namespace ondo
{
AudioProcessorWithAutoMute::AudioProcessorWithAutoMute(std::uint32_t inputs, std::uint32_t outputs)
    : AudioProcessorBase(inputs, outputs), analyzer(inputs, outputs)
{
}

bool AudioProcessorWithAutoMute::isChannelConnected(std::uint32_t i) const
{
    return analyzer.inletsConnected[i] == 1 && analyzer.outletsConnected[i] == 1;
}

bool AudioProcessorWithAutoMute::isAnyOutletConnected() const
{
    for (const std::int16_t connected : analyzer.outletsConnected)
        if (connected == 1)
            return true;
    return false;
}

void AudioProcessorWithAutoMute::numberOfInletsChanged(std::uint32_t n)
{
    if (n == analyzer.inletsConnected.size())
        return;
    analyzer.inletsConnected.resize(n);
    analyzer.resizeAnalysis(n);
    analyzer.inletsConnected.fill(1);
    analyzer.resetAnalysis();
}

void AudioProcessorWithAutoMute::numberOfOutletsChanged(std::uint32_t n)
{
    if (n == analyzer.outletsConnected.size())
        return;
    analyzer.outletsConnected.resize(n);
    analyzer.outletsConnected.fill(1);
}

void AudioProcessorWithAutoMute::analyzeInlets(float** inputs, std::uint32_t numSamples)
{
    analyzer.analyze(inputs, numSamples);
}

void AudioProcessorWithAutoMute::setConnections(const std::int16_t* counts)
{
    if (counts == nullptr)
        return;
    for (std::size_t i = 0; i < analyzer.inletsConnected.size(); ++i)
        analyzer.inletsConnected[i] = counts[i] > 0 ? 1 : 0;
    const std::size_t firstOutlet = analyzer.inletsConnected.size();
    for (std::size_t j = 0; j < analyzer.outletsConnected.size(); ++j)
        analyzer.outletsConnected[j] = counts[firstOutlet + j] > 0 ? 1 : 0;
}

void AudioProcessorWithAutoMute::setAutoMuteActive(bool active)
{
    analyzer.active = active;
}

void AudioProcessorWithAutoMute::setAutoMuteAttack(float seconds)
{
    analyzer.setAttack(seconds);
}
} // namespace ondo
