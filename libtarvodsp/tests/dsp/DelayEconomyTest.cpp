#include "dsp/TarvoDspDelayEconomy.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
/// Feeds x[n] = n in blocks of 64, so that any output read without interpolation is a
/// whole number, and an interpolated one generally isn't.
class DelayEconomyTest : public ::testing::Test
{
protected:
    /// The next `n` samples out, in storage kept between calls.
    const std::vector<float>& next(std::uint32_t n = 64)
    {
        in.resize(n);
        out.resize(n);
        for (auto& x : in)
            x = static_cast<float>(clock++);
        float* i = in.data();
        float* o = out.data();
        line.process(&o, &i, n);
        return out;
    }
    static bool allWhole(const std::vector<float>& v)
    {
        for (float x : v)
            if (x != std::round(x))
                return false;
        return true;
    }

    ondo::DelayEconomy line{200.0f, ondo::Delay::linear};
    std::uint64_t clock = 0;
    std::vector<float> in, out;
};

TEST_F(DelayEconomyTest, GlideKeepsTheRequestedModeAndItsEndFallsBackToNearest)
{
    line.setDelayInSamples(10.0f, true);
    next();
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::nearest) << "a line standing still reads the nearest sample";
    line.setInterpolationTime(5.0f); // 221 samples
    line.setDelayInSamples(20.5f, false);
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::linear);
    for (int block = 0; block < 4; ++block)
    {
        EXPECT_FALSE(allWhole(next())) << "interpolated while gliding, block " << block;
        EXPECT_EQ(line.getActiveMode(), ondo::Delay::linear) << block;
    }
    EXPECT_TRUE(allWhole(next())) << "the half-sample delay is rounded once the line stands";
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::nearest);
    EXPECT_EQ(line.getRequestedMode(), ondo::Delay::linear);
}

TEST_F(DelayEconomyTest, NearestXfadeGlideIsReadWithRounding)
{
    line.setInterpolationMode(ondo::Delay::nearestXfade);
    line.setDelayInSamples(10.0f, true);
    next();
    line.setDelayInSamples(90.3f, false);
    for (int block = 0; block < 25; ++block)
        ASSERT_TRUE(allWhole(next())) << block;
    EXPECT_EQ(line.getRequestedMode(), ondo::Delay::nearestXfade);
}

TEST_F(DelayEconomyTest, EconomyOffReadsWithTheRequestedModeWhileStanding)
{
    line.setEconomy(false);
    line.setDelayInSamples(20.5f, true);
    for (int block = 0; block < 3; ++block)
    {
        const auto& block64 = next();
        EXPECT_EQ(line.getActiveMode(), ondo::Delay::linear);
        if (block > 0)
        {
            EXPECT_EQ(block64[5], static_cast<float>(clock - 64 + 5) - 20.5f) << "linear on a ramp is exact at a half";
        }
    }
    line.setEconomy(true);
    next();
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::nearest);
    line.setEconomy(false);
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::linear) << "switching economy off restores the requested mode";
}

TEST_F(DelayEconomyTest, SetModeStoresRequestedAndActive)
{
    line.setInterpolationMode(ondo::Delay::hermite3);
    EXPECT_EQ(line.getRequestedMode(), ondo::Delay::hermite3);
    EXPECT_EQ(line.getActiveMode(), ondo::Delay::hermite3);
}

TEST_F(DelayEconomyTest, ProcessAllocatesNothing)
{
    line.setDelay(3.0f, true);
    next(512);
    tarvo::testing::AllocationScope scope;
    next(512);
    next(512);
    line.setDelay(7.0f);
    next(512);
    next(512);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace

TEST_F(DelayEconomyTest, BlockBuiltInTheLineReadsBackAsProcessWouldGiveIt)
{
    // x[n] = n delayed by 10 samples is n - 10. Blocks of 64 always fit before the end of a
    // ring of 2^k samples; 600 of them wrap it.
    line.setDelayInSamples(10.0f, true);
    next();
    std::vector<float> o(64);
    for (int block = 0; block < 600; ++block)
    {
        float* run = line.findWriteRun(64);
        ASSERT_NE(run, nullptr) << "block " << block;
        for (int i = 0; i < 64; ++i)
            run[i] = static_cast<float>(clock + i);
        line.processWritten(o.data(), 64);
        for (int i = 0; i < 64; ++i)
            ASSERT_EQ(o[i], static_cast<float>(clock + i - 10)) << "block " << block << " sample " << i;
        clock += 64;
    }
}
