#include "osc/TarvoDspOscInterface.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace
{
using ondo::OSCBundle;
using ondo::OSCMessage;

struct Console : ondo::MaxConsoleNotifier::Listener
{
    void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
    {
        lines.emplace_back(level, text);
    }
    std::vector<std::pair<std::int32_t, std::string>> lines;
};

// Answers "/gain n" and remembers the context of each message it understood.
class Knob : public ondo::OscInterface
{
public:
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override
    {
        if (handleBaseMessages(message, context))
            return true;
        if (message.matches("/gain") && message.matchesSingle('n'))
        {
            gain = message.getFloat(0);
            contexts.push_back(context);
            return true;
        }
        return false;
    }
    OSCBundle getState() const override { return OSCBundle().add("/gain", gain); }
    ondo::OscDocumentation getOscDocumentation() const override
    {
        return OscInterface::getOscDocumentation().add("/gain", "[number]", "sets the gain");
    }

    float gain = 0.0f;
    std::vector<std::int32_t> contexts;
};

bool send(Knob& knob, const char* line, std::int32_t context = 7)
{
    return knob.processOscMessage(OSCMessage::fromText(line), context);
}

TEST(OscInterface, ServiceAddresses)
{
    Knob knob;
    Console console;
    knob.addListener(&console);
    knob.gain = 1.5f;

    EXPECT_TRUE(send(knob, "/post/state"));
    EXPECT_TRUE(send(knob, "/post/doc"));
    EXPECT_TRUE(send(knob, "/post/version"));
    const std::vector<std::pair<std::int32_t, std::string>> expected = {
        {0, "/gain 1.5"},
        {0, "/post/version  : prints the object version in the Max window"},
        {0, "/dump  : send the current state of the object through the dump outlet"},
        {0, "/preset/load [string] : loads a preset from file (.txt, .xml, .osc)"},
        {0, "/preset/export [string] : exports a preset to file (.txt, .xml, .osc, .json)"},
        {0, "/gain [number] : sets the gain"},
    };
    EXPECT_EQ(console.lines, expected);

    const char* refused[] = {"/post/state 1", "/post/state/extra", "/post", "/set", "/dump"};
    for (const char* line : refused)
        EXPECT_FALSE(send(knob, line)) << line;
    EXPECT_EQ(console.lines.size(), expected.size()) << "refusals print nothing";

    EXPECT_TRUE(send(knob, "/set/gain 2", 7));
    EXPECT_TRUE(send(knob, "/gain 3", 7));
    EXPECT_EQ(knob.gain, 3.0f);
    EXPECT_EQ(knob.contexts, (std::vector<std::int32_t>{ondo::OscInterface::setContext, 7}));
}

TEST(OscInterface, DocumentationLines)
{
    ondo::OscDocumentation doc;
    doc.add("/a", "[number]", "first").add("/longer/address", "", "second").add("/a", "[number]", "first");
    doc.add("/", "", "the root is void").add("/b", "[string]", "");
    EXPECT_EQ(doc.size(), 2u) << "duplicates and void entries are dropped";
    EXPECT_EQ(doc.documentationLines(false),
              (std::vector<std::string>{"/a [number] : first", "/longer/address  : second"}));
    EXPECT_EQ(doc.documentationLines(true),
              (std::vector<std::string>{"/a [number]      : first", "/longer/address  : second"}));
}

TEST(OscInterface, DispatchReportsWhatNobodyUnderstands)
{
    Knob knob;
    Console console;
    knob.addListener(&console);
    OSCBundle inner;
    inner.add(OSCMessage::fromText("/gain 2")).add(OSCMessage::fromText("/nope 1 'x'"));
    OSCBundle bundle;
    bundle.add(OSCMessage::fromText("/gain 1")).add(inner).add(OSCMessage::fromText("/gain 4"));
    std::int32_t context = 0;
    EXPECT_FALSE(knob.dispatchBundle(bundle, context));
    EXPECT_EQ(knob.gain, 4.0f);
    EXPECT_EQ(knob.contexts.size(), 3u);
    ASSERT_EQ(console.lines.size(), 1u);
    EXPECT_EQ(console.lines[0], (std::pair<std::int32_t, std::string>{2, "/nope 1 'x'"}));
    EXPECT_TRUE(knob.dispatchBundle(OSCBundle(), context));
}

TEST(OscInterface, PendingQueueCopiesOrSteals)
{
    Knob knob;
    knob.addToPending(OSCMessage::fromText("/gain 5"));
    OSCBundle two;
    two.add(OSCMessage::fromText("/gain 6")).add(OSCBundle().add(OSCMessage::fromText("/gain 7")));
    knob.addToPending(two);
    EXPECT_EQ(knob.getPendingBundle(false, true).toText(), "/gain 5\n/gain 6\n/gain 7");
    const OSCBundle stolen = knob.getPendingBundle(true, false);
    EXPECT_EQ(stolen.size(), 3u);
    EXPECT_TRUE(knob.getPendingBundle(false, true).empty());
    std::int32_t context = 0;
    EXPECT_TRUE(knob.processPending(context, false)) << "nothing pending";
    EXPECT_EQ(knob.gain, 0.0f);
}
} // namespace
