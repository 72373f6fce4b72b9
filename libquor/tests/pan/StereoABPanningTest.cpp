#include "pan/QuorStereoABPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;

TEST(StereoABPanning, CentreHasEqualLevelsAndOneMillisecondDelays)
{
    Quor::StereoABPanning p(1, 2);
    p.setSourcePosition(0, {0, 0, 0}, true);
    // Delays are kept in samples: 1 ms comes back within float rounding.
    EXPECT_NEAR(p.getDelay(0, 0), 1.0f, 1e-5f);
    EXPECT_NEAR(p.getDelay(0, 1), 1.0f, 1e-5f);
    EXPECT_FLOAT_EQ(p.getGain(0, 0).getTargetValue(), 0.44936f);
    EXPECT_FLOAT_EQ(p.getGain(0, 1).getTargetValue(), 0.44936f);
}

TEST(StereoABPanning, SourceOnTheRightIsLouderAndEarlierThere)
{
    Quor::StereoABPanning p(1, 2);
    p.setSourcePosition(0, Coordinates::fromNavigational(90.0f, 0.0f, 2.0f), true);
    EXPECT_NEAR(p.getDelay(0, 0), 1.25f, 1e-5f);
    EXPECT_NEAR(p.getDelay(0, 1), 0.75f, 1e-5f);
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
    // Past the 1 ms delay each side carries the first source alone, at its level; the
    // allpass reader of the fractional delay settles within 1e-5 by then.
    EXPECT_NEAR(out.data[0][600], 0.44936f, 1e-5f) << "only the first source sounds";
    EXPECT_NEAR(out.data[1][100], 0.44936f, 1e-5f);
    EXPECT_NEAR(out.data[1][10], 0.0f, 1e-6f) << "nothing before the delay";
}
TEST(StereoABPanning, TheNearMicrophoneHearsAnImpulseHalfAMillisecondEarlier)
{
    Quor::StereoABPanning p(1, 2);
    p.setup(44100.0f, 512, true);
    p.setSourcePosition(0, Coordinates::fromNavigational(90.0f, 0.0f, 2.0f), true);
    Block in(1, 256), out(2, 256);
    in.data[0][0] = 1.0f;
    p.process(out.get(), in.get(), 256);
    auto peakIndex = [](const std::vector<float>& v) {
        return std::max_element(v.begin(), v.end(), [](float a, float b) { return std::fabs(a) < std::fabs(b); }) -
               v.begin();
    };
    // 1.25 ms and 0.75 ms at 44.1 kHz: samples 55.1 and 33.1; an interpolated impulse
    // peaks on the nearest sample.
    EXPECT_EQ(peakIndex(out.data[0]), 55);
    EXPECT_EQ(peakIndex(out.data[1]), 33);
    EXPECT_GT(std::fabs(out.data[1][33]), std::fabs(out.data[0][55]));
}
} // namespace
