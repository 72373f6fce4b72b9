#include "Renderer.h"

#include "ErrorStreamRedirect.h"
#include "PositionMessages.h"
#include "RenderPreset.h"
#include "common/TarvoDspException.h"
#include "files/TarvoDspFile.h"
#include "math/TarvoDspDenormals.h"
#include "reverb/QuorTarvoVerb.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>

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
/// The rates the reverberator runs at, Hz.
constexpr double lowestRate = 8000.0;
constexpr double highestRate = 384000.0;
/// Samples of the response kept for its decay analysis, over all channels: 64 MB.
constexpr std::size_t analysisBudget = std::size_t(16) << 20;

ondo::HLShelfParameters shelf(const ShelfList& list)
{
    return {list[0], list[1], list[2], list[3], list[4], list[5]};
}

/// Runs `numFrames` frames through `verb` in blocks: the recording (or the impulse when
/// `input` is null, or silence when `impulse` is false) in, every block out to `sink`.
void run(Quor::TarvoVerb& verb, WavReader* input, bool impulse, int impulseSource, std::uint64_t numFrames,
         std::uint32_t blockSize, const BlockSink* sink)
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
    bool inputEnded = input == nullptr;
    for (std::uint64_t start = 0; start < numFrames; start += blockSize)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::uint64_t>(blockSize, numFrames - start));
        for (auto& channel : in)
            std::fill(channel.begin(), channel.end(), 0.0f);
        if (!inputEnded)
            inputEnded = input->read(inputs.data(), sources, n) < n;
        else if (impulse && start == 0)
            for (std::uint32_t c = 0; c < sources; ++c)
                in[c][0] = (impulseSource == 0 || impulseSource == int(c) + 1) ? 1.0f : 0.0f;
        verb.process(outputs.data(), inputs.data(), n);
        if (sink != nullptr)
            (*sink)(outputs.data(), n);
    }
}

/// Sets the object's attributes from `s`: all of them, or with `only` those it names.
void setAttributes(Quor::TarvoVerb& verb, const RenderSettings& s, const std::set<std::string>* only)
{
    const auto given = [only](const char* option) { return only == nullptr || only->count(option) != 0; };
    if (given("direct"))
        verb.setDirectFilter(shelf(s.direct));
    if (given("room"))
        verb.setRoomFilter(shelf(s.room));
    if (given("early"))
        verb.setEarlyFilter(shelf(s.early));
    if (given("cluster"))
        verb.setClusterFilter(shelf(s.cluster));
    // The decay travels as one record: fields not given keep what the reverberator holds.
    const Quor::TarvoVerb::ParametersRecord& held = verb.getParameters();
    const auto pick = [&](const char* option, float value, float current) { return given(option) ? value : current; };
    if (given("tr0") || given("trl") || given("trm") || given("trh") || given("fl") || given("fh") || given("gain"))
        verb.setReverbTimes({pick("tr0", s.tr0, held.tr0), pick("trl", s.trl, held.trl), pick("trm", s.trm, held.trm),
                             pick("trh", s.trh, held.trh), pick("fl", s.fl, held.fl), pick("fh", s.fh, held.fh)},
                            pick("gain", s.gain, held.reverbGainDb));
    if (given("modaldensity"))
        verb.setReverbDensity(s.modalDensity);
    if (given("air"))
        verb.setAirEnabled(s.air != 0);
    if (given("airfreq"))
        verb.setAirCutoff(s.airFreq);
    if (given("infinite"))
        verb.setInfinite(s.infinite != 0);
    if (given("early_start"))
        verb.setEarlyMin(s.earlyStart);
    if (given("early_end"))
        verb.setEarlyMax(s.earlyEnd);
    if (given("early_distr"))
        verb.setEarlyDistribution(s.earlyDistr);
    if (given("cluster_start"))
        verb.setClusterMin(s.clusterStart);
    if (given("cluster_end"))
        verb.setClusterMax(s.clusterEnd);
    if (given("cluster_distr"))
        verb.setClusterDistribution(s.clusterDistr);
    if (given("reverb_start"))
        verb.setReverbMin(s.reverbStart);
    if (given("early_width"))
        verb.setEarlyWidth(s.earlyWidth);
    if (given("early_shape"))
        verb.setEarlyShape(s.earlyShape);
}

/// Refuses, before anything is written, an output that would overwrite the input or that the
/// disk can't hold.
void checkOutput(const RenderJob& job, std::uint64_t rf64Above)
{
    const RenderSettings& s = job.settings;
    std::error_code error;
    if (!s.inputPath.empty() && std::filesystem::equivalent(s.inputPath, s.outputPath, error))
        throw UsageError("--out \"" + s.outputPath + "\" is the --in file; writing it would destroy the recording");
    const std::uint64_t bytes = WavWriter::fileSize(static_cast<std::uint32_t>(s.numSpeakers), job.numFrames, rf64Above);
    const ondo::String folder = ondo::File(s.outputPath).getParentDirectory().getFullPathName();
    const std::filesystem::space_info space = std::filesystem::space(folder, error);
    if (!error && space.available < bytes)
        throw UsageError("\"" + s.outputPath + "\" needs " + std::to_string(bytes / 1000000 + 1) + " MB and only " +
                         std::to_string(space.available / 1000000) + " MB are free there");
}
} // namespace

void applySettings(Quor::TarvoVerb& verb, const RenderSettings& s, std::vector<std::string>& notes)
{
    if (s.presetState)
    {
        // The preset stands where the defaults stand: what it leaves out is the object's
        // default, and what the command line gives is changed over it.
        setAttributes(verb, RenderSettings{}, nullptr);
        loadPreset(verb, s);
        setAttributes(verb, s, &s.givenOptions);
    }
    else
        setAttributes(verb, s, nullptr);
    if (!s.speakersMessage.empty())
    {
        const ondo::Point3Array layout = parseSpeakersMessage(s.speakersMessage, verb.getNumOutputs(), notes);
        try
        {
            std::ostringstream libraryReport;
            const ErrorStreamRedirect redirect(libraryReport);
            verb.setSpeakerPositions(layout);
        }
        catch (const ondo::Exception& error)
        {
            throw UsageError("--speakers \"" + s.speakersMessage + "\": the panner refuses this layout: " + error.getMessage());
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
    applyOscMessages(verb, s.oscMessages);
    exportPreset(verb, s);
}

void applyOscMessages(Quor::TarvoVerb& verb, const std::vector<std::string>& lines)
{
    std::string refused;
    for (const std::string& line : lines)
    {
        std::string reason = "not understood";
        try
        {
            std::int32_t context = ondo::OscInterface::setContext;
            if (verb.processOscMessage(ondo::OSCMessage::fromText(line), context))
                continue;
        }
        catch (const ondo::Exception& error)
        {
            reason = error.getMessage();
        }
        refused += (refused.empty() ? "" : "; ") + ("--osc \"" + line + "\": " + reason);
    }
    if (!refused.empty())
        throw UsageError(refused);
}

std::vector<std::string> reverberatorState(const RenderSettings& requested, std::vector<std::string>& notes)
{
    RenderSettings s = requested;
    preparePresets(s);
    const auto sources = static_cast<std::uint32_t>(s.numSources);
    const auto speakers = static_cast<std::uint32_t>(s.numSpeakers);
    const auto internals = static_cast<std::uint32_t>(s.numInternals);
    if (!Quor::TarvoVerb::isConfigurationValid(sources, speakers, internals))
        throw UsageError("no reverberator can be built with " + plural(sources, "source") + ", " +
                         plural(speakers, "speaker") + " and " + plural(internals, "internal channel"));
    Quor::TarvoVerb verb(internals);
    verb.configure(s.sampleRate, static_cast<std::uint32_t>(s.blockSize), sources, speakers);
    applySettings(verb, s, notes);
    return verb.getState().flattened().toTextLines();
}

double automaticDuration(const RenderSettings& s, double inputSeconds)
{
    if (s.infinite != 0)
        return std::min(inputSeconds + frozenTailSeconds, longestAutomaticDuration);
    const double longestDecay = double(s.tr0) * std::max({s.trl, s.trm, s.trh});
    return std::min(inputSeconds + longestDecay + tailMarginSeconds, longestAutomaticDuration);
}

RenderJob prepareRender(const RenderSettings& requested, std::vector<std::string>& notes)
{
    RenderJob job;
    RenderSettings& s = job.settings;
    s = requested;
    preparePresets(s);
    double inputSeconds = 0.0;
    if (!s.inputPath.empty())
    {
        job.input = std::make_unique<WavReader>(s.inputPath);
        const WavReader& recording = *job.input;
        const auto fileRate = static_cast<std::uint64_t>(recording.getSampleRate());
        if (recording.getSampleRate() < lowestRate || recording.getSampleRate() > highestRate)
            throw UsageError("\"" + s.inputPath + "\" is at " + std::to_string(fileRate) +
                             " Hz; the reverberator runs at 8000 to 384000 Hz (convert the file first, e.g. with "
                             "sox \"" + s.inputPath + "\" -r 48000 converted.wav)");
        if (!s.sampleRateGiven)
            s.sampleRate = static_cast<float>(recording.getSampleRate());
        else if (recording.getSampleRate() != double(s.sampleRate))
            throw UsageError("\"" + s.inputPath + "\" is at " + std::to_string(fileRate) + " Hz and --samplerate asks for " +
                             std::to_string(static_cast<std::uint64_t>(s.sampleRate)) + " Hz; this tool does not resample");
        if (recording.getNumChannels() > std::uint32_t(s.numSources))
            notes.push_back("\"" + s.inputPath + "\" has " + plural(recording.getNumChannels(), "channel") +
                            "; only the first " + std::to_string(s.numSources) + " feed sources");
        inputSeconds = double(recording.getNumFrames()) / recording.getSampleRate();
    }
    const auto sources = static_cast<std::uint32_t>(s.numSources);
    const auto speakers = static_cast<std::uint32_t>(s.numSpeakers);
    const auto internals = static_cast<std::uint32_t>(s.numInternals);
    if (!Quor::TarvoVerb::isConfigurationValid(sources, speakers, internals))
        throw UsageError("no reverberator can be built with " + plural(sources, "source") + ", " +
                         plural(speakers, "speaker") + " and " + plural(internals, "internal channel"));
    const double seconds = s.duration > 0.0 ? s.duration : automaticDuration(s, inputSeconds);
    job.numFrames = static_cast<std::uint64_t>(seconds * double(s.sampleRate) + 0.5);
    return job;
}

RenderReport renderRoom(RenderJob& job, std::vector<std::string>& notes, const BlockSink& sink)
{
    const RenderSettings& s = job.settings;
    const auto sources = static_cast<std::uint32_t>(s.numSources);
    const auto speakers = static_cast<std::uint32_t>(s.numSpeakers);
    auto verb = std::make_unique<Quor::TarvoVerb>(static_cast<std::uint32_t>(s.numInternals));
    const auto blockSize = static_cast<std::uint32_t>(s.blockSize);
    verb->configure(s.sampleRate, blockSize, sources, speakers);
    if (!verb->isConfigured())
        throw UsageError("the reverberator could not be configured");
    applySettings(*verb, s, notes);

    // The audio thread's mode: no denormals in the recursive parts.
    ondo::primitives::setDenormalsAreZero(true);
    run(*verb, nullptr, false, 0, static_cast<std::uint64_t>(settlingSeconds * double(s.sampleRate)), blockSize,
        nullptr);
    verb->clear();
    const std::uint64_t unusableBefore = verb->getNonFiniteInputCount();

    RenderReport report;
    const auto start = std::chrono::steady_clock::now();
    run(*verb, job.input.get(), job.input == nullptr, s.impulseSource, job.numFrames, blockSize, &sink);
    report.cpuSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ondo::primitives::setDenormalsAreZero(false);
    report.unusableInputs = verb->getNonFiniteInputCount() - unusableBefore;
    return report;
}

Rendering renderRoom(const RenderSettings& settings, std::vector<std::string>& notes)
{
    RenderJob job = prepareRender(settings, notes);
    Rendering rendering;
    rendering.output.sampleRate = job.settings.sampleRate;
    rendering.output.channels.assign(std::size_t(job.settings.numSpeakers), {});
    for (auto& channel : rendering.output.channels)
        channel.reserve(job.numFrames);
    rendering.report = renderRoom(job, notes, [&](const float* const* channels, std::uint32_t n) {
        for (std::size_t c = 0; c < rendering.output.channels.size(); ++c)
            rendering.output.channels[c].insert(rendering.output.channels[c].end(), channels[c], channels[c] + n);
    });
    return rendering;
}

FileRendering renderToFile(const RenderSettings& settings, std::vector<std::string>& notes, std::uint64_t rf64Above)
{
    RenderJob job = prepareRender(settings, notes);
    checkOutput(job, rf64Above);
    const RenderSettings& s = job.settings;
    const auto speakers = static_cast<std::uint32_t>(s.numSpeakers);
    FileRendering result;
    result.numFrames = job.numFrames;
    result.sampleRate = s.sampleRate;
    result.numChannels = speakers;
    WavWriter writer(s.outputPath, speakers, s.sampleRate, job.numFrames, rf64Above);
    try
    {
        result.rf64 = writer.isRf64();
        // Decay times mean something for an impulse response alone.
        ResponseMeter meter(speakers, s.sampleRate, job.input == nullptr ? analysisBudget / speakers : 0);
        result.report = renderRoom(job, notes, [&](const float* const* channels, std::uint32_t n) {
            writer.write(channels, n);
            meter.add(channels, n);
        });
        writer.close();
        result.summary = meter.summary();
        result.summary.impulseOnEverySource = job.input == nullptr && s.impulseSource == 0 && s.numSources > 1;
    }
    catch (...)
    {
        writer.abandon();
        ondo::File(s.outputPath).deleteFile();
        throw;
    }
    return result;
}
} // namespace tarvo::render
