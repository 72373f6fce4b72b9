#include "reverb/QuorTarvoVerb.h"

#include "AllocationCounter.h"
#include "TestSignals.h"
#include "math/TarvoDspDenormals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{
using ondo::HLShelfParameters;
using ondo::Point3;

// A minute of audio in blocks of 64 while a control thread moves every source and changes
// every room parameter, as a host's main thread does while audio runs. Under
// ThreadSanitizer in CI: no data race; on the audio thread no allocation and no lock (the
// only lock of the tree is never touched here), and the output stays finite.
TEST(TarvoVerbConcurrency, EveryParameterChangesWhileAMinuteOfBlocksIsRendered)
{
    constexpr std::uint32_t sources = 6, speakers = 6, block = 64;
    Quor::TarvoVerb verb(8);
    verb.configure(44100.0f, block, sources, speakers);
    const HLShelfParameters flat{0.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f};
    for (auto setter : {&Quor::TarvoVerb::setDirectFilter, &Quor::TarvoVerb::setRoomFilter,
                        &Quor::TarvoVerb::setEarlyFilter, &Quor::TarvoVerb::setClusterFilter})
        (verb.*setter)(flat);
    verb.setReverbTimes({1.995f, 1.0f, 1.0f, 0.5f, 250.0f, 8000.0f}, 0.0f);

    tarvo::testing::ChannelBlock in(sources, block), out(speakers, block);
    const auto noise = tarvo::testing::seededNoise(block, 5, 0.3f);
    for (auto& channel : in.data)
        std::copy(noise.begin(), noise.end(), channel.begin());
    verb.process(out.pointers.data(), in.pointers.data(), block);

    std::atomic<bool> audioDone{false};
    std::atomic<int> changes{0};
    std::thread control([&] {
        for (int i = 0; !audioDone; ++i)
        {
            const float t = float(i % 100) / 100.0f;
            const float angle = 6.2831855f * t;
            verb.setSourcePosition(static_cast<std::uint32_t>(i) % sources,
                                   Point3(3.0f * std::sin(angle), 3.0f * std::cos(angle), t - 0.5f));
            verb.setReverbTimes({0.5f + 3.0f * t, 0.5f + t, 1.0f, 0.3f + 0.5f * t, 200.0f + 100.0f * t,
                                 4000.0f + 4000.0f * t},
                                -6.0f * t);
            verb.setDirectFilter({-3.0f * t, 2.0f * t, 0.0f, -4.0f * t, 177.0f, 5657.0f});
            verb.setRoomFilter({0.0f, -t, 0.0f, t, 300.0f, 3000.0f});
            verb.setEarlyFilter({-t, 0.0f, t, 0.0f, 177.0f, 5657.0f});
            verb.setClusterFilter({-2.0f * t, 0.0f, 0.0f, -t, 177.0f, 5657.0f});
            verb.setEarlyMin(10.0f + 20.0f * t);
            verb.setEarlyMax(40.0f + 60.0f * t);
            verb.setEarlyDistribution(0.1f + 0.8f * t);
            verb.setEarlyWidth(10.0f + 170.0f * t);
            verb.setEarlyShape(t);
            verb.setClusterMin(45.0f + 50.0f * t);
            verb.setClusterMax(110.0f + 150.0f * t);
            verb.setClusterDistribution(0.9f - 0.8f * t);
            verb.setReverbMin(100.0f + 300.0f * t);
            verb.setReverbDensity(0.2f + 3.8f * t);
            verb.setAirEnabled(i % 2 == 0);
            verb.setAirCutoff(2000.0f + 10000.0f * t);
            verb.setInfinite(i % 37 == 0);
            if (i % 25 == 0)
                verb.setSpeakerPositions(ondo::Point3Array::defaultLayout(speakers));
            changes = i + 1;
        }
    });

    ondo::primitives::setDenormalsAreZero(true);
    tarvo::testing::ThreadAllocationScope audioThread;
    bool finite = true;
    const int blocks = static_cast<int>(60.0 * 44100.0 / block);
    for (int b = 0; b < blocks; ++b)
    {
        verb.process(out.pointers.data(), in.pointers.data(), block);
        for (const auto& channel : out.data)
            for (float v : channel)
                finite &= std::isfinite(v);
    }
    const std::size_t allocations = audioThread.count();
    ondo::primitives::setDenormalsAreZero(false);
    audioDone = true;
    control.join();
    EXPECT_GT(changes.load(), 10) << "the control thread must have run alongside";
    EXPECT_TRUE(finite);
    EXPECT_EQ(allocations, 0u);
}
} // namespace
