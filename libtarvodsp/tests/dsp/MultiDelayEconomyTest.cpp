#include "dsp/TarvoDspMultiDelayEconomy.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
/// An impulse on every channel, then silence; returns where each output peaks.
std::vector<std::size_t> peaks(ondo::MultiDelayEconomy& lines, std::uint32_t length)
{
    const std::uint32_t n = lines.getNumChannels();
    std::vector<std::vector<float>> in(n, std::vector<float>(length)), out(n, std::vector<float>(length));
    std::vector<float*> ins, outs;
    for (std::uint32_t c = 0; c < n; ++c)
    {
        in[c][0] = 1.0f;
        ins.push_back(in[c].data());
        outs.push_back(out[c].data());
    }
    lines.process(outs.data(), ins.data(), length);
    std::vector<std::size_t> where;
    for (const auto& o : out)
        where.push_back(static_cast<std::size_t>(std::max_element(o.begin(), o.end()) - o.begin()));
    return where;
}

TEST(MultiDelayEconomy, EachChannelDelaysByItsOwnDelay)
{
    ondo::MultiDelayEconomy lines(3, 300.0f);
    for (std::uint32_t c = 0; c < 3; ++c)
        lines.setDelay(c, 1.0f + static_cast<float>(c), true);
    // 1, 2 and 3 ms at 44.1 kHz, read standing still, hence rounded: 44, 88 and 132 samples.
    EXPECT_EQ(peaks(lines, 512), (std::vector<std::size_t>{44, 88, 132}));
    const auto delays = lines.getDelays();
    ASSERT_EQ(delays.size(), 3u);
    EXPECT_FLOAT_EQ(delays[2], 3.0f);
}

TEST(MultiDelayEconomy, ChannelsWithoutInputOrOutputAreZeroed)
{
    ondo::MultiDelayEconomy lines(2);
    const std::int16_t counts[] = {1, 0, 1, 1};
    lines.setConnections(counts);
    std::vector<float> a(64, 1.0f), b(64, 1.0f), x(64, 9.0f), y(64, 9.0f);
    float* ins[] = {a.data(), b.data()};
    float* outs[] = {x.data(), y.data()};
    lines.processBlock(outs, ins, 64);
    EXPECT_EQ(x[0], 1.0f) << "a delay of 0 passes the input";
    EXPECT_EQ(y, std::vector<float>(64, 0.0f));
}

TEST(MultiDelayEconomy, NewChannelsReadLinearWithEconomyAndTheDefaultMaximum)
{
    ondo::MultiDelayEconomy lines(1, 300.0f);
    lines.setNumChannels(2);
    const auto& fresh = lines.getChannel(1);
    EXPECT_EQ(fresh.getRequestedMode(), ondo::Delay::linear);
    EXPECT_TRUE(fresh.isEconomyEnabled());
    EXPECT_GE(fresh.getLine().getMaximumDelay(), 200.0f);
    EXPECT_EQ(lines.getChannel(0).getLine().getMaximumDelay(), 300.0f);
    lines.setMaximumDelay(50.0f);
    EXPECT_EQ(lines.getChannel(1).getLine().getMaximumDelay(), 50.0f);
}

TEST(MultiDelayEconomy, SettersReachEveryChannelAndIgnoreUnknownOnes)
{
    ondo::MultiDelayEconomy lines(3);
    lines.setInterpolationMode(ondo::Delay::allpass);
    lines.setEconomy(false);
    lines.setInterpolationTime(12.0f);
    lines.setDelay(7, 10.0f);
    for (std::uint32_t c = 0; c < 3; ++c)
    {
        EXPECT_EQ(lines.getChannel(c).getActiveMode(), ondo::Delay::allpass);
        EXPECT_FALSE(lines.getChannel(c).isEconomyEnabled());
        EXPECT_EQ(lines.getChannel(c).getLine().getInterpolationTime(), 12.0f);
        EXPECT_EQ(lines.getChannel(c).getDelay(), 0.0f);
    }
}

TEST(MultiDelayEconomy, ProcessAllocatesNothing)
{
    ondo::MultiDelayEconomy lines(8);
    for (std::uint32_t c = 0; c < 8; ++c)
        lines.setDelay(c, 5.0f + static_cast<float>(c), true);
    peaks(lines, 512);
    for (std::uint32_t c = 0; c < 8; ++c)
        lines.setDelay(c, 9.0f);
    std::vector<std::vector<float>> in(8, std::vector<float>(512)), out(8, std::vector<float>(512));
    std::vector<float*> ins, outs;
    for (std::uint32_t c = 0; c < 8; ++c)
    {
        ins.push_back(in[c].data());
        outs.push_back(out[c].data());
    }
    tarvo::testing::AllocationScope scope;
    for (int block = 0; block < 4; ++block)
        lines.process(outs.data(), ins.data(), 512);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
