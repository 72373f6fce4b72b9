#include "WavWriter.h"

#include "files/TarvoDspByteOrder.h"
#include "files/TarvoDspMemoryOutputStream.h"

#include <cerrno>
#include <cstring>

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
    const ondo::File location(path);
    if (location.isDirectory())
        throw AudioFileError("cannot write \"" + path + "\": it is a folder");
    if (channels == 0 || channels > 0xFFFF / 4)
        throw AudioFileError("cannot write \"" + path + "\": " + std::to_string(channels) + " channels");
    errno = 0;
    file = std::make_unique<ondo::FileWriter>(location);
    if (!file->openedOk())
        throw AudioFileError("cannot write \"" + path + "\": " + std::strerror(errno != 0 ? errno : EIO));

    const std::uint64_t dataBytes = frames * channels * 4;
    const std::uint64_t riffSize = fileSize(channels, frames, rf64Above) - 8;
    rf64 = fileSize(channels, frames, rf64Above) > plainHeaderBytes + dataBytes;
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    const auto blockAlign = static_cast<std::uint16_t>(channels * 4);
    // Little-endian fields; the casts only reinterpret the unsigned values' bits.
    const auto u32 = [](std::uint32_t v) { return static_cast<std::int32_t>(v); };
    const auto u16 = [](std::uint16_t v) { return static_cast<std::int16_t>(v); };

    ondo::MemoryOutputStream header(static_cast<std::size_t>(rf64HeaderBytes));
    header.writeText(rf64 ? "RF64" : "RIFF");
    header.writeInt(u32(rf64 ? sizeInDs64 : static_cast<std::uint32_t>(riffSize)));
    header.writeText("WAVE");
    if (rf64)
    {
        header.writeText("ds64");
        header.writeInt(u32(ds64Size));
        header.writeInt64(static_cast<std::int64_t>(riffSize));
        header.writeInt64(static_cast<std::int64_t>(dataBytes));
        header.writeInt64(static_cast<std::int64_t>(frames));
        header.writeInt(0); // no table of further chunk sizes
    }
    header.writeText("fmt ");
    header.writeInt(u32(fmtSize));
    header.writeShort(u16(formatFloat));
    header.writeShort(u16(static_cast<std::uint16_t>(channels)));
    header.writeInt(u32(rate));
    header.writeInt(u32(rate * blockAlign));
    header.writeShort(u16(blockAlign));
    header.writeShort(32);
    header.writeShort(0); // no extension
    header.writeText("fact");
    header.writeInt(4);
    header.writeInt(u32(narrowOr(frames, sizeInDs64)));
    header.writeText("data");
    header.writeInt(u32(rf64 ? sizeInDs64 : static_cast<std::uint32_t>(dataBytes)));
    errno = 0;
    if (!file->write(header.getData(), header.getDataSize()))
        fail(std::strerror(errno != 0 ? errno : EIO));
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
        for (std::uint32_t c = 0; c < numChannels; ++c, out += 4)
            ondo::byteOrder::storeLittle(out, ondo::byteOrder::bitsOf(channels[c][f]), 4);
    errno = 0;
    if (!file->write(bytes.data(), bytes.size()))
        fail(std::strerror(errno != 0 ? errno : EIO));
    framesWritten += n;
}

void WavWriter::close()
{
    if (!file)
        return;
    if (framesWritten != numFrames)
        fail(std::to_string(framesWritten) + " frames of " + std::to_string(numFrames) + " came");
    errno = 0;
    if (!file->flush())
        fail(std::strerror(errno != 0 ? errno : EIO));
    const bool closed = file->close();
    file.reset();
    if (!closed)
        throw AudioFileError("error while writing \"" + path + "\": " + std::strerror(errno != 0 ? errno : EIO));
}
} // namespace tarvo::render
