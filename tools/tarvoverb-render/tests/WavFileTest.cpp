#include "WavFile.h"

#include "TestSignals.h"
#include "WavWriter.h"

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
    // 12 bytes RIFF, 26 fmt, 12 fact, 8 data header, 4 frames of 3 floats.
    EXPECT_EQ(std::filesystem::file_size(path), 12u + 26u + 12u + 8u + 48u);
    std::remove(path.c_str());
}
// Every refusal names the file and says why, in the system's words.
TEST(WavFileErrors, OutputsThatCantBeCreatedSayWhy)
{
    const std::string folder = std::filesystem::temp_directory_path().string();
    const struct
    {
        std::string path;
        std::string reason;
    } cases[] = {
        {folder, "it is a folder"},
        {folder + "/no-such-folder/x.wav", "No such file or directory"},
        {"", "has no name"},
    };
    for (const auto& c : cases)
    {
        std::string message;
        try
        {
            tarvo::render::WavWriter writer(c.path, 2, 44100.0, 10);
        }
        catch (const AudioFileError& error)
        {
            message = error.what();
        }
        EXPECT_NE(message.find(c.reason), std::string::npos) << c.path << ": " << message;
    }
    EXPECT_NE(readError(folder).find("is a folder"), std::string::npos);
}

// Above the RIFF limit (lowered here, so as not to write 4 GB) the file is RF64: the ds64
// chunk carries the sizes, and both this reader and sox read it back.
TEST(WavFileWriting, LargeOutputIsWrittenAsRf64)
{
    const std::string path = temporaryPath("tarvoverb-rf64.wav");
    const std::vector<float> left = tarvo::testing::seededNoise(3000, 1), right = tarvo::testing::seededNoise(3000, 2);
    {
        tarvo::render::WavWriter writer(path, 2, 48000.0, 3000, 1000);
        EXPECT_TRUE(writer.isRf64());
        const float* channels[] = {left.data(), right.data()};
        writer.write(channels, 3000);
        writer.close();
    }
    std::ifstream in(path, std::ios::binary);
    char tag[4];
    in.read(tag, 4);
    EXPECT_EQ(std::string(tag, 4), "RF64");
    EXPECT_EQ(std::filesystem::file_size(path), tarvo::render::WavWriter::fileSize(2, 3000, 1000));
    const Audio back = readAudioFile(path);
    EXPECT_EQ(back.channels, (std::vector<std::vector<float>>{left, right}));
    const std::string command = "sox --i -s \"" + path + "\" 2>&1";
    std::FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    char text[256] = {};
    const std::size_t got = std::fread(text, 1, sizeof text - 1, pipe);
    EXPECT_EQ(pclose(pipe), 0) << std::string(text, got);
    EXPECT_EQ(std::string(text, got), "3000\n") << "sox counts the samples of one channel";
    std::remove(path.c_str());
}
} // namespace
