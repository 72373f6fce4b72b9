#pragma once

#include "common/TarvoDspException.h"
#include "math/TarvoDspPoint3Array.h"

#include <cstdint>
#include <string>

namespace Quor
{
/// Refuses a layout that does not give one position per speaker output, before a panner
/// stores any of it: a short list would leave outputs with no place, a long one would
/// place speakers that don't exist. Control thread; allocates only to raise.
inline void requireSpeakerCount(const ondo::Point3Array& speakers, std::uint32_t numSpeakers, const char* panner,
                                const ondo::SourceLocation& location)
{
    if (speakers.size() != numSpeakers)
        throw ondo::Exception(std::string(panner) + ": " + std::to_string(speakers.size()) +
                                  " speaker positions given for " + std::to_string(numSpeakers) + " speakers.",
                              location);
}
} // namespace Quor
