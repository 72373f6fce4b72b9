#include "pan/QuorAngularPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;
using Quor::AngularPanning;

TEST(AngularPanning, ConstantPowerOnTwoNeighboursForEveryAzimuth)
{
    for (std::uint32_t n : {2u, 3u, 5u, 8u, 11u})
    {
        AngularPanning p(1, n);
        const ondo::Point3Array layout = ondo::Point3Array::defaultLayout(n);
        std::vector<float> azimuths;
        for (const ondo::Point3& s : layout)
            azimuths.push_back(Coordinates::azimuthOf(s));
        std::sort(azimuths.begin(), azimuths.end());
        float widestGap = azimuths.front() + 360.0f - azimuths.back();
        for (std::size_t k = 1; k < azimuths.size(); ++k)
            widestGap = std::max(widestGap, azimuths[k] - azimuths[k - 1]);
        std::mt19937 random(n);
        std::uniform_real_distribution<float> azimuth(-180.0f, 180.0f);
        for (int trial = 0; trial < 300; ++trial)
        {
            const float a = azimuth(random);
            p.setSourcePosition(0, Coordinates::fromNavigational(a, 20.0f, 3.0f), true);
            const std::vector<float> g = gainsOf(p, 0);
            // Cosine and sine of one angle: power 1 to float rounding.
            EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f) << n << " speakers, azimuth " << a;
            int sounding = 0;
            for (std::uint32_t o = 0; o < n; ++o)
            {
                EXPECT_GE(g[o], -1e-7f);
                if (g[o] > 1e-6f)
                {
                    ++sounding;
                    // A sounding speaker is one of the two that enclose the source.
                    float gap = std::fabs(Coordinates::azimuthOf(layout[o]) - a);
                    gap = std::min(gap, 360.0f - gap);
                    EXPECT_LE(gap, widestGap + 1e-3f);
                }
            }
            EXPECT_LE(sounding, 2);
        }
    }
}

TEST(AngularPanning, HalfWayBetweenTwoSpeakersSplitsEvenly)
{
    AngularPanning p(1, 4); // -45, 45, 135, -135
    p.setSourcePosition(0, Coordinates::fromNavigational(0.0f, 0.0f, 1.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[0], std::sqrt(0.5f), 1e-6f);
    EXPECT_NEAR(g[1], std::sqrt(0.5f), 1e-6f);
    EXPECT_EQ(g[2], 0.0f);
    // A quarter of the way from 45 to 135: cos and sin of pi/8.
    p.setSourcePosition(0, Coordinates::fromNavigational(67.5f, 0.0f, 1.0f), true);
    const std::vector<float> h = gainsOf(p, 0);
    EXPECT_NEAR(h[1], std::cos(3.1415927f / 8.0f), 1e-5f);
    EXPECT_NEAR(h[2], std::sin(3.1415927f / 8.0f), 1e-5f);
}

TEST(AngularPanning, SourceOnASpeakerSoundsThereAlone)
{
    AngularPanning p(1, 5);
    p.setSourcePosition(0, Coordinates::fromNavigational(30.0f, 0.0f, 1.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[2], 1.0f, 1e-6f);
    for (std::uint32_t o : {0u, 1u, 3u, 4u})
        EXPECT_NEAR(g[o], 0.0f, 1e-6f) << o;
}

TEST(AngularPanning, OneSpeakerTakesEverything)
{
    AngularPanning p(2, 1);
    p.setSourcePosition(1, {0.3f, -2.0f, 5.0f}, true);
    EXPECT_EQ(gainsOf(p, 1)[0], 1.0f);
    EXPECT_EQ(gainsOf(p, 0)[0], 1.0f) << "sources start with their gains computed";
}

TEST(AngularPanning, WrapsAroundTheRear)
{
    AngularPanning p(1, 4);
    p.setSourcePosition(0, Coordinates::fromNavigational(180.0f, 0.0f, 1.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[2], std::sqrt(0.5f), 1e-6f);
    EXPECT_NEAR(g[3], std::sqrt(0.5f), 1e-6f);
    EXPECT_TRUE(p.is2D());
    EXPECT_TRUE(p.isAmplitudePanning());
}

TEST(AngularPanning, HorizontalSpreadKeepsPowerAndWidens)
{
    AngularPanning p(3, 8);
    const ondo::Point3 front = Coordinates::fromNavigational(0.0f, 0.0f, 1.0f);
    p.setSourceSpread(0, 50.0f);
    p.setSourceSpread(1, 100.0f);
    p.setSourceSpread(2, 99.0f);
    for (std::uint32_t s = 0; s < 3; ++s)
        p.setSourcePosition(s, front, true);
    EXPECT_EQ(p.getSourceSpread(1), 100.0f) << "the stored value is what was asked";
    const std::vector<float> half = gainsOf(p, 0), full = gainsOf(p, 1), ninetyNine = gainsOf(p, 2);
    EXPECT_NEAR(powerOf(half), 1.0f, 1e-5f);
    EXPECT_EQ(full, ninetyNine) << "spread 100 acts as 99";
    int sounding = 0;
    for (float g : half)
        sounding += g > 1e-6f;
    EXPECT_GT(sounding, 2);
    EXPECT_GT(full[5], half[5]) << "the rear speaker grows with spread";
}
} // namespace
