#include "dsp/TarvoDspBiquadCookbook.h"

#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using ondo::BiquadCookbook;
using ondo::FilterShape;
using tarvo::testing::magnitudeDb;

constexpr double fs = 44100.0;
// The design carries 2 pi in single precision: frequencies land within 1e-7 relative, far
// below these tolerances (dB).
constexpr double tight = 1e-3;

BiquadCookbook make(FilterShape shape, double hertz, double q, double gain)
{
    BiquadCookbook b(shape);
    b.setFrequency(hertz);
    b.setQ(q);
    b.setGain(gain);
    return b;
}

TEST(BiquadCookbook, PeakReachesItsGainAtItsFrequency)
{
    const BiquadCookbook b = make(FilterShape::peak, 3000.0, 1.5, 7.5);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 3000.0, fs), 7.5, tight);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 20.0, fs), 0.0, 0.01);
}

TEST(BiquadCookbook, ButterworthLowpassIsThreeDecibelsDownAtItsFrequency)
{
    const BiquadCookbook b = make(FilterShape::lowpass, 1000.0, std::sqrt(0.5), 0.0);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 1000.0, fs), -10.0 * std::log10(2.0), tight);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 1.0, fs), 0.0, tight);
}

TEST(BiquadCookbook, HighpassAndGainScaleWithTheGain)
{
    const BiquadCookbook b = make(FilterShape::highpass, 500.0, std::sqrt(0.5), 6.0);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 500.0, fs), 6.0 - 10.0 * std::log10(2.0), tight);
    const BiquadCookbook g = make(FilterShape::gain, 500.0, 1.0, -12.0);
    EXPECT_NEAR(magnitudeDb(g.getCoefficients(), 7000.0, fs), -12.0, 1e-9);
}

TEST(BiquadCookbook, AllpassIsFlat)
{
    const BiquadCookbook b = make(FilterShape::allpass, 2500.0, 0.7, 0.0);
    for (double f = 10.0; f < 22000.0; f *= 1.5)
        EXPECT_NEAR(magnitudeDb(b.getCoefficients(), f, fs), 0.0, 1e-9) << f;
}

TEST(BiquadCookbook, NotchAndBandpassesAtTheCentre)
{
    const BiquadCookbook notch = make(FilterShape::notch, 1000.0, 2.0, 0.0);
    EXPECT_LT(magnitudeDb(notch.getCoefficients(), 1000.0, fs), -100.0);
    const BiquadCookbook peak = make(FilterShape::bandpassPeak, 1000.0, 3.0, 0.0);
    EXPECT_NEAR(magnitudeDb(peak.getCoefficients(), 1000.0, fs), 0.0, tight);
    const BiquadCookbook skirt = make(FilterShape::bandpassSkirt, 1000.0, 3.0, 0.0);
    EXPECT_NEAR(magnitudeDb(skirt.getCoefficients(), 1000.0, fs), 20.0 * std::log10(3.0), tight);
}

TEST(BiquadCookbook, ShelvesReachTheirGainOnTheirSideAndHalfAtTheCorner)
{
    const BiquadCookbook low = make(FilterShape::lowShelf, 300.0, 1.0, 8.0);
    EXPECT_NEAR(magnitudeDb(low.getCoefficients(), 5.0, fs), 8.0, 0.01);
    EXPECT_NEAR(magnitudeDb(low.getCoefficients(), 300.0, fs), 4.0, tight);
    EXPECT_NEAR(magnitudeDb(low.getCoefficients(), 20000.0, fs), 0.0, 0.01);
    const BiquadCookbook high = make(FilterShape::highShelf, 3000.0, 1.0, -6.0);
    EXPECT_NEAR(magnitudeDb(high.getCoefficients(), 22050.0, fs), -6.0, 0.01);
    EXPECT_NEAR(magnitudeDb(high.getCoefficients(), 3000.0, fs), -3.0, tight);
}

TEST(BiquadCookbook, SlopeBeyondItsLimitStaysFinite)
{
    const BiquadCookbook b = make(FilterShape::lowShelf, 300.0, 10.0, 12.0);
    EXPECT_TRUE(std::isfinite(b.getCoefficients().b0));
    EXPECT_TRUE(std::isfinite(b.getCoefficients().a2));
}

TEST(BiquadCookbook, OffAndUnknownShapesGiveTheUnitSection)
{
    EXPECT_EQ(make(FilterShape::off, 100.0, 1.0, 6.0).getCoefficients(), ondo::BiquadCoefficients{});
    EXPECT_EQ(make(static_cast<FilterShape>(12), 100.0, 1.0, 6.0).getCoefficients(), ondo::BiquadCoefficients{});
}

TEST(BiquadCookbook, KeptProductsGiveTheSameMagnitudeAsTheTransferFunction)
{
    for (int shape = 1; shape <= 9; ++shape)
    {
        const BiquadCookbook b = make(static_cast<FilterShape>(shape), 1200.0, 0.9, 5.0);
        for (double f : {50.0, 700.0, 1200.0, 4000.0, 15000.0})
            // The kept rate carries 2 pi in single precision, 1e-7 off: at most 1e-6 in |H|.
            EXPECT_NEAR(b.getMagnitude(f), tarvo::testing::magnitude(b.getCoefficients(), f, fs), 1e-6)
                << "shape " << shape << " at " << f;
    }
}

TEST(BiquadCookbook, SampleRateChangeRedesigns)
{
    BiquadCookbook b = make(FilterShape::peak, 1000.0, 1.0, 6.0);
    b.setSampleRate(96000.0);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 1000.0, 96000.0), 6.0, tight);
}

TEST(BiquadCookbook, ThreeBandShelfShape)
{
    BiquadCookbook b(FilterShape::hlshelf);
    b.setShelf({0.0f, 6.0f, 0.0f, -6.0f, 200.0f, 5000.0f});
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 5.0, fs), 6.0, 0.05);
    EXPECT_NEAR(magnitudeDb(b.getCoefficients(), 21000.0, fs), -6.0, 0.3);
}
} // namespace
