#include "reverb/QuorReverb.h"

#include "AllocationCounter.h"
#include "TestSignals.h"
#include "WideVectorsRestored.h"
#include "dsp/TarvoDspDecayAnalysis.h"
#include "math/TarvoDspDenormals.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
using Quor::Reverb;
using tarvo::testing::ChannelBlock;

constexpr float rate = 44100.0f;

/// The audio thread's denormal mode, which `processBlock` would set, for tests that call
/// `process` directly.
struct FlushToZero
{
    FlushToZero() { ondo::primitives::setDenormalsAreZero(true); }
    ~FlushToZero() { ondo::primitives::setDenormalsAreZero(false); }
};

/// Runs `reverb` over `numSamples` samples in blocks of `blockSize`, with `input` (one
/// vector per channel, shorter ones padded with silence), and returns every output channel.
std::vector<std::vector<float>> render(Reverb& reverb, const std::vector<std::vector<float>>& input,
                                       std::size_t numSamples, std::uint32_t blockSize = 64)
{
    const std::uint32_t n = reverb.getNumChannels();
    std::vector<std::vector<float>> output(n, std::vector<float>(numSamples));
    ChannelBlock in(n, blockSize), out(n, blockSize);
    for (std::size_t start = 0; start < numSamples; start += blockSize)
    {
        const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(blockSize, numSamples - start));
        for (std::uint32_t c = 0; c < n; ++c)
            for (std::uint32_t k = 0; k < count; ++k)
                in.data[c][k] = (c < input.size() && start + k < input[c].size()) ? input[c][start + k] : 0.0f;
        reverb.process(out.pointers.data(), in.pointers.data(), count);
        for (std::uint32_t c = 0; c < n; ++c)
            std::copy(out.data[c].begin(), out.data[c].begin() + count, output[c].begin() + start);
    }
    return output;
}

std::vector<std::vector<float>> impulseOnFirstChannel()
{
    return {std::vector<float>{1.0f}};
}

/// T60 of the energy of all channels together in the octave band around `centre`: summing
/// the channels' band energies before the backward integration steadies the estimate.
double summedBandDecayTime(const std::vector<std::vector<float>>& channels, double centre)
{
    std::vector<double> magnitude(channels.front().size(), 0.0);
    for (const auto& channel : channels)
    {
        const auto band = ondo::DecayAnalysis::octaveBand(channel.data(), channel.size(), rate, centre);
        for (std::size_t i = 0; i < band.size(); ++i)
            magnitude[i] += band[i] * band[i];
    }
    for (double& m : magnitude)
        m = std::sqrt(m);
    return ondo::DecayAnalysis::decayTime(ondo::DecayAnalysis::energyDecayCurve(magnitude), rate);
}

double energyInWindow(const std::vector<std::vector<float>>& channels, double fromSeconds, double lengthSeconds)
{
    const auto first = static_cast<std::size_t>(fromSeconds * rate);
    // Never past the end, whatever the rounding of the two times.
    const auto last = std::min(first + static_cast<std::size_t>(lengthSeconds * rate), channels.front().size());
    double energy = 0.0;
    for (const auto& channel : channels)
        for (std::size_t i = first; i < last; ++i)
            energy += double(channel[i]) * channel[i];
    return energy;
}

void setDecay(Reverb& reverb, float tr0, float trl, float trm, float trh, float fl, float fh)
{
    reverb.setTr0(tr0, true);
    reverb.setTrl(trl, true);
    reverb.setTrm(trm, true);
    reverb.setTrh(trh, true);
    reverb.setFl(fl, true);
    reverb.setFh(fh, true);
}

class ReverbDecay : public ::testing::TestWithParam<std::uint32_t>
{
};

// The design rule, measured: each line loses 60 d / T dB a pass, so the whole tail falls by
// 60 dB in T in each band.
TEST_P(ReverbDecay, ImpulseResponseDecaysAsTheBandTimesAsk)
{
    FlushToZero flush;
    Reverb reverb(GetParam());
    reverb.setAirEnabled(false);
    setDecay(reverb, 1.0f, 1.6f, 1.0f, 0.5f, 200.0f, 4000.0f);
    const auto response = render(reverb, impulseOnFirstChannel(), static_cast<std::size_t>(2.5 * rate));

    const double low = summedBandDecayTime(response, 63.0);
    const double middle = summedBandDecayTime(response, 1000.0);
    const double high = summedBandDecayTime(response, 16000.0);
    EXPECT_NEAR(middle, 1.0, 0.1) << "tr0 times trm, two octaves and more from both crossovers";
    // 15 % at the band edges: the shelves' first-order transitions still reach 63 Hz and 16 kHz.
    EXPECT_NEAR(low, 1.6, 0.24) << "tr0 times trl";
    EXPECT_NEAR(high, 0.5, 0.075) << "tr0 times trh";
}

INSTANTIATE_TEST_SUITE_P(EightAndSixteenLines, ReverbDecay, ::testing::Values(8u, 16u));

TEST(Reverb, InfiniteTailHoldsItsEnergyWithAirOff)
{
    FlushToZero flush;
    Reverb reverb(8);
    reverb.setAirEnabled(false);
    reverb.setInfinite(true);
    // Let the shelves cross over to their frozen design before the impulse enters.
    render(reverb, {}, static_cast<std::size_t>(0.2 * rate));
    const auto response = render(reverb, impulseOnFirstChannel(), static_cast<std::size_t>(10.25 * rate), 512);
    const double early = energyInWindow(response, 1.0, 0.2);
    const double late = energyInWindow(response, 10.0, 0.2);
    ASSERT_GT(early, 0.0);
    EXPECT_NEAR(10.0 * std::log10(late / early), 0.0, 1.0);
}

TEST(Reverb, FirstEchoComesAfterTheShortestDelayWhateverTheChunks)
{
    // A loop lasts its delay, whatever chunk the input entered in. Lines of 100 to 170
    // samples, read "nearest".
    Reverb reverb(4);
    ondo::Vector<float> delays{100.0f, 130.0f, 150.0f, 170.0f};
    for (float& d : delays)
        d = d * 1000.0f / rate;
    reverb.setDelays(delays, true);
    reverb.clear();
    // A 100-sample block is cut into 64 and 36: an impulse at sample 70 enters in a chunk of 36.
    std::vector<std::vector<float>> input(1, std::vector<float>(71, 0.0f));
    input[0][70] = 1.0f;
    const auto response = render(reverb, input, 400, 100);
    std::size_t first = 0;
    while (first < 400 && response[0][first] == 0.0f && response[1][first] == 0.0f && response[2][first] == 0.0f &&
           response[3][first] == 0.0f)
        ++first;
    EXPECT_EQ(first, 70u + 100u);
}

TEST(Reverb, BlocksAreCutIntoChunksOfAtMostSixtyFourAndTheShortestDelay)
{
    Reverb reverb(8);
    EXPECT_FLOAT_EQ(reverb.getShortestDelay(), 52.91f);
    EXPECT_EQ(reverb.getChunkLimit(), 64u) << "512 samples make 8 chunks of 64; 100 make 64 and 36";
    EXPECT_NEAR(reverb.getDelayFloor(), 1.4512f, 1e-4f);
    // A delay below the floor is raised to it; the chunks shrink to the shortest delay and
    // stay small, even after the delays grow again.
    reverb.setDelayRange(0.5f, 300.0f, 0.5f, true);
    EXPECT_NEAR(reverb.getShortestDelay(), 1.4512f, 1e-4f);
    reverb.setDelays(ondo::Vector<float>(8, 1.0f), true);
    for (float d : reverb.getDelays())
        EXPECT_NEAR(d, 1.4512f, 1e-3f);
    reverb.setDelayRange(60.0f, 800.0f, 0.5f, true);
    EXPECT_NEAR(reverb.getShortestDelay(), 1.4512f, 1e-4f);
    EXPECT_LE(reverb.getChunkLimit(), 64u);
}

TEST(Reverb, DelaysAreLimitedToFifteenHundredMilliseconds)
{
    Reverb reverb(4);
    reverb.setDelays(ondo::Vector<float>{2000.0f, 100.0f, 1500.0f, 40.0f}, true);
    const auto delays = reverb.getDelays();
    EXPECT_NEAR(delays[0], 1500.0f, 0.01f);
    EXPECT_NEAR(delays[1], 100.0f, 0.01f);
    EXPECT_NEAR(delays[2], 1500.0f, 0.01f);
    EXPECT_NEAR(delays[3], 40.0f, 0.01f);
}

TEST(Reverb, DecayRampLengthensSlowlyAndShortensAtOnce)
{
    Reverb reverb(8);
    const auto rampMs = [&] { return 1000.0 * double(reverb.getDecayRamp().getRemainingSamples()) / rate; };
    reverb.setTr0(1.0f, true);
    reverb.setTr0(3.0f, false);
    EXPECT_NEAR(rampMs(), 2000.0, 0.05);
    reverb.setTr0(1.0f, true);
    reverb.setTr0(1.2f, false);
    EXPECT_NEAR(rampMs(), 500.0, 0.05) << "a rise of 0.2 s takes the minimum of 500 ms";
    reverb.setTr0(1.0f, true);
    reverb.setTr0(0.5f, false);
    EXPECT_NEAR(rampMs(), 50.0, 0.05);
    reverb.setTr0(1.0f, true);
    reverb.setTr0(1.005f, false);
    EXPECT_EQ(reverb.getDecayRamp().getRemainingSamples(), 0u) << "a change below 0.01 is not followed";
    EXPECT_FLOAT_EQ(reverb.getDecayRamp().getTargetValue(), 1.0f);
    EXPECT_FLOAT_EQ(reverb.getTr0(), 1.005f) << "though it is stored";
    reverb.setTr0(0.01f, true);
    EXPECT_FLOAT_EQ(reverb.getTr0(), 0.1f);
}

TEST(Reverb, ShelfGainsFollowTheLineLengthAndTheBandRatios)
{
    // tr0 2 s and trh 0.5: a line of 0.1 s loses 60 * 0.1 / 2 = 3 dB a pass in the low and
    // middle bands and 6 dB in the high band.
    Reverb reverb(8);
    reverb.setDelays(ondo::Vector<float>(8, 100.0f), true);
    setDecay(reverb, 2.0f, 1.0f, 1.0f, 0.5f, 250.0f, 8000.0f);
    for (std::uint32_t i = 0; i < 8; ++i)
    {
        const auto p = reverb.getFilter(i).getParameters();
        EXPECT_FLOAT_EQ(p.G0, 0.0f);
        EXPECT_NEAR(p.Gl, -3.0f, 1e-5f);
        EXPECT_NEAR(p.Gm, -3.0f, 1e-5f);
        EXPECT_NEAR(p.Gh, -6.0f, 1e-5f);
    }
    // Equal lines keep 10^(-6 d / T) of the power a pass: g = sqrt(10^(6 d / T) - 1).
    EXPECT_NEAR(reverb.getInputGain().getTargetValue(), std::sqrt(std::pow(10.0, 0.3) - 1.0), 1e-4);
}

TEST(Reverb, ChangeOfSampleRateEmptiesTheNetworkAndRestartsTheInputGain)
{
    FlushToZero flush;
    Reverb reverb(8);
    render(reverb, impulseOnFirstChannel(), 4096);
    const float g = reverb.getInputGain().getTargetValue();
    ASSERT_NE(g, 1.0f);
    reverb.changeSampleRate(48000.0f);
    EXPECT_FLOAT_EQ(reverb.getInputGain().getCurrentValue(), 1.0f);
    EXPECT_FLOAT_EQ(reverb.getInputGain().getTargetValue(), g);
    EXPECT_EQ(reverb.getInputGain().getRemainingSamples(), 2400u) << "50 ms at 48 kHz";
    const auto tail = render(reverb, {}, 4096);
    for (const auto& channel : tail)
        for (float v : channel)
            ASSERT_EQ(v, 0.0f);
}

TEST(Reverb, ProcessAllocatesNothingAndLeavesNoDenormals)
{
    FlushToZero flush;
    Reverb reverb(16);
    reverb.setTr0(0.2f, true);
    const auto noise = tarvo::testing::seededNoise(64, 7);
    ChannelBlock in(16, 64), out(16, 64);
    {
        const auto values = noise;
        std::copy(values.begin(), values.end(), in.data[3].begin()); // keeps the channel pointers valid
    }
    reverb.process(out.pointers.data(), in.pointers.data(), 64);
    in.data[3].assign(64, 0.0f);
    tarvo::testing::AllocationScope scope;
    bool denormal = false;
    for (int block = 0; block < 4000; ++block)
    {
        reverb.process(out.pointers.data(), in.pointers.data(), 64);
        for (const auto& channel : out.data)
            for (float v : channel)
                denormal |= std::fpclassify(v) == FP_SUBNORMAL;
    }
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_FALSE(denormal);
}
TEST(Reverb, DelayJumpAfterSteadyBlocksTakesEffectAtOnce)
{
    // Settled lines move their reads on from block to block; a jump handed over between two
    // such blocks must move every read at once. An impulse after the jump first comes back
    // on each line exactly that line's new delay later.
    Reverb reverb(8);
    render(reverb, {}, 64 * 300);
    ondo::Vector<float> delays{401.0f, 523.0f, 617.0f, 709.0f, 811.0f, 919.0f, 1013.0f, 1117.0f};
    const ondo::Vector<float> samples = delays;
    for (float& d : delays)
        d = d * 1000.0f / rate;
    reverb.setDelays(delays, true);
    std::vector<std::vector<float>> input(1, std::vector<float>(65, 0.0f));
    input[0][64] = 1.0f;
    const auto response = render(reverb, input, 64 * 20);
    for (std::uint32_t line = 0; line < 8; ++line)
    {
        std::size_t first = 0;
        while (first < response[line].size() && response[line][first] == 0.0f)
            ++first;
        EXPECT_EQ(first, 64u + static_cast<std::size_t>(samples[line])) << "line " << line;
    }
}

// The sums must be the same whether a chunk runs in one pass or step by step: line counts
// with and without the one-pass kernel, blocks cut into unequal chunks, a decay change that
// crossfades the shelves for a while, and air switched on halfway. The output must not
// change with the sums asked for, nor the sums with the output left unwritten, and no block
// may allocate.
TEST(Reverb, SumsOfInputAndOutputAreTheSameInEveryPath)
{
    const float dry = 0.35f;
    const float wet = 0.6f;
    for (std::uint32_t lines : {4u, 8u, 12u, 16u})
    {
        Reverb plain(lines), summing(lines), summingOnly(lines);
        ChannelBlock in(lines, 100), out(lines, 100), summedOut(lines, 100), sums(lines, 100), onlySums(lines, 100);
        std::size_t allocations = 0;
        for (int block = 0; block < 120; ++block)
        {
            for (Reverb* reverb : {&plain, &summing, &summingOnly})
            {
                if (block == 40)
                    reverb->setTr0(3.0f, false);
                if (block == 80)
                    reverb->setAirEnabled(true);
            }
            for (std::uint32_t c = 0; c < lines; ++c)
            {
                const auto noise = tarvo::testing::seededNoise(100, 1000u * c + static_cast<std::uint32_t>(block));
                std::copy(noise.begin(), noise.end(), in.data[c].begin()); // the pointers stay valid
            }
            plain.process(out.pointers.data(), in.pointers.data(), 100);
            {
                tarvo::testing::AllocationScope scope;
                summing.processWithSums(summedOut.pointers.data(), in.pointers.data(), sums.pointers.data(), dry,
                                        wet, 100);
                summingOnly.processWithSums(nullptr, in.pointers.data(), onlySums.pointers.data(), dry, wet, 100);
                allocations += scope.count();
            }
            for (std::uint32_t c = 0; c < lines; ++c)
            {
                ASSERT_EQ(summedOut.data[c], out.data[c]) << lines << " lines, block " << block;
                std::vector<float> expected(100);
                for (std::size_t i = 0; i < expected.size(); ++i)
                {
                    expected[i] = 0.0f + in.data[c][i] * dry;
                    expected[i] += out.data[c][i] * wet;
                }
                ASSERT_EQ(sums.data[c], expected) << lines << " lines, block " << block << ", line " << c;
                ASSERT_EQ(onlySums.data[c], expected) << lines << " lines, block " << block << ", line " << c;
            }
        }
        EXPECT_EQ(allocations, 0u) << lines << " lines";
    }
}

// Sixteen lines run their steady chunks in one pass in the wider body, and step by step on
// the baseline; the one pass hands the shelves' delay lines back after every chunk. Whatever
// changes or runs the shelves in between, both must give the same samples: through a decay
// change (a crossfade, then other shelves), a clear, air on (another pass runs the shelves)
// and off again, a buffer-size change, a rate change, and blocks cut into unequal chunks.
TEST(Reverb, OnePassAndStepsGiveTheSameSamplesThroughEveryChange)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    const std::uint32_t lines = 16;
    Reverb onePass(lines), steps(lines);
    ChannelBlock in(lines, 100), outOnePass(lines, 100), outSteps(lines, 100);
    for (int block = 0; block < 420; ++block)
    {
        for (Reverb* reverb : {&onePass, &steps})
        {
            if (block == 0 || block == 150)
                reverb->setAirEnabled(false);
            if (block == 60)
                reverb->clear();
            if (block == 120)
                reverb->setAirEnabled(true);
            if (block == 210)
                reverb->setTr0(1.5f, false);
            if (block == 300)
                reverb->setBufferSize(512);
            if (block == 360)
                reverb->setSampleRate(48000.0f);
        }
        const std::uint32_t n = block % 3 == 0 ? 100 : 64;
        for (std::uint32_t c = 0; c < lines; ++c)
        {
            const auto noise = tarvo::testing::seededNoise(100, 1000u * c + static_cast<std::uint32_t>(block));
            std::copy(noise.begin(), noise.end(), in.data[c].begin());
        }
        ondo::simd::allowWideVectors(true);
        onePass.process(outOnePass.pointers.data(), in.pointers.data(), n);
        ondo::simd::allowWideVectors(false);
        steps.process(outSteps.pointers.data(), in.pointers.data(), n);
        for (std::uint32_t c = 0; c < lines; ++c)
            ASSERT_EQ(outOnePass.data[c], outSteps.data[c]) << "block " << block << ", line " << c;
    }
}
} // namespace
