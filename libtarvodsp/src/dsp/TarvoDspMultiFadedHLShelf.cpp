#include "dsp/TarvoDspMultiFadedHLShelf.h"

#include <cstring>

namespace ondo
{
MultiFadedHLShelf::MultiFadedHLShelf(std::uint32_t numChannels)
{
    setNumChannels(numChannels);
    setCrossfadeTime(shelfCrossfadeTimeMs);
    setParameters(HLShelfParameters{}, false);
    clear();
}

void MultiFadedHLShelf::setNumChannels(std::uint32_t n)
{
    MultichannelProcessor<FadedHLShelf>::setNumChannels(n);
    batch.reserve(n);
}

void MultiFadedHLShelf::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t c = 0; c < channels.size(); ++c)
    {
        if (!isInletActive(c) || !isOutletConnected(c))
            std::memset(outputs[c], 0, numSamples * sizeof(float));
        else
            batch.add(*channels[c], outputs[c], inputs[c], numSamples);
    }
    batch.run(numSamples);
}

void MultiFadedHLShelf::setParameters(const HLShelfParameters& parameters, bool immediately)
{
    for (FadedHLShelf* channel : channels)
        channel->setParameters(parameters, immediately);
}

void MultiFadedHLShelf::setParameters(std::uint32_t channel, const HLShelfParameters& parameters, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setParameters(parameters, immediately);
}

void MultiFadedHLShelf::setCrossfadeTime(float ms)
{
    for (FadedHLShelf* channel : channels)
        channel->setCrossfadeTime(ms);
}
} // namespace ondo
