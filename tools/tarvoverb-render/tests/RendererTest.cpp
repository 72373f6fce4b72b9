#include "Renderer.h"

#include "dsp/TarvoDspDecayAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace tarvo::render;

/// T60 of all speakers' energy together in the octave band around `centre`.
double summedBandDecayTime(const Audio& audio, double centre)
{
    std::vector<double> magnitude(audio.numFrames(), 0.0);
    for (const auto& channel : audio.channels)
    {
        const auto band = ondo::DecayAnalysis::octaveBand(channel.data(), channel.size(), audio.sampleRate, centre);
        for (std::size_t i = 0; i < band.size(); ++i)
            magnitude[i] += band[i] * band[i];
    }
    for (double& m : magnitude)
        m = std::sqrt(m);
    return ondo::DecayAnalysis::decayTime(ondo::DecayAnalysis::energyDecayCurve(magnitude), audio.sampleRate);
}

TEST(Renderer, DefaultRoomGivesOneChannelPerSpeakerAndTheWholeDecay)
{
    std::vector<std::string> notes;
    const Rendering rendering = renderRoom(RenderSettings{}, notes);
    const Audio& out = rendering.output;
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(out.sampleRate, 44100.0);
    ASSERT_EQ(out.channels.size(), 6u);
    // tr0 1.995 s at its longest band ratio 1, plus half a second.
    EXPECT_EQ(out.numFrames(), static_cast<std::size_t>(2.495 * 44100.0 + 0.5));
    // The direct sound leaves at once: the first frame already sounds somewhere.
    double first = 0.0, last = 0.0;
    for (const auto& channel : out.channels)
    {
        first += std::abs(channel.front());
        last += std::abs(channel.back());
    }
    EXPECT_GT(first, 0.1);
    EXPECT_LT(last, first * 1e-3) << "two seconds of a 2 s decay later, the tail is over 60 dB down";
}

// The room as users set it, measured in the output the way an acoustician would: tr0 2 s,
// twice as long low (x1.5) as high (x0.5), crossovers 250 Hz and 4 kHz, at 48 kHz.
TEST(Renderer, OctaveBandDecayTimesFollowTheDecaySettings)
{
    RenderSettings settings;
    settings.tr0 = 2.0f;
    settings.trl = 1.5f;
    settings.trm = 1.0f;
    settings.trh = 0.5f;
    settings.fl = 250.0f;
    settings.fh = 4000.0f;
    settings.sampleRate = 48000.0f;
    settings.sampleRateGiven = true;
    std::vector<std::string> notes;
    const Audio out = renderRoom(settings, notes).output;
    ASSERT_EQ(out.sampleRate, 48000.0);
    // 15 % at the band edges, where the shelves' first-order transitions still reach.
    EXPECT_NEAR(summedBandDecayTime(out, 63.0), 3.0, 0.45);
    EXPECT_NEAR(summedBandDecayTime(out, 1000.0), 2.0, 0.2);
    EXPECT_NEAR(summedBandDecayTime(out, 16000.0), 1.0, 0.15);
}

TEST(Renderer, ImpulseOnOneSourceLeavesTheOthersSilent)
{
    // Two sources, one speaker each side; only source 2 (default on the right) is excited,
    // with the late sections off: the direct sound reaches the right speaker alone at once.
    RenderSettings settings;
    settings.numSources = 2;
    settings.numSpeakers = 2;
    settings.impulseSource = 2;
    settings.speakersMessage = "ade -90 1 0 90 1 0";
    settings.sourceMessages = {"1 ade -90 1 0", "2 ade 90 1 0"};
    settings.early = {-200.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f};
    settings.cluster = settings.early;
    settings.gain = -30.0f;
    settings.duration = 0.01;
    std::vector<std::string> notes;
    const Audio out = renderRoom(settings, notes).output;
    // 1 / d^2 at 1 m, times sqrt(2 sources) and sqrt(1 / 8 internal channels).
    EXPECT_NEAR(out.channels[1][0], std::sqrt(2.0f) * std::sqrt(1.0f / 8.0f), 1e-4f);
    EXPECT_NEAR(out.channels[0][0], 0.0f, 1e-4f);
}

TEST(Renderer, SettingsTheReverberatorCantTakeAreRefused)
{
    std::vector<std::string> notes;
    RenderSettings refusedLayout;
    refusedLayout.numSpeakers = 3;
    refusedLayout.speakersMessage = "xyz 0 1 0 0 2 0 0 3 0"; // all in front: no ring around the listener
    EXPECT_THROW(renderRoom(refusedLayout, notes), UsageError);

    RenderSettings wrongRate;
    wrongRate.inputPath = std::string(RENDER_TEST_DATA) + "/pcm16-stereo.wav";
    wrongRate.sampleRate = 48000.0f;
    wrongRate.sampleRateGiven = true;
    EXPECT_THROW(renderRoom(wrongRate, notes), UsageError) << "the file is at 44100 Hz; nothing resamples";
}

TEST(Renderer, RecordingSetsTheRateAndTheLength)
{
    RenderSettings settings;
    settings.inputPath = std::string(RENDER_TEST_DATA) + "/pcm24-three-channels.wav";
    settings.numSources = 2;
    std::vector<std::string> notes;
    const Audio out = renderRoom(settings, notes).output;
    EXPECT_EQ(out.sampleRate, 48000.0);
    // 441 frames of input plus the automatic tail.
    EXPECT_EQ(out.numFrames(), static_cast<std::size_t>((441.0 / 48000.0 + 2.495) * 48000.0 + 0.5));
    ASSERT_EQ(notes.size(), 1u) << "a third channel has no source to feed";
    EXPECT_NEAR(automaticDuration(settings, 1.0), 1.0 + 1.995 + 0.5, 1e-6) << "tr0 is a float";
    settings.infinite = 1;
    EXPECT_DOUBLE_EQ(automaticDuration(settings, 1.0), 11.0);
}
} // namespace
