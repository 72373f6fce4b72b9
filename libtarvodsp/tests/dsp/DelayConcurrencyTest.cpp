#include "dsp/TarvoDspDelayEconomy.h"
#include "dsp/TarvoDspMultiTapOutEconomy.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace
{
// A control thread keeps changing delays, modes, glide times and economy while the audio
// thread runs the lines. Run under ThreadSanitizer in CI: the hand-over must be free of data
// races; the lines must stay finite and settle on the last delays given.
TEST(DelayConcurrency, TargetsAndModesSetWhileTheAudioThreadReads)
{
    constexpr std::uint32_t numTaps = 4;
    ondo::MultiTapOutEconomy taps(numTaps, 100.0f, ondo::Delay::linear);
    ondo::DelayEconomy line(100.0f, ondo::Delay::linear);
    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; i < 20000; ++i)
        {
            const float ms = static_cast<float>(i % 97);
            const auto mode = static_cast<ondo::Delay::InterpolationMode>(i % 9);
            taps.setDelay(static_cast<std::uint32_t>(i) % numTaps, ms, i % 5 == 0);
            taps.getTap(static_cast<std::uint32_t>(i) % numTaps).setInterpolationMode(mode);
            taps.setEconomy(i % 3 != 0);
            taps.setInterpolationTime(1.0f + static_cast<float>(i % 4));
            line.setDelay(ms, i % 7 == 0);
            line.setInterpolationMode(mode);
            line.setEconomy(i % 2 == 0);
        }
        for (std::uint32_t t = 0; t < numTaps; ++t)
        {
            taps.getTap(t).setInterpolationMode(ondo::Delay::linear);
            taps.setDelayInSamples(t, 10.0f * static_cast<float>(t + 1));
        }
        line.setDelayInSamples(25.0f);
        running = false;
    });
    std::vector<float> input(64, 0.5f);
    std::vector<std::vector<float>> outs(numTaps, std::vector<float>(64));
    std::vector<float*> outPointers;
    for (auto& o : outs)
        outPointers.push_back(o.data());
    std::vector<float> single(64);
    float* in = input.data();
    float* singleOut = single.data();
    bool allFinite = true;
    const auto check = [&] {
        for (const auto& o : outs)
            for (float v : o)
                allFinite &= std::isfinite(v);
        for (float v : single)
            allFinite &= std::isfinite(v);
    };
    while (running)
    {
        taps.process(outPointers.data(), &in, 64);
        line.process(&singleOut, &in, 64);
        check();
    }
    control.join();
    for (int b = 0; b < 40; ++b)
    {
        taps.process(outPointers.data(), &in, 64);
        line.process(&singleOut, &in, 64);
    }
    EXPECT_TRUE(allFinite);
    for (std::uint32_t t = 0; t < numTaps; ++t)
        EXPECT_EQ(taps.getTap(t).getRamp().getTargetValue(), 10.0f * static_cast<float>(t + 1));
    EXPECT_EQ(line.getLine().getDelayInSamples(), 25.0f);
    EXPECT_EQ(single.back(), 0.5f) << "a constant input comes out of the settled line";
}
} // namespace
