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
    analyzer.resetAnalysis(); // which notes the change
}

void AudioProcessorWithAutoMute::numberOfOutletsChanged(std::uint32_t n)
{
    if (n == analyzer.outletsConnected.size())
        return;
    analyzer.outletsConnected.resize(n);
    analyzer.outletsConnected.fill(1);
    analyzer.noteChange();
}

void AudioProcessorWithAutoMute::analyzeInlets(float** inputs, std::uint32_t numSamples)
{
    analyzer.analyze(inputs, numSamples);
}

void AudioProcessorWithAutoMute::setConnections(const std::int16_t* counts)
{
    if (counts == nullptr)
        return;
    // Hosts may hand the same counts every block: only a real change is noted.
    bool changed = false;
    const auto set = [&changed](std::int16_t& connected, std::int16_t count) {
        const std::int16_t value = count > 0 ? 1 : 0;
        changed = changed || connected != value;
        connected = value;
    };
    for (std::size_t i = 0; i < analyzer.inletsConnected.size(); ++i)
        set(analyzer.inletsConnected[i], counts[i]);
    const std::size_t firstOutlet = analyzer.inletsConnected.size();
    for (std::size_t j = 0; j < analyzer.outletsConnected.size(); ++j)
        set(analyzer.outletsConnected[j], counts[firstOutlet + j]);
    if (changed)
        analyzer.noteChange();
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
