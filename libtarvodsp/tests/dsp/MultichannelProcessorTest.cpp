#include "dsp/TarvoDspMultichannelProcessor.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
class Offset : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    Offset() : AudioProcessorWithOscInAudioInterrupt(1, 1) {}
    void process(float** outputs, float** inputs, std::uint32_t n) override
    {
        for (std::uint32_t i = 0; i < n; ++i)
            outputs[0][i] = inputs[0][i] + 1.0f;
    }
    std::uint32_t getLatency() const override { return latency; }
    void clear() override { ++clears; }
    std::uint32_t latency = 0;
    int clears = 0;
};

class Offsets : public ondo::MultichannelProcessor<Offset>
{
public:
    explicit Offsets(std::uint32_t n) { setNumChannels(n); }

protected:
    Offset* createChannel() override { return new Offset(); }
};

TEST(MultichannelProcessor, NewChannelsTakeTheProcessorsRateAndSize)
{
    Offsets p(0);
    p.setup(48000.0f, 256, true);
    p.setNumChannels(2);
    EXPECT_EQ(p.getNumInputs(), 2u);
    EXPECT_EQ(p.getNumOutputs(), 2u);
    EXPECT_EQ(p.getChannel(1).getSampleRate(), 48000.0f);
    EXPECT_EQ(p.getChannel(1).getBufferSize(), 256u);
    EXPECT_GE(p.getChannel(1).clears, 1);
    p.changeSampleRate(1e7f);
    EXPECT_EQ(p.getChannel(0).getSampleRate(), 384000.0f);
}

TEST(MultichannelProcessor, ZeroChannelsDoNothing)
{
    Offsets p(0);
    p.processBlock(nullptr, nullptr, 64);
    EXPECT_EQ(p.getLatency(), 0u);
}

TEST(MultichannelProcessor, InactiveChannelsAreZeroed)
{
    Offsets p(2);
    const std::int16_t counts[] = {1, 0, 1, 1};
    p.setConnections(counts);
    std::vector<float> a(4, 1.0f), b(4, 1.0f), c(4, 5.0f), d(4, 5.0f);
    float* ins[] = {a.data(), b.data()};
    float* outs[] = {c.data(), d.data()};
    p.processBlock(outs, ins, 4);
    EXPECT_EQ(c[0], 2.0f);
    EXPECT_EQ(d[0], 0.0f);
}

TEST(MultichannelProcessor, LatencyIsTheLargestInForce)
{
    Offsets p(3);
    p.getChannel(0).latency = 10;
    p.getChannel(2).latency = 30;
    EXPECT_EQ(p.getLatency(), 30u);
    p.getChannel(2).setBypass(true);
    EXPECT_EQ(p.getLatency(), 10u);
}

TEST(MultichannelProcessor, ShrinkDestroysTheSurplus)
{
    Offsets p(4);
    p.setNumChannels(1);
    EXPECT_EQ(p.getNumChannels(), 1u);
    EXPECT_EQ(p.getNumOutputs(), 1u);
}
} // namespace
