#include "math/TarvoDspKdTreeHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace
{
using ondo::KdTreeHelper;
using ondo::Point3;
using ondo::Point3Array;

float squared(const Point3& a, const Point3& b)
{
    const Point3 d = a - b;
    return d.dot(d);
}

/// The k nearest by sorting every distance.
std::vector<int> bruteForce(const Point3Array& points, const Point3& q, std::size_t k)
{
    std::vector<int> order(points.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return squared(points[a], q) < squared(points[b], q); });
    order.resize(std::min(k, order.size()));
    return order;
}

Point3Array cloud(std::size_t n, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> u(-10.0f, 10.0f);
    Point3Array points(n);
    for (Point3& p : points)
        p = {u(random), u(random), u(random)};
    return points;
}

TEST(KdTreeHelper, NearestEqualsBruteForceOnThreeThousandPoints)
{
    const Point3Array points = cloud(3000, 5);
    const KdTreeHelper tree(points);
    const Point3Array queries = cloud(500, 6);
    for (const Point3& q : queries)
        EXPECT_EQ(tree.findNearest(q), bruteForce(points, q, 1)[0]);
    // A query on a stored point finds that point.
    EXPECT_EQ(tree.findNearest(points[1234]), 1234);
}

TEST(KdTreeHelper, KNearestEqualsBruteForceInOrder)
{
    const Point3Array points = cloud(2500, 8);
    const KdTreeHelper tree(points);
    const Point3Array queries = cloud(200, 9);
    for (std::size_t k : {1u, 2u, 5u, 17u, 64u})
        for (const Point3& q : queries)
        {
            std::vector<int> found(k);
            ASSERT_EQ(tree.findNearest(q, k, found.data()), k);
            EXPECT_EQ(found, bruteForce(points, q, k)) << "k = " << k;
        }
}

TEST(KdTreeHelper, SmallAndEmptyTrees)
{
    EXPECT_EQ(KdTreeHelper(Point3Array()).findNearest({1, 2, 3}), -1);
    int out[4] = {-7, -7, -7, -7};
    EXPECT_EQ(KdTreeHelper(Point3Array()).findNearest({}, 3, out), 0u);
    for (std::size_t n = 1; n <= 9; ++n)
    {
        const Point3Array points = cloud(n, static_cast<unsigned>(100 + n));
        const KdTreeHelper tree(points);
        for (const Point3& q : cloud(50, 7))
        {
            EXPECT_EQ(tree.findNearest(q), bruteForce(points, q, 1)[0]) << n;
            std::vector<int> all(n + 3);
            ASSERT_EQ(tree.findNearest(q, n + 3, all.data()), n) << "k beyond the count finds them all";
            all.resize(n);
            EXPECT_EQ(all, bruteForce(points, q, n));
        }
    }
}

TEST(KdTreeHelper, BoxDistanceIsTheOverrunOutsideOnly)
{
    ondo::NBox<3> box;
    box.lower = {{0, 0, 0}};
    box.upper = {{1, 2, 3}};
    EXPECT_EQ(box.squaredDistanceTo({{0.5f, 1, 2}}), 0.0f);
    EXPECT_EQ(box.squaredDistanceTo({{-1, 4, 3}}), 1.0f + 4.0f);
}
} // namespace
