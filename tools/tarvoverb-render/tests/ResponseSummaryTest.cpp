#include "ResponseSummary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
using tarvo::render::Audio;
using tarvo::render::summarizeResponse;

/// A sine at every octave centre from 125 Hz to 8 kHz under one envelope whose energy falls
/// 60 dB in `t60` seconds. Deterministic, so each band's decay is known exactly (noise would
/// leave a low band only a few degrees of freedom over the fitted range).
std::vector<float> decayingChord(double t60, double sampleRate, double seconds)
{
    const double pi = std::acos(-1.0);
    std::vector<float> x(static_cast<std::size_t>(seconds * sampleRate));
    for (std::size_t i = 0; i < x.size(); ++i)
    {
        const double t = double(i) / sampleRate;
        double sum = 0.0;
        for (double f = 125.0; f <= 8000.0; f *= 2.0)
            sum += std::sin(2.0 * pi * f * t + f);
        x[i] = static_cast<float>(0.1 * sum * std::pow(10.0, -3.0 * t / t60));
    }
    return x;
}

TEST(ResponseSummary, PeakAndEnergyOfKnownSignals)
{
    Audio audio;
    audio.sampleRate = 48000.0;
    audio.channels = {std::vector<float>(4800, 0.0f), std::vector<float>(4800, 0.0f)};
    audio.channels[0][10] = -0.5f; // one sample: peak and energy both 0.25 in power
    for (std::size_t i = 0; i < 100; ++i)
        audio.channels[1][i] = 0.1f; // energy 100 * 0.01 = 1
    const auto summary = summarizeResponse(audio);
    ASSERT_EQ(summary.channels.size(), 2u);
    EXPECT_NEAR(summary.channels[0].peakDb, 20.0 * std::log10(0.5), 1e-9);
    EXPECT_NEAR(summary.channels[0].energyDb, 10.0 * std::log10(0.25), 1e-9);
    EXPECT_NEAR(summary.channels[1].peakDb, 20.0 * std::log10(0.1), 1e-6);
    EXPECT_NEAR(summary.channels[1].energyDb, 0.0, 1e-5);
}

TEST(ResponseSummary, BandDecayTimesOfAKnownDecayPerChannel)
{
    Audio audio;
    audio.sampleRate = 44100.0;
    audio.channels = {decayingChord(1.0, 44100.0, 2.0), decayingChord(0.5, 44100.0, 2.0)};
    const auto summary = summarizeResponse(audio);
    ASSERT_EQ(summary.bandCentres.size(), 7u) << "125 Hz to 8 kHz";
    for (std::size_t b = 0; b < summary.bandCentres.size(); ++b)
    {
        // 2 %: the ripple of a sine's energy at twice its frequency on the fitted line.
        EXPECT_NEAR(summary.channels[0].decayTimes[b], 1.0, 0.02) << summary.bandCentres[b];
        EXPECT_NEAR(summary.channels[1].decayTimes[b], 0.5, 0.01) << summary.bandCentres[b];
    }
}

TEST(ResponseSummary, BandsAboveNyquistAreLeftOutAndSilenceReadsAsNoDecay)
{
    Audio audio;
    audio.sampleRate = 16000.0;
    audio.channels = {std::vector<float>(16000, 0.0f)};
    const auto summary = summarizeResponse(audio);
    // 4 kHz reaches 5.66 kHz, below 8 kHz; 8 kHz's band would cross the Nyquist frequency.
    EXPECT_EQ(summary.bandCentres.back(), 4000.0);
    EXPECT_EQ(summary.channels[0].peakDb, -999.0);
    for (double t : summary.channels[0].decayTimes)
        EXPECT_EQ(t, 0.0);
    const std::string table = tarvo::render::formatSummary(summary);
    EXPECT_NE(table.find("4k"), std::string::npos);
    EXPECT_EQ(table.find("8k"), std::string::npos);
}
// NaN compares false with everything, so a plain maximum would report a finite peak over a
// poisoned response.
TEST(ResponseSummary, NonFiniteSamplesAreCountedAndSaid)
{
    tarvo::render::Audio audio;
    audio.sampleRate = 44100.0;
    audio.channels = {{0.5f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}};
    const auto summary = summarizeResponse(audio);
    EXPECT_EQ(summary.channels[0].nonFiniteSamples, 2u);
    EXPECT_NEAR(summary.channels[0].peakDb, 20.0 * std::log10(0.5), 1e-9);
    EXPECT_NE(tarvo::render::formatSummary(summary).find("2 output samples are NaN or infinite"), std::string::npos);
}
} // namespace
