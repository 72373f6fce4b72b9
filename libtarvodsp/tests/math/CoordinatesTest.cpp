#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
using ondo::Coordinates;
using ondo::Point3;
using Format = Coordinates::Format;

// Float trigonometry on metre-sized points: a few ulps of the largest coordinate.
constexpr float tolerance = 2e-5f;

void expectNear(const Point3& a, const Point3& b, float tol = tolerance)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

Point3 applied(Format f, std::initializer_list<float> values, Point3 start = {})
{
    EXPECT_TRUE(Coordinates::apply(f, values.begin(), values.size(), start)) << Coordinates::toString(f);
    return start;
}

TEST(Coordinates, NamesRoundTripForAllTwentyFiveFormats)
{
    for (int f = 0; f < 25; ++f)
        EXPECT_EQ(Coordinates::fromString(Coordinates::toString(static_cast<Format>(f))), f);
    EXPECT_EQ(Coordinates::toString(Format::sofaSpherical), "sofaspherical");
    EXPECT_EQ(Coordinates::toString(Format::distMultiply), "dist*=");
    EXPECT_EQ(Coordinates::fromString("none"), Format::none);
    EXPECT_EQ(Coordinates::fromString("XYZ"), Format::none) << "names are case exact";
}

TEST(Coordinates, NavigationalAnglesFollowTheAxes)
{
    // Azimuth 0 is the front (+y), +90 the right (+x); elevation +90 straight up.
    expectNear(applied(Format::ade, {0, 1, 0}), {0, 1, 0});
    expectNear(applied(Format::ade, {90, 2, 0}), {2, 0, 0});
    expectNear(applied(Format::ade, {-90, 1, 0}), {-1, 0, 0});
    expectNear(applied(Format::ade, {180, 1, 0}), {0, -1, 0});
    expectNear(applied(Format::aed, {30, 90, 3}), {0, 0, 3});
    const float h = std::sqrt(0.5f);
    expectNear(applied(Format::ae, {45, 0}), {h, h, 0});
    // quor3 counts azimuth anticlockwise.
    expectNear(applied(Format::quor3, {-90, 1, 0}), {1, 0, 0});
    expectNear(applied(Format::sofaSpherical, {90, 0, 1}), {-1, 0, 0});
    expectNear(applied(Format::wfs, {90, 2}), {-2, 0, 0});
    EXPECT_NEAR(Coordinates::azimuthOf({1, 0, 0}), 90.0f, 1e-4f);
    EXPECT_NEAR(Coordinates::azimuthOf({0, -1, 0}), -180.0f, 1e-4f) << "the rear is -180: range [-180, 180)";
}

TEST(Coordinates, EveryWholePointFormatConvertsBackWithinFloatPrecision)
{
    const Format reversible[] = {Format::xyz,   Format::xy,  Format::ade,           Format::aed,
                                 Format::ae,    Format::ad,  Format::az,            Format::quor3,
                                 Format::wfs,   Format::sofaCartesian, Format::sofaSpherical};
    std::mt19937 random(7);
    std::uniform_real_distribution<float> coordinate(-3.0f, 3.0f);
    for (Format f : reversible)
        for (int trial = 0; trial < 200; ++trial)
        {
            Point3 p{coordinate(random), coordinate(random), coordinate(random)};
            if (p.length() < 0.1f)
                continue;
            // Formats that fix distance or elevation describe the point brought to that form.
            if (f == Format::xy || f == Format::ad || f == Format::wfs || f == Format::az)
                p.z = 0.0f;
            if (f == Format::ae || f == Format::az)
                p = p.normalized();
            float values[3];
            std::size_t count = 0;
            ASSERT_TRUE(Coordinates::describe(f, p, values, count)) << Coordinates::toString(f);
            ASSERT_EQ(count, Coordinates::getNumberOfValues(f));
            Point3 back{9, 9, 9};
            ASSERT_TRUE(Coordinates::apply(f, values, count, back));
            expectNear(back, p, 4e-6f * 3.0f * std::sqrt(3.0f) + tolerance);
        }
}

TEST(Coordinates, IncrementalAndSingleFieldFormatsHaveNoReverse)
{
    float values[3];
    std::size_t count = 9;
    for (int f : {2, 3, 4, 10, 11, 12, 13, 14, 15, 16, 17, 20, 21, 22, 25})
        EXPECT_FALSE(Coordinates::describe(static_cast<Format>(f), {1, 2, 3}, values, count)) << f;
}

TEST(Coordinates, RefusesTooFewNumbersAndUnknownFormats)
{
    Point3 p{1, 2, 3};
    const float values[3] = {4, 5, 6};
    EXPECT_FALSE(Coordinates::apply(Format::xyz, values, 2, p));
    EXPECT_FALSE(Coordinates::apply(Format::none, values, 3, p));
    EXPECT_FALSE(Coordinates::apply(static_cast<Format>(40), values, 3, p));
    EXPECT_EQ(p, Point3(1, 2, 3));
    EXPECT_TRUE(Coordinates::apply(Format::xy, values, 3, p)) << "extra numbers are ignored";
    EXPECT_EQ(p, Point3(4, 5, 0));
}

TEST(Coordinates, IncrementalFormatsKeepTheRestOfThePoint)
{
    expectNear(applied(Format::xIncrement, {2}, {1, 1, 1}), {3, 1, 1});
    expectNear(applied(Format::zIncrement, {-1}, {1, 1, 1}), {1, 1, 0});
    expectNear(applied(Format::y, {7}, {1, 1, 1}), {1, 7, 1});
    expectNear(applied(Format::xy, {4, 5}, {0, 0, 5}), {4, 5, 0}); // xy clears z
    // A point at azimuth 0, elevation 30, distance 2, turned to azimuth 90 keeps the rest.
    const Point3 p = applied(Format::aed, {0, 30, 2});
    expectNear(applied(Format::azim, {90}, p), applied(Format::aed, {90, 30, 2}));
    expectNear(applied(Format::azimIncrement, {-45}, p), applied(Format::aed, {-45, 30, 2}));
    expectNear(applied(Format::elevIncrement, {15}, p), applied(Format::aed, {0, 45, 2}));
    expectNear(applied(Format::azimelev, {60, -10}, p), applied(Format::aed, {60, -10, 2}));
    expectNear(applied(Format::distMultiply, {3}, p), applied(Format::aed, {0, 30, 6}));
}

TEST(Coordinates, DistanceFormatsKeepDirectionAndStayAboveTheFloor)
{
    const Point3 p = applied(Format::ade, {30, 2, 10});
    const Point3 tiny = applied(Format::dist, {0}, p);
    EXPECT_NEAR(tiny.length(), 0.00001f, 1e-9f);
    expectNear(tiny.normalized(), p.normalized(), 1e-4f);
    EXPECT_NEAR(applied(Format::distIncrement, {-5}, p).length(), 0.00001f, 1e-9f);
    EXPECT_NEAR(applied(Format::dist, {-3}, p).length(), 3.0f, 1e-5f) << "dist takes the absolute value";
}

TEST(Coordinates, ElevationBeyondThePoleTurnsTheAzimuth)
{
    const Point3 p = applied(Format::elev, {100}, applied(Format::ade, {20, 1, 0}));
    EXPECT_NEAR(Coordinates::elevationOf(p), 80.0f, 1e-3f);
    EXPECT_NEAR(Coordinates::azimuthOf(p), -160.0f, 1e-3f);
    EXPECT_NEAR(p.length(), 1.0f, 1e-6f);
}

TEST(Coordinates, NegativeDistanceGivesTheOppositeDirection)
{
    expectNear(applied(Format::aed, {30, 20, -2}), -applied(Format::aed, {30, 20, 2}));
}

TEST(Coordinates, WildAnglesWrapWithoutHanging)
{
    expectNear(applied(Format::ade, {90.0f + 360.0f * 1000.0f, 1, 0}), {1, 0, 0}, 1e-3f);
    const Point3 p = applied(Format::ade, {NAN, 1, 0});
    EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
}
} // namespace
