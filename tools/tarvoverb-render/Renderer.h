#pragma once

#include "RenderSettings.h"
#include "ResponseSummary.h"
#include "WavFile.h"
#include "WavReader.h"
#include "WavWriter.h"

#include <cstdint>
#include <functional>
#include <memory>
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
/// the sources, then the --osc messages; last it saves the state to --export-preset. With a
/// preset (read by `preparePresets`) the attributes start from it and only the options given
/// change it. Throws `UsageError` for a position message, a preset message or an --osc
/// message it can't apply, and for a preset it can't save.
void applySettings(Quor::TarvoVerb& verb, const RenderSettings& settings, std::vector<std::string>& notes);

/// Hands each text line to the reverberator as an OSC message, in order, as "/set" would.
/// Throws `UsageError` naming every line that was refused, with the reason.
void applyOscMessages(Quor::TarvoVerb& verb, const std::vector<std::string>& lines);

/// The state of the reverberator these settings build, one text line a message.
std::vector<std::string> reverberatorState(const RenderSettings& settings, std::vector<std::string>& notes);

/// Seconds rendered when none are asked: the input (if any) plus the longest band decay and
/// half a second; 10 s of a frozen tail.
double automaticDuration(const RenderSettings& settings, double inputSeconds);

/// A render ready to run: the recording opened, the rate and the length settled.
struct RenderJob
{
    RenderSettings settings;
    std::unique_ptr<WavReader> input; ///< null for an impulse
    std::uint64_t numFrames = 0;
};

/// Everything that can be checked before the room runs: the recording can be read and its
/// rate is one the reverberator takes, and the counts build a reverberator. Throws
/// `UsageError` or `AudioFileError` with the reason.
RenderJob prepareRender(const RenderSettings& settings, std::vector<std::string>& notes);

/// Receives the output a block at a time: one pointer a speaker, `n` frames.
using BlockSink = std::function<void(const float* const* channels, std::uint32_t n)>;

struct RenderReport
{
    double cpuSeconds = 0.0;          ///< time spent rendering, the sink (file writing) included
    std::uint64_t unusableInputs = 0; ///< input samples the reverberator replaced by silence
};

/// Renders the room: an impulse on the sources (or the recording, channel c into source c)
/// through a reverberator built and set from the job, block by block into `sink`, so that
/// memory stays the same whatever the length. Offline; allocates.
RenderReport renderRoom(RenderJob& job, std::vector<std::string>& notes, const BlockSink& sink);

/// A whole render in memory, for short renders and tests.
struct Rendering
{
    Audio output; ///< one channel per speaker
    RenderReport report;
};
Rendering renderRoom(const RenderSettings& settings, std::vector<std::string>& notes);

/// What a render to a file did.
struct FileRendering
{
    std::uint64_t numFrames = 0;
    double sampleRate = 0.0;
    std::uint32_t numChannels = 0;
    bool rf64 = false;
    RenderReport report;
    ResponseSummary summary;
};

/// Renders to `settings.outputPath`, streaming, and measures the response on the way. Before
/// the room runs it refuses an output that is the input, that can't be created, or that the
/// disk has no room for; a render that fails midway leaves no file behind. `rf64Above` is
/// the RIFF size above which RF64 is written (tests lower it). Throws `UsageError` or
/// `AudioFileError` with the reason.
FileRendering renderToFile(const RenderSettings& settings, std::vector<std::string>& notes,
                           std::uint64_t rf64Above = WavWriter::riffLimit);
} // namespace tarvo::render
