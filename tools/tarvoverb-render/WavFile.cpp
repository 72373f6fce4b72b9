#include "WavFile.h"

#include "WavReader.h"
#include "WavWriter.h"

namespace tarvo::render
{
Audio readAudioFile(const std::string& path)
{
    WavReader reader(path);
    Audio audio;
    audio.sampleRate = reader.getSampleRate();
    audio.channels.assign(reader.getNumChannels(), std::vector<float>(reader.getNumFrames()));
    std::vector<float*> channels(reader.getNumChannels());
    constexpr std::uint32_t block = 4096;
    for (std::uint64_t done = 0; done < reader.getNumFrames();)
    {
        for (std::size_t c = 0; c < channels.size(); ++c)
            channels[c] = audio.channels[c].data() + done;
        const std::uint32_t n = reader.read(channels.data(), static_cast<std::uint32_t>(channels.size()), block);
        if (n == 0)
            break;
        done += n;
    }
    return audio;
}

void writeWavFloat(const std::string& path, const Audio& audio)
{
    WavWriter writer(path, static_cast<std::uint32_t>(audio.channels.size()), audio.sampleRate, audio.numFrames());
    std::vector<const float*> channels;
    for (const auto& channel : audio.channels)
        channels.push_back(channel.data());
    constexpr std::size_t block = 4096;
    for (std::size_t done = 0; done < audio.numFrames(); done += block)
    {
        writer.write(channels.data(), static_cast<std::uint32_t>(std::min(block, audio.numFrames() - done)));
        for (const float*& channel : channels)
            channel += block;
    }
    writer.close();
}
} // namespace tarvo::render
