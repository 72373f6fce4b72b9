#include "dsp/TarvoDspFir.h"
#include "dsp/TarvoDspFirTimeDomain.h"

#include "common/TarvoDspException.h"

#include "AllocationCounter.h"
#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using tarvo::testing::noise;

using ondo::Fir;
using ondo::FirTimeDomain;

TEST(FirTimeDomain, ImpulseGivesTheTapsThenZeros)
{
    FirTimeDomain fir(2);
    const float taps[] = {0.5f, -0.25f, 2.0f};
    fir.setCoefficients(taps);
    std::vector<float> in(6, 0.0f), out(6);
    in[0] = 1.0f;
    fir.filter(out.data(), in.data(), 6);
    EXPECT_EQ(out, (std::vector<float>{0.5f, -0.25f, 2.0f, 0.0f, 0.0f, 0.0f}));
}

TEST(FirTimeDomain, OrderZeroIsAGainAndThePositionStays)
{
    FirTimeDomain fir(0);
    const float tap = 3.0f;
    fir.setCoefficients(&tap);
    std::vector<float> in{1.0f, 2.0f}, out(2);
    fir.filter(out.data(), in.data(), 2);
    EXPECT_EQ(out, (std::vector<float>{3.0f, 6.0f}));
    EXPECT_EQ(fir.getWritePosition(), 0u);
}

TEST(FirTimeDomain, MatchesANaiveConvolutionAcrossOddBlocks)
{
    const int length = 37; // not a multiple of the unrolling
    FirTimeDomain fir(length - 1);
    const std::vector<float> taps = noise(length, 11);
    fir.setCoefficients(taps.data());
    const std::vector<float> in = noise(1000);
    std::vector<float> out(in.size());
    for (std::size_t start = 0, step = 1; start < in.size(); start += step, step = step % 13 + 5)
        fir.filter(out.data() + start, in.data() + start, static_cast<int>(std::min(step, in.size() - start)));
    for (std::size_t n = 0; n < in.size(); ++n)
    {
        double y = 0.0;
        for (int k = 0; k < length && k <= static_cast<int>(n); ++k)
            y += static_cast<double>(taps[k]) * in[n - k];
        // 37 float products of values below 1: a few ulps of a sum near 10.
        ASSERT_NEAR(out[n], y, 1e-5) << n;
    }
}

TEST(FirTimeDomain, ClearKeepsTheTapsAndCopyTakesTheHistory)
{
    FirTimeDomain a(3), b(3);
    const float taps[] = {1.0f, 1.0f, 1.0f, 1.0f};
    a.setCoefficients(taps);
    b.setCoefficients(taps);
    std::vector<float> ones(3, 1.0f), out(3);
    a.filter(out.data(), ones.data(), 3);
    b.copyStateFrom(a);
    float x = 0.0f, ya = 0.0f, yb = 0.0f;
    a.filter(&ya, &x, 1);
    b.filter(&yb, &x, 1);
    EXPECT_EQ(ya, 3.0f);
    EXPECT_EQ(yb, 3.0f);
    a.clear();
    EXPECT_EQ(a.getTaps()[2], 1.0f);
    a.filter(&ya, &x, 1);
    EXPECT_EQ(ya, 0.0f);
    FirTimeDomain shorter(1);
    EXPECT_THROW(shorter.copyStateFrom(a), ondo::Exception);
}

TEST(Fir, RefusesAMethodOtherThanTheTimeDomain)
{
    EXPECT_THROW(Fir(4, static_cast<Fir::Method>(1)), ondo::Exception);
    Fir fir(4, Fir::timeDomain);
    EXPECT_EQ(fir.getNumCoefficients(), 5);
    EXPECT_THROW(fir.setMethod(static_cast<Fir::Method>(2)), ondo::Exception);
    EXPECT_NO_THROW(fir.setMethod(Fir::timeDomain));
}

TEST(Fir, ForwardsToItsImplementationWithoutAllocating)
{
    Fir a(2, Fir::timeDomain), b(2, Fir::timeDomain);
    const float taps[] = {0.0f, 1.0f, 0.0f}; // one sample of delay
    a.setCoefficients(taps);
    b.setCoefficients(taps);
    std::vector<float> in{1.0f, 2.0f, 3.0f}, out(3);
    tarvo::testing::AllocationScope scope;
    a.filter(out.data(), in.data(), 3);
    b.copyStateFrom(a);
    float x = 0.0f, y = 0.0f;
    b.filter(&y, &x, 1);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_EQ(out, (std::vector<float>{0.0f, 1.0f, 2.0f}));
    EXPECT_EQ(y, 3.0f);
}
} // namespace
