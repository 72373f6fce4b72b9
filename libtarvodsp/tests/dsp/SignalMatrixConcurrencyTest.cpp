#include "dsp/TarvoDspSignalMatrix.h"

#include "TestBlock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{
// A control thread keeps writing whole gain sets while the audio thread crosses ramp
// boundaries, where it copies the pending set. Run under ThreadSanitizer in CI: the hand-over
// must be free of data races, every output finite, and the matrix must end on the last set.
TEST(SignalMatrixConcurrency, GainSetsWrittenWhileTheAudioThreadMixes)
{
    ondo::SignalMatrix m(4, 2);
    m.setup(8000.0f, 64);
    m.setRampTime(1.25f); // ten samples: a boundary every few samples of each block
    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; i < 20000; ++i)
            m.setGains(static_cast<float>(i % 3), false);
        m.setGains(0.25f, false);
        running.store(false, std::memory_order_release);
    });
    tarvo::testing::Block in(4, 64, 1.0f), out(2, 64);
    bool allFinite = true;
    while (running.load(std::memory_order_acquire))
    {
        m.process(out.get(), in.get(), 64);
        for (float v : out.data[0])
            allFinite = allFinite && std::isfinite(v) && v >= 0.0f && v <= 8.0f;
    }
    control.join();
    for (int b = 0; b < 4; ++b)
        m.process(out.get(), in.get(), 64);
    EXPECT_TRUE(allFinite) << "each output sums four gains between 0 and 2";
    // Four inputs of 1 at 0.25 each; 0.25 and its sums are exact in binary.
    for (int k = 0; k < 2; ++k)
        EXPECT_EQ(out.data[k][63], 1.0f) << k;
}
} // namespace
