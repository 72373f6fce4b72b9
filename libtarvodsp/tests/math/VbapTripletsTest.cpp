#include "math/TarvoDspVbapTriplets.h"

#include "SpeakerLayouts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using ondo::Coordinates;
using ondo::Point3;
using ondo::Point3Array;
using ondo::VbapTriplets;
using tarvo::testing::cube;
using tarvo::testing::octahedron;

/// Eight speakers on the horizon, four at 45 degrees up and one overhead, 2 m away.
Point3Array dome()
{
    return tarvo::testing::twoRingDome(2.0f, 45.0f, 45.0f, true);
}

Point3 randomDirection(std::mt19937& random, bool upperOnly)
{
    std::normal_distribution<float> g(0.0f, 1.0f);
    Point3 p{g(random), g(random), g(random)};
    if (upperOnly)
        p.z = std::fabs(p.z);
    return p.normalized();
}

/// Every direction gets gains from one triplet, none negative, that point back along it.
void expectResynthesis(const Point3Array& layout, bool upperOnly, int directions)
{
    VbapTriplets triplets;
    triplets.setSpeakers(layout);
    triplets.update();
    ASSERT_FALSE(triplets.getTriplets().empty());
    std::mt19937 random(11);
    for (int i = 0; i < directions; ++i)
    {
        const Point3 d = randomDirection(random, upperOnly);
        const VbapTriplets::Selection s = triplets.select(d);
        Point3 sum;
        float power = 0.0f;
        for (int k = 0; k < 3; ++k)
        {
            EXPECT_GE(s.gains[k], 0.0f);
            sum += layout[s.speakers[k]] * s.gains[k];
            power += s.gains[k] * s.gains[k];
        }
        ASSERT_GT(power, 0.0f) << "no triplet for a direction inside the layout";
        // Gains cut at -0.01 on a triangle edge tilt the sum by well under a milliradian.
        EXPECT_GT(sum.normalized().dot(d), 1.0f - 1e-5f) << d.x << " " << d.y << " " << d.z;
    }
}

TEST(VbapTriplets, OctahedronCoversEveryDirection)
{
    VbapTriplets t;
    t.setSpeakers(octahedron());
    t.update();
    EXPECT_EQ(t.getTriplets().size(), 8u) << "one triangle per face";
    expectResynthesis(octahedron(), false, 2000);
}

TEST(VbapTriplets, CubeCoversEveryDirectionWithTwoTrianglesPerFace)
{
    VbapTriplets t;
    t.setSpeakers(cube());
    t.update();
    EXPECT_EQ(t.getTriplets().size(), 12u);
    expectResynthesis(cube(), false, 2000);
}

TEST(VbapTriplets, DomeCoversTheUpperHemisphere)
{
    expectResynthesis(dome(), true, 2000);
}

TEST(VbapTriplets, DirectionOnASpeakerUsesThatSpeakerAlone)
{
    VbapTriplets t;
    t.setSpeakers(octahedron());
    const VbapTriplets::Selection s = t.select({0, 0, 1});
    float onTop = 0.0f, elsewhere = 0.0f;
    for (int k = 0; k < 3; ++k)
        (s.speakers[k] == 4 ? onTop : elsewhere) += s.gains[k];
    EXPECT_NEAR(onTop, 1.0f, 1e-6f);
    EXPECT_NEAR(elsewhere, 0.0f, 1e-6f);
}

TEST(VbapTriplets, BelowAnOpenDomeTheLeastNegativeTripletIsCutToZero)
{
    VbapTriplets t;
    t.setSpeakers(dome());
    const VbapTriplets::Selection s = t.select({0.1f, 0.2f, -1.0f});
    for (float g : s.gains)
        EXPECT_GE(g, 0.0f);
}

TEST(VbapTriplets, FourSpeakersInOnePlaneGiveNoTripletAndZeroGains)
{
    VbapTriplets t;
    t.setSpeakers(Point3Array::defaultLayout(4));
    const VbapTriplets::Selection s = t.select({0, 1, 0});
    EXPECT_TRUE(t.getTriplets().empty());
    for (int k = 0; k < 3; ++k)
    {
        EXPECT_EQ(s.gains[k], 0.0f);
        EXPECT_EQ(s.speakers[k], 0);
    }
}

TEST(VbapTriplets, ChangingSpeakersMarksDirtyUntilTheNextRequest)
{
    VbapTriplets t;
    t.setSpeakers(octahedron());
    EXPECT_TRUE(t.isDirty());
    t.select({1, 0, 0});
    EXPECT_FALSE(t.isDirty());
    t.setSpeakers(cube());
    EXPECT_TRUE(t.isDirty());
}

TEST(VbapTriplets, CrossingArcsAndQuality)
{
    const Point3 x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    const Point3 a = Point3(1, 1, 1).normalized(), b = Point3(1, 1, -1).normalized();
    const Point3 c = Point3(1, -1, 0).normalized();
    EXPECT_FALSE(VbapTriplets::arcsCross(x, y, y, z)) << "arcs sharing an end do not cross";
    EXPECT_TRUE(VbapTriplets::arcsCross(a, b, x, y)) << "a meridian arc crosses the equator arc";
    EXPECT_FALSE(VbapTriplets::arcsCross(a, b, c, Point3(0, -1, 0))) << "disjoint arcs";
    // The right-angled triangle of the axes: volume 1 over a perimeter of 3 pi / 2.
    EXPECT_NEAR(VbapTriplets::quality(x, y, z), 1.0f / (1.5f * 3.1415927f), 1e-6f);
    EXPECT_EQ(VbapTriplets::quality(x, x, x), 0.0f);
}
} // namespace
