#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

#include "common/TarvoDspException.h"
#include "text/TarvoDspUnitText.h"

#include <algorithm>
#include <cmath>
#include <exception>

namespace ondo
{
namespace
{
OscDocumentation dspDocumentation()
{
    return {
        {"/dsp/samplerate", "[number]", "sets the sampling rate (in Hz)"},
        {"/dsp/buffersize", "[int]", "sets the buffer size (in samples)"},
        {"/dsp/clear", "", "clears the internal state of the audio processor"},
        {"/dsp/mute", "[boolean]", "mutes the DSP rendering"},
        {"/dsp/bypass", "[boolean]", "bypass the DSP rendering"},
        {"/dsp/automute/active", "[boolean]", "enables/disables the auto-mute"},
        {"/dsp/automute/attack", "[number]", "sets the duration (in seconds) before auto-muting"},
        {"/dsp/post", "", "post various informations (audio must be turned on)"},
    };
}

String countOfOnes(const Vector<std::int16_t>& flags)
{
    return StringHelper::toString(static_cast<std::uint32_t>(std::count(flags.begin(), flags.end(), 1)));
}
} // namespace

AudioProcessorWithOscInAudioInterrupt::AudioProcessorWithOscInAudioInterrupt(std::uint32_t inputs,
                                                                             std::uint32_t outputs)
    : AudioProcessorWithAutoMute(inputs, outputs)
{
    OSCAddressCache::prepare("/dsp");
    dspDocumentation().prepareAddressCache();
}

void AudioProcessorWithOscInAudioInterrupt::audioInterruptTasks()
{
    std::int32_t context = audioInterruptContext;
    try
    {
        processPending(context, false);
    }
    catch (const Exception& e)
    {
        notifyProblem(e.getMessage());
    }
    catch (const std::exception& e)
    {
        notifyProblem(e.what());
    }
    catch (...)
    {
        notifyProblem("unknown error occurred");
    }
}

bool AudioProcessorWithOscInAudioInterrupt::processOscMessage(const OSCMessage& message, std::int32_t& context)
{
    return handleProcessorMessages(message, context);
}

bool AudioProcessorWithOscInAudioInterrupt::handleProcessorMessages(const OSCMessage& message, std::int32_t& context)
{
    return handleBaseMessages(message, context) || handleDspMessages(message);
}

bool AudioProcessorWithOscInAudioInterrupt::handleDspMessages(const OSCMessage& message)
{
    if (!message.startsWith("/dsp"))
        return false;
    if (message.matches("/dsp/samplerate") && message.matchesSingle('n'))
    {
        const float rate = message.getFloat(0);
        if (std::isnan(rate))
            return false;
        changeSampleRate(std::clamp(rate, minimumSampleRate, maximumSampleRate));
        return true;
    }
    if (message.matches("/dsp/buffersize") && message.matchesSingle('u'))
    {
        const std::int64_t size = message.getArgument(0).getInt64();
        changeBufferSize(static_cast<std::uint32_t>(std::clamp<std::int64_t>(size, 1, maximumBufferSize)));
        return true;
    }
    if (message.matches("/dsp/clear") && message.getNumArguments() == 0)
    {
        clear();
        return true;
    }
    if (message.matches("/dsp/mute") && message.matchesSingle('b'))
    {
        mute = message.getBool(0);
        return true;
    }
    if (message.matches("/dsp/bypass") && message.matchesSingle('b'))
    {
        bypass = message.getBool(0);
        return true;
    }
    if (message.matches("/dsp/automute/active") && message.matchesSingle('b'))
    {
        setAutoMuteActive(message.getBool(0));
        return true;
    }
    if (message.matches("/dsp/automute/attack") && message.matchesSingle('n'))
    {
        // A positive attack only sets the duration: the switch is "/dsp/automute/active",
        // which the state reports first, so a replayed state keeps auto-mute as it was.
        const bool wasActive = analyzer.active;
        const float seconds = message.getFloat(0);
        setAutoMuteAttack(seconds);
        if (seconds > 0.0f)
            setAutoMuteActive(wasActive);
        return true;
    }
    if (message.matches("/dsp/post") && message.getNumArguments() == 0)
    {
        notifyInformation(getProcessorStateLines());
        return true;
    }
    return false;
}

OSCBundle AudioProcessorWithOscInAudioInterrupt::getProcessorState() const
{
    OSCBundle state;
    state.add("/dsp/samplerate", sampleRate);
    state.add("/dsp/buffersize", static_cast<std::int32_t>(bufferSize));
    state.add("/dsp/mute", mute);
    state.add("/dsp/bypass", bypass);
    state.add("/dsp/automute/active", analyzer.active);
    state.add("/dsp/automute/attack", analyzer.attackSeconds);
    return state;
}

std::vector<String> AudioProcessorWithOscInAudioInterrupt::getProcessorStateLines() const
{
    std::vector<String> lines = {
        "samplerate = " + UnitText::frequency(sampleRate),
        "buffersize = " + StringHelper::toString(bufferSize),
        "num inlets = " + StringHelper::toString(numInputs),
        "num outlets = " + StringHelper::toString(numOutputs),
        "num inlets connected = " + countOfOnes(analyzer.inletsConnected),
        "num outlets connected = " + countOfOnes(analyzer.outletsConnected),
        "num inlets active = " + countOfOnes(analyzer.inletsActive),
    };
    const std::uint32_t latency = getLatencyInForce();
    if (latency != 0)
        lines.push_back("latency = " + UnitText::duration(latency * 1000.0 / sampleRate) + " = " +
                        StringHelper::toString(latency) + " samples");
    else
        lines.push_back("latency = 0");
    return lines;
}

OSCBundle AudioProcessorWithOscInAudioInterrupt::getState() const
{
    return getProcessorState();
}

OscDocumentation AudioProcessorWithOscInAudioInterrupt::getOscDocumentation() const
{
    OscDocumentation documentation = OscInterface::getOscDocumentation();
    documentation.add(dspDocumentation());
    documentation.add(getDocumentation());
    return documentation;
}
} // namespace ondo
