// The whole option parser, and the position messages it collects: arguments are the input
// split at newlines. Any command line either parses or is refused with a UsageError.

#include "PositionMessages.h"
#include "RenderSettings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string> arguments(1);
    for (std::size_t i = 0; i < size; ++i)
    {
        if (data[i] == '\n')
            arguments.emplace_back();
        else
            arguments.back() += static_cast<char>(data[i]);
    }
    try
    {
        const tarvo::render::CommandLine line = tarvo::render::parseCommandLine(arguments);
        const tarvo::render::RenderSettings& s = line.settings;
        std::vector<std::string> notes;
        ondo::Point3Array sources(static_cast<std::uint32_t>(s.numSources));
        for (const std::string& message : s.sourceMessages)
        {
            const auto placement = tarvo::render::parseSourceMessage(message, sources, notes);
            sources[placement.index] = placement.position;
        }
        if (!s.speakersMessage.empty())
            tarvo::render::parseSpeakersMessage(s.speakersMessage, static_cast<std::uint32_t>(s.numSpeakers), notes);
    }
    catch (const tarvo::render::UsageError&)
    {
    }
    return 0;
}
