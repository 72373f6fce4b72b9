#include "dsp/TarvoDspMultiTapOutEconomy.h"

#include "dsp/TarvoDspDelayEconomy.h"

#include "AllocationCounter.h"
#include "TestSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace
{
using tarvo::testing::ChannelBlock;

/// Runs `input` through the taps (or a line) in blocks cycling through `blocks`.
ChannelBlock run(ondo::AudioProcessorBase& taps, const std::vector<float>& input, std::vector<std::uint32_t> blocks = {64})
{
    ChannelBlock out(taps.getNumOutputs(), static_cast<std::uint32_t>(input.size()));
    std::size_t start = 0;
    for (std::size_t b = 0; start < input.size(); ++b)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(blocks[b % blocks.size()], input.size() - start));
        float* in = const_cast<float*>(input.data()) + start;
        taps.process(out.get(start), &in, n);
        start += n;
    }
    return out;
}

std::vector<float> noise(std::size_t n)
{
    return tarvo::testing::seededNoise(n, 3);
}

TEST(MultiTapOutEconomy, EachTapReadsTheOneLineAtItsOwnDelay)
{
    ondo::MultiTapOutEconomy taps(4, 110.0f, ondo::Delay::nearest);
    const std::vector<float> delaysMs{22.22f, 25.297f, 1.0f, 0.0f};
    for (std::uint32_t t = 0; t < 4; ++t)
        taps.setDelay(t, delaysMs[t], true);
    std::vector<float> input(2048, 0.0f);
    input[0] = 1.0f;
    const auto out = run(taps, input);
    // Whole samples nearest to ms x 44.1: 980, 1116, 44 and 0.
    const std::vector<std::size_t> expected{980, 1116, 44, 0};
    for (std::uint32_t t = 0; t < 4; ++t)
    {
        const auto& o = out.data[t];
        EXPECT_EQ(static_cast<std::size_t>(std::max_element(o.begin(), o.end()) - o.begin()), expected[t]) << t;
        EXPECT_EQ(std::count(o.begin(), o.end(), 0.0f), 2047) << "a single sample, untouched";
    }
    EXPECT_EQ(taps.getDelays()[1], 25.297f);
}

TEST(MultiTapOutEconomy, UnconnectedTapIsSkippedAndItsGlideWaits)
{
    ondo::MultiTapOutEconomy taps(2);
    const std::int16_t counts[] = {1, 1, 0};
    taps.setConnections(counts);
    taps.setDelay(0, 10.0f);
    taps.setDelay(1, 10.0f);
    const auto remaining = taps.getTap(1).getRamp().getRemainingSamples();
    ChannelBlock out(2, 64, 7.0f);
    std::vector<float> input(64, 1.0f);
    float* in = input.data();
    taps.process(out.get(), &in, 64);
    EXPECT_EQ(out.data[1], std::vector<float>(64, 7.0f)) << "the output isn't touched";
    EXPECT_EQ(taps.getTap(1).getRamp().getRemainingSamples(), remaining);
    EXPECT_EQ(taps.getTap(0).getRamp().getRemainingSamples(), remaining - 64);
}

TEST(MultiTapOutEconomy, OutletsAreNamedAfterTheirTaps)
{
    ondo::MultiTapOutEconomy taps(3);
    EXPECT_EQ(taps.getNumOutputs(), 3u);
    EXPECT_EQ(taps.getNumInputs(), 1u);
    EXPECT_EQ(taps.getOutletName(0), "tap out #1");
    EXPECT_EQ(taps.getOutletName(2), "tap out #3");
    EXPECT_EQ(taps.getOutletName(3), "dumpout");
    EXPECT_EQ(taps.getOutletName(-1), "dumpout");
}

TEST(MultiTapOutEconomy, NewTapsReadLikeTapZero)
{
    ondo::MultiTapOutEconomy taps(1);
    taps.getTap(0).setInterpolationMode(ondo::Delay::allpass);
    taps.getTap(0).setInterpolationTime(12.0f);
    taps.setNumTaps(3);
    EXPECT_EQ(taps.getNumOutputs(), 3u);
    for (std::uint32_t t = 1; t < 3; ++t)
    {
        EXPECT_EQ(taps.getTap(t).getActiveMode(), ondo::Delay::allpass);
        EXPECT_EQ(taps.getTap(t).getRequestedMode(), ondo::Delay::allpass);
        EXPECT_EQ(taps.getTap(t).getInterpolationTime(), 12.0f);
        EXPECT_EQ(taps.getTap(t).getDelay(), 0.0f);
    }
    taps.setNumTaps(1);
    EXPECT_EQ(taps.getNumOutputs(), 1u);
    EXPECT_EQ(taps.getNumTaps(), 1u);
}

TEST(MultiTapOutEconomy, SampleRateChangeKeepsATapsDelayInTime)
{
    ondo::MultiTapOutEconomy taps(2);
    taps.setDelay(0, 10.0f, true);
    taps.changeSampleRate(96000.0f);
    EXPECT_FLOAT_EQ(taps.getTap(0).getDelay(), 10.0f);
    EXPECT_FLOAT_EQ(taps.getTap(0).getRamp().getTargetValue(), 960.0f);
    EXPECT_EQ(taps.getTap(1).getSampleRate(), 96000.0f);
}

TEST(MultiTapOutEconomy, TapBeyondTheMaximumEnlargesTheLine)
{
    ondo::MultiTapOutEconomy taps(2, 10.0f);
    taps.setDelay(1, 900.0f, true);
    EXPECT_EQ(taps.getLine().getMaximumDelay(), 900.0f);
    EXPECT_GE(taps.getLine().getRingSize(), static_cast<std::uint64_t>(0.95f * 44100.0f));
}

TEST(MultiTapOutEconomy, StandingTapsAreIndependentOfTheBlockSize)
{
    const auto input = noise(6000);
    const auto build = [] {
        auto taps = std::make_unique<ondo::MultiTapOutEconomy>(16, 110.0f, ondo::Delay::lagrange3);
        taps->setEconomy(false);
        for (std::uint32_t t = 0; t < 16; ++t)
            taps->setDelayInSamples(t, 50.0f + 61.125f * static_cast<float>(t), true);
        return taps;
    };
    auto a = build(), b = build(), c = build();
    const auto whole = run(*a, input, {6000});
    EXPECT_EQ(run(*b, input, {7, 64, 13, 511, 1}).data, whole.data);
    EXPECT_EQ(run(*c, input, {1}).data, whole.data);
}

TEST(MultiTapOutEconomy, TapWideningTheLineLeavesTheOthersReadingInPlace)
{
    // Tap 1 glides far enough to widen the shared line's window, step by step, while tap 0
    // reads in place; the line's newest samples move as it widens (its write position is past
    // the first window). Each tap reads what a line of its own reads.
    const auto input = noise(20000);
    ondo::MultiTapOutEconomy taps(2, 500.0f, ondo::Delay::nearest);
    ondo::Delay own[2] = {ondo::Delay(500.0f, ondo::Delay::nearest), ondo::Delay(500.0f, ondo::Delay::nearest)};
    taps.setInterpolationTime(100.0f);
    own[0].setInterpolationTime(100.0f);
    own[1].setInterpolationTime(100.0f);
    const auto setDelay = [&](std::uint32_t tap, float samples, bool immediate) {
        taps.setDelayInSamples(tap, samples, immediate);
        own[tap].setDelayInSamples(samples, immediate);
    };
    setDelay(0, 10.0f, true);
    setDelay(1, 50.0f, true);
    ChannelBlock scratch(2, 64), expected(2, 64);
    for (std::size_t start = 0; start + 64 <= input.size(); start += 64)
    {
        if (start == 5056)
            setDelay(1, 12000.0f, false);
        float* in = const_cast<float*>(input.data()) + start;
        float* const* read = taps.processInPlace(scratch.get(), &in, 64);
        for (int t = 0; t < 2; ++t)
        {
            float* out = expected.data[t].data();
            own[t].process(&out, &in, 64);
            ASSERT_TRUE(std::equal(read[t], read[t] + 64, out)) << "tap " << t << " at " << start;
        }
    }
    EXPECT_GT(taps.getLine().getWindowSize(), 8192u) << "the window widened";
}

TEST(MultiTapOutEconomy, HandOversBetweenSteadyBlocksTakeEffectAtOnce)
{
    // Steady taps move their runs on from block to block, across many wraps of the window;
    // each hand-over below lands between two such blocks, and so do blocks through the
    // copying `process`. Every tap must read, block by block, what a line of its own with
    // the same economy reads.
    const auto input = noise(60000);
    constexpr std::uint32_t numTaps = 3;
    ondo::MultiTapOutEconomy taps(numTaps, 300.0f, ondo::Delay::linear);
    std::vector<std::unique_ptr<ondo::DelayEconomy>> own;
    for (std::uint32_t t = 0; t < numTaps; ++t)
        own.push_back(std::make_unique<ondo::DelayEconomy>(300.0f, ondo::Delay::linear));
    const auto forBoth = [&](std::uint32_t t, auto onTap, auto onLine) {
        onTap(taps.getTap(t));
        onLine(*own[t]);
    };
    const auto setDelay = [&](std::uint32_t t, float samples, bool immediate) {
        forBoth(t, [&](auto& tap) { tap.setDelayInSamples(samples, immediate); },
                [&](auto& line) { line.setDelayInSamples(samples, immediate); });
    };
    const std::vector<float> initial{3000.0f, 100.0f, 1000.5f};
    for (std::uint32_t t = 0; t < numTaps; ++t)
        setDelay(t, initial[t], true);
    struct HandOver
    {
        std::size_t block;
        std::function<void()> apply;
    };
    const std::vector<HandOver> handOvers{
        {200, [&] { setDelay(1, 2500.0f, true); }},
        {260, [&] { setDelay(2, 5000.25f, false); }},
        {330, [&] { setDelay(0, 100.0f, true); }},
        {400, [&] {
             forBoth(0, [](auto& tap) { tap.setInterpolationMode(ondo::Delay::hermite3); },
                     [](auto& line) { line.setInterpolationMode(ondo::Delay::hermite3); });
         }},
        {470, [&] {
             forBoth(1, [](auto& tap) { tap.setEconomy(false); }, [](auto& line) { line.setEconomy(false); });
         }},
        {540, [&] { setDelay(1, 4000.0f, true); }},
        {610, [&] {
             forBoth(1, [](auto& tap) { tap.setEconomy(true); }, [](auto& line) { line.setEconomy(true); });
         }},
        {700, [&] { setDelay(2, 11.0f, true); }},
        // Tap 0 glides past what the window holds: it widens the line in a block where the
        // taps after it are steady. Its own line, which once held 3000 samples as the shared
        // one held 4000, has the same window and widens in the same block.
        {750, [&] { setDelay(0, 9000.0f, false); }},
    };
    // Blocks of an odd size: at a delay of a whole sample and a half, the rounded start of a
    // fresh read follows the parity of the write position, which such blocks change.
    constexpr std::uint32_t n = 63;
    ChannelBlock scratch(numTaps, n), expected(numTaps, n);
    std::size_t next = 0;
    for (std::size_t block = 0; (block + 1) * n <= input.size(); ++block)
    {
        for (; next < handOvers.size() && handOvers[next].block == block; ++next)
            handOvers[next].apply();
        float* in = const_cast<float*>(input.data()) + block * n;
        // Now and then a block goes through the copying `process`, which moves the line on too.
        float* const* read = block % 150 == 149 ? (taps.process(scratch.get(), &in, n), scratch.get())
                                                : taps.processInPlace(scratch.get(), &in, n);
        for (std::uint32_t t = 0; t < numTaps; ++t)
        {
            float* out = expected.data[t].data();
            own[t]->process(&out, &in, n);
            ASSERT_TRUE(std::equal(read[t], read[t] + n, out)) << "tap " << t << " at block " << block;
        }
    }
    EXPECT_EQ(next, handOvers.size());
}

TEST(MultiTapOutEconomy, LongerBlockKeepsTheHistoryThatALineReadsNext)
{
    // A window sized for blocks of 64 at a delay of 10000 samples, then one block of 8192:
    // written before it is read, it must not take the places of the samples read next. The
    // shared line and a line of its own alike give in[t - 10000].
    const auto input = noise(30000);
    std::vector<std::uint32_t> blocks(200, 64);
    blocks.push_back(8192);
    ondo::MultiTapOutEconomy taps(1, 500.0f, ondo::Delay::nearest);
    ondo::Delay own(500.0f, ondo::Delay::nearest);
    taps.setDelayInSamples(0, 10000.0f, true);
    own.setDelayInSamples(10000.0f, true);
    const auto shared = run(taps, input, blocks);
    const auto alone = run(own, input, blocks);
    for (std::size_t t = 0; t < input.size(); ++t)
    {
        const float expected = t >= 10000 ? input[t - 10000] : 0.0f;
        ASSERT_EQ(shared.data[0][t], expected) << t;
        ASSERT_EQ(alone.data[0][t], expected) << t;
    }
}

TEST(MultiTapOutEconomy, GlidingTapEndsExactlyOnItsTarget)
{
    const auto input = noise(4096);
    ondo::MultiTapOutEconomy taps(1, 110.0f, ondo::Delay::hermite3);
    taps.setEconomy(false);
    taps.setInterpolationTime(10.0f);
    taps.setDelayInSamples(0, 30.0f, true);
    taps.setDelayInSamples(0, 400.0f);
    const auto out = run(taps, input);
    for (std::size_t t = 1200; t < input.size(); ++t)
        ASSERT_EQ(out.data[0][t], input[t - 400]) << t;
}

TEST(MultiTapOutEconomy, ProcessAllocatesNothing)
{
    ondo::MultiTapOutEconomy taps(16, 110.0f, ondo::Delay::linear);
    for (std::uint32_t t = 0; t < 16; ++t)
        taps.setDelay(t, 20.0f + static_cast<float>(t), true);
    const auto input = noise(512);
    ChannelBlock out(16, 512);
    float* in = const_cast<float*>(input.data());
    taps.process(out.get(), &in, 512);
    tarvo::testing::AllocationScope scope;
    taps.process(out.get(), &in, 512);
    for (std::uint32_t t = 0; t < 16; ++t)
        taps.setDelay(t, 40.0f - static_cast<float>(t));
    taps.process(out.get(), &in, 512);
    taps.process(out.get(), &in, 200);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
