// tarvoverb-render: the room reverberator offline. With no arguments it renders the impulse
// response of the object's default room to tarvoverb-ir.wav and prints what it measured.

#include "RenderPreset.h"
#include "RenderSettings.h"
#include "Renderer.h"
#include "ResponseSummary.h"
#include "text/TarvoDspVersion.h"

#include <cstdio>
#include <string>
#include <vector>

namespace
{
using namespace tarvo::render;

std::string describeInput(const RenderSettings& settings)
{
    if (!settings.inputPath.empty())
        return "\"" + settings.inputPath + "\"";
    if (settings.impulseSource == 0)
        return "an impulse on every source";
    return "an impulse on source " + std::to_string(settings.impulseSource);
}

void printNotes(const std::vector<std::string>& notes)
{
    for (const std::string& note : notes)
        std::fprintf(stderr, "tarvoverb-render: note: %s\n", note.c_str());
}
} // namespace

int main(int argc, char** argv)
{
    CommandLine line;
    try
    {
        line = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    }
    catch (const UsageError& error)
    {
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 2;
    }
    if (line.helpRequested)
    {
        std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    printNotes(line.notes);
    try
    {
        // Before anything is said about the room: the preset may set its counts and decay.
        preparePresets(line.settings);
    }
    catch (const UsageError& error)
    {
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 2;
    }
    const RenderSettings& settings = line.settings;

    std::vector<std::string> notes;
    if (settings.printState)
    {
        try
        {
            for (const std::string& stateLine : reverberatorState(settings, notes))
                std::printf("%s\n", stateLine.c_str());
            printNotes(notes);
            return 0;
        }
        catch (const std::exception& error)
        {
            printNotes(notes);
            std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
            return 2;
        }
    }
    FileRendering rendering;
    try
    {
        rendering = renderToFile(settings, notes);
        printNotes(notes);
    }
    catch (const UsageError& error)
    {
        printNotes(notes);
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 2;
    }
    catch (const std::exception& error)
    {
        printNotes(notes);
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 1;
    }
    if (rendering.report.unusableInputs > 0)
        std::fprintf(stderr,
                     "tarvoverb-render: note: %llu input samples were NaN, infinite or beyond 2^64 and were "
                     "rendered as silence\n",
                     static_cast<unsigned long long>(rendering.report.unusableInputs));

    if (settings.quiet)
        return 0;
    const double seconds = double(rendering.numFrames) / rendering.sampleRate;
    const double cpu = rendering.report.cpuSeconds;
    std::printf("%s\n", ondo::getLibraryVersionLine(true).c_str());
    std::printf("room: %s, %s, %d internal channels at %g Hz; tr0 %g s (low %g, middle %g, high %g), air %s\n",
                plural(settings.numSources, "source").c_str(), plural(settings.numSpeakers, "speaker").c_str(),
                settings.numInternals, rendering.sampleRate, settings.tr0, settings.trl, settings.trm, settings.trh,
                settings.air != 0 ? "on" : "off");
    std::printf("rendered %s: %.3f s in %.3f s of processing (%.0f times real time)\n", describeInput(settings).c_str(),
                seconds, cpu, cpu > 0.0 ? seconds / cpu : 0.0);
    std::printf("wrote %s: %s of 32-bit float%s\n\n", settings.outputPath.c_str(),
                plural(rendering.numChannels, "channel").c_str(), rendering.rf64 ? ", RF64 (over 4 GB)" : "");
    std::fputs(formatSummary(rendering.summary).c_str(), stdout);
    return 0;
}
