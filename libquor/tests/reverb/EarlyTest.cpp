#include "reverb/QuorEarly.h"

#include "AllocationCounter.h"
#include "TestSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

namespace
{
using Channels = tarvo::testing::ChannelBlock;

/// Runs the inputs through the stage in blocks cycling through `blocks`.
Channels run(Quor::Early& early, Channels& in, std::vector<std::uint32_t> blocks = {64})
{
    const auto length = static_cast<std::uint32_t>(in.data[0].size());
    Channels out(early.getNumOutputs(), length);
    std::uint32_t start = 0;
    for (std::size_t b = 0; start < length; ++b)
    {
        const auto n = std::min(blocks[b % blocks.size()], length - start);
        early.process(out.get(start), in.get(start), n);
        start += n;
    }
    return out;
}

std::size_t peak(const std::vector<float>& v)
{
    return static_cast<std::size_t>(std::max_element(v.begin(), v.end()) - v.begin());
}

const float signs8[8] = {-1, 1, 1, -1, -1, -1, 1, 1};
const float signs16[16] = {-1, 1, 1, -1, -1, -1, 1, 1, -1, -1, 1, 1, 1, -1, -1, 1};

TEST(Early, StartsAtTheGeneratorsSeries)
{
    Quor::Early early(8, 1);
    const auto delays = early.getDelays();
    const std::vector<double> printed{22.22, 25.297, 26.636, 28.913, 32.274, 34.406, 36.777, 39.71};
    ASSERT_EQ(delays.size(), 8u);
    // The printed precision, plus a conversion through samples at 44.1 kHz.
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(delays[i], printed[i], 6e-4) << i;
    EXPECT_NEAR(early.getDelaySpread(), 17.49f, 1e-3f);
}

TEST(Early, EachOutputIsTheBusDelayedToTheNearestSample)
{
    Quor::Early early(8, 1);
    Channels in(1, 2048);
    in.data[0][0] = 1.0f;
    const auto out = run(early, in);
    const auto delays = early.getDelays();
    for (std::uint32_t i = 0; i < 8; ++i)
    {
        EXPECT_EQ(peak(out.data[i]), static_cast<std::size_t>(std::lround(delays[i] * 44.1))) << i;
        EXPECT_EQ(out.data[i][peak(out.data[i])], 1.0f) << "a reflection is an exact copy";
    }
}

TEST(Early, TwoInputsFeedEvenAndOddTaps)
{
    Quor::Early early(4, 2);
    ondo::Vector<float> delays{1.0f, 2.0f, 3.0f, 4.0f};
    early.setDelays(delays, true);
    const auto back = early.getDelays();
    ASSERT_EQ(back.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(back[i], delays[i], 1e-5f) << "through samples and back, " << i;
    Channels in(2, 512);
    in.data[0][0] = 1.0f;  // left
    in.data[1][10] = 1.0f; // right
    const auto out = run(early, in);
    EXPECT_EQ(peak(out.data[0]), 44u);       // left, 1 ms
    EXPECT_EQ(peak(out.data[1]), 10u + 88u); // right, 2 ms
    EXPECT_EQ(peak(out.data[2]), 132u);      // left, 3 ms
    EXPECT_EQ(peak(out.data[3]), 10u + 176u);
    EXPECT_NEAR(early.getDelaySpread(), 3.0f, 1e-5f);
}

TEST(Early, InletsAndOutletsAreNamed)
{
    Quor::Early mono(4, 1), stereo(4, 2);
    EXPECT_EQ(mono.getInletName(0), "input #1");
    EXPECT_EQ(mono.getInletName(1), "");
    EXPECT_EQ(stereo.getInletName(0), "input (left) #1");
    EXPECT_EQ(stereo.getInletName(1), "input (right) #2");
    EXPECT_EQ(stereo.getInletName(2), "");
    EXPECT_EQ(mono.getOutletName(3), "tap #4");
    EXPECT_EQ(mono.getOutletName(4), "dumpout");
}

TEST(Early, OtherInputCountsMakeAMuteStage)
{
    Quor::Early early(4, 3);
    EXPECT_TRUE(early.getDelays().empty());
    EXPECT_EQ(early.getDelaySpread(), 0.0f);
    Channels in(3, 64), out(4, 64);
    for (auto& o : out.data)
        std::fill(o.begin(), o.end(), 5.0f);
    early.process(out.get(), in.get(), 64);
    for (const auto& o : out.data)
        EXPECT_EQ(o, std::vector<float>(64, 0.0f));
}

TEST(Early, NewTapsSpreadFromTwentyToFortyMilliseconds)
{
    Quor::Early early(4, 1);
    early.setNumberOfTaps(6);
    EXPECT_EQ(early.getNumOutputs(), 6u);
    const auto delays = early.getDelays();
    EXPECT_FLOAT_EQ(delays[4], 20.0f + 4.0f * 20.0f / 5.0f);
    EXPECT_FLOAT_EQ(delays[5], 40.0f);
    EXPECT_NEAR(delays[0], 22.22f, 1e-3f) << "the old taps keep their delays";
}

TEST(Early, SampleRateChangeKeepsTheDelaysInTime)
{
    Quor::Early early(8, 1);
    const auto before = early.getDelays();
    early.changeSampleRate(96000.0f);
    const auto after = early.getDelays();
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(after[i], before[i], 1e-4f) << i;
}

TEST(Early, StandingStageIsIndependentOfTheBlockSize)
{
    for (std::uint32_t inputs : {1u, 2u})
    {
        Channels in(inputs, 4000);
        for (std::uint32_t c = 0; c < inputs; ++c)
        {
            const auto noise = tarvo::testing::seededNoise(4000, 5 + c);
            std::copy(noise.begin(), noise.end(), in.data[c].begin());
        }
        Quor::Early a(8, inputs), b(8, inputs), c(8, inputs);
        const auto whole = run(a, in, {4000});
        EXPECT_EQ(run(b, in, {7, 64, 13, 511, 1}).data, whole.data) << inputs;
        EXPECT_EQ(run(c, in, {1}).data, whole.data) << inputs;
    }
}

TEST(Early, ProcessAllocatesNothing)
{
    for (std::uint32_t inputs : {1u, 2u})
    {
        Quor::Early early(16, inputs);
        Channels in(inputs, 512), out(16, 512);
        early.process(out.get(), in.get(), 512);
        ondo::Vector<float> delays(16);
        for (std::size_t i = 0; i < 16; ++i)
            delays[i] = 30.0f + static_cast<float>(i);
        tarvo::testing::AllocationScope scope;
        early.process(out.pointers.data(), in.pointers.data(), 512);
        early.setDelays(delays, false);
        early.process(out.pointers.data(), in.pointers.data(), 512);
        early.process(out.pointers.data(), in.pointers.data(), 100);
        EXPECT_EQ(scope.count(), 0u) << inputs;
    }
}

TEST(EarlyGains, EightFlatGainsAreTheFirstEightSigns)
{
    ondo::Vector<float> gains;
    Quor::computeEarlyGains(gains, 8, 0.5f, 17.49f, true);
    ASSERT_EQ(gains.size(), 8u);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(gains[i], signs8[i]) << i;
}

TEST(EarlyGains, EightChannelsIgnoreTheSpreadAndAreRepeatable)
{
    ondo::Vector<float> narrow, wide, again;
    Quor::computeEarlyGains(narrow, 8, 0.3f, 0.0f, true);
    Quor::computeEarlyGains(wide, 8, 0.3f, 100.0f, false);
    Quor::computeEarlyGains(again, 8, 0.3f, 0.0f, true);
    EXPECT_EQ(narrow, wide);
    EXPECT_EQ(narrow, again);
}

TEST(EarlyGains, EnvelopeFollowsThePowerLaw)
{
    // Shape 0.375 is a square-root fall: |g[i]| proportional to sqrt((8 - i) / 8), mean 1;
    // shape 0.625 the mirrored rise. Single precision: a few roundings.
    ondo::Vector<float> falling, rising;
    Quor::computeEarlyGains(falling, 8, 0.375f, 0.0f, false);
    Quor::computeEarlyGains(rising, 8, 0.625f, 0.0f, false);
    double sumRoot = 0;
    for (int i = 0; i < 8; ++i)
        sumRoot += std::sqrt((8.0 - i) / 8.0);
    double mean = 0;
    for (int i = 0; i < 8; ++i)
    {
        EXPECT_NEAR(falling[i], signs8[i] * std::sqrt((8.0 - i) / 8.0) * 8.0 / sumRoot, 1e-6) << i;
        EXPECT_NEAR(rising[i], signs8[i] * std::sqrt((i + 1.0) / 8.0) * 8.0 / sumRoot, 1e-6) << i;
        mean += std::abs(falling[i]) / 8.0;
    }
    EXPECT_NEAR(mean, 1.0, 1e-6);
}

TEST(EarlyGains, ExtremeShapesLeaveOneReflection)
{
    ondo::Vector<float> first, last, beyond;
    Quor::computeEarlyGains(first, 8, 0.0f, 0.0f, false);
    Quor::computeEarlyGains(last, 8, 1.0f, 0.0f, false);
    Quor::computeEarlyGains(beyond, 8, 1.5f, 0.0f, false);
    EXPECT_FLOAT_EQ(first[0], -8.0f) << "all the mean's weight on the first";
    EXPECT_NEAR(first[1], 0.0f, 1e-6f);
    EXPECT_FLOAT_EQ(last[7], 8.0f);
    EXPECT_NEAR(last[6], 0.0f, 1e-6f);
    EXPECT_EQ(beyond, last) << "a shape of 1.5 counts as 1";
}

/// Flat gains of `N` channels: checks the signs, the inner channels' factor `k` and the
/// normalisation against a count of inner channels made by hand.
void expectGroups(std::uint32_t N, float spread, float k, const std::vector<std::uint32_t>& inner)
{
    ondo::Vector<float> plain, normalised;
    Quor::computeEarlyGains(plain, N, 0.5f, spread, false);
    Quor::computeEarlyGains(normalised, N, 0.5f, spread, true);
    const double power = static_cast<double>(N - inner.size()) + k * static_cast<double>(inner.size());
    const double factor = std::sqrt(N / power);
    for (std::uint32_t i = 0; i < N; ++i)
    {
        const bool isInner = std::find(inner.begin(), inner.end(), i) != inner.end();
        const double level = isInner ? k : 1.0;
        SCOPED_TRACE(i);
        // The random spread of the gains: a factor of 0.95 to 1.05.
        EXPECT_EQ(std::copysign(1.0f, plain[i]), signs16[i % 16]);
        EXPECT_GE(std::abs(plain[i]), 0.95 * level - 1e-6);
        EXPECT_LE(std::abs(plain[i]), 1.05 * level + 1e-6);
        EXPECT_GE(std::abs(normalised[i]), 0.95 * level * factor - 1e-6);
        EXPECT_LE(std::abs(normalised[i]), 1.05 * level * factor + 1e-6);
    }
}

TEST(EarlyGains, TwelveChannelsQuietenTheMiddleOfEachGroupOfThree)
{
    expectGroups(12, 10.0f, 0.1f, {1, 4, 7, 10});
    expectGroups(12, 17.49f, 0.1f, {1, 4, 7, 10});
}

TEST(EarlyGains, SixteenChannelsQuietenTheMiddleTwoOfEachGroupOfFour)
{
    // k runs from 0.1 at a spread of 20 ms to 1 at 60 ms: 0.55 at 40 ms.
    expectGroups(16, 40.0f, 0.55f, {1, 2, 5, 6, 9, 10, 13, 14});
    expectGroups(16, 20.0f, 0.1f, {1, 2, 5, 6, 9, 10, 13, 14});
    expectGroups(16, 90.0f, 1.0f, {});
}

TEST(EarlyGains, NineChannelsHaveNoInnerChannel)
{
    // Groups of two: every channel is an edge, and the normalisation factor is 1.
    expectGroups(9, 0.0f, 0.1f, {});
}

TEST(EarlyGains, AboveEightTheSpreadIsRepeatableAcrossComputationsAndThreads)
{
    ondo::Vector<float> a, b, other, onThread;
    Quor::computeEarlyGains(a, 12, 0.5f, 30.0f, true);
    Quor::computeEarlyGains(other, 16, 0.2f, 50.0f, false);
    Quor::computeEarlyGains(b, 12, 0.5f, 30.0f, true);
    std::thread([&] { Quor::computeEarlyGains(onThread, 12, 0.5f, 30.0f, true); }).join();
    EXPECT_EQ(a, b) << "a computation in between changes nothing";
    EXPECT_EQ(a, onThread);
    // Yet the spread is there: flat edge gains are not all equal.
    EXPECT_NE(std::abs(a[0]), std::abs(a[2]));
}
} // namespace
