#include "WavFile.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace tarvo::render
{
namespace
{
constexpr std::uint16_t formatPcm = 1;
constexpr std::uint16_t formatFloat = 3;
constexpr std::uint16_t formatExtensible = 0xFFFE;

std::uint32_t readU32(const std::uint8_t* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

std::uint16_t readU16(const std::uint8_t* p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
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

float decodeSample(const std::uint8_t* p, std::uint16_t format, std::uint16_t bits)
{
    if (format == formatFloat && bits == 32)
    {
        float f;
        std::uint32_t u = readU32(p);
        std::memcpy(&f, &u, 4);
        return f;
    }
    if (format == formatFloat && bits == 64)
    {
        std::uint64_t u = readU32(p) | (static_cast<std::uint64_t>(readU32(p + 4)) << 32);
        double d;
        std::memcpy(&d, &u, 8);
        return static_cast<float>(d);
    }
    switch (bits)
    {
    case 16:
        return static_cast<float>(static_cast<std::int16_t>(readU16(p))) / 32768.0f;
    case 24:
    {
        const std::int32_t v = static_cast<std::int32_t>((p[0] << 8) | (p[1] << 16) | (static_cast<std::uint32_t>(p[2]) << 24)) >> 8;
        return static_cast<float>(v) / 8388608.0f;
    }
    default:
        return static_cast<float>(static_cast<double>(static_cast<std::int32_t>(readU32(p))) / 2147483648.0);
    }
}
} // namespace

Audio readAudioFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw AudioFileError("cannot open \"" + path + "\"");
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 || std::memcmp(bytes.data() + 8, "WAVE", 4) != 0)
        throw AudioFileError("\"" + path + "\" is not a WAV file");

    std::uint16_t format = 0, numChannels = 0, bits = 0;
    std::uint32_t sampleRate = 0;
    const std::uint8_t* data = nullptr;
    std::size_t dataSize = 0;
    for (std::size_t pos = 12; pos + 8 <= bytes.size();)
    {
        const std::uint8_t* chunk = bytes.data() + pos;
        const std::size_t size = readU32(chunk + 4);
        const std::size_t available = bytes.size() - pos - 8;
        if (std::memcmp(chunk, "fmt ", 4) == 0)
        {
            if (size < 16 || size > available)
                throw AudioFileError("\"" + path + "\" has a broken format chunk");
            format = readU16(chunk + 8);
            numChannels = readU16(chunk + 10);
            sampleRate = readU32(chunk + 12);
            bits = readU16(chunk + 22);
            if (format == formatExtensible)
            {
                if (size < 40)
                    throw AudioFileError("\"" + path + "\" has a broken extensible format chunk");
                format = readU16(chunk + 8 + 24); // first two bytes of the sub-format GUID
            }
        }
        else if (std::memcmp(chunk, "data", 4) == 0)
        {
            data = chunk + 8;
            dataSize = std::min(size, available); // a truncated file keeps what it has
        }
        pos += 8 + size + (size & 1);
    }
    if (numChannels == 0 || sampleRate == 0)
        throw AudioFileError("\"" + path + "\" has no usable format chunk");
    const bool supported = (format == formatPcm && (bits == 16 || bits == 24 || bits == 32)) ||
                           (format == formatFloat && (bits == 32 || bits == 64));
    if (!supported)
        throw AudioFileError("\"" + path + "\": only 16/24/32-bit PCM and 32/64-bit float WAV are read (format " +
                             std::to_string(format) + ", " + std::to_string(bits) + " bits)");
    if (data == nullptr)
        throw AudioFileError("\"" + path + "\" has no data chunk");

    const std::size_t frameBytes = static_cast<std::size_t>(numChannels) * (bits / 8);
    const std::size_t frames = dataSize / frameBytes;
    Audio audio;
    audio.sampleRate = sampleRate;
    audio.channels.assign(numChannels, std::vector<float>(frames));
    for (std::size_t f = 0; f < frames; ++f)
        for (std::uint16_t c = 0; c < numChannels; ++c)
            audio.channels[c][f] = decodeSample(data + f * frameBytes + c * (bits / 8), format, bits);
    return audio;
}

void writeWavFloat(const std::string& path, const Audio& audio)
{
    const auto numChannels = static_cast<std::uint16_t>(audio.channels.size());
    const std::size_t frames = audio.numFrames();
    const bool extensible = numChannels > 2;
    if (static_cast<double>(frames) * numChannels * 4 > 4.0e9)
        throw AudioFileError("\"" + path + "\": more than 4 GB of audio does not fit a WAV file");
    const std::uint32_t dataBytes = static_cast<std::uint32_t>(frames * numChannels * 4);
    const std::uint32_t fmtSize = extensible ? 40 : 18;

    std::vector<std::uint8_t> out;
    out.reserve(64 + dataBytes);
    putTag(out, "RIFF");
    putU32(out, 4 + (8 + fmtSize) + 12 + (8 + dataBytes));
    putTag(out, "WAVE");
    putTag(out, "fmt ");
    putU32(out, fmtSize);
    putU16(out, extensible ? formatExtensible : formatFloat);
    putU16(out, numChannels);
    putU32(out, static_cast<std::uint32_t>(audio.sampleRate));
    putU32(out, static_cast<std::uint32_t>(audio.sampleRate) * numChannels * 4);
    putU16(out, static_cast<std::uint16_t>(numChannels * 4));
    putU16(out, 32);
    putU16(out, extensible ? 22 : 0);
    if (extensible)
    {
        putU16(out, 32); // valid bits
        putU32(out, 0);  // no speaker positions implied
        // KSDATAFORMAT_SUBTYPE_IEEE_FLOAT
        const std::uint8_t guid[16] = {0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                       0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
        out.insert(out.end(), guid, guid + 16);
    }
    putTag(out, "fact");
    putU32(out, 4);
    putU32(out, static_cast<std::uint32_t>(frames));
    putTag(out, "data");
    putU32(out, dataBytes);
    for (std::size_t f = 0; f < frames; ++f)
        for (const auto& channel : audio.channels)
        {
            std::uint32_t u;
            std::memcpy(&u, &channel[f], 4);
            putU32(out, u);
        }

    std::ofstream file(path, std::ios::binary);
    if (!file)
        throw AudioFileError("cannot write \"" + path + "\"");
    file.write(reinterpret_cast<const char*>(out.data()), static_cast<std::streamsize>(out.size()));
    if (!file)
        throw AudioFileError("error while writing \"" + path + "\"");
}
} // namespace tarvo::render
