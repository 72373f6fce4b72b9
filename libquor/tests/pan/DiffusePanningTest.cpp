#include "pan/QuorDiffusePanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;
using Quor::DiffusePanning;

TEST(DiffusePanning, FourToFourIsAPermutation)
{
    // Source i enters channel 3 - i, and channel c reaches the speaker j with p(j) = c.
    const DiffusePanning p(4, 4);
    const int speakerOf[4] = {2, 1, 0, 3};
    for (std::uint32_t i = 0; i < 4; ++i)
        for (std::uint32_t o = 0; o < 4; ++o)
            EXPECT_EQ(p.getMatrix().getGain(i, o), o == std::uint32_t(speakerOf[i]) ? 1.0f : 0.0f) << i << " " << o;
}

TEST(DiffusePanning, EightSourcesOnTwoSpeakersAlternate)
{
    const DiffusePanning p(8, 2);
    for (std::uint32_t i = 0; i < 8; ++i)
    {
        EXPECT_EQ(p.getMatrix().getGain(i, 0), i % 2 == 0 ? 0.5f : 0.0f) << i;
        EXPECT_EQ(p.getMatrix().getGain(i, 1), i % 2 == 1 ? 0.5f : 0.0f) << i;
    }
}

TEST(DiffusePanning, EverySpeakerReceivesUnitPowerOrNothing)
{
    for (std::uint32_t sources = 1; sources <= 16; ++sources)
        for (std::uint32_t speakers = 1; speakers <= 16; ++speakers)
        {
            const DiffusePanning p(sources, speakers);
            for (std::uint32_t o = 0; o < speakers; ++o)
            {
                float power = 0.0f;
                for (std::uint32_t i = 0; i < sources; ++i)
                    power += p.getMatrix().getGain(i, o) * p.getMatrix().getGain(i, o);
                // A speaker no source reaches is left not-a-number, and the mix skips it.
                if (!std::isnan(power))
                {
                    EXPECT_NEAR(power, 1.0f, 1e-6f) << sources << " to " << speakers << ", speaker " << o;
                }
            }
        }
}

TEST(DiffusePanning, SixteenSpeakersFollowTheirOrder)
{
    // With 16 speakers, speaker j takes channel p(j) mod 4, so the four channels each feed
    // four speakers.
    const DiffusePanning p(4, 16);
    for (std::uint32_t o = 0; o < 16; ++o)
    {
        const std::uint32_t channel = DiffusePanning::permutation(16, o) % 4;
        EXPECT_EQ(p.getMatrix().getGain(3 - channel, o), 1.0f) << o;
    }
}

TEST(DiffusePanning, MixesWithoutAllocatingAndIgnoresPositions)
{
    DiffusePanning p(4, 4);
    Block in(4, 64), out(4, 64, 9.0f);
    for (std::uint32_t c = 0; c < 4; ++c)
        for (int j = 0; j < 64; ++j)
            in.data[c][j] = static_cast<float>(c + 1);
    tarvo::testing::AllocationScope scope;
    p.setSourcePosition(0, {5, 5, 5}, true);
    p.process(out.get(), in.get(), 64);
    p.processAdd(out.get(), in.get(), 64);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_EQ(out.data[2][10], 2.0f) << "source 0 (value 1) on speaker 2, twice";
    EXPECT_EQ(out.data[3][10], 8.0f);
    EXPECT_FALSE(p.is2D());
}
} // namespace
