#include "pan/QuorStereoMSPanning.h"
#include "pan/QuorStereoPanLaw.h"
#include "pan/QuorStereoXYPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;
using Quor::StereoPanLaw;

ondo::Point3 at(float azimuth, float distance = 1.0f)
{
    return Coordinates::fromNavigational(azimuth, 0.0f, distance);
}

TEST(StereoPanLaw, CentreDropFollowsTheLaw)
{
    StereoPanLaw p(1, 2);
    EXPECT_EQ(p.getLaw(), StereoPanLaw::SineMinus3);
    // Drop D dB at the centre: gain 10^(-D/20), the -3 dB laws being 1/sqrt(2) exactly.
    const std::pair<const char*, float> laws[] = {{"sin/cos -6 dB", 0.5f},
                                                  {"sin/cos -4.5dB", std::pow(0.5f, 0.75f)},
                                                  {"sin/cos (constant power)", std::sqrt(0.5f)},
                                                  {"root -6dB", 0.5f},
                                                  {"sqrt -4.5 dB", std::pow(0.5f, 0.75f)},
                                                  {"root (constant power)", std::sqrt(0.5f)}};
    for (const auto& [name, centre] : laws)
    {
        p.setLaw(name);
        p.setSourcePosition(0, at(0.0f), true);
        EXPECT_NEAR(gainsOf(p, 0)[0], centre, 1e-6f) << name;
        EXPECT_NEAR(gainsOf(p, 0)[1], centre, 1e-6f) << name;
    }
    EXPECT_EQ(StereoPanLaw::stringToLaw("Sin/cos -6 dB"), StereoPanLaw::SineMinus3) << "case exact";
}

TEST(StereoPanLaw, SidesAndRear)
{
    StereoPanLaw p(1, 2);
    p.setSourcePosition(0, at(-30.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], 1.0f, 1e-6f);
    EXPECT_NEAR(gainsOf(p, 0)[1], 0.0f, 1e-6f);
    EXPECT_FLOAT_EQ(StereoPanLaw::panPosition(180.0f), 0.5f);
    EXPECT_FLOAT_EQ(StereoPanLaw::panPosition(-180.0f), 0.5f);
    EXPECT_FLOAT_EQ(StereoPanLaw::panPosition(105.0f), 0.75f);
    // The constant-power law keeps power 1 everywhere.
    for (float a = -180.0f; a < 180.0f; a += 7.0f)
    {
        p.setSourcePosition(0, at(a), true);
        EXPECT_NEAR(powerOf(gainsOf(p, 0)), 1.0f, 1e-5f) << a;
    }
    EXPECT_TRUE(p.is2D());
}

TEST(StereoXYPanning, CardioidsAtFortyFiveDegrees)
{
    Quor::StereoXYPanning p(1, 2);
    p.setSourcePosition(0, {0, 0, 0}, true);
    EXPECT_FLOAT_EQ(gainsOf(p, 0)[0], 0.41421f);
    EXPECT_FLOAT_EQ(gainsOf(p, 0)[1], 0.41421f);
    // On the left cardioid's axis (-45): left at its peak 2 * 0.41421, right at the side.
    p.setSourcePosition(0, at(-45.0f, 3.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], 2.0f * 0.41421f, 1e-6f);
    EXPECT_NEAR(gainsOf(p, 0)[1], 0.41421f, 1e-6f);
    EXPECT_FALSE(p.is2D());
}

TEST(StereoMSPanning, MidFacesForwardAndSideToTheLeft)
{
    Quor::StereoMSPanning p(1, 2);
    p.setSourcePosition(0, at(0.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], 1.0f, 1e-6f);
    EXPECT_NEAR(gainsOf(p, 0)[1], 0.0f, 1e-6f);
    p.setSourcePosition(0, at(-90.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], 0.5f, 1e-6f);
    EXPECT_NEAR(gainsOf(p, 0)[1], 0.5f, 1e-6f);
    p.setSourcePosition(0, at(180.0f, 0.5f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], 0.25f, 1e-6f) << "half way in: half the pattern";
    EXPECT_EQ(p.getOutletName(0), "mid");
    EXPECT_EQ(p.getOutletName(1), "side");
    EXPECT_EQ(p.getOutletName(2), "dumpout");
}
} // namespace
