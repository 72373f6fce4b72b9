#include "TarvoverbTildaTestSupport.h"

#include "ext_dictobj.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tarvo::testing
{
namespace
{
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

constexpr double pi = 3.14159265358979323846;

/// Navigational degrees to a point: azimuth from the front (+y) towards the right (+x).
std::vector<double> navigational(double azimuthDeg, double distance, double elevationDeg)
{
    const double a = azimuthDeg * pi / 180.0, e = elevationDeg * pi / 180.0;
    return {distance * std::cos(e) * std::sin(a), distance * std::cos(e) * std::cos(a), distance * std::sin(e)};
}

std::vector<double> slice(const std::vector<double>& v, std::size_t from, std::size_t n)
{
    return {v.begin() + static_cast<long>(from), v.begin() + static_cast<long>(from + n)};
}

void expectNear(const std::vector<double>& actual, const std::vector<double>& expected, double tolerance)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "value " << i;
}

struct CreationCase
{
    std::vector<std::string> attributes;
    bool created;
    std::vector<double> counts; // numsources, numspeakers, numinternals
    std::vector<std::string> errors;
};

TEST_F(TarvoverbTildaTest, BoxDictionaryGivesClippedCountsOrARefusalWithItsText)
{
    const CreationCase cases[] = {
        {{}, true, {6, 6, 8}, {}},
        {{"numinternals 1"}, true, {6, 6, 2}, {}},
        {{"numsources 65"}, true, {64, 6, 8}, {}},
        {{"numspeakers 1", "numsources 2"}, true, {2, 1, 8}, {}},
        // A word where a count belongs passes the clip filter and reads as 0 sources.
        {{"numsources foo"}, false, {}, {"Configuration not supported", "couldnt create object"}},
    };
    for (const CreationCase& c : cases)
    {
        SCOPED_TRACE(::testing::PrintToString(c.attributes));
        mx::clearConsole();
        const mx::Box box = mx::Box::create("tarvoverb~", c.attributes);
        EXPECT_EQ(bool(box), c.created);
        EXPECT_EQ(errors(), c.errors);
        if (!box)
            continue;
        EXPECT_EQ((std::vector<double>{number(box, "numsources"), number(box, "numspeakers"), number(box, "numinternals")}),
                  c.counts);
        // One signal inlet per source, one signal outlet per speaker, the dump outlet rightmost.
        EXPECT_EQ(box.signalInlets(), int(c.counts[0]));
        std::vector<std::string> kinds(std::size_t(c.counts[1]), "signal");
        kinds.push_back("");
        EXPECT_EQ(box.outletKinds(), kinds);
    }
}

TEST_F(TarvoverbTildaTest, MissingOrUnreadableBoxDictionaryFailsTheConstructor)
{
    EXPECT_FALSE(mx::Box::createFromDictionary("tarvoverb~", nullptr));
    EXPECT_THAT(bugs(), ElementsAre("couldnt process dictionnary"));

    mx::clearConsole();
    t_dictionary* d = dictionary_new();
    dictionary_appendlong(d, gensym("numsources"), 4);
    dictionary_appendlong(d, gensym("numspeakers"), 4);
    EXPECT_FALSE(mx::Box::createFromDictionary("tarvoverb~", d));
    EXPECT_THAT(errors(), ElementsAre("dictionary doesnt have entry for numinternals", "error parsing dictionary"));
}

struct AttributeCase
{
    std::string line;
    std::string attribute;
    std::vector<double> expected;
    std::vector<std::string> errors;
};

TEST_F(TarvoverbTildaTest, AttributesAreClippedStoredOrRefusedAsTheyDeclare)
{
    const AttributeCase cases[] = {
        {"gain 40", "gain", {30}, {}},
        {"gain -3.5", "gain", {-3.5}, {}},
        {"tr0 0.01", "tr0", {0.1f}, {}},
        {"air 5", "air", {1}, {}},
        {"automute 600", "automute", {500}, {}},
        {"early_width 200", "early_width", {180}, {}},
        {"early_shape -1", "early_shape", {0}, {}},
        {"numsources 8", "numsources", {6}, {"could not dynamically change number of sources"}},
        {"numsources 6", "numsources", {6}, {}},
        {"numinternals 4", "numinternals", {8}, {"could not dynamically change number of internal channels"}},
        {"delays 1 2 3", "delays", {0, 0, 0, 0, 0, 0, 0, 0}, {"Wrong number of delays"}},
        {"delays -1 2 3 4 5 6 7 8", "delays", {0, 2, 3, 4, 5, 6, 7, 8}, {}},
        {"direct 0 0 0 0 foo bar", "direct", {0, 0, 0, 0, 250, 4000}, {}},
        {"room -300 40 -40 1 10 30000", "room", {-200, 30, -30, 1, 20, 20000}, {}},
        {"direct 1 2 3", "direct", {0, 0, 0, 0, 177, 5657}, {"invalid direct parameters 1 2 3 "}},
        {"early 1 2 3", "early", {0, 0, 0, 0, 177, 5657}, {"invalid early parameters 1 2 3 "}},
        {"room start 30", "room", {0, 0, 0, 0, 177, 5657}, {"invalid room parameters start 30 "}},
        {"cluster width 30", "cluster", {0, 0, 0, 0, 177, 5657}, {"invalid cluster parameters width 30 "}},
        {"early start 30", "early_start", {30}, {}},
        {"early_start 30", "early_start", {30}, {}},
        {"cluster end 200", "cluster_end", {200}, {}},
        {"reverb start 50", "reverb_start", {50}, {}},
        {"reverb tr0 500", "tr0", {100}, {}},
        {"reverb infinite 3", "infinite", {1}, {}},
        {"reverb foo 1", "tr0", {1.995f}, {"unknwon message : reverb foo 1 "}},
        {"reverb start", "reverb_start", {95.37f}, {"unknwon message : reverb start "}},
    };
    for (const AttributeCase& c : cases)
    {
        SCOPED_TRACE(c.line);
        mx::Box box = mx::Box::create("tarvoverb~");
        mx::clearConsole();
        EXPECT_TRUE(box.send(c.line));
        // Stored as float32: compare at that precision.
        expectNear(numbers(box, c.attribute), c.expected, 1e-5);
        EXPECT_EQ(errors(), c.errors);
    }
}

struct PositionCase
{
    std::string line;
    std::string attribute;
    std::size_t first; // index of the first value checked
    std::vector<double> expected;
    std::vector<std::string> errors;
    std::vector<std::string> warnings;
};

TEST_F(TarvoverbTildaTest, PositionMessagesParseEveryNotationWithTheirWarningsAndErrors)
{
    const std::vector<double> layout = numbers(mx::Box::create("tarvoverb~"), "speakerspositions");
    const std::vector<double> sources = numbers(mx::Box::create("tarvoverb~"), "sourcespositions");
    std::string fifteen;
    for (int i = 0; i < 15; ++i)
        fifteen += " 1";
    const PositionCase cases[] = {
        {"source 1 xyz 1. 2. 3.", "sourcespositions", 0, {1, 2, 3}, {}, {}},
        {"source 1 xyz 1. 2. 3. 4.", "sourcespositions", 0, {1, 2, 3}, {}, {"too many source coordinates. only 3 coordinates will be read"}},
        {"source 1 xyz 1. 2.", "sourcespositions", 0, slice(sources, 0, 3), {"not enough source coordinates. expected 3 coordinates"}, {}},
        {"source 0 xyz 1 2 3", "sourcespositions", 0, slice(sources, 0, 3), {"invalid source index 0"}, {}},
        {"source 7 xyz 1 2 3", "sourcespositions", 18, {}, {"invalid source index 7"}, {}},
        {"source 2 1.2 3.4 5.6", "sourcespositions", 3, navigational(1.2, 3.4, 5.6), {}, {"using default coordinate type (ade)"}},
        {"source 3 quor3 -30 2 10", "sourcespositions", 6, navigational(30, 2, 10), {}, {}},
        {"source 3 nosuchformat 1 2 3", "sourcespositions", 6, slice(sources, 6, 3), {}, {}},
        {"speaker 2 xyz 0. 1. 0.", "speakerspositions", 3, {0, 1, 0}, {}, {}},
        {"loudspeaker 2 xy -1. 1.", "speakerspositions", 3, {-1, 1, 0}, {}, {}},
        {"speaker 9 xyz 1 2 3", "speakerspositions", 3, slice(layout, 3, 3), {"invalid speaker index 9", "invalid message : speaker 9 xyz 1 2 3 "}, {}},
        {"speaker 2 foo 1 2 3", "speakerspositions", 3, slice(layout, 3, 3), {"unknown coordinate type", "invalid message : speaker 2 foo 1 2 3 "}, {}},
        {"speaker 2 xyz 1 2", "speakerspositions", 3, slice(layout, 3, 3), {"invalid speaker message", "invalid message : speaker 2 xyz 1 2 "}, {}},
        {"speaker 2 ade 90 2 0 7", "speakerspositions", 3, navigational(90, 2, 0), {}, {"too many loudspeakers positions. only 1 position will be read"}},
        {"speakers xyz" + fifteen, "speakerspositions", 0, layout, {"not enough loudspeakers positions. expected 6 loudspeakers positions", "invalid message : speakers xyz" + fifteen + " "}, {}},
        {"loudspeakers ade 0 1 0 60 1 0 120 1 0 180 1 0 -120 1 0 -60 1 0 5", "speakerspositions", 3, navigational(60, 1, 0), {}, {"too many loudspeakers positions. only 6 positions will be read"}},
        // Speakers start from the origin: a direction alone leaves them all there, a layout no panner takes.
        {"speakers azim 0 60 120 180 -120 -60", "speakerspositions", 3, {0, 0, 0}, {"invalid setup for vbap 2d: the reference position must be inside the speaker setup."}, {}},
    };
    for (const PositionCase& c : cases)
    {
        SCOPED_TRACE(c.line);
        mx::Box box = mx::Box::create("tarvoverb~");
        mx::clearConsole();
        box.send(c.line);
        const std::vector<double> stored = numbers(box, c.attribute);
        if (!c.expected.empty())
            expectNear(slice(stored, c.first, c.expected.size()), c.expected, 1e-5); // float32 trigonometry
        EXPECT_EQ(errors(), c.errors);
        EXPECT_EQ(warnings(), c.warnings);
    }
}

TEST_F(TarvoverbTildaTest, MalformedMessagesAreReportedAndChangeNothing)
{
    mx::Box box = mx::Box::create("tarvoverb~");
    const std::string before = box.getText("sourcespositions") + box.getText("speakerspositions") + box.getText("cluster");
    for (const char* line : {"source", "source 1", "source foo xyz 1 2 3", "source 1e300 xyz 1 2 3", "source -5 xyz 1 2 3",
                             "speaker", "speaker foo", "speaker 1e300 xyz 1 2 3", "speakers", "speakers foo",
                             "cluster 1 2", "reverb", "reverb 1 start", "delays 1", "postattributes foo", "dumpdict 1",
                             "nosuchmessage 1"})
    {
        mx::clearConsole();
        box.send(line);
        EXPECT_FALSE(errors().empty()) << line;
    }
    EXPECT_EQ(box.getText("sourcespositions") + box.getText("speakerspositions") + box.getText("cluster"), before);
}

TEST_F(TarvoverbTildaTest, OneNumberNotationKeepsASourcesDistanceButASpeakerStartsFromTheOrigin)
{
    mx::Box box = mx::Box::create("tarvoverb~");
    box.send("source 2 ade 10 3 20");
    box.send("source 2 azim 45");
    expectNear(slice(numbers(box, "sourcespositions"), 3, 3), navigational(45, 3, 20), 1e-5);

    box.send("speaker 2 azim 45");
    const std::vector<double> speaker = slice(numbers(box, "speakerspositions"), 3, 3);
    EXPECT_LT(std::hypot(speaker[0], speaker[1], speaker[2]), 1e-3) << "no distance to keep from the origin";
}

TEST_F(TarvoverbTildaTest, SourcesPositionsAttributeTakesWhatIsGivenAndKeepsTheRest)
{
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 2"});
    const std::vector<double> before = numbers(box, "sourcespositions");
    box.send("sourcespositions 1 2 3 4");
    expectNear(numbers(box, "sourcespositions"), {1, 2, 3, 4, before[4], before[5]}, 0.0);
}

TEST_F(TarvoverbTildaTest, DumpSendsEveryVisibleAttributeOrOneByName)
{
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 1", "numspeakers 2", "numinternals 2"});
    box.send("gain 3");
    box.send("dump");
    ASSERT_EQ(box.outletTraffic().size(), 1u);
    const mx::OutletMessage& all = box.outletTraffic()[0];
    EXPECT_EQ(all.outlet, 2) << "the dump outlet is right of the two signal outlets";
    EXPECT_EQ(all.selector, "list");
    const std::string text = mx::textOf(all.atoms);
    EXPECT_THAT(text, HasSubstr("gain 3 ,"));
    EXPECT_THAT(text, HasSubstr("numinternals 2 ,"));
    EXPECT_THAT(text, HasSubstr("delays 0 0 ,"));
    EXPECT_THAT(text, ::testing::Not(HasSubstr("classdigest"))) << "invisible";
    EXPECT_EQ(text.substr(0, 9), "air 0 , a") << "alphabetical";

    box.clearOutletTraffic();
    box.send("dump tr0");
    ASSERT_EQ(box.outletTraffic().size(), 1u);
    EXPECT_EQ(box.outletTraffic()[0].selector, "tr0");
    EXPECT_EQ(mx::textOf(box.outletTraffic()[0].atoms), "1.995");

    box.send("dump foo");
    box.send("dump 1 2");
    EXPECT_THAT(errors(), ElementsAre("no attribute foo", "invalid message : dump 1 2 "));
}

TEST_F(TarvoverbTildaTest, DumpdictSendsADictionaryOfTheStateAndExportdictWritesJson)
{
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 1", "numspeakers 2"});
    box.send("dumpdict gain direct");
    ASSERT_EQ(box.outletTraffic().size(), 1u);
    EXPECT_EQ(box.outletTraffic()[0].selector, "dictionary");
    EXPECT_THAT(box.outletTraffic()[0].dictionary, ElementsAre("gain 0", "direct 0 0 0 0 177 5657"));
    box.send("dumpdict 3");
    EXPECT_THAT(errors(), ElementsAre("invalid message : dumpdict 3 "));

    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "tarvoverb-host-test";
    std::filesystem::create_directories(dir);
    const std::filesystem::path file = dir / "state.json";
    std::filesystem::remove(file);
    mx::setNextSaveDialogAnswer(dir.string(), "state.json");
    box.send("exportdict");
    ASSERT_TRUE(std::filesystem::exists(file));
    // Python's own parser, independent of the writer: the file parses, and names 33 attributes.
    const std::string check = "/usr/bin/python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); "
                              "sys.exit(0 if len(d)==33 and d[\"direct\"][5]==5657 else 1)' " + file.string();
    if (!std::filesystem::exists("/usr/bin/python3"))
        GTEST_SKIP() << "no python3 to check the JSON";
    EXPECT_EQ(std::system(check.c_str()), 0) << std::ifstream(file).rdbuf();
}

TEST_F(TarvoverbTildaTest, ResetRestoresDefaultsAndOnlyTheForcedFormTouchesTheCounts)
{
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 4"});
    box.send("gain 10");
    box.send("direct 1 2 3 4 500 6000");
    box.send("reset");
    EXPECT_EQ(number(box, "gain"), 0.0);
    expectNear(numbers(box, "direct"), {0, 0, 0, 0, 177, 5657}, 0.0);
    EXPECT_TRUE(errors().empty()) << "the quiet form spares the counts";
    box.send("reset gain");
    box.send("reset numsources");
    box.send("reset foo");
    box.send("reset 1");
    EXPECT_THAT(errors(), ElementsAre("could not dynamically change number of sources", "no attribute foo",
                                      "invalid message : reset 1 "));
}

TEST_F(TarvoverbTildaTest, GetvalueofAndSetvalueofRoundTripAndRefuseAnotherShape)
{
    mx::Box saved = mx::Box::create("tarvoverb~");
    saved.send("tr0 3.5");
    saved.send("source 2 xyz 1 2 3");
    saved.send("early 1 2 3 4 300 3000");
    long argc = 0;
    t_atom* argv = nullptr;
    ASSERT_EQ(saved.getValueOf(&argc, &argv), MAX_ERR_NONE);
    const std::vector<t_atom> flat(argv, argv + argc);
    sysmem_freeptr(argv);
    // 26 single values, four shelves of 6, 8 delays, 2 x 18 positions.
    EXPECT_EQ(argc, 26 + 4 * 6 + 8 + 36);

    mx::Box loaded = mx::Box::create("tarvoverb~");
    EXPECT_EQ(loaded.setValueOf(flat), MAX_ERR_NONE);
    for (const char* name : {"tr0", "sourcespositions", "early", "speakerspositions", "gain"})
        EXPECT_EQ(loaded.getText(name), saved.getText(name)) << name;

    mx::Box larger = mx::Box::create("tarvoverb~", {"numsources 8"});
    mx::clearConsole();
    EXPECT_NE(larger.setValueOf(flat), MAX_ERR_NONE);
    EXPECT_THAT(errors(), ElementsAre("setvalueof error (received 94 atoms. 100 atoms were expected)"));

    mx::clearPresetLines();
    saved.send("preset");
    ASSERT_EQ(mx::presetLines().size(), 1u);
    const std::vector<t_atom> line = mx::presetLines()[0];
    ASSERT_EQ(line.size(), flat.size() + 3);
    EXPECT_EQ(mx::textOf({line[1], line[2]}), "tarvoverb~ recallpreset");
    EXPECT_EQ(mx::textOf({line.begin() + 3, line.end()}), mx::textOf(flat));
}

TEST_F(TarvoverbTildaTest, ServicesPostWhatTheyAreAsked)
{
    mx::Box box = mx::Box::create("tarvoverb~");
    mx::clearConsole();
    box.send("version");
    box.send("postdspstatus");
    box.send("mute 1");
    box.send("postdspstatus");
    box.send("mute 0");
    box.send("bypass 1");
    mx::setDspState(true);
    box.send("postdspstatus");
    mx::setDspState(false);
    box.send("postattributes tr0");
    EXPECT_THAT(posts(), ElementsAre("Version 4.9.2 (Build Feb 14 2017) (32 bits float)", "dsp processing is enabled",
                                     "dsp is off", "dsp processing is muted", "dsp is off",
                                     "dsp processing is bypassed", "dsp is on", "tr0 1.995000 "));
    mx::clearConsole();
    box.send("postattributes");
    EXPECT_EQ(posts().front(), "found 33 attributes");
    EXPECT_EQ(posts().size(), 34u);
    EXPECT_EQ(box.assist(ASSIST_INLET, 0), "source #1");
    EXPECT_EQ(box.assist(ASSIST_OUTLET, 5), "speaker #6");
    EXPECT_EQ(box.assist(ASSIST_OUTLET, 6), "") << "the dump outlet has no text";
}

TEST_F(TarvoverbTildaTest, DictionaryMessageSetsTheAttributesItNames)
{
    mx::Box box = mx::Box::create("tarvoverb~");
    t_dictionary* d = dictionary_new();
    dictionary_appendfloat(d, gensym("gain"), -6.0);
    t_atom shelf[6];
    for (int i = 0; i < 6; ++i)
        atom_setfloat(shelf + i, i < 4 ? -1.0 : 1000.0 * i);
    dictionary_appendatoms(d, gensym("room"), 6, shelf);
    t_symbol* name = gensym("roomstate");
    dictobj_register(d, &name);
    box.send("dictionary roomstate");
    box.send("dictionary nosuch");
    EXPECT_EQ(number(box, "gain"), -6.0);
    expectNear(numbers(box, "room"), {-1, -1, -1, -1, 4000, 5000}, 0.0);
    EXPECT_THAT(errors(), ElementsAre("unable to reference dictionary named nosuch"));
    object_free(d);
}

TEST_F(TarvoverbTildaTest, GeneratexmlWritesAReferencePageThatXmllintAccepts)
{
    mx::Box box = mx::Box::create("tarvoverb~");
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "tarvoverb-host-test";
    std::filesystem::create_directories(dir);
    const std::filesystem::path file = dir / "tarvoverb~.maxref.xml";
    std::filesystem::remove(file);
    box.send("generatexml " + dir.string());
    ASSERT_TRUE(std::filesystem::exists(file));
    EXPECT_THAT(posts(), ElementsAre("documentation generated in " + file.string()));
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    for (const char* attribute : {"mute", "automute", "numsources", "sourcespositions", "tr0", "direct",
                                  "early_shape", "reverb_start"})
        EXPECT_THAT(text.str(), HasSubstr(std::string("<attribute name=\"") + attribute + "\"")) << attribute;
    for (const char* message : {"generatexml", "version", "dumpdict", "readdict", "reset", "speaker", "loudspeakers", "clear"})
        EXPECT_THAT(text.str(), HasSubstr(std::string("<method name=\"") + message + "\">")) << message;
    EXPECT_THAT(text.str(), HasSubstr("<digest>Room reverberator.</digest>"));
    EXPECT_THAT(text.str(), HasSubstr("<arg name=\"speaker index\" type=\"int\" optional=\"0\" id=\"0\" />"));
    if (!std::filesystem::exists("/usr/bin/xmllint"))
        GTEST_SKIP() << "no xmllint (libxml2-utils) to check the page";
    EXPECT_EQ(std::system(("/usr/bin/xmllint --noout '" + file.string() + "'").c_str()), 0);
}
} // namespace
} // namespace tarvo::testing
