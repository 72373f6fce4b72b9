// tarvoverb-render: the room reverberator offline. With no arguments it renders the impulse
// response of the object's default room to tarvoverb-ir.wav and prints what it measured.

#include "RenderSettings.h"
#include "Renderer.h"
#include "ResponseSummary.h"
#include "WavFile.h"
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
    const RenderSettings& settings = line.settings;

    std::vector<std::string> notes;
    Rendering rendering;
    try
    {
        rendering = renderRoom(settings, notes);
        printNotes(notes);
        writeWavFloat(settings.outputPath, rendering.output);
    }
    catch (const UsageError& error)
    {
        printNotes(notes);
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 2;
    }
    catch (const AudioFileError& error)
    {
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 1;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "tarvoverb-render: %s\n", error.what());
        return 1;
    }

    if (settings.quiet)
        return 0;
    const Audio& output = rendering.output;
    const double seconds = double(output.numFrames()) / output.sampleRate;
    std::printf("%s\n", ondo::getLibraryVersionLine(true).c_str());
    std::printf("room: %d sources, %d speakers, %d internal channels at %g Hz; tr0 %g s (low %g, middle %g, "
                "high %g), air %s\n",
                settings.numSources, settings.numSpeakers, settings.numInternals, output.sampleRate, settings.tr0,
                settings.trl, settings.trm, settings.trh, settings.air != 0 ? "on" : "off");
    std::printf("rendered %s: %.3f s in %.3f s of processing (%.0f times real time)\n", describeInput(settings).c_str(),
                seconds, rendering.cpuSeconds, rendering.cpuSeconds > 0.0 ? seconds / rendering.cpuSeconds : 0.0);
    std::printf("wrote %s: %zu channels of 32-bit float\n\n", settings.outputPath.c_str(), output.channels.size());
    std::fputs(formatSummary(summarizeResponse(output)).c_str(), stdout);
    return 0;
}
