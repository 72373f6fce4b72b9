#include "pan/QuorDbapPanning2D.h"
#include "pan/QuorDbapPanning3D.h"

#include "PanTestSupport.h"
#include "SpeakerLayouts.h"
#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Point3;
using ondo::Point3Array;

/// The published DBAP law with a 6 dB rolloff: gain k / d, k bringing the power to 1.
/// Distances in the plane for the 2-D panner, in space for the 3-D one.
std::vector<double> inverseDistanceGains(const Point3Array& speakers, const Point3& s, bool planar)
{
    std::vector<double> g;
    double power = 0.0;
    for (const Point3& p : speakers)
    {
        const double dx = s.x - p.x, dy = s.y - p.y, dz = planar ? 0.0 : s.z - p.z;
        g.push_back(1.0 / std::sqrt(dx * dx + dy * dy + dz * dz));
        power += g.back() * g.back();
    }
    for (double& v : g)
        v /= std::sqrt(power);
    return g;
}

Point3Array scaled(Point3Array a, float factor)
{
    for (Point3& p : a)
        p = p * factor;
    return a;
}

std::unique_ptr<Quor::DbapPanning> make(bool planar, const Point3Array& speakers)
{
    std::unique_ptr<Quor::DbapPanning> p;
    const auto n = static_cast<std::uint32_t>(speakers.size());
    if (planar)
        p = std::make_unique<Quor::DbapPanning2D>(1, n);
    else
        p = std::make_unique<Quor::DbapPanning3D>(1, n);
    p->setSpeakers(speakers);
    return p;
}

struct Case
{
    const char* name;
    bool planar;
    Point3Array speakers;
    Point3 low, high; ///< the box the sources are drawn from (inside the hull in 2-D)
};

std::vector<Case> cases()
{
    // Irregular, at several heights, which the 2-D law must ignore; its hull holds the box.
    const Point3Array room = {{-3, -2, 0.5f}, {3, -2, 2}, {3, 2, 0}, {-3, 2, 1}, {0, 2.5f, 3}, {1.5f, -2.2f, 0}, {-2.8f, 0.3f, 2}};
    return {
        {"ring of 8", true, Point3Array::defaultLayout(8), {-0.4f, -0.4f, -1}, {0.4f, 0.4f, 1}},
        {"room", true, room, {-2.5f, -1.9f, -1}, {2.5f, 1.9f, 4}},
        {"cube", false, scaled(tarvo::testing::cube(), 2.0f), {-4, -4, -4}, {4, 4, 4}},
        {"dome", false, tarvo::testing::twoRingDome(2.0f, 40.0f, 0.0f, true), {-3, -3, -1}, {3, 3, 3}},
    };
}

TEST(DbapPanning, GainsFollowTheInverseDistanceLawAtUnitPowerNearestLoudest)
{
    std::mt19937 random(5);
    for (const Case& c : cases())
    {
        const auto p = make(c.planar, c.speakers);
        for (int trial = 0; trial < 500; ++trial)
        {
            auto draw = [&](float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); };
            const Point3 s(draw(c.low.x, c.high.x), draw(c.low.y, c.high.y), draw(c.low.z, c.high.z));
            p->setSourcePosition(0, s, true);
            const std::vector<float> g = gainsOf(*p, 0);
            const std::vector<double> expected = inverseDistanceGains(c.speakers, s, c.planar);
            // Single-precision sums over at most 13 speakers: a few ulps of unit power.
            EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f) << c.name;
            for (std::size_t o = 0; o < g.size(); ++o)
                ASSERT_NEAR(g[o], expected[o], 2e-6 + 1e-5 * expected[o]) << c.name << " speaker " << o;
            Point3Array flat = c.speakers;
            for (Point3& q : flat)
                q.z = c.planar ? s.z : q.z;
            const auto loudest = std::max_element(g.begin(), g.end()) - g.begin();
            EXPECT_EQ(loudest, flat.indexOfClosest(s)) << c.name;
        }
        // On a speaker the 1e-10 floor leaves the others near their distance times 1e-5.
        p->setSourcePosition(0, c.speakers[2], true);
        const std::vector<float> g = gainsOf(*p, 0);
        for (std::size_t o = 0; o < g.size(); ++o)
            EXPECT_NEAR(g[o], o == 2 ? 1.0f : 0.0f, 1e-4f) << c.name << " speaker " << o;
    }
}

TEST(DbapPanning, BlurWidensTheImageUpToEqualGains)
{
    for (const Case& c : cases())
    {
        const auto p = make(c.planar, c.speakers);
        const auto n = static_cast<float>(c.speakers.size());
        // Close to speaker 0, towards the centre.
        p->setSourcePosition(0, c.speakers[0] * 0.8f + c.speakers.centroid() * 0.2f, true);
        float previousMax = 2.0f, previousMin = -1.0f;
        for (float blur : {0.0f, 10.0f, 30.0f, 50.0f, 70.0f, 90.0f, 100.0f, 250.0f})
        {
            p->setSourceSpread(0, blur);
            const std::vector<float> g = gainsOf(*p, 0);
            const auto [lo, hi] = std::minmax_element(g.begin(), g.end());
            EXPECT_NEAR(powerOf(g), 1.0f, 1e-5f);
            if (blur >= 100.0f)
            {
                EXPECT_EQ(p->getSourceBlur(0), 1.0f) << "clamped to 100 %";
                for (float v : g)
                    EXPECT_NEAR(v, 1.0f / std::sqrt(n), 1e-6f) << c.name;
                continue;
            }
            EXPECT_LT(*hi, previousMax) << c.name << " blur " << blur;
            EXPECT_GT(*lo, previousMin) << c.name << " blur " << blur;
            previousMax = *hi;
            previousMin = *lo;
        }
        p->setSourceSpread(0, -20.0f);
        EXPECT_EQ(p->getSourceBlur(0), 0.0f);
    }
}

TEST(DbapPanning, BlurByDirectionForgetsTheBlurredAxis)
{
    for (const Case& c : cases())
    {
        const auto p = make(c.planar, c.speakers);
        p->setDbapSpreadMode(Quor::DbapPanning::BlurByDirection);
        p->setAllSourcesSpreadByDirection(100.0f, 0.0f, 0.0f);
        auto at = [&](float x, float y) {
            p->setSourcePosition(0, {x, y, 0.3f}, true);
            return gainsOf(*p, 0);
        };
        const std::vector<float> a = at(-0.3f, 0.2f), b = at(0.35f, 0.2f), farther = at(0.35f, -0.3f);
        for (std::size_t o = 0; o < a.size(); ++o)
            EXPECT_FLOAT_EQ(a[o], b[o]) << c.name << ": x no longer counts";
        EXPECT_NE(b, farther) << c.name << ": y still does";
        p->setSourceSpreadByDirection(0, 100.0f, 150.0f, 100.0f);
        for (float v : gainsOf(*p, 0))
            EXPECT_NEAR(v, 1.0f / std::sqrt(static_cast<float>(a.size())), 1e-6f) << c.name;
        // Back to the single blur, which is 0: the plain law again.
        p->setDbapSpreadMode(Quor::DbapPanning::SingleBlur);
        const std::vector<double> expected = inverseDistanceGains(c.speakers, {0.35f, -0.3f, 0.3f}, c.planar);
        for (std::size_t o = 0; o < a.size(); ++o)
            EXPECT_NEAR(gainsOf(*p, 0)[o], expected[o], 1e-5) << c.name;
    }
}

TEST(DbapPanning, OutsideTheSetupSoftensOrMutes)
{
    // A square: centre at the origin, corners at sqrt 2.
    const Point3Array square = {{1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, {-1, 1, 0}};
    Quor::DbapPanning2D flat(2, 4);
    flat.setSpeakers(square);
    flat.setSourcePosition(0, {3, 0, 0}, true);
    flat.setSourcePosition(1, {0.5f, 0.2f, 0}, true);
    // Softened by (distance of the nearest corner + 1) / (distance of the source + 1).
    const double factor = (std::sqrt(2.0) + 1.0) / (3.0 + 1.0);
    const std::vector<double> law = inverseDistanceGains(square, {3, 0, 0}, true);
    for (std::size_t o = 0; o < 4; ++o)
        EXPECT_NEAR(gainsOf(flat, 0)[o], law[o] * factor, 1e-6);
    flat.setMuteOutside(true);
    EXPECT_EQ(powerOf(gainsOf(flat, 0)), 0.0f);
    EXPECT_NEAR(powerOf(gainsOf(flat, 1)), 1.0f, 1e-5f) << "inside, muting changes nothing";

    // In space the radius (4 m) is held against the squared distance: the cut is at 2 m.
    Quor::DbapPanning3D space(1, 6);
    space.setSpeakers(scaled(tarvo::testing::octahedron(), 4.0f));
    EXPECT_EQ(space.getRadius(), 4.0f);
    struct Probe
    {
        float distance;
        bool muted;
        float power;
    };
    for (const Probe& probe : {Probe{5.0f, false, 1.0f}, Probe{1.9f, true, 1.0f}, Probe{2.1f, true, 0.0f},
                               Probe{3.9f, true, 0.0f}})
    {
        space.setMuteOutside(probe.muted);
        space.setSourcePosition(0, Point3(0.6f, 0.0f, 0.8f) * probe.distance, true);
        EXPECT_NEAR(powerOf(gainsOf(space, 0)), probe.power, 1e-5f) << probe.distance;
    }
}

TEST(DbapPanning, DefaultLayoutAndRefusedLayouts)
{
    Quor::DbapPanning2D p(1, 5);
    EXPECT_TRUE(p.is2D());
    EXPECT_FALSE(Quor::DbapPanning3D(1, 5).is2D());
    EXPECT_EQ(p.getHullPoints().size(), 5u) << "every speaker of the default five is a corner";
    const std::vector<float> before = gainsOf(p, 0);
    EXPECT_THROW(p.setSpeakers(Point3Array::defaultLayout(4)), ondo::Exception);
    EXPECT_EQ(gainsOf(p, 0), before);
    EXPECT_EQ(p.getSpeakersPosition().size(), 5u);
}

// The audio thread mixes through a 3-D panner while a control thread moves its sources,
// blurs them and sends the speakers again. Under ThreadSanitizer the hand-over must stay
// silent; afterwards the gains are those of the last positions on the last layout.
TEST(DbapPanningConcurrency, SourcesMoveAndSpeakersReturnWhileA3DPannerMixes)
{
    constexpr std::uint32_t sources = 4, speakers = 8, blockSize = 64;
    Quor::DbapPanning3D panner(sources, speakers);
    panner.setInterpolationTime(1.0f);
    Block in(sources, blockSize, 0.5f), out(speakers, blockSize);
    auto position = [](int step, std::uint32_t s) {
        return Point3(std::sin(0.01f * step + s), std::cos(0.013f * step), 0.2f * s);
    };
    auto layout = [](int step) { return scaled(tarvo::testing::cube(), 1.0f + (step % 7) * 0.25f); };
    const AudioRun run = mixWhileControlRuns(
        [&] {
            for (int step = 0; step < 600; ++step)
            {
                for (std::uint32_t s = 0; s < sources; ++s)
                    panner.setSourcePosition(s, position(step, s), step % 3 == 0);
                if (step % 10 == 0)
                    panner.setSpeakers(layout(step));
                if (step % 50 == 0)
                    panner.setSourceSpread(step % sources, static_cast<float>(step % 100));
            }
        },
        [&] { panner.process(out.get(), in.get(), blockSize); }, {&out});
    EXPECT_TRUE(run.finite);
    EXPECT_EQ(run.allocations, 0u);
    // Unit power per source: no speaker can carry more than all sources at full gain.
    EXPECT_LE(run.loudest, sources * 0.5f + 1e-4f);

    Quor::DbapPanning3D reference(sources, speakers);
    reference.setSpeakers(layout(590));
    reference.setSourceSpread(550 % sources, 50.0f);
    for (std::uint32_t s = 0; s < sources; ++s)
    {
        reference.setSourcePosition(s, position(599, s), true);
        EXPECT_EQ(gainsOf(panner, s), gainsOf(reference, s)) << s;
    }
}
} // namespace
