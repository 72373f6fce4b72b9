// The OSC face of every processor with addresses of its own: what each address changes (read
// back through the state report), which argument kinds it refuses, and that a state replayed
// into a fresh processor reports the same state.

#include "common/TarvoDspException.h"
#include "dsp/TarvoDspCascadeIPP.h"
#include "dsp/TarvoDspDelay.h"
#include "dsp/TarvoDspFadedCascade.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"
#include "pan/QuorPan.h"
#include "reverb/QuorCluster.h"
#include "reverb/QuorDelgen.h"
#include "reverb/QuorEarly.h"
#include "reverb/QuorReverb.h"
#include "reverb/QuorShuffle.h"
#include "reverb/QuorTarvoVerb.h"

#include "TestBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>
#include <unistd.h>

namespace
{
using Factory = std::function<std::unique_ptr<ondo::OscInterface>()>;

std::unique_ptr<ondo::OscInterface> makeVerb()
{
    auto verb = std::make_unique<Quor::TarvoVerb>(8);
    verb->configure(44100.0f, 64, 2, 4);
    return verb;
}

/// Each processor, built the same way every time.
const std::map<std::string, Factory>& factories()
{
    static const std::map<std::string, Factory> all = {
        {"TarvoVerb", makeVerb},
        {"Delgen", [] { return std::make_unique<Quor::Delgen>(8, 10.0f, 50.0f, 0.5f); }},
        {"Early", [] { return std::make_unique<Quor::Early>(4, 2); }},
        {"Cluster", [] { return std::make_unique<Quor::Cluster>(4); }},
        {"Reverb", [] { return std::make_unique<Quor::Reverb>(4); }},
        {"Shuffle", [] { return std::make_unique<Quor::Shuffle>(8); }},
        {"Delay", [] { return std::make_unique<ondo::Delay>(200.0f); }},
        {"CascadeIPP", [] { return std::make_unique<ondo::CascadeIPP>(1); }},
        {"FadedCascade", [] { return std::make_unique<ondo::FadedCascade>(1); }},
        {"MultiFadedHLShelf", [] { return std::make_unique<ondo::MultiFadedHLShelf>(2); }},
    };
    return all;
}

/// One panner of each family that can be built, two sources, keyed by its type name.
const std::map<std::string, Factory>& panners()
{
    static const std::map<std::string, Factory> all = [] {
        std::map<std::string, Factory> found;
        for (std::int32_t type = 0; type < Quor::Pan::Null; ++type)
            for (std::uint32_t speakers : {4u, 2u, 8u, 5u}) // 5: the 2-D Ambisonic forms
            {
                // Vector-based panners keep their layout to themselves until one arrives by
                // message: each gets a ring, or a tetrahedron where a 3-D panner refuses a plane.
                auto make = [type, speakers]() -> std::unique_ptr<ondo::OscInterface> {
                    auto made = Quor::Pan::create(2, speakers, static_cast<Quor::Pan::Type>(type), Quor::Pan::Direct);
                    auto layoutLine = [](const ondo::Point3Array& layout) {
                        std::string line = "/speakers/xyz";
                        for (std::size_t i = 0; i < layout.size(); ++i)
                            for (float v : {layout[i].x, layout[i].y, layout[i].z})
                            {
                                line += ' ';
                                line += std::to_string(v);
                            }
                        return line;
                    };
                    std::int32_t context = 0;
                    try
                    {
                        made->processOscMessage(
                            ondo::OSCMessage::fromText(layoutLine(ondo::Point3Array::defaultLayout(speakers))), context);
                    }
                    catch (const ondo::Exception&)
                    {
                        ondo::Point3Array tetrahedron(4);
                        const ondo::Point3 corners[] = {{1, 1, -1}, {-1, 1, 1}, {1, -1, 1}, {-1, -1, -1}};
                        for (std::size_t i = 0; i < 4; ++i)
                            tetrahedron[i] = corners[i];
                        made->processOscMessage(ondo::OSCMessage::fromText(layoutLine(tetrahedron)), context);
                    }
                    return made;
                };
                auto panner = Quor::Pan::create(2, speakers, static_cast<Quor::Pan::Type>(type), Quor::Pan::Direct);
                if (panner->getType() == type)
                {
                    found.emplace("Pan:" + panner->getTypeName(), make);
                    break;
                }
            }
        return found;
    }();
    return all;
}

/// The factory of `name`; "Pan" rows are walked with every panner.
std::vector<std::pair<std::string, Factory>> factoriesFor(const std::string& name)
{
    if (name != "Pan")
        return {{name, factories().count(name) ? factories().at(name) : panners().at(name)}};
    return {panners().begin(), panners().end()};
}

/// Same address and arguments; numbers may differ by a few ulps, as positions and delays
/// travel through other forms (points, samples) and back in single precision.
bool sameMessage(const ondo::OSCMessage& found, const ondo::OSCMessage& wanted)
{
    if (found.getText() != wanted.getText() || found.getNumArguments() != wanted.getNumArguments())
        return false;
    for (std::size_t a = 0; a < wanted.getNumArguments(); ++a)
    {
        const ondo::OSCArgument &x = found.getArgument(a), &y = wanted.getArgument(a);
        const bool same = x.isNumber() && y.isNumber()
                              ? std::abs(x.getFloat64() - y.getFloat64()) <= 1e-5 * std::max(1.0, std::abs(y.getFloat64()))
                              : x.getString() == y.getString();
        if (!same)
            return false;
    }
    return true;
}

/// The state's message for the address of `expected`, compared with it.
::testing::AssertionResult stateHas(const ondo::OscInterface& processor, const std::string& expected)
{
    const ondo::OSCMessage wanted = ondo::OSCMessage::fromText(expected);
    const ondo::OSCBundle state = processor.getState().flattened();
    for (std::size_t i = 0; i < state.size(); ++i)
        if (state[i].getMessage().getText() == wanted.getText())
            return sameMessage(state[i].getMessage(), wanted)
                       ? ::testing::AssertionSuccess()
                       : ::testing::AssertionFailure() << "state has " << state[i].getMessage().toText();
    return ::testing::AssertionFailure() << "state has no " << wanted.getText();
}

bool send(ondo::OscInterface& processor, const std::string& line)
{
    std::int32_t context = 0;
    return processor.processOscMessage(ondo::OSCMessage::fromText(line), context);
}

struct Row
{
    const char* processor;
    /// Messages separated by '|': all but the last prepare, the last is the one judged.
    const char* messages;
    bool understood;
    /// The state line expected afterwards; empty: the whole state is as before the last one.
    const char* expected;
};

// Expected values are the values sent, or what the address's rule makes of them.
const Row rows[] = {
    {"TarvoVerb", "/reverb/tr0 3.5", true, "/reverb/tr0 3.5"},
    {"TarvoVerb", "/reverb/tr0 long", false, ""},
    {"TarvoVerb", "/reverb/trh 0.25", true, "/reverb/trh 0.25"},
    {"TarvoVerb", "/reverb/fh 6000", true, "/reverb/fh 6000"},
    {"TarvoVerb", "/reverb/gain -6", true, "/reverb/gain -6"},
    {"TarvoVerb", "/reverb/air false", true, "/reverb/air/enable 0"},
    {"TarvoVerb", "/reverb/air/enable 1", true, "/reverb/air/enable 1"},
    {"TarvoVerb", "/reverb/air/enable 0.5", false, ""},
    {"TarvoVerb", "/reverb/air/cutoff 5000", true, "/reverb/air/cutoff 5000"},
    {"TarvoVerb", "/reverb/infinite true", true, ""}, // not part of the state
    {"TarvoVerb", "/early/min 15", true, "/early/min 15"},
    {"TarvoVerb", "/cluster/max 90", true, "/cluster/max 90"},
    {"TarvoVerb", "/reverb/density 1.2", true, "/reverb/density 1.2"},
    {"TarvoVerb", "/direct/filter/params -3 1 2 3 300 5000", true, "/direct/filter/params -3 1 2 3 300 5000"},
    {"TarvoVerb", "/cluster/filter/params/Gh -4", true, "/cluster/filter/params 0 0 0 -4 250 4000"},
    {"TarvoVerb", "/room/filter/params 1 2 3", true, ""}, // below a filter: taken, no effect
    {"TarvoVerb", "/early/shape 0.8", false, ""},
    {"TarvoVerb", "/early/width 45", false, ""},
    {"TarvoVerb", "/reverb/room/size 12", true, ""},
    {"TarvoVerb", "/viewer/zoom 2", true, ""},
    {"TarvoVerb", "/reverb", false, ""},
    {"TarvoVerb", "/dsp/mute true", true, "/dsp/mute 1"},
    {"Delgen", "/numdelays 4", true, "/numdelays 4"},
    {"Delgen", "/numdelays -3", true, "/numdelays 1"},
    {"Delgen", "/numdelays four", false, ""},
    {"Delgen", "/min 0.5", true, "/min 1"},
    {"Delgen", "/min 70", true, "/min 50"},
    {"Delgen", "/max 40", true, "/max 40"},
    {"Delgen", "/distr 0.95", true, "/distr 0.9"},
    {"Delgen", "/distr high", false, ""},
    {"Delgen", "/distr 0.7|/minmax 20 60", true, "/distr 0.5"},
    {"Delgen", "/minmax 20 60 0.3", true, "/distr 0.3"},
    {"Delgen", "/minsum 20 400 0.5", true, "/min 20"},
    {"Delgen", "/minmax 20", false, ""},
    {"Early", "/delays 10 20 30 40", true, "/delays 10 20 30 40"},
    {"Early", "/delays 10 20 30", true, ""},
    {"Early", "/delays 10 20 30 40 50", true, ""},
    {"Early", "/numdelays 4", true, ""},
    {"Early", "/numdelays 5", false, ""},
    {"Early", "/numinputs 2", true, ""},
    {"Cluster", "/delays 30 40 50 60", true, "/delays 30 40 50 60"},
    {"Cluster", "/delays 30 40 50", true, ""},
    {"Cluster", "/numdelays 4", true, ""},
    {"Cluster", "/numdelays x", false, ""},
    {"Reverb", "/delays 50 60 70 80", true, "/delays 50 60 70 80"},
    {"Reverb", "/delays 50 60 70", true, ""},
    {"Reverb", "/tr0 0.05", true, "/tr0 0.1"},
    {"Reverb", "/trm 0.8", true, "/trm 0.8"},
    {"Reverb", "/fl 300", true, "/fl 300"},
    {"Reverb", "/fl three", false, ""},
    {"Reverb", "/air 0", true, "/air/enable 0"},
    {"Reverb", "/air/freq 6000", true, "/air/freq 6000"},
    {"Reverb", "/infinite true", true, "/infinite 1"},
    {"Reverb", "/infinite true|/infinite 2", true, "/infinite 0"},
    {"Shuffle", "/permutation false", true, "/permutation 0"},
    {"Shuffle", "/permutation true|/permutation 2", true, "/permutation 0"},
    {"Shuffle", "/mode hadamard", true, ""},
    {"Shuffle", "/mode householder", false, ""},
    {"Shuffle", "/hadamard sequency", true, "/hadamard sequency"},
    {"Shuffle", "/hadamard nonsense", true, "/hadamard natural"},
    {"Delay", "/delay 10", true, "/delay 10"},
    {"Delay", "/delay -1", true, ""},
    {"Delay", "/delay soon", false, ""},
    {"Delay", "/length 500", true, "/length 500"},
    {"Delay", "/interpolation/mode nearest", true, "/interpolation/mode nearest"},
    {"Delay", "/interpolation/mode nearest|/interpolation/mode foo", true, "/interpolation/mode linear"},
    {"Delay", "/interpolation/time 20", true, "/interpolation/time 20"},
    {"Delay", "/interpolation/time 0", true, ""},
    {"CascadeIPP", "/cascades 0.5 0.25 0 -0.5 0", true, "/cascades 0.5 0.25 0 -0.5 0"},
    {"CascadeIPP", "/cascades 0.5 0.25 0 -0.5 0 1 0 0 0 0", true, ""}, // two sections for one
    {"CascadeIPP", "/cascades 0.5 0.25 0 -0.5 0 1 0", true, ""},
    {"CascadeIPP", "/cascades a b c d e", false, ""},
    {"FadedCascade", "/cascades 0.5 0.25 0 -0.5 0 1 0 0 0 0", true, "/cascades 0.5 0.25 0 -0.5 0 1 0 0 0 0"},
    {"FadedCascade", "/cascades 0.5 0.25 0 -0.5 0 1 0", true, ""},
    {"FadedCascade", "/bypass true", true, "/dsp/bypass 1"},
    {"FadedCascade", "/mute 1", true, "/dsp/mute 1"},
    {"FadedCascade", "/mute loud", false, ""},
    {"MultiFadedHLShelf", "/params 1 2 3 4 300 6000", true, "/params 1 2 3 4 300 6000"},
    {"MultiFadedHLShelf", "/params 1 2 3 4 300", false, ""},
    {"MultiFadedHLShelf", "/crossfadetime 12", true, "/crossfadetime 12"},
    {"MultiFadedHLShelf", "/crossfadetime -3", true, "/crossfadetime 0"},
    {"Pan", "/source/1/aed 30 10 2", true, "/source/1/aed 30 10 2"},
    {"Pan", "/source/2/xyz 0 -3 0", true, "/source/2/aed -180 0 3"},
    {"Pan", "/source/0/aed 30 10 2", true, ""},
    {"Pan", "/source/3/aed 30 10 2", true, ""},
    {"Pan", "/source/1/aed 30 10", true, ""},
    {"Pan", "/source/1/aed 30 10 two", true, ""},
    {"Pan", "/source/1/sideways 30", false, ""},
    {"Pan", "/source/1/mute true", true, "/source/1/mute 1"},
    {"Pan", "/source/1/mute true|/source/1/mute 2", true, "/source/1/mute 0"},
    {"Pan", "/source/1/mute maybe", false, ""},
    {"Pan", "/source/number 2", true, ""},
    {"Pan", "/source/number two", false, ""},
    {"Pan", "/listener/orientation 0 0 1", false, ""},
    {"Pan", "/interpolation/mode 7", false, ""},
    {"Pan:stereopan", "/law 'sqrt -3 dB'", true, "/law 'sqrt -3 dB'"},
    {"Pan:stereopan", "/law 3", false, ""},
};

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> parts;
    std::stringstream stream(text);
    for (std::string part; std::getline(stream, part, '|');)
        parts.push_back(part);
    return parts;
}

/// A processor moved away from its defaults by every row of its own that changes something.
std::unique_ptr<ondo::OscInterface> changedProcessor(const std::string& name, const Factory& factory)
{
    auto changed = factory();
    for (const Row& row : rows)
        if ((row.processor == name || (name.rfind("Pan:", 0) == 0 && std::string(row.processor) == "Pan")) &&
            row.understood && *row.expected != '\0')
            for (const auto& line : split(row.messages))
                send(*changed, line);
    return changed;
}

TEST(ProcessorAddresses, EachAddressChangesItsValueAndRefusesOtherKinds)
{
    for (const Row& row : rows)
    {
      for (const auto& [name, factory] : factoriesFor(row.processor))
      {
        SCOPED_TRACE(name + ": " + row.messages);
        auto processor = factory();
        const auto messages = split(row.messages);
        for (std::size_t i = 0; i + 1 < messages.size(); ++i)
            ASSERT_TRUE(send(*processor, messages[i]));
        const ondo::OSCBundle before = processor->getState();
        EXPECT_EQ(send(*processor, messages.back()), row.understood);
        const std::string expected = row.expected;
        if (expected.empty())
            EXPECT_EQ(processor->getState(), before);
        else
            EXPECT_TRUE(stateHas(*processor, expected));
      }
    }
}

TEST(ProcessorAddresses, PannerCountsCannotChange)
{
    for (const auto& [name, factory] : panners())
    {
        SCOPED_TRACE(name);
        auto panner = factory();
        for (const char* line : {"/source/number 3", "/speaker/number 99"})
        {
            const std::string address = ondo::OSCMessage::fromText(line).getText();
            try
            {
                send(*panner, line);
                ADD_FAILURE() << line << " was taken";
            }
            catch (const ondo::Exception& error)
            {
                EXPECT_EQ(error.getMessage(), "cannot change " + address);
            }
        }
    }
}

TEST(ProcessorAddresses, ReplayedStateReproducesItself)
{
    auto all = factories();
    all.insert(panners().begin(), panners().end());
    ASSERT_GE(panners().size(), 17u) << "every family builds";
    for (const auto& [name, factory] : all)
    {
        SCOPED_TRACE(name);
        // The generator's "/sum" re-derives the maximum from the sum, so its report, replayed
        // in order, moves the maximum: it cannot reproduce itself.
        if (name == "Delgen")
            continue;
        auto changed = changedProcessor(name, factory);
        const ondo::OSCBundle state = changed->getState();
        ASSERT_NE(state, factory()->getState()) << "the rows changed nothing";
        auto fresh = factory();
        for (std::size_t i = 0; i < state.size(); ++i)
            try
            {
                std::int32_t context = ondo::OscInterface::setContext;
                fresh->processOscMessage(state[i].getMessage(), context);
            }
            catch (const ondo::Exception& error)
            {
                ADD_FAILURE() << state[i].getMessage().toText() << ": " << error.getMessage();
            }
        const ondo::OSCBundle replayed = fresh->getState();
        ASSERT_EQ(replayed.size(), state.size());
        for (std::size_t i = 0; i < state.size(); ++i)
            EXPECT_TRUE(sameMessage(replayed[i].getMessage(), state[i].getMessage()))
                << replayed[i].getMessage().toText() << " for " << state[i].getMessage().toText();
    }
}

/// What a processor reports as a problem while it lives.
struct Problems : ondo::MaxConsoleNotifier::Listener
{
    explicit Problems(ondo::OscInterface& processor) { processor.addListener(this); }
    void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
    {
        if (level == ondo::MaxConsoleNotifier::problem)
            texts.push_back(text);
    }
    std::vector<std::string> texts;
};

// A preset is the state on disk: saved in each form through "/preset/export" and loaded into a
// fresh processor through "/preset/load", it acts exactly as the state replayed from memory:
// the same state, the same answer, the same messages refused (the panners' "/hrtf" without a
// data set; the reverberator's counts and the structure values it reports but does not answer).
TEST(ProcessorAddresses, PresetInEachFormActsAsTheStateReplayed)
{
    ASSERT_GE(panners().size(), 15u) << "every family builds";
    std::map<std::string, Factory> all = panners();
    all.emplace("TarvoVerb", makeVerb);
    const auto folder = std::filesystem::temp_directory_path() / ("quor_presets_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    for (const auto& [name, factory] : all)
    {
        auto changed = changedProcessor(name, factory);
        const ondo::OSCBundle state = changed->getState();
        ASSERT_NE(state, factory()->getState()) << name << ": the rows changed nothing";
        auto replayed = factory();
        Problems replayProblems(*replayed);
        std::int32_t context = 0;
        const bool replayUnderstood = replayed->dispatchBundle(state, context);
        std::vector<std::string> sortedReplayProblems = replayProblems.texts;
        std::sort(sortedReplayProblems.begin(), sortedReplayProblems.end());
        for (const char* form : {"txt", "osc", "xml", "coll"})
        {
            SCOPED_TRACE(name + " ." + form);
            const std::string path = (folder / ("preset." + std::string(form))).string();
            ASSERT_TRUE(send(*changed, "/preset/export '" + path + "'"));
            auto loaded = factory();
            Problems problems(*loaded);
            EXPECT_EQ(send(*loaded, "/preset/load '" + path + "'"), replayUnderstood);
            EXPECT_EQ(loaded->getState(), replayed->getState());
            // The XML form groups messages under their shared address parts: the order may change.
            std::sort(problems.texts.begin(), problems.texts.end());
            EXPECT_EQ(problems.texts, sortedReplayProblems);
        }
    }
    std::filesystem::remove_all(folder);
}

// The same settings reached through the queue, drained by the audio thread at the head of
// the first block, and through the setters: the outputs must agree bit for bit.
TEST(ProcessorAddresses, ReverberatorDrivenByOscRendersAsThroughItsSetters)
{
    auto render = [](Quor::TarvoVerb& verb) {
        tarvo::testing::Block in(2, 64), out(4, 64);
        std::vector<float> rendered;
        for (int b = 0; b < 240; ++b) // the gains glide in from silence first
        {
            in.data[0][0] = b == 200 ? 1.0f : 0.0f;
            verb.audioInterruptTasks();
            verb.process(out.get(), in.get(), 64);
            for (const auto& channel : out.data)
                rendered.insert(rendered.end(), channel.begin(), channel.end());
        }
        return rendered;
    };
    Quor::TarvoVerb bySetters(8), byOsc(8);
    for (auto* verb : {&bySetters, &byOsc})
        verb->configure(44100.0f, 64, 2, 4);
    bySetters.setReverbTimes({3.5f, 1.0f, 1.0f, 0.25f, 250.0f, 8000.0f}, 0.0f);
    bySetters.setReverbGain(-6.0f);
    bySetters.setEarlyMin(15.0f);
    bySetters.setClusterMax(90.0f);
    bySetters.setDirectFilter({-3.0f, 1.0f, 2.0f, 3.0f, 300.0f, 5000.0f});
    bySetters.setAirCutoff(5000.0f);
    for (const char* line : {"/reverb/tr0 3.5", "/reverb/trh 0.25", "/reverb/gain -6", "/early/min 15",
                             "/cluster/max 90", "/direct/filter/params -3 1 2 3 300 5000", "/reverb/air/cutoff 5000"})
        byOsc.addToPending(ondo::OSCMessage::fromText(line));
    const auto expected = render(bySetters);
    EXPECT_EQ(render(byOsc), expected);
    EXPECT_EQ(byOsc.getState(), bySetters.getState());
    EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 1e-3f) << "silence proves nothing";
}
} // namespace
