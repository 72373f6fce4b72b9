#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspDelayEconomy.h"
#include "dsp/TarvoDspMultichannelProcessor.h"

namespace ondo
{
/// One economical delay line a channel.
class MultiDelayEconomy : public MultichannelProcessor<DelayEconomy>
{
public:
    /// `numChannels` lines reading "linear", each holding at least `maximumDelayMs`.
    /// Control thread; allocates.
    MultiDelayEconomy(std::uint32_t numChannels, float maximumDelayMs = defaultMaximumDelayMs);

    static constexpr float defaultMaximumDelayMs = 200.0f;

    /// Every line; resizes and empties them. Between blocks; allocates.
    void setMaximumDelay(float ms);
    /// One line; an index out of range is ignored. A hand-over safe while the audio thread
    /// runs, unless the delay enlarges the line.
    void setDelay(std::uint32_t channel, float ms, bool immediate = false);
    void setDelayInSamples(std::uint32_t channel, float samples, bool immediate = false);
    /// Every line. Any thread.
    void setInterpolationMode(Delay::InterpolationMode mode);
    void setInterpolationTime(float ms);
    void setEconomy(bool enabled);

    /// The target delays of the lines in milliseconds. Control thread; allocates.
    Vector<float> getDelays() const;

protected:
    DelayEconomy* createChannel() override { return new DelayEconomy(defaultMaximumDelayMs, Delay::linear); }
};
} // namespace ondo
