#include "math/TarvoDspPoint3Array.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using ondo::Coordinates;
using ondo::Point3;
using ondo::Point3Array;

TEST(Point3Array, BuildsFromWholeGroupsOnly)
{
    const float values[7] = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_TRUE(Point3Array::fromFormat(Coordinates::xyz, values, 7).empty());
    const Point3Array two = Point3Array::fromFormat(Coordinates::xyz, values, 6);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[1], Point3(4, 5, 6));
    // Incremental formats start from the origin for each group.
    const Point3Array steps = Point3Array::fromFormat(Coordinates::xIncrement, values, 2);
    EXPECT_EQ(steps[1], Point3(2, 0, 0));
}

TEST(Point3Array, DefaultLayoutsFollowTheTablesThenARing)
{
    const Point3Array five = Point3Array::defaultLayout(5);
    const float expected[5] = {-30, 0, 30, 110, -110};
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_NEAR(Coordinates::azimuthOf(five[i]), expected[i], 1e-3f);
        EXPECT_NEAR(five[i].length(), 1.0f, 1e-6f);
        EXPECT_EQ(five[i].z, 0.0f);
    }
    const Point3Array ten = Point3Array::defaultLayout(10);
    EXPECT_NEAR(Coordinates::azimuthOf(ten[0]), 0.0f, 1e-4f);
    EXPECT_NEAR(Coordinates::azimuthOf(ten[3]), 108.0f, 1e-3f);
    EXPECT_NEAR(Coordinates::azimuthOf(ten[7]), 252.0f - 360.0f, 1e-3f);
}

TEST(Point3Array, CentroidDistanceAndClosest)
{
    EXPECT_EQ(Point3Array().centroid(), Point3());
    const Point3Array a{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
    EXPECT_EQ(a.centroid(), Point3(1, 1, 0));
    EXPECT_FLOAT_EQ(a.maxDistanceTo({0, 0, 0}), std::sqrt(8.0f));
    EXPECT_EQ(a.indexOfClosest({1.9f, 1.8f, 0}), 2);
    const Point3Array twins{{1, 1, 1}, {5, 5, 5}, {5, 5, 5}};
    EXPECT_EQ(twins.indexOfClosest({5, 5, 5}), 1) << "ties keep the lower index";
    EXPECT_EQ(Point3Array().indexOfClosest({}), -1);
}

TEST(Point3Array, PlanarityOfRingsAndDomes)
{
    EXPECT_FALSE(Point3Array().isPlanar(0.0001f));
    EXPECT_TRUE((Point3Array{{0, 0, 0}, {1, 2, 3}, {5, -1, 2}}).isPlanar(0.0001f));
    Point3Array ring = Point3Array::defaultLayout(8);
    EXPECT_TRUE(ring.isPlanar(0.0001f));
    ring.pushBack({0, 0, 1});
    EXPECT_FALSE(ring.isPlanar(0.0001f));
}

TEST(Point3Array, FittedPlaneHoldsCoplanarPoints)
{
    // A tilted plane z = 0.5 x + 1: normal along (-0.5, 0, 1).
    Point3Array tilted;
    for (float x : {-1.0f, 0.3f, 2.0f})
        for (float y : {-2.0f, 1.0f, 4.0f})
            tilted.pushBack({x, y, 0.5f * x + 1.0f});
    const ondo::Plane plane = tilted.fitPlane();
    const Point3 n = Point3(-0.5f, 0, 1).normalized();
    EXPECT_NEAR(std::fabs(plane.normal().dot(n)), 1.0f, 1e-5f);
    for (const Point3& p : tilted)
        EXPECT_NEAR(plane.normal().dot(p), plane.d, 1e-4f);
    // The rotation from the plane lays the normal onto +z.
    const Point3 up = tilted.getRotationFromPlane().rotate(plane.normal());
    EXPECT_NEAR(std::fabs(up.z), 1.0f, 1e-5f);
}

TEST(Point3Array, DirectionAndPerpendicularSpanThePlane)
{
    const Point3Array a{{1, 1, 0}, {1, 3, 0}, {-1, 2, 0}};
    EXPECT_EQ(a.direction(), Point3(0, 1, 0));
    const Point3 v = a.perpendicular();
    EXPECT_NEAR(std::fabs(v.x), 1.0f, 1e-6f);
    EXPECT_NEAR(v.z, 0.0f, 1e-6f);
    EXPECT_EQ((Point3Array{{1, 1, 1}, {1, 1, 1}}).direction(), Point3(1, 0, 0));
    EXPECT_EQ(Point3Array().perpendicular(), Point3(0, 1, 0));
}

TEST(Point3Array, PolygonContainsPointsInsideOnlyAndInItsPlane)
{
    const Point3Array square{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    EXPECT_TRUE(square.containsInPolygon({0, 0, 0}, 0.00001f));
    EXPECT_TRUE(square.containsInPolygon({0.9f, -0.5f, 0}, 0.00001f));
    EXPECT_FALSE(square.containsInPolygon({1.5f, 0, 0}, 0.00001f));
    EXPECT_FALSE(square.containsInPolygon({0, 0, 0.1f}, 0.00001f)) << "off the plane";
    // A concave L shape: the notch is outside.
    const Point3Array shape{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}};
    EXPECT_TRUE(shape.containsInPolygon({0.5f, 1.5f, 0}, 0.00001f));
    EXPECT_FALSE(shape.containsInPolygon({1.5f, 1.5f, 0}, 0.00001f));
    // A scan line through a vertex counts it once.
    EXPECT_TRUE(shape.containsInPolygon({0.5f, 1.0f, 0}, 0.00001f));
    EXPECT_FALSE((Point3Array{{0, 0, 0}, {1, 0, 0}}).containsInPolygon({0.5f, 0, 0}, 1.0f));
}

TEST(Point3Array, AxisRotationsTurnByTheRightHand)
{
    const float quarter = 1.5707964f;
    const Point3 p{1, 0, 0};
    const Point3 z = ondo::rotateAboutZ(p, quarter);
    EXPECT_NEAR(z.y, 1.0f, 1e-6f);
    const Point3 y = ondo::rotateAboutY(p, quarter);
    EXPECT_NEAR(y.z, 1.0f, 1e-6f);
    const Point3 x = ondo::rotateAboutX({0, 1, 0}, quarter);
    EXPECT_NEAR(x.z, 1.0f, 1e-6f);
    const Point3 odd{0.1f, NAN, 3};
    const Point3 same = ondo::rotateAboutZ(odd, 0.0f);
    EXPECT_EQ(same.x, 0.1f);
    EXPECT_TRUE(std::isnan(same.y)) << "angle 0 returns the point as it is";
}

TEST(Point3Array, VectorAngleAndItsZeroVectorCases)
{
    EXPECT_NEAR(ondo::vectorAngle({1, 0, 0}, {0, 2, 0}), 1.5707964f, 1e-6f);
    EXPECT_NEAR(ondo::vectorAngle({1, 0, 0}, {-3, 0, 0}), 3.1415927f, 1e-6f);
    EXPECT_EQ(ondo::vectorAngle({}, {}), 0.0f);
    EXPECT_NEAR(ondo::vectorAngle({}, {0, -1, 0}), 1.5707964f, 1e-6f);
    EXPECT_NEAR(ondo::vectorAngle({-1, 0, 0}, {}), 3.1415927f, 1e-6f);
}

TEST(Point3Array, RotationFromMatrixMatchesTheMatrix)
{
    // A quarter turn about z by every branch of the trace method: the plain matrix, and the
    // half turns whose trace is not positive.
    const float quarter[3][3] = {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}};
    const float halfX[3][3] = {{1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    const float halfY[3][3] = {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    const float halfZ[3][3] = {{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}};
    for (const auto* m : {quarter, halfX, halfY, halfZ})
    {
        const ondo::Rotation q = ondo::Rotation::fromMatrix(m);
        EXPECT_NEAR(q.length(), 1.0f, 1e-6f);
        for (const Point3 p : {Point3(1, 0, 0), Point3(0, 1, 0), Point3(0, 0, 1)})
        {
            const Point3 r = q.rotate(p);
            const Point3 expected{m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z,
                                  m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z,
                                  m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z};
            EXPECT_NEAR(r.x, expected.x, 1e-6f);
            EXPECT_NEAR(r.y, expected.y, 1e-6f);
            EXPECT_NEAR(r.z, expected.z, 1e-6f);
        }
    }
    const ondo::Rotation tiny{0.00001f, 0, 0, 0};
    EXPECT_EQ(tiny.normalized(), tiny) << "too short to normalise";
}
} // namespace
