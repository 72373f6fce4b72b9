#pragma once

#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
/// N independent copies of a mono processor behind one N-in, N-out processor.
template <typename T>
class MultichannelProcessor : public AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Derived classes call `setNumChannels` in their own constructor: the factory
    /// `createChannel` is not reachable from this one.
    MultichannelProcessor() : AudioProcessorWithOscInAudioInterrupt(0, 0) {}
    ~MultichannelProcessor() override { channels.deletePointees(); }

    /// Each channel whose inlet is active and whose outlet is connected runs its kernel;
    /// the other outputs are zeroed. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override
    {
        for (std::uint32_t c = 0; c < channels.size(); ++c)
        {
            if (isInletActive(c) && isOutletConnected(c))
                processChannel(*channels[c], outputs[c], inputs[c], numSamples);
            else
                std::memset(outputs[c], 0, numSamples * sizeof(float));
        }
    }

    void setSampleRate(float rate) override
    {
        const float clamped = clampSampleRate(rate);
        for (T* channel : channels)
            channel->changeSampleRate(clamped);
    }

    void setBufferSize(std::uint32_t size) override
    {
        for (T* channel : channels)
            channel->changeBufferSize(size);
    }

    void clear() override
    {
        for (T* channel : channels)
            channel->clear();
    }

    /// The largest latency of the channels; one in mute or bypass counts as 0.
    std::uint32_t getLatency() const override
    {
        std::uint32_t latency = 0;
        for (const T* channel : channels)
            latency = std::max(latency, channel->getLatencyInForce());
        return latency;
    }

    /// Grows with new channels set up at the processor's rate and size, or destroys the
    /// surplus; the processor's channel counts follow. Control thread; allocates.
    virtual void setNumChannels(std::uint32_t n)
    {
        const std::uint32_t old = static_cast<std::uint32_t>(channels.size());
        if (n < old)
            channels.deletePointees(n);
        channels.resize(n);
        for (std::uint32_t c = old; c < n; ++c)
        {
            channels[c] = createChannel();
            channels[c]->setup(sampleRate, bufferSize, true);
        }
        setNumberOfInputs(n);
        setNumberOfOutputs(n);
    }

    std::uint32_t getNumChannels() const { return static_cast<std::uint32_t>(channels.size()); }
    T& getChannel(std::uint32_t c) { return *channels[c]; }
    const T& getChannel(std::uint32_t c) const { return *channels[c]; }

protected:
    /// Makes one channel. Control thread; allocates.
    virtual T* createChannel() = 0;

    /// The block kernel of one channel; by default its `process`.
    virtual void processChannel(T& channel, float* output, float* input, std::uint32_t numSamples)
    {
        channel.process(&output, &input, numSamples);
    }

    Vector<T*> channels;
};
} // namespace ondo
