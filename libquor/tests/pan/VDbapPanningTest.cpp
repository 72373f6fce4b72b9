#include "pan/QuorDbapPanning3D.h"
#include "pan/QuorVDbapPanning.h"
#include "pan/QuorVbapPanning.h"

#include "PanTestSupport.h"
#include "SpeakerLayouts.h"
#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Point3;
using ondo::Point3Array;

TEST(VDbapPanning, VbapBeyondTheRimDbapAtTheCentreAndALinearBlendBetween)
{
    // A dome: its centre stands above the listener, so the blend's distance is not the
    // source's distance from the origin.
    const Point3Array dome = tarvo::testing::twoRingDome(2.0f, 40.0f, 20.0f, true);
    const auto n = static_cast<std::uint32_t>(dome.size());
    Quor::VDbapPanning p(1, n);
    p.setSpeakers(dome);
    Quor::VbapPanning vbap(1, n);
    vbap.setSpeakers(dome);
    Quor::DbapPanning3D dbap(1, n);
    dbap.setSpeakers(dome);
    const Point3 c = dome.centroid();
    const float radius = dome.maxDistanceTo(c);
    EXPECT_EQ(p.getCenter(), c);
    EXPECT_EQ(p.getRadius(), radius);

    std::mt19937 random(3);
    std::normal_distribution<float> normal;
    // Fraction of the radius, weight of the VBAP row.
    const std::vector<std::pair<float, float>> rings = {{0.0f, 0.0f}, {0.35f, 0.0f}, {0.7f, 0.0f}, {0.85f, 0.25f},
                                                        {1.0f, 0.5f}, {1.15f, 0.75f}, {1.3f, 1.0f}, {3.0f, 1.0f}};
    for (int trial = 0; trial < 200; ++trial)
    {
        const Point3 direction = Point3(normal(random), normal(random), std::fabs(normal(random))).normalized();
        for (const auto& [fraction, wV] : rings)
        {
            const Point3 s = c + direction * (fraction * radius);
            p.setSourcePosition(0, s, true);
            vbap.setSourcePosition(0, s, true);
            dbap.setSourcePosition(0, s, true);
            const std::vector<float> g = gainsOf(p, 0), v = gainsOf(vbap, 0), d = gainsOf(dbap, 0);
            // The weight is a float ratio of distances: a few ulps.
            for (std::uint32_t o = 0; o < n; ++o)
                ASSERT_NEAR(g[o], wV * v[o] + (1.0f - wV) * d[o], 2e-6f) << fraction << " speaker " << o;
        }
    }
}

TEST(VDbapPanning, PlanarLayoutIsRefusedByTheVbapSideAlone)
{
    Quor::VDbapPanning p(2, 6);
    try
    {
        p.setSpeakers(Point3Array::defaultLayout(6));
        ADD_FAILURE() << "a ring has no triplets";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(), "cannot build a 3-D vbap : the loudspeaker setup is planar.");
    }
    // The DBAP side took the ring: near the centre the source sounds at unit power;
    // beyond the rim the VBAP side has nothing to give.
    p.setSourcePosition(0, {0.1f, 0.2f, 0}, true);
    p.setSourcePosition(1, {0, 5, 0}, true);
    EXPECT_NEAR(powerOf(gainsOf(p, 0)), 1.0f, 1e-5f);
    EXPECT_EQ(powerOf(gainsOf(p, 1)), 0.0f);
    EXPECT_THROW(p.setSpeakers(tarvo::testing::cube()), ondo::Exception) << "8 positions for 6 speakers";
}
} // namespace
