#include "dsp/TarvoDspMultiEqualizer.h"

namespace ondo
{
MultiEqualizer::MultiEqualizer(std::uint32_t numChannels, int numBands)
{
    setNumChannels(numChannels);
    setNumBands(numBands);
}

void MultiEqualizer::setFilterType(std::uint32_t channel, int band, FilterShape type, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setFilterType(band, type, immediately);
}

void MultiEqualizer::setFrequency(std::uint32_t channel, int band, double hertz, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setFrequency(band, hertz, immediately);
}

void MultiEqualizer::setQ(std::uint32_t channel, int band, double q, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setQ(band, q, immediately);
}

void MultiEqualizer::setGain(std::uint32_t channel, int band, double dB, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setGain(band, dB, immediately);
}

void MultiEqualizer::setNumBands(int n)
{
    for (MonoEqualizer* channel : channels)
        channel->setNumBands(n);
}
} // namespace ondo
