#include "pan/QuorPanOSCReceiver.h"

#include "common/TarvoDspException.h"
#include "dsp/TarvoDspCrossfade.h"
#include "dsp/TarvoDspDelay.h"
#include "math/TarvoDspCoordinates.h"
#include "pan/QuorPan.h"

#include <charconv>

namespace Quor
{
namespace
{
/// The 0-based index named by address part 1, or `count` when it names none in range.
std::uint32_t indexOf(const ondo::OSCMessage& message, std::uint32_t count)
{
    const ondo::String& text = message.part(1);
    std::uint32_t index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc() || end != text.data() + text.size() || index == 0 || index > count)
        return count;
    return index - 1;
}

/// The point moved by the message's numbers in the format that address part `part` names.
/// False when the part names no format; `applied` false when the numbers don't fit it.
bool readPosition(const ondo::OSCMessage& message, std::size_t part, ondo::Point3& point, bool& applied)
{
    const auto format = ondo::Coordinates::fromString(message.part(part));
    if (format == ondo::Coordinates::none)
        return false;
    const ondo::Vector<float> values = message.getArgumentsAsFloats();
    applied = values.size() == message.getNumArguments() &&
              ondo::Coordinates::apply(format, values.data(), values.size(), point);
    return true;
}

ondo::OSCMessage aedMessage(const std::string& address, const ondo::Point3& point)
{
    float values[3] = {};
    std::size_t count = 0;
    ondo::Coordinates::describe(ondo::Coordinates::aed, point, values, count);
    ondo::OSCMessage message(address);
    for (std::size_t i = 0; i < count; ++i)
        message.addArgument(values[i]);
    return message;
}

void checkCount(const ondo::OSCMessage& message, std::uint32_t count, const char* text)
{
    if (message.getArgument(0).getInt64() != count)
        throw ondo::Exception(text, ONDO_SOURCE_LOCATION);
}
} // namespace

bool PanOSCReceiver::processOscMessage(const ondo::OSCMessage& message, std::int32_t& /*context*/)
{
    if (message.size() >= 3 && message.part(0) == "source")
        return handleSource(message);
    if (message.size() >= 3 && message.part(0) == "speaker")
        return handleSpeaker(message);
    if (message.size() == 2 && message.part(0) == "speakers")
        return handleSpeakers(message);
    if (message.matches("/source/number") && message.matchesSingle('u'))
        checkCount(message, static_cast<std::uint32_t>(pan->sourcesPosition.size()), "cannot change /source/number");
    else if (message.matches("/speaker/number") && message.matchesSingle('u'))
        checkCount(message, static_cast<std::uint32_t>(pan->speakersPosition.size()), "cannot change /speaker/number");
    else if ((message.matches("/hrtf") || message.matches("/load")) && message.matchesSingle('s'))
    {
        const ondo::String& file = message.getArgument(0).getString();
        if (!pan->loadHrtf(file))
            return false;
        notifyInformation("hrtf loaded from: " + file);
    }
    else
        return handleSettings(message);
    return true;
}

bool PanOSCReceiver::handleSource(const ondo::OSCMessage& message)
{
    const auto count = static_cast<std::uint32_t>(pan->sourcesPosition.size());
    const std::uint32_t index = indexOf(message, count);
    if (index == count)
        return true; // no such source: taken silently
    if (message.size() == 3 && message.part(2) == "mute" && message.matchesSingle('b'))
    {
        pan->setSourceMute(index, message.getBool(0));
        return true;
    }
    if (message.size() == 3 && message.part(2) == "spread" && message.matchesSingle('n'))
    {
        pan->setSourceSpread(index, message.getFloat(0));
        return true;
    }
    ondo::Point3 point = pan->sourcesPosition[index];
    bool applied = false;
    if (message.size() != 3 || !readPosition(message, 2, point, applied))
        return false;
    // An unchanged point costs no gain computation.
    if (applied && !(point == pan->sourcesPosition[index]))
    {
        pan->sourcesPosition[index] = point;
        pan->setSourcePosition(index, point, false);
    }
    return true;
}

bool PanOSCReceiver::handleSpeaker(const ondo::OSCMessage& message)
{
    const auto count = static_cast<std::uint32_t>(pan->speakersPosition.size());
    const std::uint32_t index = indexOf(message, count);
    if (index == count)
        return true;
    ondo::Point3 point = pan->speakersPosition[index];
    bool applied = false;
    if (message.size() != 3 || !readPosition(message, 2, point, applied))
        return false;
    if (applied)
    {
        ondo::Point3Array speakers = pan->speakersPosition;
        speakers[index] = point;
        pan->setSpeakers(speakers);
        pan->speakersPosition = speakers;
    }
    return true;
}

bool PanOSCReceiver::handleSpeakers(const ondo::OSCMessage& message)
{
    const auto format = ondo::Coordinates::fromString(message.part(1));
    if (format == ondo::Coordinates::none)
        return false;
    const ondo::Vector<float> values = message.getArgumentsAsFloats();
    if (values.size() != message.getNumArguments())
        return false;
    const ondo::Point3Array speakers = ondo::Point3Array::fromFormat(format, values.data(), values.size());
    // A layout of another size would not fit the panner's outputs: ignored like a short one.
    if (speakers.size() == pan->speakersPosition.size() && speakers.size() > 0)
    {
        pan->setSpeakers(speakers);
        pan->speakersPosition = speakers;
    }
    return true;
}

bool PanOSCReceiver::handleSettings(const ondo::OSCMessage& message)
{
    if (message.matches("/listener/orientation") && message.matchesList("nnnn"))
        pan->setListenerOrientation(
            {message.getFloat(0), message.getFloat(1), message.getFloat(2), message.getFloat(3)});
    else if (message.matches("/itd/type") && message.matchesSingle('s'))
        pan->setItdType(message.getArgument(0).getString());
    else if (message.matches("/itd/latencymode") && message.matchesSingle('s'))
        pan->setItdLatencyMode(message.getArgument(0).getString());
    else if (message.matches("/itd/scaling") && message.matchesSingle('n'))
        pan->setItdScaling(message.getFloat(0));
    else if (message.matches("/crossfade/duration") && message.matchesSingle('n'))
        pan->setCrossfadeDuration(message.getFloat(0));
    else if (message.matches("/crossfade/type") && message.matchesSingle('s'))
        pan->setCrossfadeType(ondo::Crossfade::fromText(message.getArgument(0).getString()));
    else if (message.matches("/interpolation/time") && message.matchesSingle('n'))
        pan->setInterpolationTime(message.getFloat(0));
    else if (message.matches("/interpolation/mode") && message.matchesSingle('s'))
        pan->setInterpolationMode(ondo::Delay::interpolationModeFromName(message.getArgument(0).getString()));
    else
        return false;
    return true;
}

ondo::OSCBundle PanOSCReceiver::getState() const
{
    ondo::OSCBundle state = ondo::OscInterface::getState();
    const auto& sources = pan->sourcesPosition;
    state.add("/source/number", static_cast<std::uint32_t>(sources.size()));
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        const std::string prefix = "/source/" + std::to_string(i + 1);
        state.add(aedMessage(prefix + "/aed", sources[i]));
        state.add(prefix + "/mute", pan->sourcesMute[i] != 0);
    }
    state.add("/hrtf", pan->getHrtf()->getName());
    state.add("/itd/type", Pan::itdTypeToString(pan->getItdType()));
    state.add("/itd/scaling", pan->getItdScaling());
    state.add("/itd/latencymode", Pan::itdLatencyModeToString(pan->getItdLatencyMode()));
    state.add("/interpolation/time", pan->getInterpolationTime());
    state.add("/interpolation/mode", ondo::String(ondo::Delay::interpolationModeName(
                                         static_cast<std::uint32_t>(pan->getInterpolationMode()))));
    state.add("/crossfade/duration", pan->getCrossfadeDuration());
    state.add("/crossfade/type", ondo::String(ondo::Crossfade::toText(pan->getCrossfadeType())));
    const ondo::Rotation orientation = pan->getListenerOrientation();
    state.add("/listener/orientation", std::array<float, 4>{orientation.x, orientation.y, orientation.z, orientation.w});
    const auto& speakers = pan->speakersPosition;
    state.add("/speaker/number", static_cast<std::uint32_t>(speakers.size()));
    for (std::size_t i = 0; i < speakers.size(); ++i)
        state.add(aedMessage("/speaker/" + std::to_string(i + 1) + "/aed", speakers[i]));
    return state;
}

ondo::OscDocumentation PanOSCReceiver::getOscDocumentation() const
{
    ondo::OscDocumentation documentation = ondo::OscInterface::getOscDocumentation();
    const ondo::OscDocumentation own{
             {"/source/number", "[int]", "the number of sources (cannot change)"},
             {"/speaker/number", "[int]", "the number of speakers (cannot change)"},
             {"/hrtf", "[string]", "loads head-related filters from a file"},
             {"/load", "[string]", "loads head-related filters from a file"},
             {"/listener/orientation", "[x y z w]", "sets the listener's orientation as a quaternion"},
             {"/itd/type", "[string]", "sets the interaural time difference model"},
             {"/itd/latencymode", "[string]", "sets the latency mode of the interaural delays"},
             {"/itd/scaling", "[number]", "scales the interaural time differences (in %)"},
             {"/crossfade/duration", "[number]", "sets the crossfade duration (in ms)"},
             {"/crossfade/type", "[string]", "sets the crossfade law"},
             {"/interpolation/time", "[number]", "sets the interpolation time (in ms)"},
             {"/interpolation/mode", "[string]", "sets the interpolation mode"},
    };
    for (const ondo::OscDocumentation::Entry& entry : own.getEntries())
        documentation.add(entry);
    return documentation;
}
} // namespace Quor
