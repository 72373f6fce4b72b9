#include "dsp/TarvoDspAudioProcessorBase.h"

#include "math/TarvoDspDenormals.h"
#include "math/TarvoDspVectorPrimitives.h"
#include "text/TarvoDspString.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>

namespace ondo
{
AudioProcessorBase::AudioProcessorBase(std::uint32_t inputs, std::uint32_t outputs)
    : numInputs(inputs), numOutputs(outputs)
{
}

float AudioProcessorBase::clampSampleRate(float rate)
{
    if (rate == 0.0f || std::isnan(rate))
        return defaultSampleRate;
    return std::clamp(rate, minimumSampleRate, maximumSampleRate);
}

std::string AudioProcessorBase::getInletName(std::int32_t index) const
{
    return numberedInletName("input #", index);
}

std::string AudioProcessorBase::getOutletName(std::int32_t index) const
{
    return numberedOutletName("output #", index);
}

std::string AudioProcessorBase::numberedInletName(const char* prefix, std::int32_t index) const
{
    if (index < 0 || static_cast<std::uint32_t>(index) >= numInputs)
        return {};
    return prefix + std::to_string(index + 1);
}

std::string AudioProcessorBase::numberedOutletName(const char* prefix, std::int32_t index) const
{
    if (index < 0 || static_cast<std::uint32_t>(index) >= numOutputs)
        return "dumpout";
    return prefix + std::to_string(index + 1);
}

void AudioProcessorBase::setup(float rate, std::uint32_t size, bool force)
{
    const float newRate = clampSampleRate(rate);
    const std::uint32_t newSize = std::min(size == 0 ? defaultBufferSize : size, maximumBufferSize);
    if (force || newRate != sampleRate || newSize != bufferSize)
    {
        sampleRate = newRate;
        bufferSize = newSize;
        applyRateSizeAndClear();
    }
    primitives::setDenormalsAreZero(true);
}

void AudioProcessorBase::applyRateSizeAndClear()
{
    setSampleRate(sampleRate);
    setBufferSize(bufferSize);
    clear();
}

void AudioProcessorBase::changeSampleRate(float rate)
{
    sampleRate = clampSampleRate(rate);
    setSampleRate(sampleRate);
}

void AudioProcessorBase::changeBufferSize(std::uint32_t size)
{
    bufferSize = std::clamp<std::uint32_t>(size, 1, maximumBufferSize);
    setBufferSize(bufferSize);
}

void AudioProcessorBase::setNumberOfInputs(std::uint32_t n)
{
    if (n == numInputs)
        return;
    numInputs = n;
    numberOfInletsChanged(n);
    applyRateSizeAndClear();
}

void AudioProcessorBase::setNumberOfOutputs(std::uint32_t n)
{
    if (n == numOutputs)
        return;
    numOutputs = n;
    numberOfOutletsChanged(n);
    applyRateSizeAndClear();
}

std::uint32_t AudioProcessorBase::getLatencyInForce() const
{
    return (mute || bypass) ? 0 : getLatency();
}

template <typename Sample>
void AudioProcessorBase::muteChannels(Sample** outputs, std::uint32_t numSamples)
{
    for (std::uint32_t i = 0; i < numOutputs; ++i)
        if (isOutletConnected(i) && outputs != nullptr && outputs[i] != nullptr)
            std::memset(outputs[i], 0, numSamples * sizeof(Sample));
}

template <typename Sample>
void AudioProcessorBase::bypassChannels(Sample** outputs, Sample** inputs, std::uint32_t numSamples)
{
    if (outputs == nullptr)
        return;
    const std::uint32_t common = std::min(numInputs, numOutputs);
    for (std::uint32_t i = 0; i < numOutputs; ++i)
    {
        if (i < common && isChannelConnected(i) && isInletActive(i))
        {
            if (inputs[i] != outputs[i])
                std::memcpy(outputs[i], inputs[i], numSamples * sizeof(Sample));
        }
        else if (isOutletConnected(i))
        {
            std::memset(outputs[i], 0, numSamples * sizeof(Sample));
        }
    }
}

void AudioProcessorBase::processBypass(double** outputs, double** inputs, std::uint32_t numSamples)
{
    bypassChannels(outputs, inputs, numSamples);
}

void AudioProcessorBase::processBypass(float** outputs, float** inputs, std::uint32_t numSamples)
{
    bypassChannels(outputs, inputs, numSamples);
}

void AudioProcessorBase::processMute(double** outputs, std::uint32_t numSamples)
{
    muteChannels(outputs, numSamples);
}

void AudioProcessorBase::processMute(float** outputs, std::uint32_t numSamples)
{
    muteChannels(outputs, numSamples);
}

void AudioProcessorBase::processBlock(float** outputs, float** inputs, std::uint32_t numSamples)
{
    audioInterruptTasks();
    analyzeInlets(inputs, numSamples);
    if (!processWithoutOutlets && numOutputs != 0 && !isAnyOutletConnected())
    {
        processMute(outputs, numSamples);
        return;
    }
    if (mute)
    {
        processMute(outputs, numSamples);
        return;
    }
    if (bypass)
    {
        processBypass(outputs, inputs, numSamples);
        return;
    }
    primitives::setDenormalsAreZero(true);
    process(outputs, inputs, numSamples);
}

void AudioProcessorBase::perform(double** outputs, double** inputs, std::uint32_t numSamples, std::int32_t muted,
                                 std::int32_t bypassed, std::int32_t disabled)
{
    mute = muted == 1 || disabled == 1;
    bypass = bypassed == 1;
    inputConversion.setSize(numInputs, numSamples);
    outputConversion.setSize(numOutputs, numSamples);
    const int n = static_cast<int>(numSamples);
    for (std::uint32_t c = 0; c < numInputs; ++c)
        primitives::vectorConvert64To32(inputs[c], inputConversion[c], n);
    processBlock(numOutputs == 0 ? nullptr : outputConversion.getChannels(),
                 numInputs == 0 ? nullptr : inputConversion.getChannels(), numSamples);
    for (std::uint32_t c = 0; c < numOutputs; ++c)
        primitives::vectorConvert32To64(outputConversion[c], outputs[c], n);
}

std::ostream& operator<<(std::ostream& stream, const AudioProcessorBase& processor)
{
    stream << "samplerate           : " << StringHelper::toString(processor.getSampleRate()) << '\n';
    stream << "buffersize           : " << processor.getBufferSize() << '\n';
    const std::uint32_t latency = processor.getLatencyInForce();
    if (latency != 0)
        stream << "latency              : " << latency << " samples = "
               << StringHelper::toString(latency * 1000.0 / processor.getSampleRate()) << '\n';
    else
        stream << "latency              : 0\n";
    return stream;
}
} // namespace ondo
