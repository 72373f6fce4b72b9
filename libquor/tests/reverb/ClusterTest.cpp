#include "reverb/QuorCluster.h"

#include "AllocationCounter.h"
#include "TestSignals.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using Quor::Cluster;
using tarvo::testing::ChannelBlock;

constexpr float rate = 44100.0f;

std::size_t firstNonZero(const std::vector<float>& x)
{
    std::size_t i = 0;
    while (i < x.size() && x[i] == 0.0f)
        ++i;
    return i;
}

/// Runs `cluster` over `input` in blocks of the sizes given, cycling through them.
std::vector<std::vector<float>> render(Cluster& cluster, std::vector<std::vector<float>> input,
                                       const std::vector<std::uint32_t>& blockSizes)
{
    const auto channels = static_cast<std::uint32_t>(input.size());
    const std::size_t length = input.front().size();
    std::vector<std::vector<float>> output(channels, std::vector<float>(length));
    ChannelBlock in(channels, length), out(channels, length);
    in.data = input;
    for (std::size_t start = 0, b = 0; start < length; ++b)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(blockSizes[b % blockSizes.size()], length - start));
        std::vector<float*> ins, outs;
        for (std::uint32_t c = 0; c < channels; ++c)
        {
            ins.push_back(in.data[c].data() + start);
            outs.push_back(output[c].data() + start);
        }
        cluster.process(outs.data(), ins.data(), n);
        start += n;
    }
    return output;
}

TEST(Cluster, DelaysStartSpreadFromTwentyToEightyMilliseconds)
{
    Cluster two(2);
    const auto pair = two.getDelays();
    EXPECT_FLOAT_EQ(pair[0], 20.0f);
    EXPECT_FLOAT_EQ(pair[1], 80.0f);
    Cluster eight(8);
    const auto spread = eight.getDelays();
    for (std::uint32_t i = 0; i < 8; ++i)
        EXPECT_NEAR(spread[i], 20.0f + 60.0f * float(i) / 7.0f, 1e-4f);
    EXPECT_EQ(eight.getInletName(0), "in tap #1");
    EXPECT_EQ(eight.getOutletName(7), "out tap #8");
    EXPECT_EQ(eight.getInletName(8), "");
    EXPECT_EQ(eight.getOutletName(8), "dumpout");
}

TEST(Cluster, EveryOutputHoldsTheInputAtItsOwnDelayWithItsEnergy)
{
    // Four channels mix by a Hadamard matrix: each output gets the impulse at +-1/2, then
    // its own delay, read "nearest".
    Cluster cluster(4);
    std::vector<std::vector<float>> input(4, std::vector<float>(5000, 0.0f));
    input[0][0] = 1.0f;
    const auto output = render(cluster, input, {64});
    const auto delays = cluster.getDelays();
    double energy = 0.0;
    for (std::uint32_t c = 0; c < 4; ++c)
    {
        const std::size_t at = firstNonZero(output[c]);
        EXPECT_EQ(at, static_cast<std::size_t>(std::lround(delays[c] * rate / 1000.0f))) << c;
        ASSERT_LT(at, output[c].size());
        EXPECT_NEAR(std::abs(output[c][at]), 0.5f, 1e-6f);
        for (float v : output[c])
            energy += double(v) * v;
    }
    EXPECT_NEAR(energy, 1.0, 1e-6) << "an orthonormal mix and pure delays keep the energy";
}

TEST(Cluster, ChangingBlockSizesLoseNoSample)
{
    std::vector<std::vector<float>> input;
    for (unsigned c = 0; c < 8; ++c)
        input.push_back(tarvo::testing::seededNoise(6000, 10 + c));
    Cluster whole(8), pieces(8);
    const auto reference = render(whole, input, {512});
    const auto cut = render(pieces, input, {64, 100, 17, 512, 1, 333});
    EXPECT_EQ(cut, reference);
}

TEST(Cluster, InPlaceBlocksGiveWhatCopiedBlocksGive)
{
    // Settled lines move their runs on from block to block, across many wraps of their
    // windows; jumps, glides and an emptying land between such blocks, and now and then a
    // block is copied (every 150th).
    // Blocks of 63 change the parity of the write position, which decides the rounding of a
    // delay of a whole sample and a half. Each in-place block must equal a copying cluster's.
    constexpr std::uint32_t numLines = 8, n = 63;
    Cluster inPlace(numLines), copying(numLines);
    std::vector<std::vector<float>> input;
    for (std::uint32_t c = 0; c < numLines; ++c)
        input.push_back(tarvo::testing::seededNoise(n * 1200, 40 + c));
    const auto setBoth = [&](const ondo::Vector<float>& ms, bool immediate) {
        for (Cluster* cluster : {&inPlace, &copying})
            cluster->setDelays(ms, immediate);
    };
    // 882.5 samples: 20.0113... ms.
    const float half = 882.5f * 1000.0f / rate;
    ChannelBlock scratch(numLines, n), expected(numLines, n);
    for (std::size_t block = 0; block < 1200; ++block)
    {
        // Line 7's jump widens its window while the write position lies in the upper half of
        // the wider one: the block just written moves.
        if (block == 150)
            setBoth({half, 25.0f, 30.0f, 35.0f, 40.0f, 45.0f, 50.0f, 290.0f}, true);
        if (block == 400)
            setBoth({half, 25.0f, 30.0f, 35.0f, 40.0f, 45.0f, 50.0f, 120.0f}, false);
        if (block == 700)
            setBoth({22.0f, 25.0f, 30.0f, 35.0f, 40.0f, 45.0f, 50.0f, 55.0f}, true);
        // Emptied lines start again from their smallest windows, where the write position
        // (63000) lies elsewhere than in the wider ones.
        if (block == 1000)
            for (Cluster* cluster : {&inPlace, &copying})
                cluster->clear();
        std::vector<float*> in;
        for (auto& channel : input)
            in.push_back(channel.data() + block * n);
        float* const* read = block % 150 == 149 ? (inPlace.process(scratch.get(), in.data(), n), scratch.get())
                                                : inPlace.processInPlace(scratch.get(), in.data(), n);
        copying.process(expected.get(), in.data(), n);
        for (std::uint32_t c = 0; c < numLines; ++c)
            ASSERT_TRUE(std::equal(read[c], read[c] + n, expected.data[c].begin()))
                << "line " << c << ", block " << block;
    }
}

TEST(Cluster, SetDelaysJumpsOrGlidesOverFiftyMilliseconds)
{
    Cluster cluster(4);
    ondo::Vector<float> target{30.0f, 40.0f, 50.0f, 60.0f};
    cluster.setDelays(target, false);
    EXPECT_EQ(cluster.getDelays()[2], 50.0f);
    std::vector<std::vector<float>> input(4, std::vector<float>(8000, 0.0f));
    input[0][0] = 1.0f;
    // Channel 0 glides from 20 to 30 ms over 50 ms: an impulse sent as the glide starts comes
    // out when t = 20 + 10 t / 50, at 25 ms.
    const auto gliding = render(cluster, input, {64});
    EXPECT_NEAR(double(firstNonZero(gliding[0])), 0.025 * rate, 2.0);
    // With the glide over, the next impulse comes out exactly at the target.
    const auto settled = render(cluster, input, {64});
    for (std::uint32_t c = 0; c < 4; ++c)
        EXPECT_EQ(firstNonZero(settled[c]), static_cast<std::size_t>(std::lround(target[c] * rate / 1000.0f)));

    Cluster jumping(4);
    jumping.setDelays(target, true);
    const auto jumped = render(jumping, input, {64});
    for (std::uint32_t c = 0; c < 4; ++c)
        EXPECT_EQ(firstNonZero(jumped[c]), static_cast<std::size_t>(std::lround(target[c] * rate / 1000.0f)));
}

TEST(Cluster, ProcessAllocatesNothing)
{
    Cluster cluster(16);
    ChannelBlock in(16, 512, 0.25f), out(16, 512);
    cluster.process(out.pointers.data(), in.pointers.data(), 512);
    tarvo::testing::AllocationScope scope;
    for (std::uint32_t n : {512u, 64u, 100u, 512u, 1u})
        cluster.process(out.pointers.data(), in.pointers.data(), n);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
