#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::render
{
/// Multichannel audio in memory: one vector of samples a channel.
struct Audio
{
    double sampleRate = 0.0;
    std::vector<std::vector<float>> channels;

    std::size_t numFrames() const { return channels.empty() ? 0 : channels.front().size(); }
};

/// A file that cannot be read or written, with the reason in the message.
class AudioFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads a whole WAV file into memory (see `WavReader`). Allocates.
Audio readAudioFile(const std::string& path);

/// Writes `audio` as 32-bit float WAV (see `WavWriter`). Allocates.
void writeWavFloat(const std::string& path, const Audio& audio);
} // namespace tarvo::render
