#pragma once

#include "math/TarvoDspPoint3Array.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tarvo::render
{
/// A "source" message, "index [format] numbers": the 0-based index and the new position,
/// applied on top of the source's present position as the object does. Throws `UsageError`
/// with the object's own wording; warnings go to `notes`.
struct SourcePlacement
{
    std::uint32_t index = 0;
    ondo::Point3 position;
};
SourcePlacement parseSourceMessage(const std::string& text, const ondo::Point3Array& present,
                                   std::vector<std::string>& notes);

/// A "speakers" message, "[format] numbers": every speaker's position, each starting from the
/// origin. Throws `UsageError`; warnings go to `notes`.
ondo::Point3Array parseSpeakersMessage(const std::string& text, std::uint32_t numSpeakers,
                                       std::vector<std::string>& notes);
} // namespace tarvo::render
