#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscBundle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace
{
using ondo::OSCAddress;
using ondo::OSCArgument;
using ondo::OSCBundle;
using ondo::OSCMessage;

std::string thrownText(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const ondo::Exception& e)
    {
        return e.getMessage();
    }
    return "nothing thrown";
}

TEST(OscAddress, PartsTextAndAllowedCharacters)
{
    EXPECT_EQ(OSCAddress("foo/bar").getText(), "/foo/bar");
    EXPECT_EQ(OSCAddress("/foo/bar/").getText(), "/foo/bar");
    EXPECT_EQ(OSCAddress("//foo//bar").size(), 2u);
    EXPECT_EQ(OSCAddress("/").size(), 0u);
    EXPECT_EQ(OSCAddress("/").getText(), "/");
    EXPECT_EQ(OSCAddress("").getText(), "/");
    EXPECT_EQ(OSCAddress("/a/b").part(1), "b");
    EXPECT_EQ(OSCAddress("/a/b").part(2), "");
    EXPECT_FALSE(OSCAddress::fromPattern("/dsp/mute").isPattern());
    EXPECT_TRUE(OSCAddress::fromPattern("/dsp/{mute,bypass}").isPattern());

    const std::string error = "OSC format error: encountered characters not allowed in address string : ";
    const struct
    {
        const char* address;
        bool strictAllowed;
        bool patternAllowed;
    } cases[] = {
        {"/a-b_c.d~!$%&()+:;<=>@^`|'\"\\", true, true},
        {"/a b", false, false},
        {"/a#", false, false},
        {"/a\t", false, false},
        {"/caf\xC3\xA9", false, false}, // decoded, an e acute lies beyond 126
        {"/a*", false, true},
        {"/a,b", false, true},
        {"/a?", false, true},
        {"/[ab]", false, true},
        {"/{a}", false, true},
    };
    for (const auto& c : cases)
    {
        const auto strict = [&] { (void)OSCAddress(c.address); };
        const auto pattern = [&] { (void)OSCAddress::fromPattern(c.address); };
        EXPECT_EQ(thrownText(strict), c.strictAllowed ? "nothing thrown" : error + c.address) << c.address;
        EXPECT_EQ(thrownText(pattern), c.patternAllowed ? "nothing thrown" : error + c.address) << c.address;
    }
}

TEST(OscAddress, MatchesStartsWithAndRemoveFirst)
{
    const auto pattern = OSCAddress::fromPattern;
    EXPECT_TRUE(pattern("/dsp/*").matches(OSCAddress("/dsp/mute")));
    EXPECT_FALSE(pattern("/dsp/*").matches(OSCAddress("/dsp/automute/active")));
    EXPECT_TRUE(pattern("/*/m?te").matches(OSCAddress("/dsp/mute")));
    EXPECT_TRUE(OSCAddress("/dsp/mute").matches(OSCAddress("dsp/mute/")));
    EXPECT_FALSE(OSCAddress("/dsp/mute").matches(pattern("/dsp/*")))
        << "without wildcards the texts are compared";

    EXPECT_TRUE(OSCAddress("/post/state/extra").startsWith(OSCAddress("/post")));
    EXPECT_TRUE(OSCAddress("/dsp").startsWith(OSCAddress("/dsp/mute"))) << "only the parts both have count";
    EXPECT_FALSE(OSCAddress("/dspx/mute").startsWith(OSCAddress("/dsp")));
    EXPECT_TRUE(OSCAddress("/anything").startsWith(OSCAddress("/")));
    EXPECT_FALSE(pattern("/p*").startsWith(OSCAddress("/post/state"))) << "a pattern needs all the prefix's parts";
    EXPECT_TRUE(pattern("/p*/s*/x").startsWith(OSCAddress("/post/state")));

    OSCAddress address = pattern("/set/dsp/*");
    address.removeFirst();
    EXPECT_EQ(address.getText(), "/dsp/*");
    EXPECT_TRUE(address.isPattern());
    address.removeFirst(5);
    EXPECT_TRUE(address.isRoot());
    EXPECT_EQ(address.getText(), "/");
}

TEST(OscMessage, ClassLettersAndArgumentReadings)
{
    const OSCArgument arguments[] = {
        OSCArgument(true), OSCArgument(false), OSCArgument(std::int32_t{1}), OSCArgument(std::int32_t{-2}),
        OSCArgument(std::int64_t{1}), OSCArgument(std::int64_t{-5}), OSCArgument(1.0f), OSCArgument(1.0),
        OSCArgument("1"), OSCArgument(OSCArgument::Blob{1, 2}), OSCArgument::withoutValue('N'),
    };
    // One row per argument above; columns are the letters b d f i l n s u x.
    const char* accepted[] = {
        "b........", "b........", "b..iln.u.", "b..iln...", "b..iln.u.", "b..iln...",
        "..f..n...", ".d...n...", "......s..", ".........", ".........",
    };
    const std::string letters = "bdfilnsux";
    for (std::size_t a = 0; a < std::size(arguments); ++a)
    {
        OSCMessage message("/m");
        message.addArgument(arguments[a]);
        for (std::size_t l = 0; l < letters.size(); ++l)
            EXPECT_EQ(message.matchesSingle(letters[l]), accepted[a][l] != '.')
                << "argument " << a << " letter " << letters[l];
    }
    // Booleans: stored value for T and F, integers only when 1.
    const bool readsTrue[] = {true, false, true, false, true, false, false, false, false, false, false};
    for (std::size_t a = 0; a < std::size(arguments); ++a)
        EXPECT_EQ(arguments[a].getBool(), readsTrue[a]) << a;

    OSCMessage list("/m");
    list.addArgument(1.5f).addArgument(std::int32_t{2}).addArgument(std::int64_t{3}).addArgument(0.25);
    EXPECT_TRUE(list.matchesList("nnnn"));
    EXPECT_TRUE(list.matchesList("fi", false));
    EXPECT_FALSE(list.matchesList("fi"));
    EXPECT_FALSE(list.matchesList("nnnnn", false));
    EXPECT_TRUE(list.matchesList("", false));
    EXPECT_TRUE(OSCMessage("/m").matchesList(""));
    const ondo::Vector<float> floats = list.getArgumentsAsFloats();
    ASSERT_EQ(floats.size(), 4u);
    EXPECT_EQ(floats[0], 1.5f);
    EXPECT_EQ(floats[2], 3.0f);
    const auto tags = list.getTypeTags();
    EXPECT_EQ(std::string(tags.begin(), tags.end()), "fihf");
    EXPECT_TRUE(list.addArgument("x").getArgumentsAsFloats().empty());
}

TEST(OscMessage, TextFormsAndTheLineParser)
{
    OSCMessage message("/a/b");
    message.addArgument(std::int32_t{3}).addArgument(0.5f).addArgument("it's\nhere").addArgument(true);
    message.addArgument(OSCArgument(OSCArgument::Blob{7}));
    EXPECT_EQ(message.toText(), "/a/b 3 0.5 'it s\\nhere' 1");
    EXPECT_EQ(OSCMessage("/a").toText(), "/a ") << "the blank after the address stays";

    // Each line reads into the argument types given and writes back as the same text.
    const struct
    {
        const char* line;
        const char* types;
    } cases[] = {
        {"/a 1 2.5 -3 'x y' ''", "ifiss"},
        {"/p*/{a,b} 100 0.1 1.995", "iff"},
        {"/big 5000000000 1e+20 -inf", "hff"},
        {"/s 'two  blanks' '12' 'true'", "sss"},
        {"/b 1 0", "ii"},
    };
    for (const auto& c : cases)
    {
        const OSCMessage parsed = OSCMessage::fromText(c.line);
        const auto tags = parsed.getTypeTags();
        EXPECT_EQ(std::string(tags.begin(), tags.end()), c.types) << c.line;
        EXPECT_EQ(parsed.toText(), c.line);
        EXPECT_EQ(OSCMessage::fromText(parsed.toText()), parsed) << c.line;
    }
    const OSCMessage words = OSCMessage::fromText("  x TRUE false \"quoted\" plain nan ");
    EXPECT_EQ(words.getText(), "/x");
    EXPECT_EQ(words.toText(), "/x 1 0 'quoted' 'plain' nan");
    EXPECT_TRUE(std::isnan(words.getArgument(4).getFloat32()));
    EXPECT_EQ(words.getArgument(2).getString(), "quoted");
    EXPECT_EQ(OSCMessage::fromText("/x 'lone").getArgument(0).getString(), "'lone");

    for (const char* empty : {"", "   ", "\t \t"})
        EXPECT_EQ(thrownText([&] { (void)OSCMessage::fromText(empty); }), "invalid OSC message") << '"' << empty << '"';
    EXPECT_EQ(thrownText([&] { (void)OSCMessage::fromText("/a#b 1"); }),
              "OSC format error: encountered characters not allowed in address string : /a#b");
}

TEST(OscMessage, LiteralAddressTestsGoThroughTheCache)
{
    const OSCMessage mute = OSCMessage::fromText("/dsp/mute 1");
    EXPECT_TRUE(mute.matches("/dsp/mute"));
    EXPECT_TRUE(ondo::OSCAddressCache::contains("/dsp/mute"));
    EXPECT_FALSE(mute.matches("/dsp/bypass"));
    EXPECT_TRUE(mute.startsWith("/dsp"));
    EXPECT_TRUE(OSCMessage::fromText("/dsp/{mute,bypass} 1").matches("/dsp/bypass"));
    EXPECT_EQ(mute.withoutFirstParts().toText(), "/mute 1");
}

TEST(OscBundle, ElementsFlatteningAndText)
{
    OSCBundle inner;
    inner.add("/in/a", std::int32_t{1}).add("/in/b", "s");
    inner.setTimeTag(99);
    OSCBundle outer;
    outer.add("/first", 0.5f).add(inner).add("/last", true);
    outer.add("/quad", std::array<float, 4>{1, 2, 3, 4});
    outer.setTimeTag(42);

    EXPECT_EQ(outer.size(), 4u);
    EXPECT_EQ(outer.countMessages(), 5u);
    EXPECT_EQ(outer.toTextLines()[1], "/in/a 1\n/in/b 's'");
    EXPECT_EQ(outer.toText(), "/first 0.5\n/in/a 1\n/in/b 's'\n/last 1\n/quad 1 2 3 4");

    const OSCBundle flat = outer.flattened();
    EXPECT_EQ(flat.size(), 5u);
    EXPECT_EQ(flat.getTimeTag(), 1u) << "a flattened nest starts a new bundle";
    EXPECT_EQ(flat.toText(), outer.toText());
    EXPECT_EQ(inner.flattened().getTimeTag(), 99u) << "nothing nested: a plain copy";
    EXPECT_EQ(OSCBundle().addFlattened(outer), flat);

    const OSCBundle copy = outer;
    EXPECT_EQ(copy, outer);
    EXPECT_NE(&copy[1].getBundle(), &outer[1].getBundle()) << "copies are deep";
    EXPECT_EQ(thrownText([&] { (void)outer[0].getBundle(); }), "Access error in OSC bundle element.");
    EXPECT_EQ(thrownText([&] { (void)outer[1].getMessage(); }), "Access error in OSC bundle element.");
}
} // namespace
