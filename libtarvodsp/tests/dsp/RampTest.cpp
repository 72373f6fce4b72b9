#include "dsp/TarvoDspRamp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
/// A ramp standing at `start` and set to glide to `target` over exactly `samples` samples
/// at a rate of 1000 Hz, where one sample is one millisecond.
ondo::Ramp glide(float start, float target, int samples)
{
    ondo::Ramp ramp;
    ramp.setSampleRate(1000.0f);
    ramp.setTarget(start, true);
    ramp.setTarget(target, static_cast<double>(samples));
    return ramp;
}

TEST(Ramp, NewRampStandsAtZero)
{
    ondo::Ramp ramp;
    float out[3] = {9, 9, 9};
    ramp.fill(out, 3);
    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[2], 0.0f);
    EXPECT_FALSE(ramp.isRunning());
    EXPECT_EQ(ramp.getRampTime(), 30.0f);
}

TEST(Ramp, GlideOfTenReadInBlocksOfFour)
{
    auto ramp = glide(0.0f, 10.0f, 10);
    ASSERT_EQ(ramp.getTotalSamples(), 10u);
    std::vector<float> a(4), b(4), c(4);
    ramp.fill(a.data(), 4);
    ramp.fill(b.data(), 4);
    ramp.fill(c.data(), 4);
    // Each block runs evenly from where the ramp stands to where it will stand k steps on;
    // a block's first sample repeats the previous block's last.
    // Interior values within one float step of the exact thirds; block ends are exact.
    const std::vector<float> expectedA{0.0f, 4.0f / 3.0f, 8.0f / 3.0f, 4.0f};
    const std::vector<float> expectedB{4.0f, 16.0f / 3.0f, 20.0f / 3.0f, 8.0f};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_NEAR(a[i], expectedA[i], 1e-6f) << i;
        EXPECT_NEAR(b[i], expectedB[i], 1e-6f) << i;
    }
    EXPECT_EQ(a[3], 4.0f);
    EXPECT_EQ(b[0], 4.0f);
    EXPECT_EQ(b[3], 8.0f);
    EXPECT_EQ(c[0], 8.0f);
    EXPECT_EQ(c[1], 10.0f) << "the last two steps of the glide end on the target";
    EXPECT_EQ(c[2], 10.0f) << "the tail after the glide is constant";
    EXPECT_EQ(c[3], 10.0f);
    EXPECT_FALSE(ramp.isRunning());
}

TEST(Ramp, GlideEndsExactlyOnTargetWhateverTheRounding)
{
    auto ramp = glide(0.1f, 0.7f, 7);
    float out[16];
    ramp.fill(out, 3);
    ramp.fill(out + 3, 1);
    ramp.fill(out + 4, 12);
    EXPECT_EQ(out[15], 0.7f);
    EXPECT_EQ(ramp.getCurrentValue(), 0.7f);
}

TEST(Ramp, ZeroTimeJumps)
{
    auto ramp = glide(0.0f, 1.0f, 100);
    ramp.setTarget(5.0f, 0.0);
    EXPECT_FALSE(ramp.isRunning());
    EXPECT_EQ(ramp.getCurrentValue(), 5.0f);
    EXPECT_EQ(ramp.getRampTime(), 0.0f);
}

TEST(Ramp, TimeThatRoundsToNoSampleSnapsOnFill)
{
    ondo::Ramp ramp;
    ramp.setTarget(2.0f, 0.001); // 0.0441 samples at 44100 Hz
    EXPECT_FALSE(ramp.isRunning());
    EXPECT_FALSE(std::isfinite(ramp.getIncrement()));
    float out[2];
    ramp.fill(out, 2);
    EXPECT_EQ(out[0], 2.0f);
}

TEST(Ramp, FillOfZeroSamplesChangesNothing)
{
    auto ramp = glide(0.0f, 1.0f, 10);
    ramp.fill(nullptr, 0);
    EXPECT_EQ(ramp.getRemainingSamples(), 10u);
}

TEST(Ramp, GetValueLooksAheadWithoutMoving)
{
    auto ramp = glide(0.0f, 1.0f, 10);
    EXPECT_FLOAT_EQ(ramp.getValue(5), 0.5f);
    EXPECT_EQ(ramp.getValue(10), 1.0f);
    EXPECT_EQ(ramp.getValue(50), 1.0f);
    EXPECT_EQ(ramp.getRemainingSamples(), 10u);
}

TEST(Ramp, SampleRateChangeKeepsRemainingTime)
{
    auto ramp = glide(0.0f, 1.0f, 100); // 100 ms at 1000 Hz
    float out[40];
    ramp.fill(out, 40); // 60 ms to go
    ramp.setSampleRate(2000.0f);
    EXPECT_EQ(ramp.getRemainingSamples(), 120u);
    EXPECT_EQ(ramp.getTotalSamples(), 200u);
    EXPECT_FLOAT_EQ(ramp.getIncrement(), (1.0f - 0.4f) / 120.0f);

    ondo::Ramp still;
    still.setTarget(3.0f, true);
    still.setSampleRate(96000.0f);
    EXPECT_EQ(still.getSampleRate(), 96000.0f);
    EXPECT_EQ(still.getRemainingSamples(), 0u);
    EXPECT_EQ(still.getCurrentValue(), 3.0f);
}

TEST(Ramp, RampTimeIsFlooredAndLeavesARunningGlide)
{
    auto ramp = glide(0.0f, 1.0f, 10);
    ramp.setRampTime(-5.0f);
    EXPECT_EQ(ramp.getRampTime(), 0.0f);
    EXPECT_EQ(ramp.getRemainingSamples(), 10u);
    ramp.setTarget(2.0f, false); // uses the floored time in force: a jump
    EXPECT_EQ(ramp.getCurrentValue(), 2.0f);
}
} // namespace
