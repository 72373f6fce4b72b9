#include "common/TarvoDspException.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace
{
using ondo::OSCMessage;

struct Console : ondo::MaxConsoleNotifier::Listener
{
    void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
    {
        lines.emplace_back(level, text);
    }
    std::vector<std::pair<std::int32_t, std::string>> lines;
};

// Copies its input times `gain`; "/value i" records the value, "/throw s" raises by kind.
class Recorder : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    Recorder() : AudioProcessorWithOscInAudioInterrupt(1, 1) { setup(44100.0f, 64, true); }

    void process(float** outputs, float** inputs, std::uint32_t n) override
    {
        for (std::uint32_t i = 0; i < n; ++i)
            outputs[0][i] = 2.0f * inputs[0][i];
    }
    void clear() override { ++clears; }
    std::uint32_t getLatency() const override { return latency; }

    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override
    {
        if (handleProcessorMessages(message, context))
            return true;
        if (message.matches("/value") && message.matchesSingle('i'))
        {
            values.push_back(message.getArgument(0).getInt32());
            return true;
        }
        if (message.matches("/throw") && message.matchesSingle('s'))
        {
            const std::string kind = message.getArgument(0).getString();
            if (kind == "ondo")
                throw ondo::Exception("ondo failure", ONDO_SOURCE_LOCATION, false);
            if (kind == "std")
                throw std::runtime_error("standard failure");
            throw 42;
        }
        return false;
    }

    std::recursive_mutex& queueLock() { return pendingMutex; }

    std::vector<int> values;
    int clears = 0;
    std::uint32_t latency = 0;
};

struct Block
{
    std::vector<float> in = std::vector<float>(64, 0.25f);
    std::vector<float> out = std::vector<float>(64, 0.0f);
    void run(ondo::AudioProcessorBase& p)
    {
        float* i[] = {in.data()};
        float* o[] = {out.data()};
        p.processBlock(o, i, 64);
    }
};

void post(Recorder& p, const char* line)
{
    p.addToPending(OSCMessage::fromText(line));
}

TEST(AudioInterruptDrain, ABurstLandsInOneBlockInOrder)
{
    Recorder p;
    Block block;
    block.run(p);
    for (int k = 0; k < 1000; ++k)
        p.addToPending(OSCMessage("/value").addArgument(std::int32_t{k}));
    EXPECT_TRUE(p.values.empty()) << "nothing is applied outside a block";
    block.run(p);
    ASSERT_EQ(p.values.size(), 1000u);
    for (int k = 0; k < 1000; ++k)
        EXPECT_EQ(p.values[static_cast<std::size_t>(k)], k);
    tarvo::testing::AllocationScope scope;
    block.run(p);
    EXPECT_EQ(scope.count(), 0u) << "an empty queue costs a try-lock and an exchange";
}

TEST(AudioInterruptDrain, ABusyLockDefersToTheNextBlock)
{
    Recorder p;
    Block block;
    post(p, "/value 1");
    post(p, "/value 2");
    std::atomic<int> step{0};
    std::thread control([&] {
        std::lock_guard<std::recursive_mutex> lock(p.queueLock());
        step = 1;
        while (step.load() != 2)
            std::this_thread::yield();
    });
    while (step.load() != 1)
        std::this_thread::yield();
    block.run(p);
    EXPECT_TRUE(p.values.empty());
    EXPECT_EQ(block.out[0], 0.5f) << "the block renders without waiting";
    step = 2;
    control.join();
    block.run(p);
    EXPECT_EQ(p.values, (std::vector<int>{1, 2}));
}

TEST(AudioInterruptDrain, AnExceptionLosesTheRestAndTheBlockStillRenders)
{
    const std::pair<const char*, const char*> kinds[] = {
        {"ondo", "ondo failure"}, {"std", "standard failure"}, {"other", "unknown error occurred"}};
    for (const auto& [kind, text] : kinds)
    {
        Recorder p;
        Console console;
        p.addListener(&console);
        Block block;
        post(p, "/value 1");
        p.addToPending(OSCMessage("/throw").addArgument(kind));
        post(p, "/value 3");
        block.run(p);
        EXPECT_EQ(p.values, (std::vector<int>{1}));
        EXPECT_EQ(console.lines, (decltype(console.lines){{2, text}}));
        EXPECT_EQ(block.out[63], 0.5f);
        block.run(p);
        EXPECT_EQ(p.values, (std::vector<int>{1})) << "the third message is lost, not deferred";
    }
}

TEST(AudioInterruptDrain, AnUnknownMessageIsReportedAndTheNextApplied)
{
    Recorder p;
    Console console;
    p.addListener(&console);
    Block block;
    post(p, "/value 1");
    post(p, "/unknown 2 'x'");
    post(p, "/value 3");
    block.run(p);
    EXPECT_EQ(p.values, (std::vector<int>{1, 3}));
    EXPECT_EQ(console.lines, (decltype(console.lines){{2, "/unknown 2 'x'"}}));
}

TEST(DspAddresses, EachAddressAndItsArgumentKinds)
{
    const struct
    {
        const char* line;
        bool understood;
        float rate;
        std::uint32_t size;
        bool mute, bypass, autoMute;
        float attack;
    } cases[] = {
        {"/dsp/samplerate 96000", true, 96000, 64, false, false, false, 20},
        {"/dsp/samplerate 1e6", true, 384000, 64, false, false, false, 20},
        {"/dsp/samplerate 0", true, 8000, 64, false, false, false, 20},
        {"/dsp/samplerate 'fast'", false, 44100, 64, false, false, false, 20},
        {"/dsp/samplerate", false, 44100, 64, false, false, false, 20},
        {"/dsp/buffersize 0", true, 44100, 1, false, false, false, 20},
        {"/dsp/buffersize 100000", true, 44100, 81920, false, false, false, 20},
        {"/dsp/buffersize 5000000000", true, 44100, 81920, false, false, false, 20},
        {"/dsp/buffersize -1", false, 44100, 64, false, false, false, 20},
        {"/dsp/buffersize 2.5", false, 44100, 64, false, false, false, 20},
        {"/dsp/mute 1", true, 44100, 64, true, false, false, 20},
        {"/dsp/mute true", true, 44100, 64, true, false, false, 20},
        {"/dsp/mute 2", true, 44100, 64, false, false, false, 20},
        {"/dsp/mute 0.5", false, 44100, 64, false, false, false, 20},
        {"/dsp/bypass 1", true, 44100, 64, false, true, false, 20},
        {"/dsp/automute/active 1", true, 44100, 64, false, false, true, 20},
        {"/dsp/automute/attack 0.5", true, 44100, 64, false, false, false, 1},
        {"/dsp/automute/attack 600", true, 44100, 64, false, false, false, 500},
        {"/dsp/automute/attack 0", true, 44100, 64, false, false, false, 20},
        {"/dsp/clear 1", false, 44100, 64, false, false, false, 20},
        {"/dsp/nothing 1", false, 44100, 64, false, false, false, 20},
        {"/set/dsp/mute 1", true, 44100, 64, true, false, false, 20},
        {"/dsp/{mute,bypass} 1", true, 44100, 64, true, false, false, 20},
    };
    for (const auto& c : cases)
    {
        Recorder p;
        std::int32_t context = 0;
        EXPECT_EQ(p.processOscMessage(OSCMessage::fromText(c.line), context), c.understood) << c.line;
        EXPECT_EQ(p.getSampleRate(), c.rate) << c.line;
        EXPECT_EQ(p.getBufferSize(), c.size) << c.line;
        EXPECT_EQ(p.isMuted(), c.mute) << c.line;
        EXPECT_EQ(p.isBypassed(), c.bypass) << c.line;
        EXPECT_EQ(p.getInletsAnalyzer().active, c.autoMute) << c.line;
        EXPECT_EQ(p.getInletsAnalyzer().attackSeconds, c.attack) << c.line;
    }
    Recorder p;
    std::int32_t context = 0;
    const int clearsBefore = p.clears;
    EXPECT_TRUE(p.processOscMessage(OSCMessage::fromText("/dsp/clear"), context));
    EXPECT_EQ(p.clears, clearsBefore + 1);
}

TEST(DspAddresses, StateReplaysIntoAFreshProcessor)
{
    Recorder p;
    EXPECT_EQ(p.getState().toText(), "/dsp/samplerate 44100\n/dsp/buffersize 64\n/dsp/mute 0\n/dsp/bypass 0\n"
                                     "/dsp/automute/active 0\n/dsp/automute/attack 20");
    std::int32_t context = 0;
    for (const char* line : {"/dsp/samplerate 48000", "/dsp/buffersize 256", "/dsp/bypass 1",
                             "/dsp/automute/attack 3.5", "/dsp/automute/active 1"})
        ASSERT_TRUE(p.processOscMessage(OSCMessage::fromText(line), context)) << line;
    Recorder fresh;
    EXPECT_TRUE(fresh.dispatchBundle(p.getState(), context));
    EXPECT_EQ(fresh.getState(), p.getState());
    EXPECT_EQ(fresh.getState().toText(), "/dsp/samplerate 48000\n/dsp/buffersize 256\n/dsp/mute 0\n/dsp/bypass 1\n"
                                         "/dsp/automute/active 1\n/dsp/automute/attack 3.5");
    // Through the text form, as a text preset would carry it.
    Recorder viaText;
    for (const std::string& line : p.getState().toTextLines())
        ASSERT_TRUE(viaText.processOscMessage(OSCMessage::fromText(line), context)) << line;
    EXPECT_EQ(viaText.getState().toText(), p.getState().toText());
}

TEST(DspAddresses, PostLinesStreamFormAndDocumentation)
{
    Recorder p;
    Console console;
    p.addListener(&console);
    const std::int16_t counts[] = {1, 0};
    p.setConnections(counts);
    p.latency = 441;
    std::int32_t context = 0;
    ASSERT_TRUE(p.processOscMessage(OSCMessage::fromText("/dsp/post"), context));
    std::vector<std::string> texts;
    for (const auto& [level, text] : console.lines)
        texts.push_back(std::to_string(level) + " " + text);
    EXPECT_EQ(texts, (std::vector<std::string>{"0 samplerate = 44.1 kHz", "0 buffersize = 64", "0 num inlets = 1",
                                               "0 num outlets = 1", "0 num inlets connected = 1",
                                               "0 num outlets connected = 0", "0 num inlets active = 1",
                                               "0 latency = 10 ms = 441 samples"}));
    std::ostringstream stream;
    stream << p;
    EXPECT_EQ(stream.str(), "samplerate           : 44100\nbuffersize           : 64\n"
                            "latency              : 441 samples = 10\n");
    p.setMute(true);
    EXPECT_EQ(p.getProcessorStateLines().back(), "latency = 0");

    const auto doc = p.getOscDocumentation();
    ASSERT_EQ(doc.size(), 12u);
    EXPECT_EQ(doc[0].address.getText(), "/post/version");
    EXPECT_EQ(doc[4].address.getText(), "/dsp/samplerate");
    EXPECT_EQ(doc.documentationLines(true)[5], // padded to "/dsp/automute/active [boolean]", 30 wide
              "/dsp/buffersize [int]" + std::string(9, ' ') + " : sets the buffer size (in samples)");
    EXPECT_EQ(doc[11].documentation, "post various informations (audio must be turned on)");
}
} // namespace
