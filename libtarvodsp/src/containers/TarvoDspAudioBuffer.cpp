#include "containers/TarvoDspAudioBuffer.h"

#include "common/TarvoDspException.h"

#include <algorithm>
#include <string>

namespace ondo
{
template <typename T>
AudioBuffer<T>::AudioBuffer(std::uint32_t channelCount, std::uint64_t sampleCount) : AudioBufferBase<T>(0, 0)
{
    setSize(channelCount, sampleCount);
}

template <typename T>
void AudioBuffer<T>::setSize(std::uint32_t channelCount, std::uint64_t sampleCount)
{
    if (channelCount == this->numChannels && sampleCount == this->numSamples)
        return;
    rethrowAsOndoException(ONDO_SOURCE_LOCATION, [&] {
        AudioBufferBase<T>::setSize(channelCount, sampleCount);
        const std::uint64_t total = static_cast<std::uint64_t>(channelCount) * sampleCount;
        samples.resize(total);
        if (total != 0 && samples.size() != total)
            throw Exception("memory re-allocation failed (numChannels = " + std::to_string(channelCount) +
                                ", numSamples = " + std::to_string(sampleCount) + ")",
                            ONDO_SOURCE_LOCATION);
        pointChannelsIntoSamples();
    });
}

template <typename T>
double AudioBuffer<T>::getMemorySizeInMegaBytes() const
{
    constexpr float bytesToMegaBytes = 1.0f / 1048576.0f;
    return static_cast<double>(samples.capacity() * sizeof(T)) * static_cast<double>(bytesToMegaBytes);
}

template <typename T>
void AudioBuffer<T>::resizeKeepingContents(std::uint32_t channelCount, std::uint64_t sampleCount)
{
    if (channelCount == this->numChannels && sampleCount == this->numSamples)
        return;
    AudioBuffer<T> resized(channelCount, sampleCount);
    resized.clear();
    const std::uint32_t commonChannels = std::min(channelCount, this->numChannels);
    const std::uint64_t commonSamples = std::min(sampleCount, this->numSamples);
    for (std::uint32_t c = 0; c < commonChannels; ++c)
        std::copy(this->channels[c], this->channels[c] + commonSamples, resized.channels[c]);
    samples.swap(resized.samples);
    AudioBufferBase<T>::setSize(channelCount, sampleCount);
    pointChannelsIntoSamples();
}

template <typename T>
void AudioBuffer<T>::pointChannelsIntoSamples()
{
    for (std::uint32_t c = 0; c < this->numChannels; ++c)
        this->channels[c] = this->numSamples == 0 ? nullptr : samples.data() + c * this->numSamples;
}

template class AudioBuffer<float>;
} // namespace ondo
