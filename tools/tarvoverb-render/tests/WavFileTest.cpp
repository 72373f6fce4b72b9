#include "WavFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{
using tarvo::render::Audio;
using tarvo::render::AudioFileError;
using tarvo::render::readAudioFile;

std::string dataFile(const char* name)
{
    return std::string(RENDER_TEST_DATA) + "/" + name;
}

std::string temporaryPath(const char* name)
{
    return (std::filesystem::temp_directory_path() / name).string();
}

std::string readError(const std::string& path)
{
    try
    {
        readAudioFile(path);
    }
    catch (const AudioFileError& error)
    {
        return error.what();
    }
    return "read";
}

// The files were made by sox from one signal (a half-scale sine left, quarter-scale right), so
// every integer encoding must agree with the 64-bit float one to within its own quantisation.
class WavFileFromSox : public ::testing::Test
{
protected:
    void expectMatchesReference(const char* name, double tolerance)
    {
        const Audio audio = readAudioFile(dataFile(name));
        EXPECT_EQ(audio.sampleRate, 44100.0) << name;
        ASSERT_EQ(audio.channels.size(), 2u) << name;
        ASSERT_EQ(audio.numFrames(), 441u) << name;
        double worst = 0.0;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < 441; ++i)
                worst = std::max(worst, std::abs(double(audio.channels[c][i]) - reference.channels[c][i]));
        EXPECT_LE(worst, tolerance) << name;
    }

    Audio reference = readAudioFile(dataFile("float64-stereo.wav"));
};

TEST_F(WavFileFromSox, ReferenceHoldsTheGeneratedSine)
{
    ASSERT_EQ(reference.channels.size(), 2u);
    const double pi = std::acos(-1.0);
    for (std::size_t i = 0; i < reference.numFrames(); ++i)
    {
        // Half scale left, quarter scale right, both starting at phase 0.
        const double sine = std::sin(2.0 * pi * 1000.0 * double(i) / 44100.0);
        EXPECT_NEAR(reference.channels[0][i], 0.5 * sine, 1e-6) << i;
        EXPECT_NEAR(reference.channels[1][i], 0.25 * sine, 1e-6) << i;
    }
}

TEST_F(WavFileFromSox, EveryEncodingReadsTheSameSignal)
{
    // One step of each integer format; float32 carries 24 bits of mantissa.
    expectMatchesReference("pcm16-stereo.wav", 1.0 / 32768.0);
    expectMatchesReference("pcm24-stereo.wav", 1.0 / 8388608.0);
    expectMatchesReference("pcm32-stereo.wav", 1.0 / 8388608.0);
    expectMatchesReference("float32-stereo.wav", 1e-7);
}

TEST_F(WavFileFromSox, ExtensibleHeaderWithThreeChannels)
{
    const Audio audio = readAudioFile(dataFile("pcm24-three-channels.wav"));
    EXPECT_EQ(audio.sampleRate, 48000.0);
    ASSERT_EQ(audio.channels.size(), 3u);
    ASSERT_EQ(audio.numFrames(), 441u);
    for (std::size_t i = 0; i < 441; ++i)
    {
        EXPECT_NEAR(audio.channels[1][i], 0.5f * audio.channels[0][i], 2.0f / 8388608.0f);
        EXPECT_NEAR(audio.channels[2][i], 0.25f * audio.channels[0][i], 2.0f / 8388608.0f);
    }
}

TEST(WavFileErrors, UnreadableInputIsRefusedWithAReason)
{
    EXPECT_NE(readError(dataFile("pcm8-mono.wav")).find("8 bits"), std::string::npos);
    EXPECT_NE(readError(dataFile("no-such-file.wav")).find("cannot open"), std::string::npos);
    EXPECT_NE(readError(dataFile("make-data.sh")).find("not a WAV file"), std::string::npos);
}

TEST(WavFileErrors, TruncatedFileKeepsTheWholeFramesItHas)
{
    std::ifstream in(dataFile("pcm16-stereo.wav"), std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string path = temporaryPath("tarvoverb-truncated.wav");
    // Cut in the middle of a frame: 100 whole frames and one byte of the next survive.
    const std::size_t dataStart = bytes.size() - 441 * 4;
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(dataStart + 401));
    const Audio cut = readAudioFile(path);
    const Audio whole = readAudioFile(dataFile("pcm16-stereo.wav"));
    ASSERT_EQ(cut.numFrames(), 100u);
    for (std::size_t i = 0; i < 100; ++i)
        EXPECT_EQ(cut.channels[1][i], whole.channels[1][i]);
    std::remove(path.c_str());
}

TEST(WavFileErrors, HeaderOnlyFilesAndGarbageNeverCrash)
{
    std::ifstream in(dataFile("pcm24-three-channels.wav"), std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string path = temporaryPath("tarvoverb-garbage.wav");
    // Every prefix of a valid header either reads or is refused; none crashes.
    for (std::size_t length = 0; length < 80; ++length)
    {
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(length));
        try
        {
            readAudioFile(path);
        }
        catch (const AudioFileError&)
        {
        }
    }
    // A chunk size that points far past the end.
    std::vector<char> broken = bytes;
    broken[16] = broken[17] = broken[18] = static_cast<char>(0xFF);
    std::ofstream(path, std::ios::binary).write(broken.data(), static_cast<std::streamsize>(broken.size()));
    EXPECT_NE(readError(path).find("broken"), std::string::npos);
    std::remove(path.c_str());
}

TEST(WavFileWriting, FloatFileReadsBackBitExact)
{
    Audio audio;
    audio.sampleRate = 48000.0;
    audio.channels = {{0.0f, 1.0f, -1.0f, 1e-30f}, {0.5f, -0.25f, 3.0f, -7.5f}, {1.0f, 2.0f, 3.0f, 4.0f}};
    const std::string path = temporaryPath("tarvoverb-roundtrip.wav");
    tarvo::render::writeWavFloat(path, audio);
    const Audio back = readAudioFile(path);
    EXPECT_EQ(back.sampleRate, 48000.0);
    EXPECT_EQ(back.channels, audio.channels);
    // 12 bytes RIFF, 48 fmt (extensible), 12 fact, 8 data header, 4 frames of 3 floats.
    EXPECT_EQ(std::filesystem::file_size(path), 12u + 48u + 12u + 8u + 48u);
    std::remove(path.c_str());
}
} // namespace
