#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

#include "AllocationCounter.h"
#include "math/TarvoDspDenormals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace
{
/// A processor that doubles each input into its output and records what the base did.
class Doubler : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    Doubler(std::uint32_t inputs, std::uint32_t outputs) : AudioProcessorWithOscInAudioInterrupt(inputs, outputs) {}

    void process(float** outputs, float** inputs, std::uint32_t n) override
    {
        ++processCalls;
        flushToZeroDuringProcess = ondo::primitives::areDenormalsZero();
        for (std::uint32_t c = 0; c < numOutputs; ++c)
            for (std::uint32_t i = 0; i < n; ++i)
                outputs[c][i] = c < numInputs ? 2.0f * inputs[c][i] : 1.0f;
    }
    void setSampleRate(float rate) override { calls.push_back("rate " + std::to_string(static_cast<int>(rate))); }
    void setBufferSize(std::uint32_t size) override { calls.push_back("size " + std::to_string(size)); }
    void clear() override { calls.push_back("clear"); }
    std::uint32_t getLatency() const override { return 32; }

    int processCalls = 0;
    bool flushToZeroDuringProcess = false;
    std::vector<std::string> calls;
};

/// Channel storage for a processor under test.
struct Block
{
    Block(std::uint32_t channels, std::uint32_t samples, float value)
        : data(channels, std::vector<float>(samples, value))
    {
        for (auto& channel : data)
            pointers.push_back(channel.data());
    }
    float** get() { return pointers.data(); }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};

class ProcessBlock : public testing::Test
{
protected:
    Doubler proc{2, 2};
    Block in{2, 8, 0.5f};
    Block out{2, 8, 7.0f};
};

TEST_F(ProcessBlock, RunsProcessWithFlushToZero)
{
    ondo::primitives::setDenormalsAreZero(false);
    proc.processBlock(out.get(), in.get(), 8);
    EXPECT_EQ(proc.processCalls, 1);
    EXPECT_TRUE(proc.flushToZeroDuringProcess);
    EXPECT_EQ(out.data[1][7], 1.0f);
}

TEST_F(ProcessBlock, MuteZeroesConnectedOutletsAndWinsOverBypass)
{
    proc.setMute(true);
    proc.setBypass(true);
    const std::int16_t counts[] = {1, 1, 1, 0}; // second outlet unconnected
    proc.setConnections(counts);
    proc.processBlock(out.get(), in.get(), 8);
    EXPECT_EQ(proc.processCalls, 0);
    EXPECT_EQ(out.data[0][3], 0.0f);
    EXPECT_EQ(out.data[1][3], 7.0f) << "an unconnected outlet's buffer is left as it is";
}

TEST_F(ProcessBlock, BypassCopiesActiveChannelsAndZeroesTheOthers)
{
    proc.setBypass(true);
    const std::int16_t counts[] = {1, 0, 1, 1}; // second inlet unconnected
    proc.setConnections(counts);
    proc.processBlock(out.get(), in.get(), 8);
    EXPECT_EQ(out.data[0][0], 0.5f);
    EXPECT_EQ(out.data[1][0], 0.0f);
    EXPECT_EQ(proc.processCalls, 0);
}

TEST_F(ProcessBlock, BypassZeroesOutputsBeyondTheInputs)
{
    Doubler wide(1, 3);
    Block i(1, 4, 0.25f), o(3, 4, 9.0f);
    wide.setBypass(true);
    wide.processBlock(o.get(), i.get(), 4);
    EXPECT_EQ(o.data[0][0], 0.25f);
    EXPECT_EQ(o.data[1][0], 0.0f);
    EXPECT_EQ(o.data[2][3], 0.0f);
}

TEST_F(ProcessBlock, NoOutletConnectedSkipsProcessAndLeavesOutputs)
{
    const std::int16_t counts[] = {1, 1, 0, 0};
    proc.setConnections(counts);
    proc.processBlock(out.get(), in.get(), 8);
    EXPECT_EQ(proc.processCalls, 0);
    EXPECT_EQ(out.data[0][0], 7.0f);
}

TEST_F(ProcessBlock, ProcessorWithoutOutputsAlwaysProcesses)
{
    Doubler sink(1, 0);
    Block i(1, 4, 1.0f);
    sink.processBlock(nullptr, i.get(), 4);
    EXPECT_EQ(sink.processCalls, 1);
}

TEST_F(ProcessBlock, ProcessWithoutOutletsOverridesTheOutletCheck)
{
    const std::int16_t counts[] = {1, 1, 0, 0};
    proc.setConnections(counts);
    proc.setProcessWithoutOutlets(true);
    proc.processBlock(out.get(), in.get(), 8);
    EXPECT_EQ(proc.processCalls, 1);
}

TEST_F(ProcessBlock, LatencyInForceIsZeroWhileMutedOrBypassed)
{
    EXPECT_EQ(proc.getLatencyInForce(), 32u);
    proc.setBypass(true);
    EXPECT_EQ(proc.getLatencyInForce(), 0u);
    proc.setBypass(false);
    proc.setMute(true);
    EXPECT_EQ(proc.getLatencyInForce(), 0u);
}

class AutoMute : public testing::Test
{
protected:
    /// Feeds `blocks` silent blocks of `n` samples to inlet 0 (inlet 1 gets signal).
    void feedSilence(Doubler& p, int blocks, std::uint32_t n)
    {
        Block i(2, n, 0.0f), o(2, n, 0.0f);
        std::fill(i.data[1].begin(), i.data[1].end(), 1.0f);
        for (int b = 0; b < blocks; ++b)
            p.processBlock(o.get(), i.get(), n);
    }
};

TEST_F(AutoMute, AttackIsConvertedAt44100WhateverTheRate)
{
    Doubler p(2, 2);
    p.setup(96000.0f, 441, true);
    p.setAutoMuteAttack(1.0f);
    feedSilence(p, 99, 441);
    EXPECT_TRUE(p.isInletActive(0)) << "43659 silent samples are below the 44100 of one second at 44100 Hz";
    feedSilence(p, 1, 441);
    EXPECT_FALSE(p.isInletActive(0)) << "44100 samples, about 0.46 s at 96 kHz, reach the attack";
    EXPECT_TRUE(p.isInletActive(1));
    EXPECT_EQ(p.getInletsAnalyzer().silentSamples[0], 44100u) << "the count is held at the attack";
}

TEST_F(AutoMute, NaNCountsAsSignalAndReactivatesAtOnce)
{
    Doubler p(2, 2);
    p.setAutoMuteAttack(1.0f);
    feedSilence(p, 200, 441);
    ASSERT_FALSE(p.isInletActive(0));
    Block i(2, 16, 0.0f), o(2, 16, 0.0f);
    i.data[0][15] = std::numeric_limits<float>::quiet_NaN();
    p.processBlock(o.get(), i.get(), 16);
    EXPECT_TRUE(p.isInletActive(0));
    EXPECT_EQ(p.getInletsAnalyzer().silentSamples[0], 0u);
}

TEST_F(AutoMute, SilenceAloneDoesNotReactivate)
{
    Doubler p(2, 2);
    p.setAutoMuteAttack(1.0f);
    feedSilence(p, 100, 441);
    ASSERT_FALSE(p.isInletActive(0));
    feedSilence(p, 1, 441);
    EXPECT_FALSE(p.isInletActive(0));
}

TEST_F(AutoMute, InactiveWhenOffFollowsConnections)
{
    Doubler p(2, 2);
    const std::int16_t counts[] = {0, 3, 1, 1};
    p.setConnections(counts);
    feedSilence(p, 1, 8);
    EXPECT_FALSE(p.isInletActive(0));
    EXPECT_TRUE(p.isInletActive(1));
    EXPECT_FALSE(p.isChannelConnected(0));
    EXPECT_TRUE(p.isChannelConnected(1));
}

TEST_F(AutoMute, AttackSetterClampsAndSwitches)
{
    Doubler p(1, 1);
    p.setAutoMuteAttack(0.5f);
    EXPECT_TRUE(p.getInletsAnalyzer().active);
    EXPECT_EQ(p.getInletsAnalyzer().attackSeconds, 1.0f);
    EXPECT_EQ(p.getInletsAnalyzer().attackSamples, 44100u);
    p.setAutoMuteAttack(1000.0f);
    EXPECT_EQ(p.getInletsAnalyzer().attackSeconds, 500.0f);
    EXPECT_EQ(p.getInletsAnalyzer().attackSamples, 22050000u);
    p.setAutoMuteAttack(-1.0f);
    EXPECT_FALSE(p.getInletsAnalyzer().active);
    EXPECT_EQ(p.getInletsAnalyzer().attackSeconds, 500.0f) << "switching off keeps the attack";
}

TEST(ProcessorSetup, ClampsRateAndSizeAndRunsTheSequence)
{
    Doubler p(1, 1);
    p.setup(0.0f, 0, true);
    EXPECT_EQ(p.getSampleRate(), 44100.0f);
    EXPECT_EQ(p.getBufferSize(), 512u);
    EXPECT_EQ(p.calls, (std::vector<std::string>{"rate 44100", "size 512", "clear"}));
    p.calls.clear();
    p.setup(44100.0f, 512, false);
    EXPECT_TRUE(p.calls.empty()) << "nothing changed and not forced";
    p.setup(1e6f, 64);
    EXPECT_EQ(p.getSampleRate(), 384000.0f);
    p.setup(10.0f, 64);
    EXPECT_EQ(p.getSampleRate(), 8000.0f);
    p.calls.clear();
    p.changeSampleRate(48000.0f);
    p.changeBufferSize(128);
    EXPECT_EQ(p.calls, (std::vector<std::string>{"rate 48000", "size 128"})) << "changes do not clear";
}

TEST(ProcessorSetup, ChannelCountChangesRerunTheSequenceOnlyWhenDifferent)
{
    Doubler p(2, 2);
    p.setNumberOfInputs(2);
    EXPECT_TRUE(p.calls.empty());
    p.setNumberOfInputs(3);
    EXPECT_EQ(p.calls.size(), 3u);
    EXPECT_EQ(p.getNumInputs(), 3u);
    EXPECT_TRUE(p.isInletActive(2)) << "new inlets count as connected";
    p.setNumberOfOutputs(4);
    EXPECT_TRUE(p.isOutletConnected(3));
}

TEST(ProcessorNames, InletsOutletsAndDumpout)
{
    Doubler p(2, 1);
    EXPECT_EQ(p.getInletName(1), "input #2");
    EXPECT_EQ(p.getInletName(2), "");
    EXPECT_EQ(p.getInletName(-1), "");
    EXPECT_EQ(p.getOutletName(0), "output #1");
    EXPECT_EQ(p.getOutletName(1), "dumpout");
    EXPECT_TRUE(p.getDocumentation().empty());
}

TEST(Perform, ConvertsAndTakesTheHostFlags)
{
    Doubler p(1, 2);
    std::vector<double> in(16, 0.25), out0(16, 9.0), out1(16, 9.0);
    double* ins[] = {in.data()};
    double* outs[] = {out0.data(), out1.data()};
    p.perform(outs, ins, 16, 0, 0, 0);
    EXPECT_EQ(out0[15], 0.5);
    EXPECT_EQ(out1[0], 1.0);
    p.perform(outs, ins, 16, 0, 0, 1);
    EXPECT_TRUE(p.isMuted()) << "disabled counts as muted";
    EXPECT_EQ(out0[0], 0.0);
    p.perform(outs, ins, 16, 0, 1, 0);
    EXPECT_FALSE(p.isMuted());
    EXPECT_TRUE(p.isBypassed());
    EXPECT_EQ(out0[0], 0.25);
    EXPECT_EQ(out1[0], 0.0);
}

TEST(Perform, AllocatesNothingOnceBuffersHaveGrown)
{
    Doubler p(2, 2);
    std::vector<double> a(64, 0.1), b(64, 0.2), c(64), d(64);
    double* ins[] = {a.data(), b.data()};
    double* outs[] = {c.data(), d.data()};
    p.perform(outs, ins, 64, 0, 0, 0);
    tarvo::testing::AllocationScope scope;
    for (std::uint32_t n : {64u, 32u, 1u, 64u})
        p.perform(outs, ins, n, 0, 0, 0);
    p.processBlock(nullptr, nullptr, 0);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
