#include "RenderPreset.h"

#include "ErrorStreamRedirect.h"
#include "common/TarvoDspException.h"
#include "files/TarvoDspFile.h"
#include "osc/TarvoDspOscPresetFile.h"
#include "reverb/QuorTarvoVerb.h"

#include <cmath>
#include <sstream>

namespace tarvo::render
{
namespace
{
/// The run's own settings in a reverberator's state: the tool builds the reverberator with
/// them rather than replaying them. Limits are those of the matching options.
struct RunSetting
{
    const char* address;
    const char* option;
    int RenderSettings::*field;
    int minimum;
    int maximum;
};

const RunSetting runSettings[] = {
    {"/source/number", "numsources", &RenderSettings::numSources, 1, 64},
    {"/speaker/number", "numspeakers", &RenderSettings::numSpeakers, 1, 64},
    {"/numinternals", "numinternals", &RenderSettings::numInternals, 2, 16},
    {"/dsp/buffersize", "blocksize", &RenderSettings::blockSize, 1, 4096},
};
/// The decay the preset sets, copied into the settings so that the automatic length and the
/// summary follow it as they follow the options; the reverberator gets it from the replay.
struct DecaySetting
{
    const char* address;
    const char* option;
    float RenderSettings::*field;
};
const DecaySetting decaySettings[] = {
    {"/reverb/tr0", "tr0", &RenderSettings::tr0},
    {"/reverb/trl", "trl", &RenderSettings::trl},
    {"/reverb/trm", "trm", &RenderSettings::trm},
    {"/reverb/trh", "trh", &RenderSettings::trh},
};
constexpr const char* sampleRateAddress = "/dsp/samplerate";
constexpr double lowestRate = 8000.0;
constexpr double highestRate = 384000.0;

std::string presetOption(const std::string& path)
{
    return "--preset \"" + path + "\": ";
}

bool isRunSetting(const ondo::OSCMessage& message)
{
    for (const RunSetting& setting : runSettings)
        if (message.matches(setting.address))
            return true;
    return message.matches(sampleRateAddress);
}

/// The single number of `message`, when it lies within the limits (and is whole, with
/// `whole`); otherwise the refusal names the message.
double numberOf(const std::string& path, const ondo::OSCMessage& message, double minimum, double maximum, bool whole)
{
    const double value = message.matchesSingle('n') ? message.getArgument(0).getFloat64() : std::nan("");
    if (!(value >= minimum && value <= maximum) || (whole && value != std::floor(value)))
        throw UsageError(presetOption(path) + "\"" + message.toText() + "\" asks for " +
                         (whole ? "a whole number" : "a number") + " from " + std::to_string(std::int64_t(minimum)) +
                         " to " + std::to_string(std::int64_t(maximum)));
    return value;
}
} // namespace

void preparePresets(RenderSettings& s)
{
    std::ostringstream libraryReport;
    const ErrorStreamRedirect redirect(libraryReport);
    if (!s.exportPresetPath.empty())
        try
        {
            ondo::OscPresetFile::classify(ondo::File(s.exportPresetPath));
        }
        catch (const ondo::Exception& error)
        {
            throw UsageError("--export-preset \"" + s.exportPresetPath + "\": " + error.getMessage() +
                             " (.txt, .osc, .xml or .coll)");
        }
    if (s.presetPath.empty() || s.presetState)
        return;
    try
    {
        s.presetState = ondo::OscPresetFile::read(ondo::File(s.presetPath));
    }
    catch (const ondo::Exception& error)
    {
        throw UsageError(presetOption(s.presetPath) + error.getMessage());
    }
    const ondo::OSCBundle messages = s.presetState->flattened();
    for (std::size_t i = 0; i < messages.size(); ++i)
    {
        const ondo::OSCMessage& message = messages[i].getMessage();
        for (const RunSetting& setting : runSettings)
            if (message.matches(setting.address))
            {
                const double value = numberOf(s.presetPath, message, setting.minimum, setting.maximum, true);
                if (s.givenOptions.count(setting.option) == 0)
                    s.*setting.field = static_cast<int>(value);
            }
        for (const DecaySetting& decay : decaySettings)
            if (message.matches(decay.address) && message.matchesSingle('n') && s.givenOptions.count(decay.option) == 0)
                s.*decay.field = message.getFloat(0);
        if (message.matches("/reverb/air/enable") && message.matchesSingle('b') && s.givenOptions.count("air") == 0)
            s.air = message.getBool(0) ? 1 : 0;
        if (message.matches(sampleRateAddress))
        {
            const double rate = numberOf(s.presetPath, message, lowestRate, highestRate, false);
            if (!s.sampleRateGiven)
                s.sampleRate = static_cast<float>(rate);
        }
    }
    if (s.impulseSource > s.numSources)
        throw UsageError("--impulse-source " + std::to_string(s.impulseSource) + " names no source: the preset has " +
                         std::to_string(s.numSources));
}

void loadPreset(Quor::TarvoVerb& verb, const RenderSettings& s)
{
    if (!s.presetState)
        return;
    std::ostringstream libraryReport;
    const ErrorStreamRedirect redirect(libraryReport);
    std::string refused;
    const ondo::OSCBundle messages = s.presetState->flattened();
    for (std::size_t i = 0; i < messages.size(); ++i)
    {
        const ondo::OSCMessage& message = messages[i].getMessage();
        if (isRunSetting(message))
            continue;
        // Reported in the state, yet not answered by the reverberator: the object sets them
        // as attributes, and so does the tool.
        if (message.matchesSingle('n') && message.matches("/early/width"))
        {
            verb.setEarlyWidth(message.getFloat(0));
            continue;
        }
        if (message.matchesSingle('n') && message.matches("/early/shape"))
        {
            verb.setEarlyShape(message.getFloat(0));
            continue;
        }
        std::string reason = "not understood";
        try
        {
            std::int32_t context = ondo::OscInterface::setContext;
            if (verb.processOscMessage(message, context))
                continue;
        }
        catch (const ondo::Exception& error)
        {
            reason = error.getMessage();
        }
        if (!refused.empty())
            refused += "; ";
        refused.append("\"").append(message.toText()).append("\": ").append(reason);
    }
    if (!refused.empty())
        throw UsageError(presetOption(s.presetPath) + refused);
}

void exportPreset(Quor::TarvoVerb& verb, const RenderSettings& s)
{
    if (s.exportPresetPath.empty())
        return;
    // The library says why a write failed as a problem notification.
    struct Problems : ondo::MaxConsoleNotifier::Listener
    {
        void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
        {
            if (level == ondo::MaxConsoleNotifier::problem)
                reason = text;
        }
        std::string reason = "it could not be written";
    } problems;
    std::ostringstream libraryReport;
    const ErrorStreamRedirect redirect(libraryReport);
    verb.addListener(&problems);
    bool written = false;
    try
    {
        written = verb.exportPreset(ondo::File(s.exportPresetPath));
    }
    catch (const ondo::Exception& error)
    {
        problems.reason = error.getMessage();
    }
    verb.removeListener(&problems);
    if (!written)
        throw UsageError("--export-preset \"" + s.exportPresetPath + "\": " + problems.reason);
}
} // namespace tarvo::render
