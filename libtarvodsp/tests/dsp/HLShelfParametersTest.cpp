#include "dsp/TarvoDspHLShelfParameters.h"

#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using ondo::designHLShelf;
using ondo::HLShelfParameters;
using tarvo::testing::magnitudeDb;

constexpr float fs = 44100.0f;

TEST(HLShelfParameters, ShelfReachesBandGainsFarFromCrossovers)
{
    const HLShelfParameters p{-2.0f, 6.0f, -3.0f, -12.0f, 200.0f, 4000.0f};
    const ondo::BiquadCoefficients c = designHLShelf(p, fs);
    // Two decades from a first-order corner the shelf is within a few hundredths of a dB.
    EXPECT_NEAR(magnitudeDb(c, 2.0, fs), p.G0 + p.Gl, 0.05);
    EXPECT_NEAR(magnitudeDb(c, std::sqrt(200.0 * 4000.0), fs), p.G0 + p.Gm, 0.6);
    // Above fh the bilinear transform squeezes the band towards fs/2, where it is exact.
    EXPECT_NEAR(magnitudeDb(c, 22050.0, fs), p.G0 + p.Gh, 0.05);
}

TEST(HLShelfParameters, EachCrossoverSitsHalfWayInDecibels)
{
    const HLShelfParameters p{0.0f, 12.0f, 0.0f, 0.0f, 300.0f, 20000.0f};
    EXPECT_NEAR(magnitudeDb(designHLShelf(p, fs), 300.0, fs), 6.0, 0.05);
    const HLShelfParameters q{0.0f, 0.0f, 0.0f, -10.0f, 10.0f, 3000.0f};
    EXPECT_NEAR(magnitudeDb(designHLShelf(q, fs), 3000.0, fs), -5.0, 0.05);
}

TEST(HLShelfParameters, AllBandGainsZeroIsAPureGain)
{
    const ondo::BiquadCoefficients c = designHLShelf({6.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}, fs);
    EXPECT_NEAR(c.b0, std::pow(10.0, 6.0 / 20.0), 1e-6);
    EXPECT_TRUE(c.isGainOnly());
    EXPECT_EQ(designHLShelf({}, fs), ondo::BiquadCoefficients{}) << "exact unit";
}

TEST(HLShelfParameters, SwappedCrossoversGiveTheSameShelf)
{
    EXPECT_EQ(designHLShelf({0, 4, 1, -5, 5000, 300}, fs), designHLShelf({0, 4, 1, -5, 300, 5000}, fs));
}

TEST(HLShelfParameters, EqualBandGainsGiveAConstantGain)
{
    const ondo::BiquadCoefficients c = designHLShelf({1.0f, -4.0f, -4.0f, -4.0f, 250.0f, 4000.0f}, fs);
    for (double f : {10.0, 250.0, 1000.0, 4000.0, 20000.0})
        EXPECT_NEAR(magnitudeDb(c, f, fs), -3.0, 1e-4) << f;
}

TEST(HLShelfParameters, HighCrossoverAboveNyquistIsCappedAndFinite)
{
    const ondo::BiquadCoefficients c = designHLShelf({0.0f, 0.0f, 0.0f, -6.0f, 250.0f, 30000.0f}, fs);
    EXPECT_TRUE(std::isfinite(c.b0) && std::isfinite(c.b1) && std::isfinite(c.a1) && std::isfinite(c.a2));
    EXPECT_GT(magnitudeDb(c, 20000.0, fs), -0.5) << "the high band is not reached in the audio range";
}
} // namespace
