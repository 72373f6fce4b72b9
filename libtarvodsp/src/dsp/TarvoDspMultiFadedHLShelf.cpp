#include "dsp/TarvoDspMultiFadedHLShelf.h"

#include "dsp/TarvoDspBiquadLanes.h"

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
    steadyFilters.resize(n);
    steadyOutputs.resize(n);
    steadyInputs.resize(n);
}

void MultiFadedHLShelf::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    int steady = 0;
    for (std::uint32_t c = 0; c < channels.size(); ++c)
    {
        if (!isInletActive(c) || !isOutletConnected(c))
        {
            std::memset(outputs[c], 0, numSamples * sizeof(float));
            continue;
        }
        FadedHLShelf& channel = *channels[c];
        BiquadIPP* alone = channel.beginBlock();
        if (alone != nullptr && !alone->isGainOnlySection())
        {
            steadyFilters[steady] = alone;
            steadyOutputs[steady] = outputs[c];
            steadyInputs[steady] = inputs[c];
            ++steady;
        }
        else
        {
            channel.runBlock(outputs[c], inputs[c], numSamples);
        }
    }
    filterBiquadsSideBySide(steadyFilters.data(), steadyOutputs.data(), steadyInputs.data(), steady,
                            static_cast<int>(numSamples));
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
