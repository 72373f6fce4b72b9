#include "osc/TarvoDspOscInterface.h"
#include "osc/TarvoDspOscPresetFile.h"
#include "text/TarvoDspXmlDocument.h"

#include "common/TarvoDspException.h"

#include "../files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

namespace
{
using ondo::File;
using ondo::OSCBundle;
using ondo::OSCMessage;
using ondo::OscPresetFile;

/// A processor with a few kinds of state: numbers, a string, a switch and indexed sources,
/// the latter reported in a nested bundle.
class Room : public ondo::OscInterface, public ondo::MaxConsoleNotifier::Listener
{
public:
    Room() { addListener(this); }

    bool processOscMessage(const OSCMessage& m, std::int32_t& context) override
    {
        if (handleBaseMessages(m, context))
            return true;
        if (m.matches("/gain") && m.matchesSingle('n'))
            gain = m.getFloat(0);
        else if (m.matches("/name") && m.matchesSingle('s'))
            name = m.getArgument(0).getString();
        else if (m.matches("/mute") && m.matchesSingle('b'))
            mute = m.getBool(0);
        else if (m.size() == 3 && m.part(0) == "source" && m.part(2) == "gain" && m.matchesSingle('n'))
            sources[std::stoi(m.part(1))] = m.getFloat(0);
        else
            return false;
        return true;
    }

    OSCBundle getState() const override
    {
        OSCBundle state;
        state.add("/gain", gain).add("/name", name).add("/mute", mute);
        OSCBundle nested;
        for (const auto& [index, value] : sources)
            nested.add("/source/" + std::to_string(index) + "/gain", value);
        if (!nested.empty())
            state.add(nested);
        return state;
    }

    void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
    {
        if (level == problem)
            problems.push_back(text);
    }

    bool send(const std::string& line)
    {
        std::int32_t context = 0;
        return processOscMessage(OSCMessage::fromText(line), context);
    }

    float gain = 0.0f;
    std::string name;
    bool mute = false;
    std::map<int, float> sources;
    std::vector<std::string> problems;
};

// The real processors round-trip their states in every form (libquor's processor tests); this
// one keeps the texts only a made-up state has (quotes, markup characters) and upper-case
// extensions, which choose the form as well.
TEST(OscPreset, EveryFormRestoresTheState)
{
    testing_files::TemporaryFolder folder;
    Room room;
    room.gain = -6.5f;
    room.name = "Hall \"A\" & <B>";
    room.mute = true;
    room.sources = {{1, 0.25f}, {3, 1.5f}, {12, -3.0f}};
    for (const std::string name : {"P.TXT", "P.OSC", "P.Xml", "P.Coll"})
    {
        const std::string path = folder / name;
        ASSERT_TRUE(room.send("/preset/export '" + path + "'")) << name;
        Room fresh;
        ASSERT_TRUE(fresh.send("/preset/load '" + path + "'")) << name;
        EXPECT_EQ(fresh.getState(), room.getState()) << name;
        EXPECT_TRUE(fresh.problems.empty()) << name;
    }
}

TEST(OscPreset, FilesLookAsWrittenByHand)
{
    Room room;
    room.gain = 1.5f;
    room.name = "it's";
    room.sources = {{3, 1.5f}};
    EXPECT_EQ(room.getState().toText(), "/gain 1.5\n/name 'it s'\n/mute 0\n/source/3/gain 1.5");
    EXPECT_EQ(OscPresetFile::toCollLines(room.getState()),
              (std::vector<std::string>{"1, /gain 1.5;", "2, /name 'it s';", "3, /mute 0;", "4, /source/3/gain 1.5;"}));

    const auto xml = OscPresetFile::toXml(room.getState());
    const std::string document = xml->createDocument("", true);
    EXPECT_EQ(document, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><preset><gain>1.5</gain><name>'it s'</name>"
                        "<mute>0</mute><source index=\"3\"><gain>1.5</gain></source></preset>");

    testing_files::TemporaryFolder folder;
    struct EmptyState : ondo::OscInterface
    {
    } nothing;
    ASSERT_TRUE(nothing.exportPreset(File(folder / "e.txt")));
    ASSERT_TRUE(nothing.exportPreset(File(folder / "e.osc")));
    EXPECT_EQ(File(folder / "e.txt").getSize(), 0);
    EXPECT_EQ(File(folder / "e.osc").getSize(), 16) << "the bundle header alone";
}

TEST(OscPreset, ReadingRulesOfEachForm)
{
    OSCMessage m;
    ASSERT_TRUE(OscPresetFile::parseCollLine("5, /foo 1.5;", m));
    EXPECT_EQ(m.toText(), "/foo 1.5") << "the index is not checked";
    EXPECT_FALSE(OscPresetFile::parseCollLine("/foo 1.5;", m)) << "no comma: nothing left";
    EXPECT_FALSE(OscPresetFile::parseCollLine("   ", m));
    ASSERT_TRUE(OscPresetFile::parseTextLine("/foo 2;", m));
    EXPECT_EQ(m.toText(), "/foo 2");
    EXPECT_FALSE(OscPresetFile::parseTextLine(" ;", m));

    const auto root = ondo::XmlDocument::parse(std::string("<preset>ignored<a>text of a<b>2</b></a><c/><d index='4'><e>x</e></d></preset>"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(OscPresetFile::fromXml(*root).toText(), "/a/b 2\n/d/4/e 'x'")
        << "an inner element's text is never read; an empty leaf yields nothing";
}

TEST(OscPreset, RefusalsAndReports)
{
    testing_files::TemporaryFolder folder;
    Room room;
    for (const std::string name : {"p.json", "p.wav", "p"})
    {
        const std::string path = File(folder / name).getFullPathName();
        try
        {
            room.exportPreset(File(path));
            ADD_FAILURE() << name;
        }
        catch (const ondo::Exception& e)
        {
            EXPECT_EQ(e.getMessage(), "unexpected file extension for file \"" + path + "\"");
        }
    }
    std::int32_t context = 0;
    EXPECT_THROW(room.importPreset(File(folder / "missing.txt"), context), ondo::exceptions::NoSuchFile);

    EXPECT_FALSE(room.send("/preset/load")) << "no file name: not understood, the next handler may try";
    EXPECT_FALSE(room.send("/preset/load 3"));
    EXPECT_FALSE(room.send("/preset/other 'x.txt'"));

    const std::string path = folder.write("mixed.txt", "/gain 2\n\n/unknown 1,\n/name 'x';\r\n");
    EXPECT_FALSE(room.send("/preset/load '" + path + "'")) << "one message was not understood";
    EXPECT_EQ(room.gain, 2.0f) << "the load goes on past it";
    EXPECT_EQ(room.name, "x");
    EXPECT_EQ(room.problems, std::vector<std::string>{"/unknown 1"});

    const std::string bad = folder.write("bad.txt", "/gain 1\n/a#b 2\n");
    EXPECT_THROW(room.send("/preset/load '" + bad + "'"), ondo::Exception);
    const std::string badXml = folder.write("bad.xml", "<preset><a>");
    EXPECT_THROW(room.send("/preset/load '" + badXml + "'"), ondo::Exception);
}
} // namespace
