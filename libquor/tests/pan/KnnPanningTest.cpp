#include "pan/QuorKnnPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Point3;
using ondo::Point3Array;

TEST(KnnPanning, GainsMatchABruteForceNearestSearch)
{
    std::mt19937 random(77);
    std::uniform_real_distribution<float> box(-5.0f, 5.0f);
    constexpr std::uint32_t n = 40;
    Point3Array speakers;
    for (std::uint32_t i = 0; i < n; ++i)
        speakers.pushBack({box(random), box(random), box(random)});
    Quor::KnnPanning p(1, n);
    p.setSpeakers(speakers);
    EXPECT_FALSE(p.is2D());
    for (int query = 0; query < 2000; ++query)
    {
        const std::uint32_t k = std::array<std::uint32_t, 5>{1, 2, 5, 17, n}[query % 5];
        p.setKnnNumberOfNeighbors(0, k);
        const Point3 s(box(random) * 1.4f, box(random) * 1.4f, box(random) * 1.4f);
        p.setSourcePosition(0, s, true);
        // Every distance in double, all speakers sorted: the k first are the neighbours.
        std::vector<double> d(n);
        for (std::uint32_t i = 0; i < n; ++i)
            d[i] = std::sqrt(std::pow(double(s.x) - speakers[i].x, 2) + std::pow(double(s.y) - speakers[i].y, 2) +
                             std::pow(double(s.z) - speakers[i].z, 2));
        std::vector<std::uint32_t> order(n);
        std::iota(order.begin(), order.end(), 0u);
        std::sort(order.begin(), order.end(), [&](auto a, auto b) { return d[a] < d[b]; });
        double power = 0.0;
        for (std::uint32_t i = 0; i < k; ++i)
            power += 1.0 / (d[order[i]] * d[order[i]]);
        std::vector<double> expected(n, 0.0);
        for (std::uint32_t i = 0; i < k; ++i)
            expected[order[i]] = 1.0 / d[order[i]] / std::sqrt(power);
        const std::vector<float> g = gainsOf(p, 0);
        for (std::uint32_t i = 0; i < n; ++i)
        {
            // Zero means not a neighbour: that must hold exactly.
            ASSERT_EQ(g[i] == 0.0f, expected[i] == 0.0) << "query " << query << " k " << k << " speaker " << i;
            ASSERT_NEAR(g[i], expected[i], 1e-5 * expected[i]) << "query " << query << " k " << k;
        }
    }
}

TEST(KnnPanning, NeighbourCountIsClampedAndEqualDistancesShareEqually)
{
    constexpr std::uint32_t n = 7;
    Quor::KnnPanning p(2, n);
    EXPECT_TRUE(p.is2D()) << "the default layout stands on the horizon";
    EXPECT_EQ(p.getKnnNumberOfNeighbors(1), 1u);
    p.setKnnNumberOfNeighbors(0, 0);
    EXPECT_EQ(p.getKnnNumberOfNeighbors(0), 1u);
    p.setKnnNumberOfNeighbors(0, 99);
    EXPECT_EQ(p.getKnnNumberOfNeighbors(0), n);
    p.setKnnNumberOfNeighbors(5, 3); // no such source: nothing
    p.setSourcePosition(0, {0, 0, 0}, true);
    for (float g : gainsOf(p, 0))
        EXPECT_NEAR(g, 1.0f / std::sqrt(float(n)), 1e-6f);
    // One neighbour: the nearest speaker alone, at full gain, even on top of it.
    p.setKnnNumberOfNeighbors(1, 1);
    p.setSourcePosition(1, p.getSpeakersPosition()[4], true);
    for (std::uint32_t o = 0; o < n; ++o)
        EXPECT_EQ(gainsOf(p, 1)[o], o == 4 ? 1.0f : 0.0f);
}

TEST(KnnPanning, OneSpeakerAlwaysSoundsAndHeightDecidesTheDimension)
{
    Quor::KnnPanning one(1, 1);
    one.setSourcePosition(0, {3, -2, 1}, true);
    EXPECT_EQ(gainsOf(one, 0), std::vector<float>{1.0f});
    Quor::KnnPanning p(1, 3);
    for (const auto& [elevation, flat] : {std::pair{0.4f, true}, std::pair{-0.45f, true}, std::pair{0.6f, false}})
    {
        Point3Array speakers = Point3Array::defaultLayout(3);
        speakers[1] = ondo::Coordinates::fromNavigational(30.0f, elevation, 2.0f);
        p.setSpeakers(speakers);
        EXPECT_EQ(p.is2D(), flat) << elevation;
    }
}
} // namespace
