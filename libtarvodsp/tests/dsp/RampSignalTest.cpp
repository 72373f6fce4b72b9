#include "dsp/TarvoDspMultiRampSignal.h"
#include "dsp/TarvoDspRampSignal.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
TEST(RampSignal, StartsAtUnitGain)
{
    ondo::RampSignal gain;
    std::vector<float> in(8, 0.5f), out(8);
    float* i = in.data();
    float* o = out.data();
    gain.processBlock(&o, &i, 8);
    EXPECT_EQ(out, in);
}

TEST(RampSignal, DrawsOneLineABlockEvenWhenTheGlideEndsInside)
{
    ondo::RampSignal gain;
    gain.setSampleRate(1000.0f);
    gain.setTarget(0.0f, 6.0); // six samples from 1 to 0
    std::vector<float> in(4, 1.0f), out(4);
    float* i = in.data();
    float* o = out.data();
    gain.process(&o, &i, 4); // from 1 to 1 - 4/6
    EXPECT_EQ(out[0], 1.0f);
    EXPECT_NEAR(out[3], 1.0f / 3.0f, 1e-6f);
    EXPECT_NEAR(out[1] - out[0], out[3] - out[2], 1e-6f) << "a straight line";
    gain.process(&o, &i, 4); // the glide ends after two samples; the line goes to 0 over four
    EXPECT_NEAR(out[0], 1.0f / 3.0f, 1e-6f);
    EXPECT_EQ(out[3], 0.0f);
    EXPECT_NEAR(out[1], 2.0f / 9.0f, 1e-6f);
}

TEST(RampSignal, InactiveInletGivesSilence)
{
    ondo::RampSignal gain;
    const std::int16_t counts[] = {0, 1};
    gain.setConnections(counts);
    std::vector<float> in(4, 1.0f), out(4, 3.0f);
    float* i = in.data();
    float* o = out.data();
    gain.processBlock(&o, &i, 4); // the analysis marks the unconnected inlet inactive
    EXPECT_EQ(out[2], 0.0f);
}

TEST(MultiRampSignal, ChannelsGlideIndependentlyWithoutAllocating)
{
    ondo::MultiRampSignal gains(3);
    ASSERT_EQ(gains.getNumInputs(), 3u);
    gains.setTarget(1, 0.0f, true);
    gains.setTarget(7, 0.0f, true); // out of range: ignored
    std::vector<std::vector<float>> in(3, std::vector<float>(64, 2.0f)), out(3, std::vector<float>(64));
    float* ins[] = {in[0].data(), in[1].data(), in[2].data()};
    float* outs[] = {out[0].data(), out[1].data(), out[2].data()};
    tarvo::testing::AllocationScope scope;
    gains.processBlock(outs, ins, 64);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_EQ(out[0][10], 2.0f);
    EXPECT_EQ(out[1][10], 0.0f);
    EXPECT_EQ(out[2][63], 2.0f);
}
} // namespace
