#include "reverb/QuorDelgen.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
void expectDelays(const ondo::Vector<float>& actual, const std::vector<double>& printed, double halfDigit)
{
    ASSERT_EQ(actual.size(), printed.size());
    for (std::size_t i = 0; i < printed.size(); ++i)
        EXPECT_NEAR(actual[i], printed[i], halfDigit) << i;
}

void expectAscendingBetweenTheEnds(const Quor::Delgen& g)
{
    const auto& d = g.getDelays();
    ASSERT_EQ(d.size(), g.getNumDelays());
    EXPECT_FLOAT_EQ(d[0], d.size() == 1 ? g.getMaximum() : g.getMinimum());
    EXPECT_FLOAT_EQ(d[d.size() - 1], g.getMaximum());
    for (std::size_t i = 1; i < d.size(); ++i)
        EXPECT_LT(d[i - 1], d[i]) << i;
}

TEST(Delgen, EightDelaysGiveThePrintedSeries)
{
    Quor::Delgen g(8, 22.22f, 39.71f, 0.5f);
    // Half a unit of the last printed digit.
    EXPECT_NEAR(g.getSeriesMean(), 0.41429, 5e-6);
    expectDelays(g.getDelays(), {22.22, 25.297, 26.636, 28.913, 32.274, 34.406, 36.777, 39.71}, 5e-4);
}

TEST(Delgen, FourDelaysUseTwoElevenTwentyThreeAndThirtySeven)
{
    Quor::Delgen g(4, 22.22f, 39.71f, 0.5f);
    // The four values in use, (v - 2) / 35, and their mean.
    EXPECT_NEAR(g.getSeriesMean(), (0.0 + 9.0 + 21.0 + 35.0) / 35.0 / 4.0, 1e-6);
    expectDelays(g.getDelays(), {22.22, 27.61, 33.454, 39.71}, 5e-4);
}

TEST(Delgen, EntriesJoinInTheirOrder)
{
    // Seven delays add the value 7 (entry 2) to the six; the table's first eight span the range.
    Quor::Delgen g(7, 10.0f, 50.0f, 0.5f);
    const auto& order = g.getOrder();
    int inUse = 0;
    for (std::size_t i = 0; i < order.size(); ++i)
        inUse += order[i] <= 7 ? 1 : 0;
    EXPECT_EQ(inUse, 7);
    EXPECT_FLOAT_EQ(g.getSeries()[7], 1.0f) << "37 ends the span up to eight delays";
    EXPECT_FLOAT_EQ(g.getSeries()[2], 5.0f / 35.0f);
    g.setNumDelays(12);
    EXPECT_FLOAT_EQ(g.getSeries()[11], 1.0f) << "82 ends the span at twelve";
    expectAscendingBetweenTheEnds(g);
}

TEST(Delgen, OneDelayIsTheMaximum)
{
    // The only entry in use is 0 after normalising; 0 to the power 0 is 1.
    Quor::Delgen g(1, 20.0f, 40.0f, 0.5f);
    EXPECT_EQ(g.getSeriesMean(), 0.0f);
    ASSERT_EQ(g.getDelays().size(), 1u);
    EXPECT_FLOAT_EQ(g.getDelays()[0], 40.0f);
}

TEST(Delgen, NarrowRangesWidenTo145SamplesAt44100)
{
    Quor::Delgen g(8, 30.0f, 30.0f, 0.5f);
    EXPECT_FLOAT_EQ(g.getMaximum() - g.getMinimum(), 145.0f / 44.1f);
    g.setMinMax(30.0f, 10.0f, 0.5f);
    EXPECT_EQ(g.getMinimum(), 30.0f);
    EXPECT_FLOAT_EQ(g.getMaximum(), 30.0f + 145.0f / 44.1f);
    g.setMinMax(0.2f, 0.3f, 0.5f);
    EXPECT_EQ(g.getMinimum(), 1.0f) << "floored at 1 ms";
    expectAscendingBetweenTheEnds(g);
}

TEST(Delgen, DistributionIsClampedAndMovesTheCentroid)
{
    Quor::Delgen g(8, 20.0f, 40.0f, 0.5f);
    const auto middle = g.setMinMax(20.0f, 40.0f, 0.5f);
    const auto early = g.setMinMax(20.0f, 40.0f, 0.01f);
    EXPECT_EQ(g.getDistribution(), 0.1f);
    const auto late = g.setMinMax(20.0f, 40.0f, 2.0f);
    EXPECT_EQ(g.getDistribution(), 0.9f);
    double meanEarly = 0, meanMiddle = 0, meanLate = 0;
    for (std::size_t i = 0; i < 8; ++i)
    {
        meanEarly += early[i] / 8.0;
        meanMiddle += middle[i] / 8.0;
        meanLate += late[i] / 8.0;
    }
    EXPECT_LT(meanEarly, meanMiddle);
    EXPECT_LT(meanMiddle, meanLate);
    // The ends stay fixed; the six inner delays move towards the centroid's side.
    EXPECT_LT(meanEarly, 25.0) << "a centroid of 0.1 gathers the delays at the start";
    EXPECT_GT(meanLate, 35.0);
}

TEST(Delgen, CountIsClampedToOneToSixtyFour)
{
    Quor::Delgen g(8, 20.0f, 40.0f, 0.5f);
    g.setMinMax(20.0f, 40.0f, 0.3f);
    g.setNumDelays(0);
    EXPECT_EQ(g.getNumDelays(), 1u);
    EXPECT_EQ(g.getDistribution(), 0.5f) << "a new count brings the default distribution back";
    g.setNumDelays(100);
    EXPECT_EQ(g.getNumDelays(), 64u);
    expectAscendingBetweenTheEnds(g);
}

TEST(Delgen, EveryCountGivesAscendingDelaysFromMinimumToMaximum)
{
    for (std::uint32_t n = 2; n <= 64; ++n)
    {
        Quor::Delgen g(n, 20.0f, 40.0f, 0.5f);
        SCOPED_TRACE(n);
        expectAscendingBetweenTheEnds(g);
        double total = 0;
        for (float d : g.getDelays())
            total += d;
        EXPECT_NEAR(g.getSum(), total, 1e-4 * total) << "endpoints aside, clamping changes nothing";
    }
}

TEST(Delgen, SeededSeriesIsTheSameInTwoGenerators)
{
    Quor::Delgen a(17, 20.0f, 40.0f, 0.5f);
    Quor::Delgen b(16, 20.0f, 40.0f, 0.5f);
    b.setNumDelays(17);
    EXPECT_EQ(a.getDelays(), b.getDelays());
    EXPECT_EQ(a.getSeries(), b.getSeries());
    EXPECT_EQ(a.getSeries()[0], 0.0f);
    EXPECT_EQ(a.getSeries()[16], 1.0f);
    Quor::Delgen c(40, 5.0f, 90.0f, 0.5f), d(40, 5.0f, 90.0f, 0.5f);
    EXPECT_EQ(c.getDelays(), d.getDelays());
}

TEST(Delgen, MinSumFindsTheMaximumForTheSum)
{
    Quor::Delgen g(8, 20.0f, 40.0f, 0.5f);
    // Mean delay 100 ms from a minimum of 52.91 with the centroid in the middle:
    // the maximum lies at (100 - 52.91) / 0.5 above the minimum.
    const auto delays = g.setMinSum(52.91f, 800.0f, 0.5f);
    EXPECT_FLOAT_EQ(g.getMaximum(), 52.91f + 94.18f);
    EXPECT_FLOAT_EQ(delays[0], 52.91f);
    EXPECT_FLOAT_EQ(delays[7], 147.09f);
    g.setMinSum(52.91f, 800.0f, 0.05f);
    EXPECT_EQ(g.getDistribution(), 0.05f) << "not clamped on this path";
    // A mean of 50 ms below the minimum: the maximum found, (50 - 52.91) / 0.05 + 52.91 =
    // -5.29, changes places with the minimum, which is then floored at 1.
    g.setSum(400.0f);
    EXPECT_FLOAT_EQ(g.getMaximum(), 52.91f);
    EXPECT_EQ(g.getMinimum(), 1.0f);
}
} // namespace
