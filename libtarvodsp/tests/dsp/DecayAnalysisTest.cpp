#include "dsp/TarvoDspDecayAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
using ondo::DecayAnalysis;

/// Seeded white noise under an exponential envelope that falls 60 dB in `t60` seconds.
std::vector<float> decayingNoise(double t60, double sampleRate, double seconds, unsigned seed)
{
    std::mt19937 rng(seed);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    std::vector<float> x(static_cast<std::size_t>(seconds * sampleRate));
    const double perSample = std::pow(10.0, -3.0 / (t60 * sampleRate)); // amplitude: -60 dB over t60
    double envelope = 1.0;
    for (auto& v : x)
    {
        v = static_cast<float>(envelope) * noise(rng);
        envelope *= perSample;
    }
    return x;
}

TEST(DecayAnalysis, OctaveCentres)
{
    const auto centres = DecayAnalysis::octaveCentres(125.0, 8000.0);
    ASSERT_EQ(centres.size(), 7u);
    EXPECT_DOUBLE_EQ(centres.front(), 125.0);
    EXPECT_DOUBLE_EQ(centres.back(), 8000.0);
}

TEST(DecayAnalysis, ExponentialDecayOfKnownRate)
{
    // A pure exponential in energy: the Schroeder curve is a straight line.
    std::vector<double> x(48000);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = std::pow(10.0, -3.0 * static_cast<double>(i) / 48000.0 / 0.5); // T60 of 0.5 s
    const auto curve = DecayAnalysis::energyDecayCurve(x);
    EXPECT_NEAR(DecayAnalysis::decayTime(curve, 48000.0), 0.5, 0.5 * 1e-3);
}

TEST(DecayAnalysis, NoiseDecayIsMeasuredInEveryOctave)
{
    // Broadband noise with one decay: every band sees it within the spread of a noise estimate.
    const double fs = 48000.0;
    const auto x = decayingNoise(1.2, fs, 2.5, 7);
    for (double centre : DecayAnalysis::octaveCentres(125.0, 8000.0))
        EXPECT_NEAR(DecayAnalysis::bandDecayTime(x.data(), x.size(), fs, centre), 1.2, 0.12) << centre << " Hz";
}

TEST(DecayAnalysis, BandsSeparateDifferentDecays)
{
    // A slow low sine and a fast high sine: each band reports its own.
    const double fs = 44100.0;
    std::vector<float> x(static_cast<std::size_t>(3 * fs));
    for (std::size_t i = 0; i < x.size(); ++i)
    {
        const double t = static_cast<double>(i) / fs;
        x[i] = static_cast<float>(std::pow(10.0, -3.0 * t / 2.0) * std::sin(2 * M_PI * 125.0 * t) +
                                  std::pow(10.0, -3.0 * t / 0.4) * std::sin(2 * M_PI * 4000.0 * t));
    }
    EXPECT_NEAR(DecayAnalysis::bandDecayTime(x.data(), x.size(), fs, 125.0), 2.0, 0.1);
    EXPECT_NEAR(DecayAnalysis::bandDecayTime(x.data(), x.size(), fs, 4000.0), 0.4, 0.02);
}

TEST(DecayAnalysis, CurveThatNeverFallsEnoughGivesZero)
{
    // A rising ramp keeps its energy to the end: the last sample still holds 3/n of it,
    // about -15 dB for 100 samples.
    std::vector<double> rising(100);
    for (std::size_t i = 0; i < rising.size(); ++i)
        rising[i] = static_cast<double>(i + 1);
    EXPECT_EQ(DecayAnalysis::decayTime(DecayAnalysis::energyDecayCurve(rising), 1000.0, -5.0, -25.0), 0.0);
    EXPECT_EQ(DecayAnalysis::decayTime({}, 1000.0), 0.0);
}
} // namespace
