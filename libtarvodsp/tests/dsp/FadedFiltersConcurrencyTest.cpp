#include "dsp/TarvoDspFadedBiquad.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"
#include "dsp/TarvoDspPendingCoefficients.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

namespace
{
// Two designing threads publish groups whose values are all equal while the audio thread
// takes them: a group must never arrive mixed from two writes. Run under ThreadSanitizer.
TEST(FadedFiltersConcurrency, PendingGroupsNeverTear)
{
    ondo::PendingCoefficients pending;
    pending.resize(24);
    std::atomic<bool> stop{false};
    auto writer = [&](float base) {
        std::vector<float> group(24);
        for (int i = 0; !stop; ++i)
        {
            std::fill(group.begin(), group.end(), base + static_cast<float>(i % 100000));
            pending.write(group.data(), false);
        }
    };
    std::thread first(writer, 0.0f), second(writer, 1.0e6f);
    int torn = 0, taken = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (taken < 5000 && std::chrono::steady_clock::now() < deadline)
    {
        if ((pending.getFlags() & ondo::PendingCoefficients::changePending) == 0)
            continue;
        const float* group = pending.take();
        ++taken;
        for (int k = 1; k < 24; ++k)
            torn += group[k] != group[0];
    }
    stop = true;
    first.join();
    second.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(taken, 5000);
}

// A control thread redesigns while the audio thread runs blocks through the fades: no data
// race, finite output, and the last design given is the one that plays in the end.
TEST(FadedFiltersConcurrency, CoefficientsSetWhileTheAudioThreadRuns)
{
    ondo::FadedBiquad filter;
    filter.setCrossfadeTime(1.0f);
    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; i < 5000; ++i)
            filter.setCoefficients(ondo::BiquadCoefficients{0.1 + (i % 10) * 0.1, 0.05, 0, 1, -0.5, 0.1}, false);
        filter.setCoefficients(ondo::BiquadCoefficients{0.25, 0, 0, 1, 0, 0}, false);
        running = false;
    });
    std::vector<float> block(64, 1.0f);
    bool finite = true;
    while (running)
    {
        std::fill(block.begin(), block.end(), 1.0f);
        filter.filterBlock(block.data(), block.data(), 64);
        for (float v : block)
            finite &= std::isfinite(v);
    }
    control.join();
    for (int b = 0; b < 10; ++b)
    {
        std::fill(block.begin(), block.end(), 1.0f);
        filter.filterBlock(block.data(), block.data(), 64);
    }
    EXPECT_TRUE(finite);
    EXPECT_EQ(block.back(), 0.25f);
}
// Shelves skip their stage updates in blocks where nothing was handed over: changes made
// while the audio thread runs, through the shelf or straight to a channel, must all be seen,
// so that the last design given is the one every channel plays in the end.
TEST(FadedFiltersConcurrency, ShelvesSetWhileTheAudioThreadSkipsQuietBlocks)
{
    constexpr std::uint32_t numChannels = 4;
    ondo::MultiFadedHLShelf multi(numChannels);
    multi.setCrossfadeTime(1.0f);
    const ondo::HLShelfParameters last{-3.0f, 0.0f, -1.0f, -2.0f, 177.0f, 5657.0f};
    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; i < 2000; ++i)
        {
            const ondo::HLShelfParameters p{0.0f, 0.0f, -0.1f * static_cast<float>(i % 7), 0.0f, 177.0f, 5657.0f};
            if (i % 2 == 0)
                multi.setParameters(p, false);
            else
                multi.getChannel(static_cast<std::uint32_t>(i) % numChannels).setParameters(p, false);
        }
        multi.setParameters(last, false);
        running = false;
    });
    std::vector<std::vector<float>> io(numChannels, std::vector<float>(64));
    std::vector<float*> ptrs(numChannels);
    const auto block = [&] {
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            std::fill(io[c].begin(), io[c].end(), 1.0f);
            ptrs[c] = io[c].data();
        }
        if (multi.beginBlock())
            multi.passBlock();
        else
            multi.process(ptrs.data(), ptrs.data(), 64);
    };
    while (running)
        block();
    control.join();
    for (int b = 0; b < 20; ++b)
        block();
    ondo::FadedHLShelf reference;
    reference.setParameters(last, true);
    for (std::uint32_t c = 0; c < numChannels; ++c)
    {
        ASSERT_NE(multi.getChannel(c).getSteadyFilter(), nullptr) << c;
        EXPECT_FALSE(multi.getChannel(c).isChangePending()) << c;
        EXPECT_EQ(multi.getChannel(c).getSteadyFilter()->getCoefficients(), reference.getSteadyFilter()->getCoefficients())
            << c;
    }
}
} // namespace
