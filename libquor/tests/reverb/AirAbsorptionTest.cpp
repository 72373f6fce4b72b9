#include "reverb/QuorAirAbsorption.h"
#include "reverb/QuorAirAbsorptionSecondOrder.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace
{
using Quor::AirAbsorption;

// |H| in dB of the shelf's design at `hertz`, evaluated from the transfer function.
double responseDb(const ondo::HLShelfParameters& p, double hertz, float rate)
{
    const ondo::BiquadCoefficients c = ondo::designHLShelf(p, rate);
    const std::complex<double> z1 = std::polar(1.0, -2.0 * std::numbers::pi * hertz / rate);
    return 20.0 * std::log10(std::abs((c.b0 + c.b1 * z1 + c.b2 * z1 * z1) / (c.a0 + c.a1 * z1 + c.a2 * z1 * z1)));
}

// Float products of a handful of factors: 1e-5 dB.
constexpr float dB = 1e-5f;

TEST(AirAbsorption, AFiftyMillisecondLineLosesItsFigureAboveTenKilohertz)
{
    AirAbsorption air(2);
    air.setDistance(343.2f * 0.05f, true); // 17.16 m of air
    const ondo::HLShelfParameters p = air.getSecondOrder().getParameters();
    EXPECT_NEAR(p.Gh, -3.432f, dB);
    EXPECT_NEAR(p.Gm, -0.003432f, dB);
    EXPECT_EQ(p.G0, 0.0f);
    EXPECT_EQ(p.Gl, 0.0f);
    EXPECT_EQ(p.fh, 10000.0f);
    EXPECT_NEAR(p.fl, 316.23f, 0.01f);
    // The shelf reaches the loss at half the rate, where the bilinear map is exact.
    EXPECT_NEAR(responseDb(p, 22050.0, 44100.0f), -3.432, 0.01);
    EXPECT_NEAR(responseDb(p, 1000.0, 44100.0f), -0.0034, 0.05);
}

TEST(AirAbsorption, AHundredMetresLoseTwentyDecibelsAtTenKilohertz)
{
    AirAbsorption air;
    air.setDistance(100.0f, true);
    EXPECT_NEAR(air.getSecondOrder().getParameters().Gh, -20.0f, dB);
    EXPECT_NEAR(air.getSecondOrder().getParameters().Gm, -0.02f, dB);
}

TEST(AirAbsorption, DistanceIsTakenAbsoluteAndCappedAtAHundredMetres)
{
    AirAbsorption a, b;
    a.setDistance(-50.0f, true);
    b.setDistance(50.0f, true);
    EXPECT_EQ(a.getSecondOrder().getParameters(), b.getSecondOrder().getParameters());
    EXPECT_EQ(a.getSecondOrder().getDistance(), 50.0f);
    a.setDistance(300.0f, true);
    b.setDistance(100.0f, true);
    EXPECT_EQ(a.getSecondOrder().getParameters(), b.getSecondOrder().getParameters());
}

TEST(AirAbsorption, CutoffIsLimitedToTheRateOverTheRootOfTen)
{
    AirAbsorption air;
    air.setCutoff(20000.0f, true);
    EXPECT_NEAR(air.getCutoff(), 13945.6f, 0.05f);
    air.changeSampleRate(96000.0f);
    EXPECT_NEAR(air.getCutoff(), 13945.6f, 0.05f) << "the stored cutoff is clamped again, not restored";
    air.setCutoff(20000.0f, true);
    EXPECT_EQ(air.getCutoff(), 20000.0f);
}

TEST(AirAbsorption, ZeroCutoffOrDistancePassesTheSignalUnchanged)
{
    for (int which = 0; which < 2; ++which)
    {
        AirAbsorption air;
        if (which == 0)
            air.setDistance(0.0f, true);
        else
        {
            air.setDistance(40.0f, true);
            air.setCutoff(0.0f, true);
            EXPECT_EQ(air.getSecondOrder().getParameters().fl, 0.0f);
        }
        const ondo::HLShelfParameters p = air.getSecondOrder().getParameters();
        EXPECT_EQ(p.Gh, 0.0f);
        EXPECT_EQ(p.Gm, 0.0f);
        std::vector<float> in{0.5f, -1.0f, 0.25f}, out(3);
        air.filter(out.data(), in.data(), 3);
        EXPECT_EQ(out, in);
    }
}

TEST(AirAbsorption, UnconnectedChannelGivesSilenceAndProcessingAllocatesNothing)
{
    AirAbsorption air;
    air.setDistance(30.0f, false);
    std::vector<float> block(512, 1.0f);
    float* io = block.data();
    tarvo::testing::AllocationScope scope;
    for (int b = 0; b < 10; ++b)
    {
        air.setDistance(30.0f + b, false); // as the late network does during a decay ramp
        air.process(&io, &io, 512);
    }
    EXPECT_EQ(scope.count(), 0u);
    const std::int16_t counts[] = {0, 0};
    air.setConnections(counts);
    air.process(&io, &io, 512);
    EXPECT_EQ(block[100], 0.0f);
}
} // namespace
