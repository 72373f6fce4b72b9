#pragma once

#include "containers/TarvoDspAudioBufferBase.h"

namespace ondo
{
/// A multichannel block that owns its samples, channel after channel in one aligned run.
/// Resizing allocates (control thread, or the audio thread between blocks).
template <typename T>
class AudioBuffer : public AudioBufferBase<T>
{
public:
    AudioBuffer(std::uint32_t channelCount = 0, std::uint64_t sampleCount = 0);

    /// Contents are undefined afterwards unless the resize only appended samples.
    void setSize(std::uint32_t channelCount, std::uint64_t sampleCount) override;
    double getMemorySizeInMegaBytes() const override;

    /// Resizes keeping the first min(old, new) samples of the channels both sizes have;
    /// the rest is zero.
    void resizeKeepingContents(std::uint32_t channelCount, std::uint64_t sampleCount);

    /// Zeroes every sample. Real-time safe.
    void clear() { samples.clear(); }

    Vector<T>& getSamples() { return samples; }

private:
    void pointChannelsIntoSamples();

    Vector<T> samples;
};

extern template class AudioBuffer<float>;
} // namespace ondo
