#include "RenderPreset.h"
#include "Renderer.h"

#include "files/TarvoDspFile.h"
#include "reverb/QuorTarvoVerb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace
{
using namespace tarvo::render;

/// A fresh folder for the presets of one test, removed at its end.
class PresetFolder
{
public:
    PresetFolder() : path(std::filesystem::temp_directory_path() / ("tarvoverb_presets_" + std::to_string(::getpid())))
    {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~PresetFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(*this / name) << text;
        return *this / name;
    }

private:
    std::filesystem::path path;
};

/// A small room set away from every default, through attributes, positions and OSC alike.
RenderSettings changedRoom()
{
    RenderSettings s = parseCommandLine({"--numsources", "2", "--numspeakers", "4", "--numinternals", "4",
                                         "--samplerate", "32000", "--blocksize", "48", "--duration", "0.15",
                                         "--tr0", "0.8", "--trh", "0.3", "--early_width", "55", "--early_shape", "0.7",
                                         "--air", "1", "--cluster", "-2 1 0 -3 300 6000", "--osc", "/early/min 12"})
                           .settings;
    return s;
}

std::string reason(const RenderSettings& settings)
{
    std::vector<std::string> notes;
    try
    {
        reverberatorState(settings, notes);
    }
    catch (const UsageError& error)
    {
        return error.what();
    }
    return "accepted";
}

// A room saved in each form and loaded into a render with no other option renders the same
// samples: the preset carries the counts, the rate, the block size and every attribute.
TEST(RenderPreset, SavedRoomRendersTheSameSamplesFromEveryForm)
{
    PresetFolder folder;
    RenderSettings original = changedRoom();
    original.exportPresetPath = folder / "room.txt";
    std::vector<std::string> notes;
    const Audio expected = renderRoom(original, notes).output;
    ASSERT_EQ(expected.channels.size(), 4u);
    ASSERT_GT(std::abs(expected.channels[0][0]) + std::abs(expected.channels[1][0]), 1e-3f) << "silence proves nothing";
    for (const std::string name : {"room.txt", "room.osc", "room.xml", "room.coll", "ROOM.XML"})
    {
        SCOPED_TRACE(name);
        if (name != "room.txt")
        {
            original.exportPresetPath = folder / name;
            reverberatorState(original, notes);
        }
        RenderSettings loaded = parseCommandLine({"--preset", folder / name, "--duration", "0.15"}).settings;
        const Audio rendered = renderRoom(loaded, notes).output;
        EXPECT_EQ(rendered.sampleRate, 32000.0);
        EXPECT_EQ(rendered.channels, expected.channels);
    }
}

// The tool's file is the library's: each loads what the other saved, with the same state.
TEST(RenderPreset, ToolAndLibraryReadEachOthersPresets)
{
    PresetFolder folder;
    RenderSettings tool = changedRoom();
    tool.early.fill(0.0f);
    tool.earlyWidth = 30.0f; // the reverberator does not answer width and shape: keep its own
    tool.earlyShape = 0.5f;
    tool.exportPresetPath = folder / "tool.xml";
    std::vector<std::string> notes;
    const std::vector<std::string> toolState = reverberatorState(tool, notes);

    Quor::TarvoVerb verb(4);
    verb.configure(32000.0f, 48, 2, 4);
    verb.setEarlyWidth(30.0f);
    verb.setEarlyShape(0.5f);
    std::int32_t context = ondo::OscInterface::setContext;
    verb.importPreset(ondo::File((folder / "tool.xml").c_str()), context);
    EXPECT_EQ(verb.getState().flattened().toTextLines(), toolState);

    verb.setReverbTimes({2.5f, 1.2f, 1.0f, 0.4f, 300.0f, 7000.0f}, -4.0f);
    verb.setRoomFilter({-1.0f, 2.0f, 0.0f, -2.0f, 150.0f, 9000.0f});
    ASSERT_TRUE(verb.exportPreset(ondo::File((folder / "library.coll").c_str())));
    const RenderSettings fromLibrary = parseCommandLine({"--preset", folder / "library.coll"}).settings;
    const std::vector<std::string> loaded = reverberatorState(fromLibrary, notes);
    EXPECT_EQ(loaded, verb.getState().flattened().toTextLines());
    EXPECT_NE(loaded, toolState);
}

// Options change the preset wherever they stand on the command line, and only what they name.
TEST(RenderPreset, OptionsGivenChangeThePresetAndNothingElse)
{
    PresetFolder folder;
    RenderSettings saved = changedRoom();
    saved.exportPresetPath = folder / "room.osc";
    std::vector<std::string> notes;
    reverberatorState(saved, notes);

    const auto state = [&](std::vector<std::string> arguments) {
        return reverberatorState(parseCommandLine(arguments).settings, notes);
    };
    const auto has = [](const std::vector<std::string>& lines, const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    };
    const std::string preset = folder / "room.osc";
    for (const auto& lines : {state({"--preset", preset, "--tr0", "2", "--numspeakers", "6"}),
                              state({"--tr0", "2", "--numspeakers", "6", "--preset", preset})})
    {
        EXPECT_TRUE(has(lines, "/reverb/tr0 2"));
        EXPECT_TRUE(has(lines, "/reverb/trh 0.3")) << "the rest of the decay stays the preset's";
        EXPECT_TRUE(has(lines, "/speaker/number 6"));
        EXPECT_TRUE(has(lines, "/source/number 2"));
        EXPECT_TRUE(has(lines, "/early/min 12"));
        EXPECT_TRUE(has(lines, "/early/width 55"));
        EXPECT_TRUE(has(lines, "/cluster/filter/params -2 1 0 -3 300 6000"));
    }
    const auto saidOver = state({"--preset", preset, "--osc", "/early/min 20", "--cluster", "end", "90"});
    EXPECT_TRUE(has(saidOver, "/early/min 20"));
    EXPECT_TRUE(has(saidOver, "/cluster/max 90"));

    // What a preset leaves out is the object's default, as with no preset at all.
    const std::string partial = folder.write("partial.txt", "/reverb/tr0 4\n/reverb/trl 1.5\n");
    EXPECT_EQ(state({"--preset", partial}), state({"--tr0", "4", "--trl", "1.5"}));
    // The automatic length follows the preset's decay, as it follows the options'.
    RenderSettings fromPartial = parseCommandLine({"--preset", partial, "--trl", "1.25"}).settings;
    EXPECT_EQ(prepareRender(fromPartial, notes).numFrames, static_cast<std::uint64_t>((4.0 * 1.25 + 0.5) * 44100.0 + 0.5));
}

TEST(RenderPreset, BadPresetsAreRefusedNamingTheFileAndTheReason)
{
    PresetFolder folder;
    const auto with = [](const std::string& option, const std::string& path) {
        return reason(parseCommandLine({option, path}).settings);
    };
    const std::string missing = folder / "missing.xml";
    EXPECT_EQ(with("--preset", missing), "--preset \"" + missing + "\": Could not find file \"" + missing + "\"");
    const std::string json = folder.write("room.json", "{}");
    EXPECT_EQ(with("--preset", json),
              "--preset \"" + json + "\": unexpected file extension for file \"" + json + "\"");
    const std::string unknown = folder.write("unknown.txt", "/reverb/tr0 2\n/reverb/colour 3\n/early/min loud\n");
    EXPECT_EQ(with("--preset", unknown), "--preset \"" + unknown +
                                             "\": \"/reverb/colour 3\": not understood; \"/early/min 'loud'\": not understood");
    const std::string broken = folder.write("broken.xml", "<preset><reverb>");
    EXPECT_NE(with("--preset", broken).find("--preset \"" + broken + "\": "), std::string::npos);
    const std::string truncated = folder.write("truncated.osc", "#bundle");
    EXPECT_NE(with("--preset", truncated).find("--preset \"" + truncated + "\": "), std::string::npos);
    const std::string huge = folder.write("huge.txt", "/speaker/number 1000\n");
    EXPECT_EQ(with("--preset", huge),
              "--preset \"" + huge + "\": \"/speaker/number 1000\" asks for a whole number from 1 to 64");

    const std::string wav = folder / "room.wav";
    EXPECT_EQ(with("--export-preset", wav), "--export-preset \"" + wav + "\": unexpected file extension for file \"" +
                                                wav + "\" (.txt, .osc, .xml or .coll)");
    const std::string directory = folder / "room.coll";
    std::filesystem::create_directory(directory);
    EXPECT_EQ(with("--export-preset", directory), "--export-preset \"" + directory + "\": " + directory + " is a folder");
}
} // namespace
