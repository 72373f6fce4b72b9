#pragma once

#include "dsp/TarvoDspFadedBiquadBatch.h"
#include "dsp/TarvoDspFadedHLShelf.h"
#include "dsp/TarvoDspMultichannelProcessor.h"

namespace ondo
{
/// Independent crossfading shelves on N channels. Channels that play one biquad alone
/// through a block run side by side in the vector unit; their output is the same as each
/// channel's own kernel would give.
class MultiFadedHLShelf : public MultichannelProcessor<FadedHLShelf>
{
public:
    static constexpr float shelfCrossfadeTimeMs = 30.0f;

    /// Control thread; allocates.
    explicit MultiFadedHLShelf(std::uint32_t numChannels);

    /// A channel's output may be its own input, but not another channel's. Audio thread;
    /// real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;

    /// To each channel. Any thread without `immediately`; real-time safe.
    void setParameters(const HLShelfParameters& parameters, bool immediately);
    void setParameters(std::uint32_t channel, const HLShelfParameters& parameters, bool immediately);
    void setCrossfadeTime(float ms);

    /// Control thread; allocates.
    void setNumChannels(std::uint32_t n) override;

protected:
    FadedHLShelf* createChannel() override { return new FadedHLShelf(); }

private:
    FadedBiquadBatch batch;
};
} // namespace ondo
