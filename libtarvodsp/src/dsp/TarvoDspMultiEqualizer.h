#pragma once

#include "dsp/TarvoDspMonoEqualizer.h"
#include "dsp/TarvoDspMultichannelProcessor.h"

namespace ondo
{
/// Independent parametric equalizers on N channels, all with the same number of bands.
class MultiEqualizer : public MultichannelProcessor<MonoEqualizer>
{
public:
    /// Control thread; allocates.
    MultiEqualizer(std::uint32_t numChannels, int numBands);

    /// As the channel's own operations; a channel out of range is ignored.
    void setFilterType(std::uint32_t channel, int band, FilterShape type, bool immediately);
    void setFrequency(std::uint32_t channel, int band, double hertz, bool immediately);
    void setQ(std::uint32_t channel, int band, double q, bool immediately);
    void setGain(std::uint32_t channel, int band, double dB, bool immediately);
    /// Every channel. Control thread, between blocks; allocates.
    void setNumBands(int n);

protected:
    /// As many bands as channel 0, or 1 without channels.
    MonoEqualizer* createChannel() override
    {
        // While growing from nothing, slot 0 is still empty when it is being made.
        const bool hasFirst = !channels.empty() && channels[0] != nullptr;
        return new MonoEqualizer(hasFirst ? channels[0]->getNumBands() : 1);
    }
    void processChannel(MonoEqualizer& channel, float* output, float* input, std::uint32_t numSamples) override
    {
        channel.getCascade().filterBlock(output, input, numSamples, false);
    }
};
} // namespace ondo
