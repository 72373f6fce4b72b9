#include "dsp/TarvoDspRamp.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace
{
// A control thread keeps retargeting while the audio thread fills blocks. Run under
// ThreadSanitizer in CI: the hand-over must be free of data races, the ramp must never leave
// the range of the values it was given, and it must end on the last target.
TEST(RampConcurrency, TargetsSetWhileTheAudioThreadFills)
{
    ondo::Ramp ramp;
    ramp.setTarget(0.0f, true);
    std::atomic<bool> running{true};
    std::thread control([&] {
        for (int i = 0; i < 20000; ++i)
            ramp.setTarget(static_cast<float>(i % 2), 1.0 + (i % 7));
        ramp.setTarget(0.25f, 3.0);
        running = false;
    });
    std::vector<float> block(64);
    bool inRange = true;
    while (running)
    {
        ramp.fill(block.data(), 64);
        for (float v : block)
            inRange = inRange && v >= 0.0f && v <= 1.0f; // false for NaN too
    }
    control.join();
    for (int b = 0; b < 10; ++b)
        ramp.fill(block.data(), 64);
    // While targets race in, a block may pair one glide's slope with another's length; the
    // values may then jump, but never beyond the targets 0 and 1 it glides between.
    EXPECT_TRUE(inRange);
    EXPECT_EQ(block.back(), 0.25f);
}
} // namespace
