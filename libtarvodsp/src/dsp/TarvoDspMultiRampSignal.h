#pragma once

#include "dsp/TarvoDspMultichannelProcessor.h"
#include "dsp/TarvoDspRampSignal.h"

namespace ondo
{
/// Independent click-free gains on N channels.
class MultiRampSignal : public MultichannelProcessor<RampSignal>
{
public:
    explicit MultiRampSignal(std::uint32_t numChannels);

    void setTarget(std::uint32_t channel, float value, bool immediately);
    void setTargetAll(float value, bool immediately);
    void setRampTime(float ms);

protected:
    RampSignal* createChannel() override { return new RampSignal(); }
};
} // namespace ondo
