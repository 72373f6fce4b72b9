#pragma once

#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspVector.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace ondo
{
/// The outer behaviour shared by every signal block: channel counts, rate and block size,
/// mute and bypass, and the host's 64-bit to 32-bit conversion.
class AudioProcessorBase
{
public:
    /// An observer of the latency. Kept for embedders; nothing here notifies one yet.
    class LatencyListener
    {
    public:
        virtual ~LatencyListener() = default;
        virtual void latencyChanged(AudioProcessorBase& processor, std::uint32_t latencySamples) = 0;
    };

    static constexpr float defaultSampleRate = 44100.0f;
    static constexpr float minimumSampleRate = 8000.0f;
    static constexpr float maximumSampleRate = 384000.0f;
    static constexpr std::uint32_t defaultBufferSize = 512;
    static constexpr std::uint32_t maximumBufferSize = 81920;

    AudioProcessorBase(std::uint32_t numInputs, std::uint32_t numOutputs);
    virtual ~AudioProcessorBase() = default;

    AudioProcessorBase(const AudioProcessorBase&) = delete;
    AudioProcessorBase& operator=(const AudioProcessorBase&) = delete;

    /// The block kernel. Audio thread; real-time safe.
    virtual void process(float** outputs, float** inputs, std::uint32_t numSamples) = 0;
    /// Copies each connected, active input to its output; zeroes the other connected outputs.
    virtual void processBypass(double** outputs, double** inputs, std::uint32_t numSamples);
    virtual void processBypass(float** outputs, float** inputs, std::uint32_t numSamples);
    /// Zeroes each connected output.
    virtual void processMute(double** outputs, std::uint32_t numSamples);
    virtual void processMute(float** outputs, std::uint32_t numSamples);

    virtual std::string getInletName(std::int32_t index) const;
    virtual std::string getOutletName(std::int32_t index) const;
    virtual std::vector<std::string> getDescription() const { return {}; }

    /// Control thread, between blocks; may allocate.
    virtual void setSampleRate(float /*sampleRate*/) {}
    virtual void setBufferSize(std::uint32_t /*size*/) {}
    /// Empties memories (delay lines, filter states); never changes parameters.
    virtual void clear() {}
    virtual std::uint32_t getLatency() const { return 0; }

    virtual bool isChannelConnected(std::uint32_t) const { return true; }
    virtual bool isOutletConnected(std::uint32_t) const { return true; }
    virtual bool isInletActive(std::uint32_t) const { return true; }
    virtual bool isAnyOutletConnected() const { return true; }
    virtual void numberOfInletsChanged(std::uint32_t) {}
    virtual void numberOfOutletsChanged(std::uint32_t) {}
    /// Work done at the head of each block, before any analysis.
    virtual void audioInterruptTasks() {}
    virtual void analyzeInlets(float** /*inputs*/, std::uint32_t /*numSamples*/) {}

    /// Ends construction: clamps the rate (0 means 44100) and the size (0 means 512), runs
    /// `setSampleRate`, `setBufferSize` and `clear` unless nothing changed and `force` is
    /// false. Always sets flush-to-zero on the calling thread.
    void setup(float sampleRate, std::uint32_t bufferSize, bool force = false);
    /// Stores a clamped rate and runs `setSampleRate`; does not clear.
    void changeSampleRate(float sampleRate);
    /// Stores the size and runs `setBufferSize`; does not clear.
    void changeBufferSize(std::uint32_t size);
    void setNumberOfInputs(std::uint32_t n);
    void setNumberOfOutputs(std::uint32_t n);
    /// 0 while muted or bypassed, else `getLatency()`.
    std::uint32_t getLatencyInForce() const;

    /// The one entry for a 32-bit block: control tasks, inlet analysis, then mute, bypass or
    /// `process`. Audio thread; real-time safe.
    void processBlock(float** outputs, float** inputs, std::uint32_t numSamples);
    /// The host's entry: takes the host's flags, converts to 32 bits, runs `processBlock` and
    /// converts back. Allocates only while the conversion buffers grow to the block size.
    void perform(double** outputs, double** inputs, std::uint32_t numSamples, std::int32_t muted,
                 std::int32_t bypassed, std::int32_t disabled);

    std::uint32_t getNumInputs() const { return numInputs; }
    std::uint32_t getNumOutputs() const { return numOutputs; }
    float getSampleRate() const { return sampleRate; }
    std::uint32_t getBufferSize() const { return bufferSize; }
    bool isMuted() const { return mute; }
    bool isBypassed() const { return bypass; }
    void setMute(bool shouldMute) { mute = shouldMute; }
    void setBypass(bool shouldBypass) { bypass = shouldBypass; }
    void setProcessWithoutOutlets(bool shouldProcess) { processWithoutOutlets = shouldProcess; }

    static float clampSampleRate(float rate);

protected:
    /// "`prefix`N" with N the index plus one, for an inlet that exists; else empty.
    std::string numberedInletName(const char* prefix, std::int32_t index) const;
    /// "`prefix`N" for an outlet that exists; else "dumpout", the host's extra outlet.
    std::string numberedOutletName(const char* prefix, std::int32_t index) const;

    std::uint32_t numInputs;
    std::uint32_t numOutputs;
    float sampleRate = defaultSampleRate;
    std::uint32_t bufferSize = defaultBufferSize;
    bool mute = false;
    bool bypass = false;
    bool processWithoutOutlets = false;
    AudioBuffer<float> inputConversion;
    AudioBuffer<float> outputConversion;
    Vector<LatencyListener*> latencyListeners;

private:
    void applyRateSizeAndClear();
    template <typename Sample>
    void bypassChannels(Sample** outputs, Sample** inputs, std::uint32_t numSamples);
    template <typename Sample>
    void muteChannels(Sample** outputs, std::uint32_t numSamples);
};

/// The processor as text, one item a line: sample rate, buffer size, and the latency in force
/// as "N samples = ms" (milliseconds as a plain number), or 0. Allocates.
std::ostream& operator<<(std::ostream& stream, const AudioProcessorBase& processor);
} // namespace ondo
