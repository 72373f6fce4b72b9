#pragma once

#include "WavFile.h"

#include "files/TarvoDspFileWriter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::render
{
/// Writes 32-bit float WAV block by block, any channel count, with the header written first
/// from the frame count given: a plain RIFF file while its sizes fit 32 bits, RF64 (the
/// 64-bit form of WAV, with a ds64 chunk) beyond. Offline; allocates.
class WavWriter
{
public:
    /// The largest RIFF size a plain WAV header can state.
    static constexpr std::uint64_t riffLimit = 0xFFFFFFFFull;

    /// Creates the file (replacing one of that name). `rf64Above` is the RIFF size above
    /// which RF64 is written; tests lower it. Throws `AudioFileError` with the system's reason.
    WavWriter(const std::string& path, std::uint32_t numChannels, double sampleRate, std::uint64_t numFrames,
              std::uint64_t rf64Above = riffLimit);
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    /// Bytes of the whole file for these counts, header included.
    static std::uint64_t fileSize(std::uint32_t numChannels, std::uint64_t numFrames,
                                  std::uint64_t rf64Above = riffLimit);

    /// Appends `n` frames, one pointer a channel. Throws `AudioFileError` when the disk refuses
    /// or when more frames come than the header announced.
    void write(const float* const* channels, std::uint32_t n);
    /// Flushes and closes; throws when fewer frames came than announced or the disk refused.
    void close();
    /// Closes without the checks of `close`, for a render that failed.
    void abandon() { file.reset(); }
    bool isRf64() const { return rf64; }

private:
    [[noreturn]] void fail(const std::string& reason);

    std::string path;
    std::unique_ptr<ondo::FileWriter> file;
    std::uint32_t numChannels;
    std::uint64_t numFrames;
    std::uint64_t framesWritten = 0;
    bool rf64 = false;
    std::vector<std::uint8_t> bytes;
};
} // namespace tarvo::render
