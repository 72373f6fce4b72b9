#pragma once

#include "containers/TarvoDspAudioBufferBase.h"

namespace ondo
{
/// A view of channels that live elsewhere; owns nothing.
template <typename T>
class AudioBufferReference : public AudioBufferBase<T>
{
public:
    using AudioBufferBase<T>::AudioBufferBase;

    /// Points channel i at source[i] + startSample. Allocates only when the channel count grows.
    void refer(T** source, std::uint32_t channelCount, std::uint64_t sampleCount, std::uint64_t startSample = 0)
    {
        this->setSize(channelCount, sampleCount);
        for (std::uint32_t c = 0; c < channelCount; ++c)
            this->channels[c] = source[c] + startSample;
    }
};
} // namespace ondo
