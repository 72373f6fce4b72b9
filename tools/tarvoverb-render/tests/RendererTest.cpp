#include "Renderer.h"

#include "dsp/TarvoDspDecayAnalysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

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

// Messages reach the reverberator in order through its OSC face; a refused one is named with
// its text, whatever comes after it.
TEST(Renderer, OscMessagesAreAppliedInOrderAndRefusalsNamed)
{
    std::vector<std::string> notes;
    RenderSettings settings;
    settings.oscMessages = {"/reverb/tr0 2", "/reverb/tr0 3.5", "/early/min 12"};
    const auto lines = reverberatorState(settings, notes);
    EXPECT_NE(std::find(lines.begin(), lines.end(), "/reverb/tr0 3.5"), lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "/early/min 12"), lines.end());

    settings.oscMessages = {"/reverb/tr0 3.5", "/early/shape 0.8", "/reverb/gain loud", "/reverb/fh 6000"};
    try
    {
        reverberatorState(settings, notes);
        ADD_FAILURE() << "refused messages must stop the run";
    }
    catch (const UsageError& error)
    {
        EXPECT_EQ(std::string(error.what()),
                  "--osc \"/early/shape 0.8\": not understood; --osc \"/reverb/gain loud\": not understood");
    }
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
std::string temporaryWav(const std::string& name, double rate, const std::vector<float>& samples)
{
    const std::string path = (std::filesystem::temp_directory_path() / name).string();
    Audio audio;
    audio.sampleRate = rate;
    audio.channels = {samples};
    writeWavFloat(path, audio);
    return path;
}

template <typename Call>
std::string refusal(Call&& call)
{
    try
    {
        call();
    }
    catch (const std::exception& error)
    {
        return error.what();
    }
    return "";
}

// Rates the reverberator can't run at are refused at once with the rate and the range: they
// gave UB (3e9 Hz), a warm-up of hours (4e9 Hz), wrong decays (4000 Hz) or silence (1 Hz).
TEST(Renderer, RecordingsAtRatesTheRoomCantRunAreRefused)
{
    for (double rate : {3e9, 4e9, 4000.0, 1.0, 400000.0})
    {
        const std::string path = temporaryWav("tarvoverb-rate.wav", rate, {0.5f, 0.25f});
        RenderSettings settings;
        settings.inputPath = path;
        std::vector<std::string> notes;
        const std::string message = refusal([&] { renderRoom(settings, notes); });
        EXPECT_NE(message.find(" is at " + std::to_string(std::uint64_t(rate)) + " Hz"), std::string::npos) << message;
        EXPECT_NE(message.find("8000 to 384000 Hz"), std::string::npos) << message;
        std::filesystem::remove(path);
    }
}

TEST(Renderer, OutputThatIsTheInputIsRefusedAndTheRecordingKept)
{
    const std::string path = temporaryWav("tarvoverb-same.wav", 44100.0, {0.5f, 0.25f});
    const auto before = std::filesystem::file_size(path);
    RenderSettings settings;
    settings.inputPath = path;
    settings.outputPath = (std::filesystem::path(path).parent_path() / "." / "tarvoverb-same.wav").string();
    std::vector<std::string> notes;
    EXPECT_NE(refusal([&] { renderToFile(settings, notes); }).find("is the --in file"), std::string::npos);
    EXPECT_EQ(std::filesystem::file_size(path), before);
    EXPECT_EQ(readAudioFile(path).channels[0], (std::vector<float>{0.5f, 0.25f}));
    std::filesystem::remove(path);
}

// A float recording full of NaN and infinities renders as silence, says how many samples it
// dropped, and measures no decay: a recording's decay means nothing.
TEST(Renderer, UnusableRecordingSamplesAreCountedAndRenderedAsSilence)
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    std::vector<float> samples(4410, nan);
    samples[1] = inf;
    samples[2] = -inf;
    samples[3] = 3e38f;
    samples[4] = 0.5f;
    const std::string in = temporaryWav("tarvoverb-nan-in.wav", 44100.0, samples);
    RenderSettings settings;
    settings.inputPath = in;
    settings.outputPath = (std::filesystem::temp_directory_path() / "tarvoverb-nan-out.wav").string();
    settings.duration = 1.0;
    std::vector<std::string> notes;
    const FileRendering rendering = renderToFile(settings, notes);
    EXPECT_EQ(rendering.report.unusableInputs, 4409u) << "all but the one sample of 0.5";
    EXPECT_TRUE(rendering.summary.bandCentres.empty());
    const Audio out = readAudioFile(settings.outputPath);
    double energy = 0.0;
    for (const auto& channel : out.channels)
        for (float v : channel)
        {
            ASSERT_TRUE(std::isfinite(v));
            energy += double(v) * v;
        }
    EXPECT_GT(energy, 0.0) << "the one good sample still sounds";
    const std::string table = formatSummary(rendering.summary);
    EXPECT_EQ(table.find("T60"), std::string::npos) << table;
    std::filesystem::remove(in);
    std::filesystem::remove(settings.outputPath);
}

// Six sources at 0.3 m, all struck at once: the direct sound alone passes full scale, and the
// summary says so and why.
TEST(Renderer, SummarySaysWhenTheResponsePeaksAboveFullScale)
{
    RenderSettings settings;
    settings.outputPath = (std::filesystem::temp_directory_path() / "tarvoverb-loud.wav").string();
    settings.duration = 0.2;
    for (int i = 1; i <= 6; ++i)
        settings.sourceMessages.push_back(std::to_string(i) + " ade 0 0.3 0");
    std::vector<std::string> notes;
    const FileRendering loud = renderToFile(settings, notes);
    EXPECT_NE(formatSummary(loud.summary).find("above full scale"), std::string::npos);
    EXPECT_NE(formatSummary(loud.summary).find("--impulse-source"), std::string::npos);
    settings.sourceMessages.clear();
    settings.impulseSource = 1;
    const FileRendering quiet = renderToFile(settings, notes);
    EXPECT_EQ(formatSummary(quiet.summary).find("above full scale"), std::string::npos);
    std::filesystem::remove(settings.outputPath);
}
} // namespace
