#include "RenderSettings.h"

#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

namespace
{
using tarvo::render::CommandLine;
using tarvo::render::parseCommandLine;
using tarvo::render::UsageError;

CommandLine parse(std::vector<std::string> arguments)
{
    return parseCommandLine(arguments);
}

TEST(RenderSettings, NoArgumentsGiveTheObjectsDefaults)
{
    const CommandLine line = parse({});
    const auto& s = line.settings;
    EXPECT_FALSE(line.helpRequested);
    EXPECT_TRUE(line.notes.empty());
    EXPECT_EQ(s.numSources, 6);
    EXPECT_EQ(s.numSpeakers, 6);
    EXPECT_EQ(s.numInternals, 8);
    EXPECT_FLOAT_EQ(s.tr0, 1.995f);
    EXPECT_FLOAT_EQ(s.trh, 0.5f);
    EXPECT_FLOAT_EQ(s.fh, 8000.0f);
    EXPECT_EQ(s.air, 0) << "air absorption is off by default, as the attribute is";
    EXPECT_FLOAT_EQ(s.airFreq, 10000.0f);
    EXPECT_FLOAT_EQ(s.direct[4], 177.0f);
    EXPECT_FLOAT_EQ(s.cluster[5], 5657.0f);
    EXPECT_FLOAT_EQ(s.reverbStart, 95.37f);
    EXPECT_EQ(s.outputPath, "tarvoverb-ir.wav");
    EXPECT_TRUE(s.inputPath.empty());
}

TEST(RenderSettings, AttributesAndRunOptionsAreRead)
{
    const auto s = parse({"--tr0", "2", "--trl", "1.5", "--numinternals", "16", "--air", "1", "--samplerate", "48000",
                          "--early_width", "45", "--duration", "3.5", "--out", "x.wav", "--in", "y.wav"})
                       .settings;
    EXPECT_FLOAT_EQ(s.tr0, 2.0f);
    EXPECT_FLOAT_EQ(s.trl, 1.5f);
    EXPECT_EQ(s.numInternals, 16);
    EXPECT_EQ(s.air, 1);
    EXPECT_FLOAT_EQ(s.sampleRate, 48000.0f);
    EXPECT_FLOAT_EQ(s.earlyWidth, 45.0f);
    EXPECT_DOUBLE_EQ(s.duration, 3.5);
    EXPECT_EQ(s.outputPath, "x.wav");
    EXPECT_EQ(s.inputPath, "y.wav");
}

TEST(RenderSettings, ShelfListsTakeSixNumbersSeparateOrQuoted)
{
    const auto s = parse({"--direct", "-3", "1", "2", "3", "300", "5000", "--room", "0 -1 -2 -3 100 2000"}).settings;
    EXPECT_EQ(s.direct, (tarvo::render::ShelfList{-3.0f, 1.0f, 2.0f, 3.0f, 300.0f, 5000.0f}));
    EXPECT_EQ(s.room, (tarvo::render::ShelfList{0.0f, -1.0f, -2.0f, -3.0f, 100.0f, 2000.0f}));
    EXPECT_THROW(parse({"--early", "1", "2", "3"}), UsageError);
    EXPECT_THROW(parse({"--room", "1", "2", "3", "4", "5", "x"}), UsageError);
}

TEST(RenderSettings, TwoWordSectionFormSetsTheStructureAttribute)
{
    const auto s = parse({"--early", "start", "30", "--cluster", "end", "150"}).settings;
    EXPECT_FLOAT_EQ(s.earlyStart, 30.0f);
    EXPECT_FLOAT_EQ(s.clusterEnd, 150.0f);
    EXPECT_THROW(parse({"--cluster", "width", "30"}), UsageError) << "the cluster has no width";
    EXPECT_THROW(parse({"--room", "start", "30"}), UsageError);
}

TEST(RenderSettings, OutOfRangeValuesAreClippedAsTheObjectWouldAndSaidSo)
{
    const CommandLine line = parse({"--tr0", "500", "--numsources", "100", "--early_width", "2", "--direct", "-300",
                                    "40", "0", "0", "5", "30000", "--air", "7"});
    const auto& s = line.settings;
    EXPECT_FLOAT_EQ(s.tr0, 100.0f);
    EXPECT_EQ(s.numSources, 64);
    EXPECT_FLOAT_EQ(s.earlyWidth, 10.0f);
    EXPECT_EQ(s.direct, (tarvo::render::ShelfList{-200.0f, 30.0f, 0.0f, 0.0f, 20.0f, 20000.0f}));
    EXPECT_EQ(s.air, 1);
    EXPECT_EQ(line.notes.size(), 8u);
    EXPECT_NE(line.notes.front().find("clipped to 100"), std::string::npos) << line.notes.front();
}

TEST(RenderSettings, BadCommandLinesAreRefusedWithAReason)
{
    const auto reason = [](std::vector<std::string> arguments) {
        try
        {
            parseCommandLine(arguments);
        }
        catch (const UsageError& error)
        {
            return std::string(error.what());
        }
        return std::string("accepted");
    };
    EXPECT_NE(reason({"--tr0"}).find("needs a value"), std::string::npos);
    EXPECT_NE(reason({"--tr0", "long"}).find("takes a number"), std::string::npos);
    EXPECT_NE(reason({"--tr0", "nan"}).find("takes a number"), std::string::npos);
    EXPECT_NE(reason({"--tr0", "2s"}).find("takes a number"), std::string::npos);
    EXPECT_NE(reason({"--numsources", "2.5"}).find("whole number"), std::string::npos);
    EXPECT_NE(reason({"--nosuch", "1"}).find("unknown option"), std::string::npos);
    EXPECT_NE(reason({"tr0"}).find("unexpected argument"), std::string::npos);
    EXPECT_NE(reason({"--numsources", "2", "--impulse-source", "3"}).find("names no source"), std::string::npos);
}

TEST(RenderSettings, PositionMessagesAreKeptInOrder)
{
    const auto s = parse({"--source", "1 ade 30 2 0", "--source", "2 xyz 0 1 0", "--speakers", "ade -30 1 0 30 1 0"})
                       .settings;
    ASSERT_EQ(s.sourceMessages.size(), 2u);
    EXPECT_EQ(s.sourceMessages[0], "1 ade 30 2 0");
    EXPECT_EQ(s.sourceMessages[1], "2 xyz 0 1 0");
    EXPECT_EQ(s.speakersMessage, "ade -30 1 0 30 1 0");
}

TEST(RenderSettings, HelpListsEveryOptionWithItsDefault)
{
    EXPECT_TRUE(parse({"--help"}).helpRequested);
    const std::string help = tarvo::render::helpText();
    for (const char* name : {"--numsources", "--tr0", "--trl", "--trm", "--trh", "--fl", "--fh", "--air", "--airfreq",
                             "--infinite", "--gain", "--modaldensity", "--direct", "--room", "--early", "--cluster",
                             "--early_start", "--reverb_start", "--source", "--speakers", "--samplerate", "--blocksize",
                             "--duration", "--out", "--in", "--preset", "--export-preset"})
        EXPECT_NE(help.find(name), std::string::npos) << name;
    EXPECT_NE(help.find("default 1.995, 0.1..100"), std::string::npos) << "tr0's default and range";
    EXPECT_NE(help.find("default 0 0 0 0 177 5657"), std::string::npos);
}
// Values beyond float and int are clipped before any narrowing, and the note quotes them as
// written (it printed "inf" and "1e+09").
TEST(RenderSettings, ClipNotesQuoteHugeValuesAsWritten)
{
    const CommandLine line = parse({"--tr0", "1e40", "--numspeakers", "99999999999999999999", "--gain", "-1e300"});
    EXPECT_EQ(line.settings.tr0, 100.0f);
    EXPECT_EQ(line.settings.numSpeakers, 64);
    EXPECT_EQ(line.settings.gain, -30.0f);
    ASSERT_EQ(line.notes.size(), 3u);
    EXPECT_EQ(line.notes[0], "--tr0 1e40 is outside 0.1..100; clipped to 100");
    EXPECT_EQ(line.notes[1], "--numspeakers 99999999999999999999 is outside 1..64; clipped to 64");
    EXPECT_EQ(line.notes[2], "--gain -1e300 is outside -30..30; clipped to -30");
}

TEST(RenderSettings, HelpExplainsEveryCoordinateNotation)
{
    const std::string help = tarvo::render::helpText();
    EXPECT_EQ(help.find("shapeone"), std::string::npos);
    EXPECT_EQ(help.find("Xone"), std::string::npos) << "a long usage still has blanks before its help";
    EXPECT_NE(help.find("Azimuth 0 is the\nfront and positive to the right, elevation positive up"), std::string::npos);
    for (std::int32_t f = ondo::Coordinates::xyz; f < ondo::Coordinates::none; ++f)
        EXPECT_NE(help.find("\n  " + ondo::Coordinates::toString(static_cast<ondo::Coordinates::Format>(f)) + " "),
                  std::string::npos)
            << f;
}
} // namespace
