#pragma once

#include "WavFile.h"

#include "files/TarvoDspFileReader.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::render
{
/// Reads a WAV file block by block, so that a recording of any length costs a block of
/// memory: 16-, 24- or 32-bit PCM, or 32- or 64-bit float, plain, extensible or RF64.
/// A data chunk cut short keeps the whole frames it has. Offline; allocates.
class WavReader
{
public:
    /// Opens the file and reads its header. Throws `AudioFileError` with the reason.
    explicit WavReader(const std::string& path);

    /// Hz, as the header gives it: any value a 32-bit field holds.
    double getSampleRate() const { return sampleRate; }
    std::uint32_t getNumChannels() const { return numChannels; }
    std::uint64_t getNumFrames() const { return numFrames; }

    /// Decodes up to `n` of the frames not yet read: file channel c into `channels[c]` for c
    /// below `numDestinations`; further file channels are skipped. Returns the frames read,
    /// 0 at the end. Throws `AudioFileError` when the file can't be read.
    std::uint32_t read(float* const* channels, std::uint32_t numDestinations, std::uint32_t n);

private:
    [[noreturn]] void fail(const std::string& reason) const;
    void parseHeader();

    std::string path;
    std::unique_ptr<ondo::FileReader> file;
    double sampleRate = 0.0;
    std::uint32_t numChannels = 0;
    std::uint16_t format = 0;
    std::uint16_t bits = 0;
    std::uint64_t dataStart = 0;
    std::uint64_t numFrames = 0;
    std::uint64_t framesRead = 0;
    std::vector<std::uint8_t> raw;
};
} // namespace tarvo::render
