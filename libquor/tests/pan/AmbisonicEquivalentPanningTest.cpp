#include "pan/QuorAmbisonicEquivalentPanningAnalytic2D.h"
#include "pan/QuorAmbisonicEquivalentPanningAnalytic3D.h"
#include "pan/QuorHOA2DPanning.h"
#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorHoaOptimization.h"

#include "PanTestSupport.h"
#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace
{
using namespace Quor::testing;
using ondo::Ambisonics;
using ondo::Point3;
using Quor::HoaOptimization;

/// The twelve vertices of the icosahedron, a spherical 5-design.
ondo::Point3Array icosahedron()
{
    const float g = (1.0f + std::sqrt(5.0f)) / 2.0f;
    ondo::Point3Array v;
    for (float a : {-1.0f, 1.0f})
        for (float b : {-g, g})
        {
            v.pushBack(Point3{0, a, b}.normalized());
            v.pushBack(Point3{a, b, 0}.normalized());
            v.pushBack(Point3{b, 0, a}.normalized());
        }
    return v;
}

/// The six vertices of the octahedron, a spherical 3-design.
ondo::Point3Array octahedron()
{
    return {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
}

ondo::Point3Array polygon(std::uint32_t n)
{
    ondo::Point3Array v(n);
    for (std::uint32_t i = 0; i < n; ++i)
        v[i] = {std::cos(6.2831853f * i / n + 0.3f), std::sin(6.2831853f * i / n + 0.3f), 0.0f};
    return v;
}

/// 2000 directions, evenly spread over the sphere (or the circle) in a seeded order.
std::vector<Point3> directions(bool horizontal)
{
    std::mt19937 random(11);
    std::normal_distribution<float> normal;
    std::vector<Point3> d;
    while (d.size() < 2000)
    {
        const Point3 p{normal(random), normal(random), horizontal ? 0.0f : normal(random)};
        if (p.length() > 0.01f)
            d.push_back(p.normalized() * 2.0f);
    }
    return d;
}

struct Layout
{
    const char* name;
    ondo::Point3Array speakers;
    std::uint32_t dimension;
    std::uint32_t order;
    /// Strength 2M + 1 or more: the energy vector is exact too.
    bool energyVector;
};

std::unique_ptr<Quor::AmbisonicEquivalentPanningAnalytic> aep(const Layout& layout)
{
    const auto n = static_cast<std::uint32_t>(layout.speakers.size());
    std::unique_ptr<Quor::AmbisonicEquivalentPanningAnalytic> p;
    if (layout.dimension == 2)
        p = std::make_unique<Quor::AmbisonicEquivalentPanningAnalytic2D>(1, n);
    else
        p = std::make_unique<Quor::AmbisonicEquivalentPanningAnalytic3D>(1, n);
    p->setSpeakers(layout.speakers);
    return p;
}

const Layout layouts[] = {
    {"octahedron", octahedron(), 3, 1, true}, {"icosahedron", icosahedron(), 3, 2, true},
    {"pentagon", polygon(5), 2, 2, false},    {"octagon", polygon(8), 2, 3, true},
    {"16-gon", polygon(16), 2, 7, true},
};

// On a t-design of strength 2M or more (a regular polygon of more than 2M sides) the
// decoded energy is the same for every direction, in every normalisation. In the full
// normalisations (N3D, N2D), the velocity vector of the plain decode is the source
// direction itself, and max-rE shrinks the energy vector to the largest root of P_{M+1} in
// 3-D, cos(pi / (2M + 2)) in 2-D: the published figures of the max-rE decode.
TEST(AmbisonicEquivalentPanning, RegularLayoutsKeepEnergyAndDirectionOverTwoThousandDirections)
{
    for (const Layout& layout : layouts)
    {
        auto p = aep(layout);
        ASSERT_EQ(p->getOrder(), layout.order) << layout.name;
        const auto n = layout.speakers.size();
        const double rootE =
            layout.dimension == 3 ? HoaOptimization::largestLegendreRoot(layout.order + 1)
                                  : std::cos(3.14159265358979 / (2.0 * layout.order + 2.0));
        for (auto normalization : {layout.dimension == 3 ? Ambisonics::N3D : Ambisonics::N2D,
                                   Ambisonics::defaultNormalization(layout.dimension)})
            for (auto optimization : {HoaOptimization::Basic, HoaOptimization::MaxRe})
            {
                p->setAmbisonicNormalization(normalization);
                p->setOptimization(optimization);
                double lowest = 1e9, highest = 0;
                for (const Point3& d : directions(layout.dimension == 2))
                {
                    p->setSourcePosition(0, d, true);
                    const auto g = gainsOf(*p, 0);
                    Point3 velocity, energy;
                    float sum = 0, power = 0;
                    for (std::size_t i = 0; i < n; ++i)
                    {
                        velocity += layout.speakers[i] * g[i];
                        energy += layout.speakers[i] * (g[i] * g[i]);
                        sum += g[i];
                        power += g[i] * g[i];
                    }
                    lowest = std::min<double>(lowest, power);
                    highest = std::max<double>(highest, power);
                    const Point3 u = d.normalized();
                    const Point3 v = velocity * (1.0f / sum), e = energy * (1.0f / power);
                    // Single-precision sums of a few terms: 1e-5.
                    const bool full = normalization == Ambisonics::N3D || normalization == Ambisonics::N2D;
                    if (full && optimization == HoaOptimization::Basic)
                        EXPECT_NEAR((v - u).length(), 0.0f, 1e-5f) << layout.name << " velocity";
                    else if (full && layout.energyVector)
                    {
                        EXPECT_NEAR(e.length(), rootE, 1e-5) << layout.name << " rE";
                        EXPECT_NEAR((e.normalized() - u).length(), 0.0f, 1e-5f) << layout.name;
                    }
                }
                EXPECT_NEAR(highest / lowest, 1.0, 1e-5) << layout.name << " " << Ambisonics::toString(normalization);
            }
    }
}

// The closed form is the encoder followed by a sampling decoder: each speaker takes the
// source's components times its own, weighted and divided by the speaker count.
TEST(AmbisonicEquivalentPanning, EqualsEncodingThenSamplingDecode)
{
    for (const Layout& layout : {layouts[1], layouts[3]})
    {
        auto p = aep(layout);
        const auto n = static_cast<std::uint32_t>(layout.speakers.size());
        const auto full = layout.dimension == 3 ? Ambisonics::N3D : Ambisonics::N2D;
        p->setAmbisonicNormalization(full);
        p->setOptimization(HoaOptimization::InPhase);
        const auto weights = HoaOptimization::weights(HoaOptimization::InPhase, layout.order, layout.dimension);
        const auto channels = Ambisonics::countFromOrder(layout.dimension, layout.order);
        std::unique_ptr<Quor::HOAPanning> encoder;
        if (layout.dimension == 3)
            encoder = std::make_unique<Quor::HOA3DPanning>(n + 1, channels);
        else
            encoder = std::make_unique<Quor::HOA2DPanning>(n + 1, channels);
        encoder->setAmbisonicNormalization(full);
        for (std::uint32_t i = 0; i < n; ++i)
            encoder->setSourcePosition(i + 1, layout.speakers[i], true);
        for (const Point3& d : {Point3{0.3f, 1.0f, -0.2f}, Point3{-2.0f, 0.1f, 0.7f}})
        {
            const Point3 source = layout.dimension == 2 ? Point3{d.x, d.y, 0.0f} : d;
            p->setSourcePosition(0, source, true);
            encoder->setSourcePosition(0, source, true);
            const auto y = gainsOf(*encoder, 0);
            const auto g = gainsOf(*p, 0);
            for (std::uint32_t i = 0; i < n; ++i)
            {
                const auto s = gainsOf(*encoder, i + 1);
                double decoded = 0;
                for (std::uint32_t k = 0; k < channels; ++k)
                    decoded += weights[k] * y[k] * s[k];
                // Single-precision sums of up to nine products below 1: 5e-6.
                EXPECT_NEAR(g[i], decoded / n, 5e-6) << layout.name << " speaker " << i;
                // In-phase weights keep every speaker on the source's side of zero.
                EXPECT_GE(g[i], -1e-6f) << layout.name;
            }
        }
    }
}

TEST(AmbisonicEquivalentPanning, OptimizationWeightsMatchTheirClosedForms)
{
    EXPECT_EQ(HoaOptimization::fromString("max-re"), HoaOptimization::MaxRe);
    EXPECT_EQ(HoaOptimization::fromString("inv-inphase"), HoaOptimization::InverseInPhase);
    EXPECT_EQ(HoaOptimization::fromString("MaxRe"), HoaOptimization::Basic);
    EXPECT_EQ(HoaOptimization::toString(HoaOptimization::InPhase), "in-phase");
    // In-phase, first order: 1/3 in 3-D, 1/2 in 2-D (the cardioid); max-rE first order in
    // 3-D is 1/sqrt(3), in 2-D cos(pi / 4).
    const auto inPhase3 = HoaOptimization::weights(HoaOptimization::InPhase, 1, 3);
    ASSERT_EQ(inPhase3.size(), 4u);
    EXPECT_FLOAT_EQ(inPhase3[0], 1.0f);
    EXPECT_FLOAT_EQ(inPhase3[3], 1.0f / 3.0f);
    EXPECT_FLOAT_EQ(HoaOptimization::weights(HoaOptimization::InPhase, 1, 2)[2], 0.5f);
    EXPECT_FLOAT_EQ(HoaOptimization::weights(HoaOptimization::MaxRe, 1, 3)[1], 1.0f / std::sqrt(3.0f));
    EXPECT_FLOAT_EQ(HoaOptimization::weights(HoaOptimization::MaxRe, 1, 2)[1], std::sqrt(0.5f));
    const auto inverse = HoaOptimization::weights(HoaOptimization::InverseMaxRe, 4, 3);
    const auto direct = HoaOptimization::weights(HoaOptimization::MaxRe, 4, 3);
    ASSERT_EQ(inverse.size(), 25u);
    for (std::size_t k = 0; k < 25; ++k)
        EXPECT_NEAR(inverse[k] * direct[k], 1.0f, 1e-6f) << k;
    // Each tabulated root is a zero of its Legendre polynomial, and lies above every
    // other; the approximation beyond the table carries on smoothly.
    for (std::uint32_t n = 2; n <= 17; ++n)
    {
        const double r = HoaOptimization::largestLegendreRoot(n);
        std::vector<double> p = {1.0, r};
        for (std::uint32_t k = 2; k <= n; ++k)
            p.push_back(((2.0 * k - 1.0) * r * p[k - 1] - (k - 1.0) * p[k - 2]) / k);
        if (n <= 16)
        {
            EXPECT_NEAR(p[n], 0.0, 1e-12) << n;
        }
        EXPECT_GT(r, HoaOptimization::largestLegendreRoot(n - 1));
        EXPECT_LT(r, 1.0);
    }
}

TEST(AmbisonicEquivalentPanning, FactoryAndReport)
{
    EXPECT_EQ(dynamic_cast<Quor::AmbisonicEquivalentPanningAnalytic*>(
                  Quor::Pan::create(1, 4, Quor::Pan::Aep3D, Quor::Pan::Direct).get()),
              nullptr);
    const auto p = Quor::Pan::create(2, 9, Quor::Pan::Aep3D, Quor::Pan::Direct);
    ASSERT_NE(dynamic_cast<Quor::AmbisonicEquivalentPanningAnalytic3D*>(p.get()), nullptr);
    EXPECT_THROW(p->setAmbisonicNormalization(Ambisonics::SN2D), ondo::Exception);
    Quor::StringArray lines;
    p->getInfos(lines);
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[2], "normalization : SN3D");
    EXPECT_EQ(lines[3], "HOA order : 2");
    EXPECT_EQ(lines[4], "dimension : 3");
    EXPECT_EQ(lines[5], "optimization : basic");
    // The default layout is installed: a source on speaker 3 is loudest there.
    const auto ring = Quor::Pan::create(1, 7, Quor::Pan::Aep2D, Quor::Pan::Direct);
    ring->setSourcePosition(0, ring->getSpeakersPosition()[3], true);
    const auto g = gainsOf(static_cast<Quor::AmplitudePanning&>(*ring), 0);
    EXPECT_EQ(std::max_element(g.begin(), g.end()) - g.begin(), 3);
    EXPECT_TRUE(ring->is2D());
    // A normalisation the closed form does not cover gives silence.
    p->setAmbisonicNormalization(Ambisonics::FuMa);
    EXPECT_EQ(powerOf(gainsOf(static_cast<Quor::AmplitudePanning&>(*p), 0)), 0.0f);
}
} // namespace
