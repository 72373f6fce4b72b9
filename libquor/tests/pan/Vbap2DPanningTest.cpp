#include "pan/QuorVbap2DPanning.h"
#include "pan/QuorVbip2DPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
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
using Quor::Vbap2DPanning;
using Quor::Vbip2DPanning;

constexpr float degrees = 0.017453292f;

/// A ring of `n` speakers 2 m away, the first at `first` degrees.
Point3Array ring(std::uint32_t n, float first = 0.0f)
{
    Point3Array r(n);
    for (std::uint32_t i = 0; i < n; ++i)
        r[i] = Coordinates::fromNavigational(first + 360.0f * i / n, 0.0f, 2.0f);
    return r;
}

/// The tangent law of a speaker pair at +-half around the pair's centre, for a source at
/// `offset` from the centre (degrees): (g1 - g2) / (g1 + g2) with g1 the speaker at -half.
double tangentLaw(double offset, double half)
{
    return -std::tan(offset * degrees) / std::tan(half * degrees);
}

TEST(Vbap2DPanning, RingGivesTheTangentLawAtUnitPower)
{
    const std::uint32_t n = 6;
    Vbap2DPanning p(1, n);
    p.setSpeakers(ring(n, 15.0f));
    std::mt19937 random(2);
    std::uniform_real_distribution<float> azimuth(-180.0f, 180.0f);
    for (int trial = 0; trial < 500; ++trial)
    {
        const float a = azimuth(random);
        p.setSourcePosition(0, Coordinates::fromNavigational(a, 30.0f, 0.5f), true);
        const std::vector<float> g = gainsOf(p, 0);
        EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f);
        // The pair enclosing a: speakers k and k + 1 (clockwise), centre between them.
        const float relative = Coordinates::wrapDegrees(a - 15.0f);
        const std::uint32_t k = static_cast<std::uint32_t>(relative / 60.0f) % n;
        const std::uint32_t next = (k + 1) % n;
        const double offset = relative - (60.0 * k + 30.0);
        // Speaker k lies at -30 degrees from the centre of its pair, speaker k + 1 at +30.
        // Gains rounded to float carry a relative error near 1e-7, far inside 1e-4.
        const double measured = (g[k] - g[next]) / (g[k] + g[next]);
        EXPECT_NEAR(measured, tangentLaw(offset, 30.0), 1e-4) << "azimuth " << a;
        for (std::uint32_t o = 0; o < n; ++o)
            EXPECT_TRUE(o == k || o == next || g[o] == 0.0f) << "speaker " << o << " outside the pair";
    }
}

TEST(Vbap2DPanning, VbipKeepsUnitIntensityWithSquaresOnTheTangentLaw)
{
    const std::uint32_t n = 5;
    Vbip2DPanning p(1, n);
    p.setSpeakers(ring(n));
    Vbap2DPanning reference(1, n);
    reference.setSpeakers(ring(n));
    std::mt19937 random(4);
    std::uniform_real_distribution<float> azimuth(-180.0f, 180.0f);
    for (int trial = 0; trial < 300; ++trial)
    {
        const Point3 position = Coordinates::fromNavigational(azimuth(random), 0.0f, 1.0f);
        p.setSourcePosition(0, position, true);
        reference.setSourcePosition(0, position, true);
        const std::vector<float> g = gainsOf(p, 0), r = gainsOf(reference, 0);
        EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f);
        // VBIP squares are proportional to the VBAP gains of the same pair.
        float sumR = 0.0f;
        for (float v : r)
            sumR += v;
        for (std::uint32_t o = 0; o < n; ++o)
            EXPECT_NEAR(g[o] * g[o], r[o] / sumR, 1e-5f);
    }
}

TEST(Vbap2DPanning, EqualPairAgreesAcrossLawsAndUnequalDiffers)
{
    Vbap2DPanning ap(1, 4);
    Vbip2DPanning ip(1, 4);
    for (Quor::VectorBased2DPanning* p : {static_cast<Quor::VectorBased2DPanning*>(&ap),
                                          static_cast<Quor::VectorBased2DPanning*>(&ip)})
    {
        p->setSpeakers(Point3Array::defaultLayout(4));
        p->setSourcePosition(0, Coordinates::fromNavigational(0.0f, 0.0f, 1.0f), true);
    }
    EXPECT_NEAR(gainsOf(ap, 0)[0], std::sqrt(0.5f), 1e-6f);
    EXPECT_NEAR(gainsOf(ip, 0)[0], std::sqrt(0.5f), 1e-6f);
    ap.setSourcePosition(0, Coordinates::fromNavigational(20.0f, 0.0f, 1.0f), true);
    ip.setSourcePosition(0, Coordinates::fromNavigational(20.0f, 0.0f, 1.0f), true);
    EXPECT_GT(std::fabs(gainsOf(ap, 0)[1] - gainsOf(ip, 0)[1]), 0.01f);
}

TEST(Vbap2DPanning, SourceOnASpeakerSoundsThereAlone)
{
    Vbap2DPanning p(1, 8);
    p.setSpeakers(Point3Array::defaultLayout(8));
    p.setSourcePosition(0, Coordinates::fromNavigational(90.0f, 0.0f, 3.0f), true);
    const std::vector<float> g = gainsOf(p, 0);
    EXPECT_NEAR(g[3], 1.0f, 1e-6f);
    EXPECT_NEAR(g[2] + g[4], 0.0f, 1e-6f);
}

TEST(Vbap2DPanning, SourceAtTheCentreSpreadsOverThePair)
{
    Vbap2DPanning p(1, 4);
    p.setSpeakers(Point3Array::defaultLayout(4));
    p.setSourcePosition(0, {0.0f, 0.0f, 2.0f}, true);
    const std::vector<float> g = gainsOf(p, 0);
    // Azimuth of (0, 0) is 90: the pair from 45 to 135.
    EXPECT_NEAR(g[1], std::sqrt(0.5f), 1e-6f);
    EXPECT_NEAR(g[2], std::sqrt(0.5f), 1e-6f);
}

TEST(Vbap2DPanning, TwoSpeakersNeedNoTestAndCloseTheRingBothWays)
{
    Vbap2DPanning p(1, 2);
    p.setSpeakers(Point3Array{{1, 0, 0}, {1, 0, 5}}); // a line: no planarity or hull test
    EXPECT_TRUE(p.isValid());
    p.setSpeakers(Point3Array::defaultLayout(2));
    const auto& pairs = p.getPairs();
    EXPECT_EQ(pairs[0].x1, pairs[1].x2);
    EXPECT_EQ(pairs[0].x2, pairs[1].x1);
    p.setSourcePosition(0, Coordinates::fromNavigational(0.0f, 0.0f, 1.0f), true);
    EXPECT_NEAR(gainsOf(p, 0)[0], std::sqrt(0.5f), 1e-6f);
}

TEST(Vbap2DPanning, RefusedLayoutsSilenceThePannerForGood)
{
    Vbap2DPanning p(1, 4);
    Point3Array tilted = Point3Array::defaultLayout(4);
    tilted[3].z = 1.0f;
    try
    {
        p.setSpeakers(tilted);
        FAIL() << "a layout out of one plane is refused";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(), "cannot build a 2-D vbap: the loudspeaker setup is not planar.");
        EXPECT_EQ(e.getLocation().file, "QuorVbap2DPanning");
    }
    EXPECT_FALSE(p.isValid());
    p.setSpeakers(Point3Array::defaultLayout(4));
    p.setSourcePosition(0, Coordinates::fromNavigational(10.0f, 0.0f, 1.0f), true);
    EXPECT_EQ(powerOf(gainsOf(p, 0)), 0.0f) << "a good layout after a refused one stays silent";

    Vbap2DPanning front(1, 3);
    const float values[] = {-30, 1, 30, 1, 0, 2};
    try
    {
        front.setSpeakers(Point3Array::fromFormat(Coordinates::ad, values, 6));
        FAIL() << "a layout in front only is refused";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(),
                  "invalid setup for vbap 2d: the reference position must be inside the speaker setup.");
    }
    EXPECT_FALSE(front.isValid());
}

TEST(Vbap2DPanning, SpreadKeepsPowerAndOneHundredActsAsNinetyNine)
{
    Vbap2DPanning p(4, 8);
    p.setSpeakers(Point3Array::defaultLayout(8));
    const Point3 position = Coordinates::fromNavigational(20.0f, 0.0f, 1.0f);
    const float spreads[4] = {0.0f, 40.0f, 99.0f, 100.0f};
    for (std::uint32_t s = 0; s < 4; ++s)
    {
        p.setSourceSpread(s, spreads[s]);
        p.setSourcePosition(s, position, true);
    }
    for (std::uint32_t s = 0; s < 4; ++s)
        EXPECT_NEAR(powerOf(gainsOf(p, s)), 1.0f, 1e-5f) << s;
    EXPECT_EQ(gainsOf(p, 2), gainsOf(p, 3));
    EXPECT_NE(gainsOf(p, 1), gainsOf(p, 2));
    const std::vector<float> before = gainsOf(p, 1);
    p.setSourceSpread(1, 40.0f);
    EXPECT_EQ(gainsOf(p, 1), before);
}

TEST(Vbap2DPanning, ProcessingAllocatesNothingAndFollowsTheGains)
{
    Vbap2DPanning p(2, 4);
    p.setSpeakers(Point3Array::defaultLayout(4));
    p.setSourcePosition(0, Coordinates::fromNavigational(-45.0f, 0.0f, 1.0f), true);
    p.setSourcePosition(1, Coordinates::fromNavigational(135.0f, 0.0f, 1.0f), true);
    Block in(2, 128, 1.0f), out(4, 128, 5.0f);
    in.data[1].assign(128, 0.5f);
    tarvo::testing::AllocationScope scope;
    p.process(out.get(), in.get(), 128);
    p.processAdd(out.get(), in.get(), 128);
    p.setSourcePosition(1, Coordinates::fromNavigational(100.0f, 0.0f, 1.0f), false);
    p.process(out.get(), in.get(), 128);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_NEAR(out.data[0][5], 1.0f, 1e-6f);
    EXPECT_EQ(out.data[3][5], 0.0f);
}
} // namespace
