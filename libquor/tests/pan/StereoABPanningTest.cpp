#include "pan/QuorStereoABPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;

TEST(StereoABPanning, CentreHasEqualLevelsAndOneMillisecondDelays)
{
    Quor::StereoABPanning p(1, 2);
    p.setSourcePosition(0, {0, 0, 0}, true);
    EXPECT_EQ(p.getDelay(0, 0), 1.0f);
    EXPECT_EQ(p.getDelay(0, 1), 1.0f);
    EXPECT_FLOAT_EQ(p.getGain(0, 0).getTargetValue(), 0.44936f);
    EXPECT_FLOAT_EQ(p.getGain(0, 1).getTargetValue(), 0.44936f);
}

TEST(StereoABPanning, SourceOnTheRightIsLouderAndEarlierThere)
{
    Quor::StereoABPanning p(1, 2);
    p.setSourcePosition(0, Coordinates::fromNavigational(90.0f, 0.0f, 2.0f), true);
    EXPECT_NEAR(p.getDelay(0, 0), 1.25f, 1e-6f);
    EXPECT_NEAR(p.getDelay(0, 1), 0.75f, 1e-6f);
    // sin(45 - 90) and sin(90 + 45) degrees on the two cardioids.
    EXPECT_NEAR(p.getGain(0, 0).getTargetValue(), (1.0f - std::sqrt(0.5f)) * 0.44936f, 1e-6f);
    EXPECT_NEAR(p.getGain(0, 1).getTargetValue(), (1.0f + std::sqrt(0.5f)) * 0.44936f, 1e-6f);
}

TEST(StereoABPanning, MutedSourcesAreSilentAndMixingAllocatesNothing)
{
    Quor::StereoABPanning p(2, 2);
    p.setSourcePosition(0, {0, 0, 0}, true);
    p.setSourcePosition(1, {0, 0, 0}, true);
    p.setSourceMute(1, true);
    Block in(2, 700, 1.0f), out(2, 700, 3.0f);
    tarvo::testing::AllocationScope scope;
    p.process(out.get(), in.get(), 700);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_FLOAT_EQ(out.data[0][600], 0.44936f) << "only the first source sounds";
    EXPECT_FLOAT_EQ(out.data[1][10], 0.44936f);
}
} // namespace
