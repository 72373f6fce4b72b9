#pragma once

#include "RenderSettings.h"
#include "WavFile.h"

#include <string>
#include <vector>

namespace Quor
{
class TarvoVerb;
}

namespace tarvo::render
{
/// Sets a configured reverberator as the object does when it is created with these
/// attributes: the four section shelves, the decay, the structure, then the speakers and
/// the sources. Throws `UsageError` for a position message it can't read.
void applySettings(Quor::TarvoVerb& verb, const RenderSettings& settings, std::vector<std::string>& notes);

/// Seconds rendered when none are asked: the input (if any) plus the longest band decay and
/// half a second; 10 s of a frozen tail.
double automaticDuration(const RenderSettings& settings, double inputSeconds);

/// What came out of a render, and how long it took.
struct Rendering
{
    Audio output;          ///< one channel per speaker
    double cpuSeconds = 0; ///< time spent in the reverberator itself
};

/// Renders the room: an impulse on the sources (or a recording, channel c into source c)
/// through a reverberator built and set from `settings`. Offline; allocates. Throws
/// `UsageError` for settings the reverberator can't take, `AudioFileError` for the input.
Rendering renderRoom(const RenderSettings& settings, std::vector<std::string>& notes);
} // namespace tarvo::render
