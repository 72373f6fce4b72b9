#include "math/TarvoDspAmbisonics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
using ondo::Ambisonics;
using N = Ambisonics::Normalization;

TEST(Ambisonics, OrderAndCountFollowTheDimension)
{
    EXPECT_EQ(Ambisonics::orderFromCount(3, 9), 2);
    EXPECT_EQ(Ambisonics::orderFromCount(2, 9), 4);
    EXPECT_EQ(Ambisonics::orderFromCount(3, 10), -1);
    EXPECT_EQ(Ambisonics::orderFromCount(2, 10), -1);
    EXPECT_EQ(Ambisonics::orderFromCount(3, 64), 7);
    EXPECT_EQ(Ambisonics::orderFromCount(4, 9), -1);
    EXPECT_EQ(Ambisonics::countFromOrder(2, 4), 9u);
    EXPECT_EQ(Ambisonics::countFromOrder(3, 7), 64u);
    EXPECT_EQ(Ambisonics::countFromOrder(1, 3), 0u);
    EXPECT_EQ(Ambisonics::defaultNormalization(2), Ambisonics::SN2D);
    EXPECT_EQ(Ambisonics::defaultNormalization(3), Ambisonics::SN3D);
    EXPECT_FALSE(Ambisonics::isLegal(Ambisonics::SN3D, 2));
    EXPECT_FALSE(Ambisonics::isLegal(Ambisonics::N2D, 3));
    EXPECT_TRUE(Ambisonics::isLegal(Ambisonics::FuMa, 2));
    EXPECT_TRUE(Ambisonics::isLegal(Ambisonics::MaxN, 3));
    EXPECT_EQ(Ambisonics::normalizationFromString("N3D", Ambisonics::SN3D), Ambisonics::N3D);
    EXPECT_EQ(Ambisonics::normalizationFromString("n3d", Ambisonics::SN3D), Ambisonics::SN3D);
}

TEST(Ambisonics, ChannelOrderingsMatchTheirPublishedSequences)
{
    // The Furse-Malham sequence to third order, W X Y Z R S T U V K L M N O P Q, as degree
    // and order, and the SID sequence of the first two orders.
    const Ambisonics::Component fmh[] = {{0, 0}, {1, 1},  {1, -1}, {1, 0}, {2, 0},  {2, 1}, {2, -1}, {2, 2},
                                         {2, -2}, {3, 0}, {3, 1},  {3, -1}, {3, 2}, {3, -2}, {3, 3}, {3, -3}};
    const Ambisonics::Component sid[] = {{0, 0}, {1, 1}, {1, -1}, {1, 0}, {2, 2}, {2, -2}, {2, 1}, {2, -1}, {2, 0}};
    for (std::uint32_t x = 0; x < 16; ++x)
    {
        const auto acn = Ambisonics::component(x, 3, Ambisonics::ACN);
        EXPECT_EQ(acn.l * acn.l + acn.l + acn.m, static_cast<int>(x));
        const auto f = Ambisonics::component(x, 3, Ambisonics::FMH);
        EXPECT_EQ(f.l, fmh[x].l) << x;
        EXPECT_EQ(f.m, fmh[x].m) << x;
        if (x < 9)
        {
            const auto s = Ambisonics::component(x, 3, Ambisonics::SID);
            EXPECT_EQ(s.m, sid[x].m) << x;
        }
    }
    const int acn2D[][2] = {{0, 0}, {1, -1}, {1, 1}, {2, -2}, {2, 2}, {3, -3}};
    for (std::uint32_t x = 0; x < 6; ++x)
    {
        EXPECT_EQ(Ambisonics::component(x, 2, Ambisonics::ACN).m, acn2D[x][1]) << x;
        EXPECT_EQ(Ambisonics::component(x, 2, Ambisonics::SID).m, -acn2D[x][1]) << x;
    }
    EXPECT_EQ(Ambisonics::label(1, 3, Ambisonics::ACN, true), "Y(1,-1) (Y)");
    EXPECT_EQ(Ambisonics::label(9, 3, Ambisonics::ACN, true), "Y(3,-3) (Q)");
    EXPECT_EQ(Ambisonics::label(4, 3, Ambisonics::FMH, true), "Y(2,0) (R)");
    EXPECT_EQ(Ambisonics::label(20, 3, Ambisonics::ACN, true), "Y(4,0)");
    EXPECT_EQ(Ambisonics::label(3, 2, Ambisonics::ACN, false), "Y(2,-2)");
}

TEST(Ambisonics, NormalizationFactorsMeetTheirIdentitiesAndPublishedValues)
{
    // FuMa against SN3D, as published for the first three orders (W, then by degree and |m|).
    const double root3 = std::sqrt(3.0), root5 = std::sqrt(5.0);
    const struct
    {
        int l, m;
        double value;
    } fuma[] = {{0, 0, 1.0 / std::sqrt(2.0)}, {1, -1, 1.0}, {1, 0, 1.0}, {1, 1, 1.0},
                {2, 0, 1.0},  {2, 1, 2.0 / root3}, {2, -2, 2.0 / root3}, {3, 0, 1.0},
                {3, -1, std::sqrt(45.0 / 32.0)}, {3, 2, 3.0 / root5}, {3, -3, std::sqrt(8.0 / 5.0)}};
    for (const auto& f : fuma)
    {
        // The table comes from a numerical search for each harmonic's peak: 1e-9 is its reach.
        EXPECT_NEAR(Ambisonics::normalizationFactor(f.l, f.m, N::SN3D, N::FuMa), f.value, 1e-9) << f.l << " " << f.m;
        EXPECT_NEAR(Ambisonics::normalizationFactor(f.l, f.m, N::FuMa, N::SN3D), 1.0 / f.value, 1e-9);
    }
    EXPECT_EQ(Ambisonics::normalizationFactor(17, 3, N::SN3D, N::FuMa), 0.0);
    EXPECT_EQ(Ambisonics::normalizationFactor(17, 3, N::FuMa, N::N3D), 0.0);
    EXPECT_EQ(Ambisonics::normalizationFactor(17, 3, N::FuMa, N::FuMa), 1.0);
    EXPECT_GT(Ambisonics::normalizationFactor(16, -16, N::SN3D, N::FuMa), 0.0);
    const double pi = 3.14159265358979323846;
    for (int l = 0; l <= 20; ++l)
        for (int m = -l; m <= l; ++m)
        {
            EXPECT_NEAR(Ambisonics::normalizationFactor(l, m, N::SN3D, N::N3D), std::sqrt(2.0 * l + 1.0), 1e-12);
            EXPECT_NEAR(Ambisonics::normalizationFactor(l, m, N::N3D, N::Unnormalized),
                        (m == 0 ? 1.0 : (m % 2 == 0 ? 1.0 : -1.0) / std::sqrt(2.0)) / std::sqrt(4.0 * pi), 1e-12);
            const bool sectoral = std::abs(m) == l;
            EXPECT_NEAR(Ambisonics::normalizationFactor(l, m, N::SN2D, N::N2D),
                        sectoral ? (m == 0 ? 1.0 : std::sqrt(2.0)) : 0.0, 1e-12);
            if (l <= Ambisonics::maxFuMaDegree)
            {
                EXPECT_NEAR(Ambisonics::normalizationFactor(l, m, N::SN2D, N::MaxN), sectoral ? 1.0 : 0.0, 1e-9);
            }
            // A chain through a third normalisation is the direct conversion.
            EXPECT_NEAR(Ambisonics::normalizationFactor(l, m, N::Unnormalized, N::SN3D),
                        Ambisonics::normalizationFactor(l, m, N::Unnormalized, N::N3D) *
                            Ambisonics::normalizationFactor(l, m, N::N3D, N::SN3D),
                        1e-12);
        }
}

TEST(Ambisonics, LegendreRecurrenceHoldsTheAdditionTheoremToDegreeSixty)
{
    // Summed over the orders of one degree, the squared N3D harmonics give 2l + 1 at every
    // point; an unstable recurrence drifts away from it as the degree grows.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> height(-1.0, 1.0);
    std::vector<double> p(Ambisonics::legendreCount(60));
    std::vector<float> q(Ambisonics::legendreCount(20));
    for (int trial = 0; trial < 50; ++trial)
    {
        const double x = trial == 0 ? 0.0 : (trial == 1 ? 0.99999 : height(random));
        const double s = std::sqrt(1.0 - x * x);
        Ambisonics::legendre(60, x, s, p.data());
        Ambisonics::legendre(20, static_cast<float>(x), static_cast<float>(s), q.data());
        for (int l = 0; l <= 60; ++l)
        {
            double sum = 0.0;
            float sumSingle = 0.0f;
            for (int m = 0; m <= l; ++m)
            {
                const double v = p[Ambisonics::legendreIndex(l, m)];
                sum += (m == 0 ? 1.0 : 2.0) * v * v;
                if (l <= 20)
                {
                    const float w = q[Ambisonics::legendreIndex(l, m)];
                    sumSingle += (m == 0 ? 1.0f : 2.0f) * w * w;
                }
            }
            // Relative: 1e-10 in double over sixty steps, 2e-5 in single over twenty.
            EXPECT_NEAR(sum / (2.0 * l + 1.0), 1.0, 1e-10) << "l " << l << " x " << x;
            if (l <= 20)
            {
                EXPECT_NEAR(sumSingle / (2.0f * l + 1.0f), 1.0f, 2e-5f) << "l " << l << " x " << x;
            }
        }
    }
    EXPECT_EQ(Ambisonics::factorial(5), 120.0);
    EXPECT_NEAR(Ambisonics::factorial(70) / Ambisonics::factorial(69), 70.0, 1e-9);
}
} // namespace
