#include "dsp/TarvoDspSignalMatrix.h"
#include "dsp/TarvoDspStaticSignalMatrix.h"

#include "AllocationCounter.h"
#include "TestBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
using ondo::SignalMatrix;
using ondo::StaticSignalMatrix;
using tarvo::testing::Block;

/// At 8000 Hz a ramp of 1.25 ms lasts exactly ten samples.
void useTenSampleRamps(SignalMatrix& m)
{
    m.setup(8000.0f, 64);
    m.setRampTime(1.25f);
}

/// The gain changes that twin matrices go through, one adding itself and the other handing
/// its terms over: ten-sample ramps, two gains of input 0 set at block 0 and changed at block
/// 6, one gain of input 1 set at block 0.
void changeGainsAsTwinsDo(SignalMatrix& m, int block)
{
    if (block == 0)
        useTenSampleRamps(m);
    if (block == 0 || block == 6)
        m.setGainsForInput(0, std::vector<float>{0.5f + float(block), -0.25f}.data(), false);
    if (block == 0)
        m.setGain(1, 1, 0.75f, false);
}

std::vector<float> run(SignalMatrix& m, std::uint32_t n)
{
    Block in(1, n, 1.0f), out(1, n, 7.0f);
    m.process(out.get(), in.get(), n);
    return out.data[0];
}

TEST(SignalMatrix, RampLengthFollowsTimeAndRate)
{
    SignalMatrix m(2, 3);
    EXPECT_EQ(m.getRampTime(), 30.0f);
    EXPECT_EQ(m.getRampLength(), 1323) << "30 ms at 44100 Hz";
    m.changeSampleRate(48000.0f);
    EXPECT_EQ(m.getRampLength(), 1440);
    m.setRampTime(-5.0f);
    EXPECT_EQ(m.getRampTime(), 0.0f);
    EXPECT_EQ(m.getRampLength(), 0);
}

TEST(SignalMatrix, NewGainWaitsForTheBoundaryThenRampsOverOneLength)
{
    SignalMatrix m(1, 1);
    useTenSampleRamps(m);
    ASSERT_EQ(m.getRampLength(), 10);
    m.setGain(0, 0, 1.0f, false);
    EXPECT_EQ(m.getTargetGain(0, 0), 0.0f);
    EXPECT_EQ(m.getPendingGain(0, 0), 1.0f);
    for (float v : run(m, 10))
        EXPECT_EQ(v, 0.0f) << "nothing before the boundary";
    // The ramp runs from 0 to 1 over ten samples, both ends included: steps of 1/9.
    const std::vector<float> ramp = run(m, 10);
    for (int j = 0; j < 10; ++j)
        EXPECT_NEAR(ramp[j], j / 9.0f, 1e-6f) << j;
    for (float v : run(m, 10))
        EXPECT_EQ(v, 1.0f);
}

TEST(SignalMatrix, GainSetDuringARampIsReachedOneLengthAfterTheNextBoundary)
{
    SignalMatrix m(1, 1);
    useTenSampleRamps(m);
    m.setGain(0, 0, 1.0f, false);
    run(m, 10);
    run(m, 4); // inside the ramp to 1
    m.setGain(0, 0, 0.5f, false);
    const std::vector<float> rest = run(m, 6);
    EXPECT_EQ(rest.back(), 1.0f) << "the running ramp ends where it was going";
    const std::vector<float> next = run(m, 10);
    EXPECT_EQ(next.front(), 1.0f);
    EXPECT_NEAR(next.back(), 0.5f, 1e-6f);
}

TEST(SignalMatrix, ImmediateGainJumpsAtOnce)
{
    SignalMatrix m(1, 1);
    useTenSampleRamps(m);
    m.setGain(0, 0, 0.25f, true);
    for (float v : run(m, 5))
        EXPECT_EQ(v, 0.25f);
    // Also after boundaries with nothing gliding, when only the audible terms are visited:
    // a jump to silence and back is heard at once.
    run(m, 30);
    m.setGain(0, 0, 0.0f, true);
    for (float v : run(m, 5))
        EXPECT_EQ(v, 0.0f);
    run(m, 30);
    m.setGain(0, 0, 0.5f, true);
    for (float v : run(m, 5))
        EXPECT_EQ(v, 0.5f);
}

TEST(SignalMatrix, WithoutRampItActsLikeTheStaticMatrix)
{
    SignalMatrix ramped(2, 2);
    ramped.setRampTime(0.0f);
    StaticSignalMatrix fixed(2, 2);
    const float gains[2][2] = {{0.5f, 5e-05f}, {-0.75f, 0.0002f}};
    for (std::uint32_t i = 0; i < 2; ++i)
        for (std::uint32_t o = 0; o < 2; ++o)
        {
            ramped.setGain(i, o, gains[i][o], false);
            fixed.setGain(i, o, gains[i][o]);
        }
    Block in(2, 16), a(2, 16, 3.0f), b(2, 16, -3.0f);
    for (int j = 0; j < 16; ++j)
    {
        in.data[0][j] = static_cast<float>(j);
        in.data[1][j] = 1.0f - static_cast<float>(j);
    }
    ramped.process(a.get(), in.get(), 16);
    fixed.process(b.get(), in.get(), 16);
    for (int o = 0; o < 2; ++o)
        for (int j = 0; j < 16; ++j)
        {
            EXPECT_EQ(a.data[o][j], b.data[o][j]);
            // The 5e-05 gain is below the threshold: output 1 carries input 1 only.
            const float expected = o == 0 ? 0.5f * in.data[0][j] - 0.75f * in.data[1][j] : 0.0002f * in.data[1][j];
            EXPECT_FLOAT_EQ(a.data[o][j], expected);
        }
}

TEST(SignalMatrix, TinyGainSoundsOnlyWhileRampingTowardsIt)
{
    SignalMatrix m(1, 1);
    useTenSampleRamps(m);
    m.setGain(0, 0, 5e-05f, false);
    run(m, 10);
    const std::vector<float> ramp = run(m, 10);
    EXPECT_NEAR(ramp.back(), 5e-05f, 1e-10f);
    for (float v : run(m, 10))
        EXPECT_EQ(v, 0.0f) << "standing still at 5e-05 is silence";
}

TEST(SignalMatrix, ProcessAddKeepsWhatTheOutputHeld)
{
    SignalMatrix m(1, 2);
    m.setGain(0, 1, 2.0f, true);
    Block in(1, 8, 1.0f), out(2, 8, 0.5f);
    m.processAdd(out.get(), in.get(), 8);
    EXPECT_EQ(out.data[0][3], 0.5f);
    EXPECT_EQ(out.data[1][3], 2.5f);
}

TEST(SignalMatrix, RowsAndSizes)
{
    SignalMatrix m(2, 3);
    const float row[3] = {1, 2, 3};
    m.setGainsForInput(1, row, true);
    EXPECT_EQ(m.getTargetGain(1, 2), 3.0f);
    EXPECT_EQ(m.getTargetGain(0, 2), 0.0f);
    m.setGains(0.5f, false);
    EXPECT_EQ(m.getPendingGain(0, 0), 0.5f);
    m.setRampTime(100.0f);
    m.setSize(3, 1);
    EXPECT_EQ(m.getNumInputs(), 3u);
    EXPECT_EQ(m.getNumOutputs(), 1u);
    EXPECT_EQ(m.getRampTime(), 30.0f);
    EXPECT_EQ(m.getPendingGain(2, 0), 0.0f);
}

TEST(SignalMatrix, GatheredTermsAddAsProcessAddWhereTheGainsStandStill)
{
    // Twin matrices through the same gain changes: one adds itself, the other hands its terms
    // over wherever it can. Blocks of 7 against ramps of 10 put boundaries inside blocks.
    SignalMatrix added(2, 2), gathered(2, 2);
    std::vector<ondo::MixTerms> terms(2);
    for (auto& t : terms)
        t.reserve(2);
    int handed = 0, refused = 0;
    for (int b = 0; b < 16; ++b)
    {
        for (SignalMatrix* m : {&added, &gathered})
        {
            changeGainsAsTwinsDo(*m, b);
        }
        Block in(2, 7), a(2, 7, 0.5f), g(2, 7, 0.5f);
        for (std::uint32_t i = 0; i < 7; ++i)
        {
            in.data[0][i] = 1.0f + float(i);
            in.data[1][i] = -3.0f * float(i);
        }
        added.processAdd(a.get(), in.get(), 7);
        const bool hands = gathered.gatherSteadyTerms(terms.data(), in.get(), 7);
        // The change of block 6 has landed by sample 60 (block 8); from then on nothing moves,
        // so blocks that straddle a boundary (11, 12, 14, 15) are handed over as well.
        if (b >= 9)
        {
            EXPECT_TRUE(hands) << "block " << b;
        }
        if (hands)
        {
            ++handed;
            for (std::uint32_t o = 0; o < 2; ++o)
                terms[o].addInto(g.data[o].data(), 7);
        }
        else
        {
            ++refused;
            gathered.processAdd(g.get(), in.get(), 7);
        }
        EXPECT_EQ(g.data, a.data) << "block " << b;
    }
    EXPECT_GT(handed, 0);
    EXPECT_GT(refused, 0);
}

// An owner may keep the terms of a gather and write them again while the matrix says they
// stand: through a gain change, an inlet and an outlet cut and restored, a new ramp length,
// and an inlet that falls silent long enough to be muted and then wakes, the kept terms must
// sum as processAdd does, and be kept for whole stretches in between.
TEST(SignalMatrix, KeptTermsAddAsProcessAddUntilAnythingMoves)
{
    SignalMatrix added(2, 2), kept(2, 2);
    std::vector<ondo::MixTerms> terms(2);
    for (auto& t : terms)
        t.reserve(2);
    Block in(2, 7); // the same buffers every block, as the kept terms require
    // Inlet 0 silent for the one-second attack (the analysis counts at 44100 Hz), inlet 1 not.
    Block longSilence(2, 44100);
    std::fill(longSilence.data[1].begin(), longSilence.data[1].end(), 1.0f);
    bool held = false;
    int repeated = 0;
    for (int b = 0; b < 70; ++b)
    {
        // Inlet 1 is cut from block 20 to 24, outlet 0 from 30 to 34 and for block 61, so that
        // the terms are gathered again while inlet 0 is muted.
        const bool outletCut = (b >= 30 && b < 34) || b == 61;
        const std::int16_t counts[4] = {1, std::int16_t(b >= 20 && b < 24 ? 0 : 1), std::int16_t(outletCut ? 0 : 1), 1};
        for (SignalMatrix* m : {&added, &kept})
        {
            changeGainsAsTwinsDo(*m, b);
            if (b == 45)
                m->setRampTime(2.5f);
            m->setConnections(counts);
            if (b == 60)
            {
                m->setAutoMuteAttack(1.0f);
                m->analyzeInlets(longSilence.get(), 44100);
            }
        }
        // Inlet 0 stays silent, and muted, until block 64.
        for (std::uint32_t i = 0; i < 7; ++i)
        {
            in.data[0][i] = b >= 60 && b < 64 ? 0.0f : 1.0f + float(i + b);
            in.data[1][i] = -3.0f * float(i) + float(b);
        }
        for (SignalMatrix* m : {&added, &kept})
            m->analyzeInlets(in.get(), 7);
        Block a(2, 7), k(2, 7);
        added.processAdd(a.get(), in.get(), 7);
        if (held && kept.steadyTermsUnchanged())
        {
            kept.repeatSteadyTerms(7);
            ++repeated;
        }
        else
        {
            for (auto& t : terms)
                t.forget();
            held = kept.gatherSteadyTerms(terms.data(), in.get(), 7);
            if (!held)
                kept.processAdd(k.get(), in.get(), 7);
        }
        if (held)
        {
            float* outs[] = {k.data[0].data(), k.data[1].data()};
            ondo::MixTerms::writeEach(terms.data(), outs, 2, 7, true);
        }
        ASSERT_EQ(k.data, a.data) << "block " << b;
    }
    EXPECT_GE(repeated, 30);
}

TEST(SignalMatrix, MixingAllocatesNothing)
{
    SignalMatrix m(4, 4);
    StaticSignalMatrix s(4, 4);
    Block in(4, 256, 0.5f), out(4, 256);
    tarvo::testing::AllocationScope scope;
    for (int b = 0; b < 20; ++b)
    {
        m.setGain(b % 4, (b + 1) % 4, 0.1f * b, false);
        m.process(out.get(), in.get(), 256);
        s.setGain(b % 4, 0, 0.3f);
        s.process(out.get(), in.get(), 256);
    }
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
