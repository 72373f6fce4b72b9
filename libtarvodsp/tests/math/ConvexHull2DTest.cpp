#include "math/TarvoDspConvexHull2D.h"

#include <gtest/gtest.h>

#include <random>

namespace
{
using ondo::ConvexHull2D;
using ondo::Point3;
using ondo::Point3Array;

/// Twice the signed area: negative for a clockwise polygon.
float signedArea(const Point3Array& p)
{
    float sum = 0.0f;
    for (std::size_t i = 0; i < p.size(); ++i)
    {
        const Point3& a = p[i];
        const Point3& b = p[(i + 1) % p.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return sum;
}

TEST(ConvexHull2D, SquareWithInnerPointsKeepsTheCornersClockwise)
{
    const Point3Array points{{0.2f, 0.3f, 5}, {0, 0, 1}, {1, 0, 2}, {0.5f, 0.5f, 0}, {1, 1, 3}, {0, 1, 4}};
    const ConvexHull2D hull(points);
    const Point3Array& h = hull.getHull();
    ASSERT_EQ(h.size(), 4u);
    EXPECT_LT(signedArea(h), 0.0f);
    for (const Point3& p : h)
        EXPECT_EQ(p.z, 0.0f);
    EXPECT_TRUE(hull.contains({0.5f, 0.5f, 0}));
    EXPECT_TRUE(hull.contains({1, 0.5f, 0})) << "the boundary is inside";
    EXPECT_FALSE(hull.contains({1.1f, 0.5f, 0}));
}

TEST(ConvexHull2D, CollinearPointsKeepTheTwoEnds)
{
    const ConvexHull2D flat(Point3Array{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    ASSERT_EQ(flat.getHull().size(), 2u);
    const ConvexHull2D slanted(Point3Array{{1, 1, 0}, {0, 0, 0}, {2, 2, 0}});
    ASSERT_EQ(slanted.getHull().size(), 2u);
    // Points on an edge of a triangle are not vertices; duplicates count once.
    const ConvexHull2D triangle(Point3Array{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 0, 0}});
    EXPECT_EQ(triangle.getHull().size(), 3u);
}

TEST(ConvexHull2D, EmptyHullContainsEverythingAndOnePointIsItsOwnHull)
{
    EXPECT_TRUE(ConvexHull2D(Point3Array()).contains({100, 5, 0}));
    EXPECT_EQ(ConvexHull2D(Point3Array{{3, 4, 5}}).getHull()[0], Point3(3, 4, 0));
}

TEST(ConvexHull2D, RandomCloudIsInsideItsHull)
{
    std::mt19937 random(3);
    std::normal_distribution<float> g(0.0f, 1.0f);
    Point3Array points(500);
    for (Point3& p : points)
        p = {g(random), g(random), g(random)};
    const ConvexHull2D hull(points);
    EXPECT_LT(signedArea(hull.getHull()), 0.0f);
    for (const Point3& p : points)
        EXPECT_TRUE(hull.contains({p.x, p.y, 0}));
    // Every hull vertex is an input point.
    for (const Point3& v : hull.getHull())
    {
        bool found = false;
        for (const Point3& p : points)
            found |= p.x == v.x && p.y == v.y;
        EXPECT_TRUE(found);
    }
}
} // namespace
