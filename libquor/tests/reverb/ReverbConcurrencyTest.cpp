#include "reverb/QuorReverb.h"

#include "AllocationCounter.h"
#include "TestSignals.h"
#include "math/TarvoDspDenormals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{
// A control thread keeps changing the decay, the band ratios and the delays while the audio
// thread processes. Run under ThreadSanitizer in CI: no data race, no lock, no allocation on
// the audio thread, and the output stays finite.
TEST(ReverbConcurrency, ParametersChangeWhileTheAudioThreadProcesses)
{
    Quor::Reverb reverb(8);
    tarvo::testing::ChannelBlock in(8, 64), out(8, 64);
    {
        const auto values = tarvo::testing::seededNoise(64, 3, 0.5f);
        std::copy(values.begin(), values.end(), in.data[0].begin()); // keeps the channel pointers valid
    }
    reverb.process(out.pointers.data(), in.pointers.data(), 64);

    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; running && i < 3000; ++i)
        {
            reverb.setTr0(0.5f + float(i % 40) * 0.1f, false);
            reverb.setTrl(0.5f + float(i % 3), false);
            reverb.setTrh(0.3f + float(i % 5) * 0.1f, false);
            reverb.setFh(2000.0f + float(i % 7) * 1000.0f, false);
            reverb.setInfinite(i % 50 == 0);
            reverb.setAirEnabled(i % 2 == 0);
            reverb.setAirCutoff(5000.0f + float(i % 3) * 1000.0f);
            // Below the lines' 300 ms: no line grows, so nothing is freed under the reader.
            reverb.setDelayRange(20.0f + float(i % 30), 600.0f + float(i % 11) * 10.0f, 0.5f, false);
        }
        running = false;
    });

    ondo::primitives::setDenormalsAreZero(true);
    tarvo::testing::ThreadAllocationScope audioThread;
    bool finite = true;
    int blocks = 0;
    while (running || blocks < 100)
    {
        reverb.process(out.pointers.data(), in.pointers.data(), 64);
        for (const auto& channel : out.data)
            for (float v : channel)
                finite &= std::isfinite(v);
        ++blocks;
    }
    const std::size_t allocations = audioThread.count();
    ondo::primitives::setDenormalsAreZero(false);
    control.join();
    EXPECT_TRUE(finite);
    EXPECT_EQ(allocations, 0u);
}
} // namespace
