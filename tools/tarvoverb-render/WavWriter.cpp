#include "WavWriter.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace tarvo::render
{
namespace
{
constexpr std::uint16_t formatFloat = 3;
// Plain IEEE float at any channel count, as sox writes it: every reader takes it, and the
// extensible header adds nothing a float file needs.
constexpr std::uint32_t fmtSize = 18;
constexpr std::uint64_t plainHeaderBytes = 12 + (8 + fmtSize) + (8 + 4) + 8;
constexpr std::uint32_t ds64Size = 28;
constexpr std::uint64_t rf64HeaderBytes = plainHeaderBytes + 8 + ds64Size;
constexpr std::uint32_t sizeInDs64 = 0xFFFFFFFFu;

void putU64(std::vector<std::uint8_t>& out, std::uint64_t v)
{
    for (int i = 0; i < 8; ++i)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

void putU32(std::vector<std::uint8_t>& out, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

void putU16(std::vector<std::uint8_t>& out, std::uint16_t v)
{
    out.push_back(static_cast<std::uint8_t>(v));
    out.push_back(static_cast<std::uint8_t>(v >> 8));
}

void putTag(std::vector<std::uint8_t>& out, const char* tag)
{
    out.insert(out.end(), tag, tag + 4);
}

std::uint32_t narrowOr(std::uint64_t v, std::uint32_t replacement)
{
    return v > 0xFFFFFFFFull ? replacement : static_cast<std::uint32_t>(v);
}
} // namespace

std::uint64_t WavWriter::fileSize(std::uint32_t numChannels, std::uint64_t numFrames, std::uint64_t rf64Above)
{
    const std::uint64_t data = numFrames * numChannels * 4;
    const bool big = plainHeaderBytes - 8 + data > rf64Above;
    return (big ? rf64HeaderBytes : plainHeaderBytes) + data;
}

WavWriter::WavWriter(const std::string& filePath, std::uint32_t channels, double sampleRate, std::uint64_t frames,
                     std::uint64_t rf64Above)
    : path(filePath), numChannels(channels), numFrames(frames)
{
    if (path.empty())
        throw AudioFileError("the output file has no name");
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw AudioFileError("cannot write \"" + path + "\": it is a folder");
    if (channels == 0 || channels > 0xFFFF / 4)
        throw AudioFileError("cannot write \"" + path + "\": " + std::to_string(channels) + " channels");
    file.reset(std::fopen(path.c_str(), "wb"));
    if (!file)
        throw AudioFileError("cannot write \"" + path + "\": " + std::strerror(errno));

    const std::uint64_t dataBytes = frames * channels * 4;
    const std::uint64_t riffSize = fileSize(channels, frames, rf64Above) - 8;
    rf64 = fileSize(channels, frames, rf64Above) > plainHeaderBytes + dataBytes;
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    const auto blockAlign = static_cast<std::uint16_t>(channels * 4);

    std::vector<std::uint8_t> header;
    putTag(header, rf64 ? "RF64" : "RIFF");
    putU32(header, rf64 ? sizeInDs64 : static_cast<std::uint32_t>(riffSize));
    putTag(header, "WAVE");
    if (rf64)
    {
        putTag(header, "ds64");
        putU32(header, ds64Size);
        putU64(header, riffSize);
        putU64(header, dataBytes);
        putU64(header, frames);
        putU32(header, 0); // no table of further chunk sizes
    }
    putTag(header, "fmt ");
    putU32(header, fmtSize);
    putU16(header, formatFloat);
    putU16(header, static_cast<std::uint16_t>(channels));
    putU32(header, rate);
    putU32(header, rate * blockAlign);
    putU16(header, blockAlign);
    putU16(header, 32);
    putU16(header, 0); // no extension
    putTag(header, "fact");
    putU32(header, 4);
    putU32(header, narrowOr(frames, sizeInDs64));
    putTag(header, "data");
    putU32(header, rf64 ? sizeInDs64 : static_cast<std::uint32_t>(dataBytes));
    if (std::fwrite(header.data(), 1, header.size(), file.get()) != header.size())
        fail(std::strerror(errno));
}

WavWriter::~WavWriter() = default;

void WavWriter::fail(const std::string& reason)
{
    file.reset();
    throw AudioFileError("error while writing \"" + path + "\": " + reason);
}

void WavWriter::write(const float* const* channels, std::uint32_t n)
{
    if (!file)
        fail("the file is closed");
    if (n > numFrames - framesWritten)
        fail("more frames than the header announced");
    bytes.resize(std::size_t(n) * numChannels * 4);
    std::uint8_t* out = bytes.data();
    for (std::uint32_t f = 0; f < n; ++f)
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            std::uint32_t u;
            std::memcpy(&u, channels[c] + f, 4);
            for (int i = 0; i < 4; ++i)
                *out++ = static_cast<std::uint8_t>(u >> (8 * i));
        }
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        fail(std::strerror(errno));
    framesWritten += n;
}

void WavWriter::close()
{
    if (!file)
        return;
    if (framesWritten != numFrames)
        fail(std::to_string(framesWritten) + " frames of " + std::to_string(numFrames) + " came");
    if (std::fflush(file.get()) != 0)
        fail(std::strerror(errno));
    if (std::fclose(file.release()) != 0)
        throw AudioFileError("error while writing \"" + path + "\": " + std::strerror(errno));
}
} // namespace tarvo::render
