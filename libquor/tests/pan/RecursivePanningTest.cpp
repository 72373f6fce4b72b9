#include "pan/QuorRecursivePanning.h"
#include "pan/QuorSurroundPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;
using ondo::Point3;

Point3 at(float azimuth, float distance = 1.0f)
{
    return Coordinates::fromNavigational(azimuth, 0.0f, distance);
}

TEST(RecursivePanning, PowersSumToOneForEveryCountAndPosition)
{
    // Every split keeps the sum of its two powers, and the corners sum to 1.
    for (std::uint32_t n : {4u, 5u, 6u, 7u, 8u, 12u})
    {
        Quor::RecursivePanning p(1, n);
        p.setSpeakers(ondo::Point3Array::defaultLayout(n));
        std::mt19937 random(n);
        std::uniform_real_distribution<float> u(-2.0f, 2.0f);
        for (int trial = 0; trial < 200; ++trial)
        {
            p.setSourcePosition(0, {u(random), u(random), u(random)}, true);
            EXPECT_NEAR(powerOf(gainsOf(p, 0)), 1.0f, 1e-5f) << n;
        }
    }
}

TEST(RecursivePanning, CentreSoundsOnAllFourCornersAlike)
{
    Quor::RecursivePanning p(1, 4);
    p.setSourcePosition(0, {0, 0, 0}, true);
    for (float g : gainsOf(p, 0))
        EXPECT_NEAR(g, 0.5f, 1e-6f);
    EXPECT_FALSE(p.is2D());
}

TEST(RecursivePanning, SourceOnACornerSoundsThereAlone)
{
    Quor::RecursivePanning p(1, 4);
    p.setSourcePosition(0, at(45.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[1], 1.0f, 1e-6f);
    EXPECT_NEAR(g[0] + g[2] + g[3], 0.0f, 1e-3f);
    // Half way between the front corners: equal power on the two.
    p.setSourcePosition(0, at(0.0f), true);
    const std::vector<float> h = gainsOf(p, 0);
    EXPECT_NEAR(h[0], std::sqrt(0.5f), 1e-6f);
    EXPECT_NEAR(h[1], std::sqrt(0.5f), 1e-6f);
}

TEST(RecursivePanning, SpeakersMoveTheCorners)
{
    Quor::RecursivePanning p(1, 4);
    const float layout[] = {-30, 1, 30, 1, 110, 1, -110, 1};
    p.setSpeakers(ondo::Point3Array::fromFormat(Coordinates::ad, layout, 8));
    p.setSourcePosition(0, at(30.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[1], 1.0f, 1e-5f) << "the corner follows the speaker at 30";
    p.setSourcePosition(0, at(-110.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[3], 1.0f, 1e-5f);
}

TEST(RecursivePanning, FiveSpeakersPutAFrontSourceOnTheCentre)
{
    Quor::RecursivePanning p(1, 5);
    p.setSpeakers(ondo::Point3Array::defaultLayout(5));
    p.setSourcePosition(0, at(0.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[1], 1.0f, 1e-5f);
}

TEST(SurroundPanning, ThreeAndFourSpeakerLaws)
{
    Quor::SurroundPanning three(1, 3), four(1, 4);
    for (Quor::SurroundPanning* p : {&three, &four})
    {
        for (float a : {-170.0f, -60.0f, 0.0f, 20.0f, 95.0f})
        {
            p->setSourcePosition(0, at(a), true);
            EXPECT_NEAR(powerOf(gainsOf(*p, 0)), 1.0f, 1e-5f) << a;
        }
        p->setSourcePosition(0, at(180.0f), true);
        EXPECT_NEAR(gainsOf(*p, 0).back(), 1.0f, 1e-5f) << "the rear goes to the surround";
    }
    four.setSourcePosition(0, at(0.0f), true);
    EXPECT_NEAR(gainsOf(four, 0)[1], 1.0f, 1e-5f) << "the front goes to the centre";
    three.setSourcePosition(0, at(-30.0f), true);
    EXPECT_NEAR(gainsOf(three, 0)[0], 1.0f, 1e-5f);
    EXPECT_EQ(three.getOutletName(2), "S");
    EXPECT_EQ(four.getOutletName(1), "C");
    EXPECT_EQ(four.getOutletName(4), "dumpout");
}
} // namespace
