#include "Renderer.h"

#include "PositionMessages.h"
#include "common/TarvoDspException.h"
#include "math/TarvoDspDenormals.h"
#include "reverb/QuorTarvoVerb.h"

#include <algorithm>
#include <chrono>
#include <memory>

namespace tarvo::render
{
namespace
{
/// Silence run through a new reverberator before the render, so that every glide has ended:
/// the section gains rise from 0, and a longer decay time takes up to 5 s to settle.
constexpr double settlingSeconds = 5.25;
constexpr double tailMarginSeconds = 0.5;
constexpr double frozenTailSeconds = 10.0;
constexpr double longestAutomaticDuration = 600.0;

ondo::HLShelfParameters shelf(const ShelfList& list)
{
    return {list[0], list[1], list[2], list[3], list[4], list[5]};
}

/// Runs `numFrames` frames of `input` (one vector a source, shorter ones padded with
/// silence) through `verb` in blocks, into `output` when it is not null.
void run(Quor::TarvoVerb& verb, const std::vector<std::vector<float>>& input, std::size_t numFrames,
         std::uint32_t blockSize, std::vector<std::vector<float>>* output)
{
    const std::uint32_t sources = verb.getNumInputs();
    const std::uint32_t speakers = verb.getNumOutputs();
    std::vector<std::vector<float>> in(sources, std::vector<float>(blockSize));
    std::vector<std::vector<float>> out(speakers, std::vector<float>(blockSize));
    std::vector<float*> inputs, outputs;
    for (auto& channel : in)
        inputs.push_back(channel.data());
    for (auto& channel : out)
        outputs.push_back(channel.data());
    for (std::size_t start = 0; start < numFrames; start += blockSize)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(blockSize, numFrames - start));
        for (std::uint32_t c = 0; c < sources; ++c)
            for (std::uint32_t k = 0; k < n; ++k)
                in[c][k] = (c < input.size() && start + k < input[c].size()) ? input[c][start + k] : 0.0f;
        verb.process(outputs.data(), inputs.data(), n);
        if (output != nullptr)
            for (std::uint32_t c = 0; c < speakers; ++c)
                std::copy(out[c].begin(), out[c].begin() + n, (*output)[c].begin() + static_cast<long>(start));
    }
}
} // namespace

void applySettings(Quor::TarvoVerb& verb, const RenderSettings& s, std::vector<std::string>& notes)
{
    verb.setDirectFilter(shelf(s.direct));
    verb.setRoomFilter(shelf(s.room));
    verb.setEarlyFilter(shelf(s.early));
    verb.setClusterFilter(shelf(s.cluster));
    verb.setReverbTimes({s.tr0, s.trl, s.trm, s.trh, s.fl, s.fh}, s.gain);
    verb.setReverbDensity(s.modalDensity);
    verb.setAirEnabled(s.air != 0);
    verb.setAirCutoff(s.airFreq);
    verb.setInfinite(s.infinite != 0);
    verb.setEarlyMin(s.earlyStart);
    verb.setEarlyMax(s.earlyEnd);
    verb.setEarlyDistribution(s.earlyDistr);
    verb.setClusterMin(s.clusterStart);
    verb.setClusterMax(s.clusterEnd);
    verb.setClusterDistribution(s.clusterDistr);
    verb.setReverbMin(s.reverbStart);
    verb.setEarlyWidth(s.earlyWidth);
    verb.setEarlyShape(s.earlyShape);
    if (!s.speakersMessage.empty())
    {
        try
        {
            verb.setSpeakerPositions(parseSpeakersMessage(s.speakersMessage, verb.getNumOutputs(), notes));
        }
        catch (const ondo::Exception& error)
        {
            throw UsageError("--speakers \"" + s.speakersMessage + "\": " + error.getMessage());
        }
        // The panners have changed: every source is placed again.
        for (std::uint32_t i = 0; i < verb.getNumInputs(); ++i)
            verb.setSourcePosition(i, verb.getSourcePositions()[i]);
    }
    for (const std::string& message : s.sourceMessages)
    {
        const SourcePlacement placement = parseSourceMessage(message, verb.getSourcePositions(), notes);
        verb.setSourcePosition(placement.index, placement.position);
    }
}

double automaticDuration(const RenderSettings& s, double inputSeconds)
{
    if (s.infinite != 0)
        return std::min(inputSeconds + frozenTailSeconds, longestAutomaticDuration);
    const double longestDecay = double(s.tr0) * std::max({s.trl, s.trm, s.trh});
    return std::min(inputSeconds + longestDecay + tailMarginSeconds, longestAutomaticDuration);
}

Rendering renderRoom(const RenderSettings& requested, std::vector<std::string>& notes)
{
    RenderSettings s = requested;
    std::vector<std::vector<float>> input;
    double inputSeconds = 0.0;
    if (!s.inputPath.empty())
    {
        Audio recording = readAudioFile(s.inputPath);
        if (!s.sampleRateGiven)
            s.sampleRate = static_cast<float>(recording.sampleRate);
        else if (recording.sampleRate != s.sampleRate)
            throw UsageError("\"" + s.inputPath + "\" is at " + std::to_string(int(recording.sampleRate)) +
                             " Hz and --samplerate asks for " + std::to_string(int(s.sampleRate)) +
                             " Hz; this tool does not resample");
        if (recording.channels.size() > std::size_t(s.numSources))
            notes.push_back("\"" + s.inputPath + "\" has " + std::to_string(recording.channels.size()) +
                            " channels; only the first " + std::to_string(s.numSources) + " feed sources");
        inputSeconds = double(recording.numFrames()) / recording.sampleRate;
        input = std::move(recording.channels);
        input.resize(std::min<std::size_t>(input.size(), std::size_t(s.numSources)));
    }
    else
    {
        for (int c = 0; c < s.numSources; ++c)
            input.push_back(std::vector<float>{(s.impulseSource == 0 || s.impulseSource == c + 1) ? 1.0f : 0.0f});
    }

    const auto sources = static_cast<std::uint32_t>(s.numSources);
    const auto speakers = static_cast<std::uint32_t>(s.numSpeakers);
    const auto internals = static_cast<std::uint32_t>(s.numInternals);
    if (!Quor::TarvoVerb::isConfigurationValid(sources, speakers, internals))
        throw UsageError("no reverberator can be built with " + std::to_string(sources) + " sources, " +
                         std::to_string(speakers) + " speakers and " + std::to_string(internals) +
                         " internal channels");
    auto verb = std::make_unique<Quor::TarvoVerb>(internals);
    const auto blockSize = static_cast<std::uint32_t>(s.blockSize);
    verb->configure(s.sampleRate, blockSize, sources, speakers);
    if (!verb->isConfigured())
        throw UsageError("the reverberator could not be configured");
    applySettings(*verb, s, notes);

    // The audio thread's mode: no denormals in the recursive parts.
    ondo::primitives::setDenormalsAreZero(true);
    run(*verb, {}, static_cast<std::size_t>(settlingSeconds * s.sampleRate), blockSize, nullptr);
    verb->clear();

    const double seconds = s.duration > 0.0 ? s.duration : automaticDuration(s, inputSeconds);
    const auto frames = static_cast<std::size_t>(seconds * s.sampleRate + 0.5);
    Rendering rendering;
    rendering.output.sampleRate = s.sampleRate;
    rendering.output.channels.assign(speakers, std::vector<float>(frames));
    const auto start = std::chrono::steady_clock::now();
    run(*verb, input, frames, blockSize, &rendering.output.channels);
    rendering.cpuSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ondo::primitives::setDenormalsAreZero(false);
    return rendering;
}
} // namespace tarvo::render
