#include "pan/QuorVbapPanning.h"
#include "pan/QuorVbipPanning.h"

#include "PanTestSupport.h"
#include "SpeakerLayouts.h"
#include "common/TarvoDspException.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;
using ondo::Point3;
using ondo::Point3Array;
using tarvo::testing::cube;
using tarvo::testing::octahedron;

/// Eight on the horizon, four at 40 degrees up: a dome open below and above.
Point3Array dome()
{
    return tarvo::testing::twoRingDome(1.0f, 40.0f, 0.0f, false);
}

Point3 randomDirection(std::mt19937& random)
{
    std::normal_distribution<float> g(0.0f, 1.0f);
    return Point3(g(random), g(random), g(random)).normalized();
}

TEST(VbapPanning, SurroundingLayoutsGiveUnitPowerFromOneTripletPointingAlongTheSource)
{
    for (const Point3Array& layout : {octahedron(), cube()})
    {
        Quor::VbapPanning p(1, static_cast<std::uint32_t>(layout.size()));
        p.setSpeakers(layout);
        std::mt19937 random(21);
        for (int trial = 0; trial < 1000; ++trial)
        {
            const Point3 d = randomDirection(random);
            p.setSourcePosition(0, d * 3.0f, true);
            const std::vector<float> g = gainsOf(p, 0);
            EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f);
            int sounding = 0;
            Point3 sum;
            for (std::size_t o = 0; o < g.size(); ++o)
            {
                EXPECT_GE(g[o], 0.0f);
                sounding += g[o] > 0.0f;
                sum += layout[o].normalized() * g[o];
            }
            EXPECT_LE(sounding, 3);
            // All speakers at one distance: the gains re-synthesise the direction.
            EXPECT_GT(sum.normalized().dot(d), 1.0f - 1e-5f);
        }
    }
}

TEST(VbapPanning, DomeTopHalfIsExactAndBelowItCutsNegativeGains)
{
    Quor::VbapPanning p(1, 12);
    p.setSpeakers(dome());
    p.setSourcePosition(0, Coordinates::fromNavigational(20.0f, 20.0f, 1.0f), true);
    Point3 sum;
    const std::vector<float> g = gainsOf(p, 0);
    for (std::size_t o = 0; o < g.size(); ++o)
        sum += dome()[o] * g[o];
    EXPECT_GT(sum.normalized().dot(Coordinates::fromNavigational(20.0f, 20.0f, 1.0f)), 1.0f - 1e-5f);
    p.setSourcePosition(0, Coordinates::fromNavigational(10.0f, -60.0f, 1.0f), true);
    const std::vector<float> below = gainsOf(p, 0);
    for (float v : below)
        EXPECT_GE(v, 0.0f);
    EXPECT_NEAR(powerOf(below), 1.0f, 1e-5f);
}

TEST(VbapPanning, VbipKeepsUnitIntensity)
{
    Quor::VbipPanning p(1, 6);
    p.setSpeakers(octahedron());
    std::mt19937 random(5);
    for (int trial = 0; trial < 200; ++trial)
    {
        p.setSourcePosition(0, randomDirection(random), true);
        EXPECT_NEAR(powerOf(gainsOf(p, 0)), 1.0f, 1e-5f);
    }
    // On the diagonal of a face the three raw gains are equal: 1/sqrt(3) each either way.
    p.setSourcePosition(0, {1, 1, 1}, true);
    EXPECT_NEAR(gainsOf(p, 0)[0], std::sqrt(1.0f / 3.0f), 1e-6f);
}

TEST(VbapPanning, PlanarLayoutIsRefusedAndSilencesThePanner)
{
    Quor::VbapPanning p(1, 6);
    try
    {
        p.setSpeakers(Point3Array::defaultLayout(6));
        FAIL() << "a ring is refused";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(), "cannot build a 3-D vbap : the loudspeaker setup is planar.");
        EXPECT_EQ(e.getLocation().file, "QuorVbapPanning");
    }
    EXPECT_FALSE(p.isValid());
    p.setSpeakers(octahedron());
    p.setSourcePosition(0, {0, 1, 0}, true);
    EXPECT_EQ(powerOf(gainsOf(p, 0)), 0.0f);
}

TEST(VbapPanning, BeforeSpeakersTheDefaultRingGivesNothing)
{
    Quor::VbapPanning p(2, 5);
    EXPECT_EQ(powerOf(gainsOf(p, 1)), 0.0f);
}

TEST(VbapPanning, InfosListTheTripletsFromOne)
{
    Quor::VbapPanning p(1, 6);
    p.setSpeakers(octahedron());
    Quor::StringArray lines;
    p.getInfos(lines);
    ASSERT_EQ(lines.size(), 2u + 8u);
    EXPECT_EQ(lines[0], "panning type : null") << "a panner built by hand has no type";
    EXPECT_EQ(lines[2].rfind("Triplet #1 : ", 0), 0u);
    EXPECT_EQ(lines[2].back(), ' ');
}

TEST(VbapPanning, SpreadInThreeDimensionsKeepsPower)
{
    Quor::VbapPanning p(3, 8);
    p.setSpeakers(cube());
    const Point3 d{0.3f, 1.0f, 0.2f};
    const float spreads[3] = {30.0f, 99.0f, 100.0f};
    for (std::uint32_t s = 0; s < 3; ++s)
    {
        p.setSourceSpread(s, spreads[s]);
        p.setSourcePosition(s, d, true);
        EXPECT_NEAR(powerOf(gainsOf(p, s)), 1.0f, 1e-5f);
    }
    EXPECT_EQ(gainsOf(p, 1), gainsOf(p, 2));
    int sounding = 0;
    for (float g : gainsOf(p, 1))
        sounding += g > 0.0f;
    EXPECT_GT(sounding, 3);
}
} // namespace
