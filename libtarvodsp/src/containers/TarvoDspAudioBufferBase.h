#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>

namespace ondo
{
/// A multichannel block seen as a table of channel pointers. The base owns no samples.
template <typename T>
class AudioBufferBase
{
public:
    AudioBufferBase(std::uint32_t channelCount = 0, std::uint64_t sampleCount = 0)
        : numChannels(channelCount), numSamples(sampleCount), channels(channelCount)
    {
    }
    virtual ~AudioBufferBase()
    {
        channels.clear();
        channels.resize(0);
    }

    AudioBufferBase(const AudioBufferBase&) = delete;
    AudioBufferBase& operator=(const AudioBufferBase&) = delete;

    /// A new channel count rebuilds the table, keeping the pointers of the channels that
    /// remain and leaving null in new ones; otherwise only the sample count is stored.
    virtual void setSize(std::uint32_t channelCount, std::uint64_t sampleCount)
    {
        if (channelCount != numChannels)
        {
            channels.resize(channelCount);
            numChannels = channelCount;
        }
        numSamples = sampleCount;
    }
    virtual void setNumChannels(std::uint32_t n)
    {
        if (n != numChannels)
            setSize(n, numSamples);
    }
    virtual void setNumSamples(std::uint64_t n)
    {
        if (n != numSamples)
            setSize(numChannels, n);
    }
    virtual double getMemorySizeInMegaBytes() const { return 0.0; }

    std::uint32_t getNumChannels() const { return numChannels; }
    std::uint64_t getNumSamples() const { return numSamples; }
    T** getChannels() { return channels.data(); }
    T* const* getChannels() const { return channels.data(); }
    T* getChannel(std::uint32_t i) { return channels[i]; }
    const T* getChannel(std::uint32_t i) const { return channels[i]; }
    T* operator[](std::uint32_t i) { return channels[i]; }
    const T* operator[](std::uint32_t i) const { return channels[i]; }

protected:
    std::uint32_t numChannels;
    std::uint64_t numSamples;
    Vector<T*> channels;
};
} // namespace ondo
