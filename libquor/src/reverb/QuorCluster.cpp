#include "reverb/QuorCluster.h"

#include <algorithm>

namespace Quor
{
namespace
{
constexpr float firstDelayMs = 20.0f;
constexpr float delaySpanMs = 60.0f;

} // namespace

Cluster::Cluster(std::uint32_t numChannels)
    : AudioProcessorWithOscInAudioInterrupt(numChannels, numChannels),
      delays(std::make_unique<ondo::MultiDelayEconomy>(numChannels, maximumDelayMs)), shuffle(numChannels),
      buffer(numChannels, defaultBufferSize), writeRuns(numChannels), readRuns(numChannels), movedOn(numChannels)
{
    lineRuns.resize(numChannels);
    setup(sampleRate, bufferSize, true);
    delays->setInterpolationMode(ondo::Delay::nearest);
    delays->setInterpolationTime(glideTimeMs);
    const float step = numChannels > 1 ? delaySpanMs / static_cast<float>(numChannels - 1) : 0.0f;
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        delays->getChannel(i).reportChangesTo(&lineChanges);
        delays->setDelay(i, firstDelayMs + static_cast<float>(i) * step, true);
    }
    delays->setEconomy(false);
}

void Cluster::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    // The lines move on here without the runs kept for `processInPlace`.
    lineRuns.forget();
    if (numSamples != buffer.getNumSamples())
        buffer.setSize(numInputs, numSamples);
    if (findWriteRuns(numSamples, false))
    {
        // The mix lands in the lines themselves: no block copy on the way in.
        shuffle.process(writeRuns.data(), inputs, numSamples);
        for (std::uint32_t c = 0; c < numInputs; ++c)
            delays->getChannel(c).processWritten(outputs[c], numSamples);
        return;
    }
    shuffle.process(buffer.getChannels(), inputs, numSamples);
    delays->process(outputs, buffer.getChannels(), numSamples);
}

float* const* Cluster::processInPlace(float** scratch, float** inputs, std::uint32_t numSamples)
{
    // A line that stands as it stood last block takes its runs moved on by the block; a run at
    // the window's end, a gliding line, and every line after a change find them again. A read
    // that widens its window moves the block just written: counted, so the next block starts
    // over.
    const std::uint32_t counted = lineChanges.get();
    const bool steady = lineRuns.serves(numSamples, counted);
    if (!findWriteRuns(numSamples, steady))
    {
        process(scratch, inputs, numSamples);
        return scratch;
    }
    if (!steady)
        lineRuns.start(numSamples, counted);
    shuffle.process(writeRuns.data(), inputs, numSamples);
    for (std::uint32_t c = 0; c < numInputs; ++c)
    {
        ondo::DelayEconomy& line = delays->getChannel(c);
        if (movedOn[c] != 0)
        {
            line.moveOn(numSamples);
            continue;
        }
        readRuns[c] = line.processWrittenInPlace(scratch[c], numSamples);
        const bool inPlace = readRuns[c] != scratch[c];
        lineRuns.keep(c, line.getLine(), inPlace ? std::max<const float*>(writeRuns[c], readRuns[c]) : nullptr,
                      line.getLine().getOwnStart());
    }
    return readRuns.data();
}

bool Cluster::findWriteRuns(std::uint32_t n, bool steady)
{
    if (n > ondo::Delay::maximumBlockSize)
        return false;
    for (std::uint32_t c = 0; c < numInputs; ++c)
    {
        // A line its processor would mute is left to that processor.
        if (!delays->isInletActive(c) || !delays->isOutletConnected(c))
            return false;
        movedOn[c] = steady && lineRuns.moveOn(c, writeRuns[c], readRuns[c]) ? 1 : 0;
        if (movedOn[c] != 0)
            continue;
        writeRuns[c] = delays->getChannel(c).findWriteRun(n);
        if (writeRuns[c] == nullptr)
            return false;
    }
    return true;
}

void Cluster::setSampleRate(float rate)
{
    delays->changeSampleRate(clampSampleRate(rate));
}

void Cluster::setBufferSize(std::uint32_t size)
{
    delays->changeBufferSize(size);
    shuffle.changeBufferSize(size);
    buffer.setSize(numInputs, size);
}

void Cluster::clear()
{
    delays->clear();
    buffer.clear();
    shuffle.clear();
}

std::string Cluster::getInletName(std::int32_t index) const
{
    return numberedInletName("in tap #", index);
}

std::string Cluster::getOutletName(std::int32_t index) const
{
    return numberedOutletName("out tap #", index);
}

void Cluster::setDelays(const ondo::Vector<float>& newDelays, bool immediate)
{
    const auto count = std::min<std::size_t>(newDelays.size(), numInputs);
    for (std::size_t i = 0; i < count; ++i)
        delays->setDelay(static_cast<std::uint32_t>(i), newDelays[i], immediate);
}

ondo::Vector<float> Cluster::getDelays() const
{
    return delays->getDelays();
}

bool Cluster::processOscMessage(const ondo::OSCMessage& message, std::int32_t& /*context*/)
{
    if (message.matches("/delays"))
    {
        const ondo::Vector<float> values = message.getArgumentsAsFloats();
        if (values.size() == getNumInputs() && values.size() == message.getNumArguments() && !values.empty())
            setDelays(values, false);
        return true;
    }
    return message.matches("/numdelays") && message.matchesSingle('u');
}

ondo::OSCBundle Cluster::getState() const
{
    ondo::OSCBundle state = getProcessorState();
    state.add("/numdelays", getNumInputs());
    ondo::OSCMessage delayList("/delays");
    for (float delay : getDelays())
        delayList.addArgument(delay);
    state.add(std::move(delayList));
    return state;
}

ondo::OscDocumentation Cluster::getDocumentation() const
{
    return {{"/delays", "[number][number]...", "sets the delay of each channel (in ms)"},
            {"/numdelays", "[int]", "the number of channels (cannot change)"}};
}
} // namespace Quor
