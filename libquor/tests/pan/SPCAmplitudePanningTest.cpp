#include "pan/QuorSPCAmplitudePanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;
using ondo::Point3Array;

/// The SPCAP law straight from navigational azimuths in degrees: a raised cosine towards
/// the source, divided by the speaker's crowding (half the sum of raised cosines to all
/// speakers), then brought to unit power.
std::vector<double> spcap(const std::vector<double>& speakers, double source)
{
    const double rad = std::numbers::pi / 180.0;
    std::vector<double> g;
    double power = 0.0;
    for (double a : speakers)
    {
        double crowding = 0.0;
        for (double b : speakers)
            crowding += 0.5 * (1.0 + std::cos((a - b) * rad));
        g.push_back(0.5 * (1.0 + std::cos((a - source) * rad)) / crowding);
        power += g.back() * g.back();
    }
    for (double& v : g)
        v /= std::sqrt(power);
    return g;
}

TEST(SPCAmplitudePanning, IrregularRingsFollowThePublishedLaw)
{
    const std::vector<std::vector<double>> rings = {
        {0, 20, 70, 150, 200, 300},
        {-30, 30, 110, -110},
        {0, 5, 10, 15, 180},
        {-45, 0, 45, 90, 135, 180, -135, -90},
    };
    for (const auto& ring : rings)
    {
        Point3Array speakers;
        for (std::size_t i = 0; i < ring.size(); ++i)
            speakers.pushBack(Coordinates::fromNavigational(float(ring[i]), 10.0f * i, 1.0f + 0.5f * i));
        Quor::SPCAmplitudePanning p(1, static_cast<std::uint32_t>(ring.size()));
        p.setSpeakers(speakers);
        for (int azimuth = -180; azimuth < 180; azimuth += 3)
        {
            // Elevation and distance play no part.
            p.setSourcePosition(0, Coordinates::fromNavigational(float(azimuth), 35.0f, 0.2f + (azimuth & 7)), true);
            const std::vector<double> expected = spcap(ring, azimuth);
            const std::vector<float> g = gainsOf(p, 0);
            // Angles go through single-precision atan2 and cos: about 1e-6 on a gain.
            for (std::size_t o = 0; o < g.size(); ++o)
                ASSERT_NEAR(g[o], expected[o], 3e-6) << "ring of " << ring.size() << " at " << azimuth;
        }
    }
}

TEST(SPCAmplitudePanning, SharedAndOpposedDirections)
{
    // Two speakers in the source's direction, at different distances: equal halves.
    Quor::SPCAmplitudePanning pair(1, 2);
    pair.setSpeakers({{0, 1, 0}, {0, 3, 0.5f}});
    pair.setSourcePosition(0, {0, 2, 0}, true);
    for (float g : gainsOf(pair, 0))
        EXPECT_NEAR(g, std::sqrt(0.5f), 1e-6f);
    // A source straight behind the only speaker has no share at all: silence, not 0 / 0.
    Quor::SPCAmplitudePanning one(1, 1);
    one.setSourcePosition(0, {0, -1, 0}, true);
    EXPECT_EQ(gainsOf(one, 0), std::vector<float>{0.0f});
    one.setSourcePosition(0, {1, 0.2f, 0}, true);
    EXPECT_NEAR(gainsOf(one, 0)[0], 1.0f, 1e-7f);
}
} // namespace
