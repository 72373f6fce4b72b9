#include "WavReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <cmath>
#include <filesystem>
#include <limits>

namespace tarvo::render
{
namespace
{
constexpr std::uint16_t formatPcm = 1;
constexpr std::uint16_t formatFloat = 3;
constexpr std::uint16_t formatExtensible = 0xFFFE;
/// A 32-bit size that RF64 replaces by the one in its ds64 chunk.
constexpr std::uint32_t sizeInDs64 = 0xFFFFFFFFu;

std::uint32_t readU32(const std::uint8_t* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

std::uint64_t readU64(const std::uint8_t* p)
{
    return readU32(p) | (static_cast<std::uint64_t>(readU32(p + 4)) << 32);
}

std::uint16_t readU16(const std::uint8_t* p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

float decodeSample(const std::uint8_t* p, std::uint16_t format, std::uint16_t bits)
{
    if (format == formatFloat && bits == 32)
    {
        float f;
        const std::uint32_t u = readU32(p);
        std::memcpy(&f, &u, 4);
        return f;
    }
    if (format == formatFloat && bits == 64)
    {
        const std::uint64_t u = readU64(p);
        double d;
        std::memcpy(&d, &u, 8);
        // Narrowing a double beyond the float range is undefined: such samples become
        // infinities, which the reverberator then treats as unusable.
        constexpr double largest = std::numeric_limits<float>::max();
        if (d > largest)
            return std::numeric_limits<float>::infinity();
        if (d < -largest)
            return -std::numeric_limits<float>::infinity();
        return static_cast<float>(d);
    }
    switch (bits)
    {
    case 16:
        return static_cast<float>(static_cast<std::int16_t>(readU16(p))) / 32768.0f;
    case 24:
    {
        const std::int32_t v =
            static_cast<std::int32_t>((p[0] << 8) | (p[1] << 16) | (static_cast<std::uint32_t>(p[2]) << 24)) >> 8;
        return static_cast<float>(v) / 8388608.0f;
    }
    default:
        return static_cast<float>(static_cast<double>(static_cast<std::int32_t>(readU32(p))) / 2147483648.0);
    }
}
} // namespace

WavReader::WavReader(const std::string& filePath) : path(filePath)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        fail("is a folder, not a WAV file");
    file.reset(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw AudioFileError("cannot open \"" + path + "\": " + std::strerror(errno));
    parseHeader();
}

void WavReader::fail(const std::string& reason) const
{
    throw AudioFileError("\"" + path + "\" " + reason);
}

void WavReader::parseHeader()
{
    std::FILE* f = file.get();
    if (std::fseek(f, 0, SEEK_END) != 0)
        fail("can't be read: " + std::string(std::strerror(errno)));
    const long end = std::ftell(f);
    if (end < 0)
        fail("can't be read: " + std::string(std::strerror(errno)));
    const auto fileSize = static_cast<std::uint64_t>(end);
    std::rewind(f);

    std::uint8_t header[12];
    const bool riff = std::fread(header, 1, 12, f) == 12 && std::memcmp(header + 8, "WAVE", 4) == 0 &&
                      (std::memcmp(header, "RIFF", 4) == 0 || std::memcmp(header, "RF64", 4) == 0);
    if (!riff)
        fail("is not a WAV file");
    const bool rf64 = std::memcmp(header, "RF64", 4) == 0;

    std::uint64_t ds64DataSize = 0;
    bool haveFormat = false, haveData = false;
    std::uint64_t dataSize = 0;
    for (std::uint64_t pos = 12; pos + 8 <= fileSize;)
    {
        std::uint8_t chunk[8];
        if (std::fseek(f, static_cast<long>(pos), SEEK_SET) != 0 || std::fread(chunk, 1, 8, f) != 8)
            break;
        std::uint64_t size = readU32(chunk + 4);
        const std::uint64_t available = fileSize - pos - 8;
        if (std::memcmp(chunk, "ds64", 4) == 0)
        {
            std::uint8_t ds64[28];
            if (size < 28 || size > available || std::fread(ds64, 1, 28, f) != 28)
                fail("has a broken ds64 chunk");
            ds64DataSize = readU64(ds64 + 8);
        }
        else if (std::memcmp(chunk, "fmt ", 4) == 0)
        {
            std::uint8_t fmt[40] = {};
            if (size < 16 || size > available || std::fread(fmt, 1, std::min<std::uint64_t>(size, 40), f) < 16)
                fail("has a broken format chunk");
            format = readU16(fmt);
            numChannels = readU16(fmt + 2);
            sampleRate = readU32(fmt + 4);
            bits = readU16(fmt + 14);
            if (format == formatExtensible)
            {
                if (size < 40)
                    fail("has a broken extensible format chunk");
                format = readU16(fmt + 24); // first two bytes of the sub-format GUID
            }
            haveFormat = true;
        }
        else if (std::memcmp(chunk, "data", 4) == 0)
        {
            if (rf64 && size == sizeInDs64)
                size = ds64DataSize;
            dataStart = pos + 8;
            dataSize = std::min(size, available); // a truncated file keeps what it has
            haveData = true;
        }
        if (size > fileSize) // also keeps the sum below from wrapping
            break;
        pos += 8 + size + (size & 1);
    }
    if (!haveFormat || numChannels == 0 || sampleRate == 0)
        fail("has no usable format chunk");
    const bool supported = (format == formatPcm && (bits == 16 || bits == 24 || bits == 32)) ||
                           (format == formatFloat && (bits == 32 || bits == 64));
    if (!supported)
        fail("can't be read: only 16/24/32-bit PCM and 32/64-bit float WAV are (format " + std::to_string(format) +
             ", " + std::to_string(bits) + " bits)");
    if (!haveData)
        fail("has no data chunk");
    numFrames = dataSize / (std::uint64_t(numChannels) * (bits / 8));
}

std::uint32_t WavReader::read(float* const* channels, std::uint32_t numDestinations, std::uint32_t n)
{
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(n, numFrames - framesRead));
    if (count == 0)
        return 0;
    const std::size_t sampleBytes = bits / 8;
    const std::size_t frameBytes = numChannels * sampleBytes;
    raw.resize(count * frameBytes);
    const std::uint64_t at = dataStart + framesRead * frameBytes;
    if (std::fseek(file.get(), static_cast<long>(at), SEEK_SET) != 0 ||
        std::fread(raw.data(), 1, raw.size(), file.get()) != raw.size())
        fail("can't be read past frame " + std::to_string(framesRead) + ": " +
             (std::ferror(file.get()) != 0 ? std::strerror(errno) : "the file ended"));
    const std::uint32_t used = std::min(numDestinations, numChannels);
    for (std::uint32_t c = 0; c < used; ++c)
        for (std::uint32_t i = 0; i < count; ++i)
            channels[c][i] = decodeSample(raw.data() + i * frameBytes + c * sampleBytes, format, bits);
    framesRead += count;
    return count;
}
} // namespace tarvo::render
