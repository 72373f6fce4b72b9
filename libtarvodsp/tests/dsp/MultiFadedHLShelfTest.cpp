#include "dsp/TarvoDspFadedHLShelf.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"

#include "AllocationCounter.h"
#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using tarvo::testing::noise;

using ondo::FadedHLShelf;
using ondo::HLShelfParameters;
using ondo::MultiFadedHLShelf;

HLShelfParameters decay(int channel)
{
    return {0.0f, -1.0f - 0.3f * channel, -2.0f - 0.5f * channel, -6.0f - channel, 177.0f, 5657.0f};
}

TEST(FadedHLShelf, StartsAtTheDefaultsAndKeepsWhatWasAsked)
{
    FadedHLShelf shelf;
    EXPECT_EQ(shelf.getParameters(), (HLShelfParameters{0, 0, 0, 0, 250, 4000}));
    shelf.setParameters(1, 2, 3, 4, 5000, 100, false);
    EXPECT_EQ(shelf.getParameters(), (HLShelfParameters{1, 2, 3, 4, 5000, 100}));
}

TEST(FadedHLShelf, MeasuredSineFollowsTheDesignAfterTheFade)
{
    FadedHLShelf shelf;
    const HLShelfParameters p{0.0f, 4.0f, -2.0f, -8.0f, 200.0f, 3000.0f};
    shelf.setParameters(p, false);
    const ondo::BiquadCoefficients design = ondo::designHLShelf(p, 44100.0f);
    for (double hertz : {100.0, 1000.0, 8000.0})
    {
        const double measured = tarvo::testing::measuredGain(
            [&](float* o, const float* i, int n) { shelf.filterBlock(o, i, static_cast<std::uint32_t>(n)); }, hertz,
            44100.0);
        // Projection over about 4096 float samples: 0.02 dB.
        EXPECT_NEAR(20.0 * std::log10(measured), tarvo::testing::magnitudeDb(design, hertz, 44100.0), 0.02) << hertz;
    }
}

TEST(FadedHLShelf, KeepsItsCoefficientsAcrossARateChange)
{
    FadedHLShelf shelf;
    shelf.setParameters({0.0f, 0.0f, 0.0f, -6.0f, 250.0f, 2000.0f}, true);
    const ondo::BiquadCoefficients before = shelf.getSteadyFilter()->getCoefficients();
    shelf.changeSampleRate(96000.0f);
    EXPECT_EQ(shelf.getSteadyFilter()->getCoefficients(), before);
    EXPECT_FALSE(shelf.isChangePending());
}

TEST(FadedHLShelf, AllGainsZeroRunsThePureGainPath)
{
    FadedHLShelf shelf;
    shelf.setParameters({0, 0, 0, 0, 250, 4000}, true);
    EXPECT_TRUE(shelf.getSteadyFilter()->isGainOnlySection());
    std::vector<float> in = noise(64, 5), out(64);
    shelf.filterBlock(out.data(), in.data(), 64);
    EXPECT_EQ(out, in);
}

// Channels are run side by side when they play alone: every output sample must equal what
// the same channel gives through its own kernel, in every stage and across changes.
TEST(MultiFadedHLShelf, SideBySideChannelsMatchChannelByChannel)
{
    const std::uint32_t numChannels = 11; // a full group of lanes and a partial one
    MultiFadedHLShelf multi(numChannels);
    std::vector<FadedHLShelf> single(numChannels);
    for (auto& s : single)
    {
        s.setCrossfadeTime(30.0f);
        s.setParameters(HLShelfParameters{}, false);
    }
    std::vector<std::vector<float>> in(numChannels), out(numChannels), expected(numChannels);
    const std::uint32_t n = 61; // not a multiple of the four samples a step takes
    std::vector<float*> ins(numChannels), outs(numChannels);
    int sideBySideBlocks = 0;
    for (int block = 0; block < 100; ++block)
    {
        if (block % 40 == 1)
            for (std::uint32_t c = 0; c < numChannels; ++c)
            {
                const HLShelfParameters p = c == 3 ? HLShelfParameters{} : decay(static_cast<int>(c) + block % 3);
                multi.setParameters(c, p, false);
                single[c].setParameters(p, false);
            }
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            in[c] = noise(n, 100u * static_cast<unsigned>(block) + c);
            out[c].assign(n, 0.0f);
            expected[c].assign(n, 0.0f);
            ins[c] = in[c].data();
            outs[c] = out[c].data();
            single[c].filterBlock(expected[c].data(), in[c].data(), n);
        }
        int steadyRecursive = 0;
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            const ondo::BiquadIPP* alone = multi.getChannel(c).getSteadyFilter();
            steadyRecursive += alone != nullptr && !alone->isGainOnlySection() && !multi.getChannel(c).isChangePending();
        }
        sideBySideBlocks += steadyRecursive >= 2;
        multi.process(outs.data(), ins.data(), n);
        for (std::uint32_t c = 0; c < numChannels; ++c)
            ASSERT_EQ(out[c], expected[c]) << "block " << block << " channel " << c;
    }
    EXPECT_GE(sideBySideBlocks, 10) << "the side-by-side path was taken";
}

// Steady blocks reuse the last round of stage updates. Changes that reach a channel any way
// (through the shelf, straight to the channel, while its outlet is cut, by a rate change)
// must still fade exactly as in a shelf of its own, and quiet blocks must occur between them.
TEST(MultiFadedHLShelf, ChangesAfterQuietStretchesFadeAsInAShelfOfItsOwn)
{
    constexpr std::uint32_t numChannels = 3, n = 64;
    const HLShelfParameters flat{};
    struct Event
    {
        int block;
        std::uint32_t channel; // numChannels: every channel, through the shelf
        HLShelfParameters parameters;
        bool connected = true; ///< channel 2's outlet from this block on
    };
    const std::vector<Event> events{
        {10, 1, decay(1)},        // straight to the channel, past the shelf
        {40, 2, decay(2), false}, // waits while the outlet is cut
        {46, 2, decay(2), true},  // and fades once it is back
        {80, numChannels, flat},  // every channel back to flat
        {120, 0, decay(0)},
    };
    MultiFadedHLShelf multi(numChannels);
    std::vector<FadedHLShelf> single(numChannels);
    for (auto& s : single)
    {
        s.setCrossfadeTime(MultiFadedHLShelf::shelfCrossfadeTimeMs);
        s.setParameters(flat, false);
    }
    std::vector<std::vector<float>> io(numChannels), expected(numChannels);
    std::vector<float*> ptrs(numChannels);
    bool connected = true;
    int quietBlocks = 0;
    for (int block = 0; block < 160; ++block)
    {
        for (const Event& e : events)
        {
            if (e.block != block)
                continue;
            for (std::uint32_t c = 0; c < numChannels; ++c)
                if (e.channel == numChannels || e.channel == c)
                {
                    if (e.channel == numChannels)
                        multi.setParameters(c, e.parameters, false);
                    else
                        multi.getChannel(c).setParameters(e.parameters, false);
                    single[c].setParameters(e.parameters, false);
                }
            connected = e.connected;
            const std::int16_t counts[2 * numChannels] = {1, 1, 1, 1, 1, connected ? std::int16_t{1} : std::int16_t{0}};
            multi.setConnections(counts);
        }
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            io[c] = noise(n, 1000u * static_cast<unsigned>(block) + c);
            expected[c] = io[c];
            ptrs[c] = io[c].data();
            // A channel cut off gives silence and its stage waits.
            if (c == 2 && !connected)
                std::fill(expected[c].begin(), expected[c].end(), 0.0f);
            else
                single[c].filterBlock(expected[c].data(), expected[c].data(), n);
        }
        if (multi.beginBlock())
            multi.passBlock();
        else
            multi.process(ptrs.data(), ptrs.data(), n);
        quietBlocks += multi.wasLastBlockQuiet() ? 1 : 0;
        for (std::uint32_t c = 0; c < numChannels; ++c)
            ASSERT_EQ(io[c], expected[c]) << "block " << block << " channel " << c;
    }
    EXPECT_GE(quietBlocks, 40) << "the quiet path was taken";
}

TEST(MultiFadedHLShelf, ProcessingInPlaceAllocatesNothing)
{
    MultiFadedHLShelf multi(8);
    multi.setParameters(decay(1), true);
    std::vector<std::vector<float>> io(8, noise(512, 9));
    std::vector<float*> ptrs(8);
    for (int c = 0; c < 8; ++c)
        ptrs[c] = io[c].data();
    tarvo::testing::AllocationScope scope;
    for (int b = 0; b < 20; ++b)
    {
        if (b == 5)
            multi.setParameters(decay(2), false);
        multi.process(ptrs.data(), ptrs.data(), 512);
    }
    EXPECT_EQ(scope.count(), 0u);
}

TEST(MultiFadedHLShelf, ConstructionSetsThirtyMillisecondsAndTheDefaults)
{
    MultiFadedHLShelf multi(2);
    EXPECT_EQ(multi.getChannel(1).getCrossfadeTime(), 30.0f);
    EXPECT_EQ(multi.getChannel(0).getParameters(), HLShelfParameters{});
    multi.setNumChannels(3);
    EXPECT_EQ(multi.getChannel(2).getCrossfadeTime(), 5.0f) << "a later channel keeps the plain default";
}
} // namespace
