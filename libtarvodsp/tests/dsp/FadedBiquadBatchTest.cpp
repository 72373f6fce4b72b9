#include "dsp/TarvoDspFadedBiquadBatch.h"
#include "dsp/TarvoDspFadedHLShelf.h"

#include "AllocationCounter.h"
#include "TestSignals.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using ondo::FadedBiquadBatch;
using ondo::FadedHLShelf;
using ondo::HLShelfParameters;
using tarvo::testing::seededNoise;

// The batch must give each channel exactly what its own kernel gives, steady or fading, and
// start every block empty: a batch run twice a block (two cascaded stages) is the case.
TEST(FadedBiquadBatch, CascadedStagesMatchEachChannelsOwnKernel)
{
    constexpr std::uint32_t numChannels = 6;
    constexpr std::uint32_t n = 37;
    std::vector<FadedHLShelf> first(numChannels), second(numChannels), firstAlone(numChannels),
        secondAlone(numChannels);
    for (std::uint32_t c = 0; c < numChannels; ++c)
    {
        const HLShelfParameters a{0.0f, -1.0f, -2.0f - c, -6.0f, 250.0f, 4000.0f};
        const HLShelfParameters b{0.0f, 0.0f, -0.1f * c, -3.0f, 300.0f, 9000.0f};
        first[c].setParameters(a, true);
        firstAlone[c].setParameters(a, true);
        second[c].setParameters(b, true);
        secondAlone[c].setParameters(b, true);
    }
    FadedBiquadBatch batch(numChannels);
    for (int block = 0; block < 60; ++block)
    {
        if (block == 10) // channel 2 fades while the others stay steady
        {
            first[2].setParameters({0.0f, -4.0f, -4.0f, -9.0f, 250.0f, 4000.0f}, false);
            firstAlone[2].setParameters({0.0f, -4.0f, -4.0f, -9.0f, 250.0f, 4000.0f}, false);
        }
        std::vector<std::vector<float>> io(numChannels), expected(numChannels);
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            io[c] = seededNoise(n, 31u * static_cast<unsigned>(block) + c);
            expected[c] = io[c];
            firstAlone[c].filterBlock(expected[c].data(), expected[c].data(), n);
            secondAlone[c].filterBlock(expected[c].data(), expected[c].data(), n);
        }
        for (std::uint32_t c = 0; c < numChannels; ++c)
            batch.add(first[c], io[c].data(), io[c].data(), n);
        batch.run(n);
        for (std::uint32_t c = 0; c < numChannels; ++c)
            batch.add(second[c], io[c].data(), io[c].data(), n);
        batch.run(n);
        for (std::uint32_t c = 0; c < numChannels; ++c)
            ASSERT_EQ(io[c], expected[c]) << "block " << block << " channel " << c;
    }
}

// Channels through two filters in series, one of them fading now and then, against the two
// filters' own blocks in turn.
TEST(FadedBiquadBatch, PairsInSeriesMatchTheTwoKernelsInTurn)
{
    constexpr std::uint32_t numChannels = 9;
    constexpr std::uint32_t n = 64;
    std::vector<FadedHLShelf> first(numChannels), second(numChannels), firstAlone(numChannels),
        secondAlone(numChannels);
    auto design = [](std::uint32_t c, int version) {
        return HLShelfParameters{0.0f, -1.0f * version, -2.0f - c, -6.0f, 250.0f, 4000.0f};
    };
    for (std::uint32_t c = 0; c < numChannels; ++c)
    {
        first[c].setParameters(design(c, 1), true);
        firstAlone[c].setParameters(design(c, 1), true);
        second[c].setParameters(design(c + 3, 2), true);
        secondAlone[c].setParameters(design(c + 3, 2), true);
    }
    FadedBiquadBatch batch(numChannels);
    for (int block = 0; block < 80; ++block)
    {
        if (block % 25 == 5) // a fade in the first filter of one channel, the second of another
        {
            first[1].setParameters(design(1, block), false);
            firstAlone[1].setParameters(design(1, block), false);
            second[7].setParameters(design(7, block), false);
            secondAlone[7].setParameters(design(7, block), false);
        }
        std::vector<std::vector<float>> in(numChannels), out(numChannels), expected(numChannels);
        for (std::uint32_t c = 0; c < numChannels; ++c)
        {
            in[c] = seededNoise(n, 7u * static_cast<unsigned>(block) + c);
            out[c].assign(n, 0.0f);
            expected[c] = in[c];
            firstAlone[c].filterBlock(expected[c].data(), expected[c].data(), n);
            secondAlone[c].filterBlock(expected[c].data(), expected[c].data(), n);
            batch.add(first[c], second[c], out[c].data(), in[c].data(), n);
        }
        batch.run(n);
        for (std::uint32_t c = 0; c < numChannels; ++c)
            ASSERT_EQ(out[c], expected[c]) << "block " << block << " channel " << c;
    }
}

TEST(FadedBiquadBatch, RunningAllocatesNothing)
{
    std::vector<FadedHLShelf> shelves(4);
    for (auto& s : shelves)
        s.setParameters({0.0f, -1.0f, -2.0f, -6.0f, 250.0f, 4000.0f}, true);
    FadedBiquadBatch batch(4);
    std::vector<std::vector<float>> io(4, seededNoise(16, 3));
    tarvo::testing::AllocationScope scope;
    for (int block = 0; block < 10; ++block)
    {
        for (int c = 0; c < 4; ++c)
            batch.add(shelves[c], io[c].data(), io[c].data(), 16);
        batch.run(16);
    }
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
