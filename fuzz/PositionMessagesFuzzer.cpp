// The "source" and "speakers" messages as the render tool reads them: any text either parses
// or is refused with a UsageError; nothing else may happen.

#include "PositionMessages.h"
#include "RenderSettings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    // The first byte picks the message and the count of sources or speakers (1 to 64).
    const std::uint32_t count = 1u + (data[0] & 63u);
    const bool speakers = (data[0] & 64u) != 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    std::vector<std::string> notes;
    try
    {
        if (speakers)
            tarvo::render::parseSpeakersMessage(text, count, notes);
        else
            tarvo::render::parseSourceMessage(text, ondo::Point3Array(count), notes);
    }
    catch (const tarvo::render::UsageError&)
    {
    }
    return 0;
}
