#include "WavReader.h"

#include "files/TarvoDspByteOrder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
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
    return static_cast<std::uint32_t>(ondo::byteOrder::loadLittle(p, 4));
}

std::uint64_t readU64(const std::uint8_t* p)
{
    return ondo::byteOrder::loadLittle(p, 8);
}

std::uint16_t readU16(const std::uint8_t* p)
{
    return static_cast<std::uint16_t>(ondo::byteOrder::loadLittle(p, 2));
}

float decodeSample(const std::uint8_t* p, std::uint16_t format, std::uint16_t bits)
{
    if (format == formatFloat && bits == 32)
        return ondo::byteOrder::floatFromBits(readU32(p));
    if (format == formatFloat && bits == 64)
    {
        const double d = ondo::byteOrder::doubleFromBits(readU64(p));
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
    const ondo::File location(path);
    if (location.isDirectory())
        fail("is a folder, not a WAV file");
    errno = 0;
    file = std::make_unique<ondo::FileReader>(location);
    if (!file->openedOk())
    {
        const int reason = !location.exists() ? ENOENT : errno != 0 ? errno : EIO;
        throw AudioFileError("cannot open \"" + path + "\": " + std::strerror(reason));
    }
    parseHeader();
}

void WavReader::fail(const std::string& reason) const
{
    throw AudioFileError("\"" + path + "\" " + reason);
}

void WavReader::parseHeader()
{
    ondo::FileReader& f = *file;
    const auto fileSize = static_cast<std::uint64_t>(f.getTotalLength());
    // Whole pieces of the header: a piece cut short by the end of the file counts as missing.
    std::vector<std::uint8_t> piece;
    const auto readPiece = [&](std::uint64_t at, std::size_t bytes) {
        return f.setPosition(static_cast<std::int64_t>(at)) &&
               f.readIntoMemoryBlock(piece, static_cast<std::int64_t>(bytes)) == bytes;
    };

    const bool riff = readPiece(0, 12) && std::memcmp(piece.data() + 8, "WAVE", 4) == 0 &&
                      (std::memcmp(piece.data(), "RIFF", 4) == 0 || std::memcmp(piece.data(), "RF64", 4) == 0);
    if (!riff)
        fail("is not a WAV file");
    const bool rf64 = std::memcmp(piece.data(), "RF64", 4) == 0;

    std::uint64_t ds64DataSize = 0;
    bool haveFormat = false, haveData = false;
    std::uint64_t dataSize = 0;
    for (std::uint64_t pos = 12; pos + 8 <= fileSize;)
    {
        if (!readPiece(pos, 8))
            break;
        char chunk[4];
        std::memcpy(chunk, piece.data(), 4);
        std::uint64_t size = readU32(piece.data() + 4);
        const std::uint64_t available = fileSize - pos - 8;
        if (std::memcmp(chunk, "ds64", 4) == 0)
        {
            if (size < 28 || size > available || !readPiece(pos + 8, 28))
                fail("has a broken ds64 chunk");
            ds64DataSize = readU64(piece.data() + 8);
        }
        else if (std::memcmp(chunk, "fmt ", 4) == 0)
        {
            std::uint8_t fmt[40] = {};
            if (size < 16 || size > available || !readPiece(pos + 8, static_cast<std::size_t>(std::min<std::uint64_t>(size, 40))))
                fail("has a broken format chunk");
            std::memcpy(fmt, piece.data(), piece.size());
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
    const std::size_t wanted = count * frameBytes;
    const std::uint64_t at = dataStart + framesRead * frameBytes;
    errno = 0;
    if (!file->setPosition(static_cast<std::int64_t>(at)) ||
        file->readIntoMemoryBlock(raw, static_cast<std::int64_t>(wanted)) != wanted)
        fail("can't be read past frame " + std::to_string(framesRead) + ": " +
             (errno != 0 ? std::strerror(errno) : "the file ended"));
    const std::uint32_t used = std::min(numDestinations, numChannels);
    for (std::uint32_t c = 0; c < used; ++c)
        for (std::uint32_t i = 0; i < count; ++i)
            channels[c][i] = decodeSample(raw.data() + i * frameBytes + c * sampleBytes, format, bits);
    framesRead += count;
    return count;
}
} // namespace tarvo::render
