#include "math/TarvoDspConvexHull2D.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
namespace
{
using Point2D = ConvexHull2D::Point2D;

float turn(const Point2D& s, const Point2D& t, const Point2D& p)
{
    return (p.y - s.y) * (t.x - s.x) - (t.y - s.y) * (p.x - s.x);
}
} // namespace

void ConvexHull2D::build(const Point3Array& points)
{
    hull.resize(0);
    if (points.size() < 2)
    {
        hull = points;
        for (Point3& p : hull)
            p.z = 0.0f;
        return;
    }
    Vector<Point2D> all(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        all[i] = {points[i].x, points[i].y, 0.0f, static_cast<std::int32_t>(i + 1), false};

    // Pivot: lowest y, and the rightmost among those, so every other point lies at an angle
    // in (0, pi] from it and the angular order is a total order.
    std::size_t pivot = 0;
    for (std::size_t i = 1; i < all.size(); ++i)
        if (all[i].y < all[pivot].y || (all[i].y == all[pivot].y && all[i].x > all[pivot].x))
            pivot = i;
    std::swap(all[0], all[pivot]);
    const Point2D origin = all[0];
    // A copy of the pivot has no angle; it is the nearest of any collinear pair.
    for (std::size_t i = 1; i < all.size(); ++i)
        all[i].deleted = all[i].x == origin.x && all[i].y == origin.y;

    // By angle; along one ray the nearer first, and among equal points the lower number.
    auto before = [&](const Point2D& a, const Point2D& b) {
        const float ax = a.x - origin.x, ay = a.y - origin.y, bx = b.x - origin.x, by = b.y - origin.y;
        const float c = ax * by - bx * ay;
        if (c != 0.0f)
            return c > 0.0f;
        const float da = std::fabs(ax) + std::fabs(ay), db = std::fabs(bx) + std::fabs(by);
        if (da != db)
            return da < db;
        return a.number < b.number;
    };
    Vector<Point2D> rest;
    rest.reserve(all.size());
    for (std::size_t i = 1; i < all.size(); ++i)
        if (!all[i].deleted)
            rest.pushBack(all[i]);
    std::sort(rest.begin(), rest.end(), before);
    // Of the points on one ray from the pivot only the farthest can be a vertex.
    for (std::size_t i = 0; i + 1 < rest.size(); ++i)
    {
        const float ax = rest[i].x - origin.x, ay = rest[i].y - origin.y;
        const float bx = rest[i + 1].x - origin.x, by = rest[i + 1].y - origin.y;
        if (ax * by - bx * ay == 0.0f)
            rest[i].deleted = true;
    }
    Vector<Point2D> stack;
    stack.reserve(rest.size() + 1);
    stack.pushBack(origin);
    for (const Point2D& p : rest)
    {
        if (p.deleted)
            continue;
        while (stack.size() >= 2 && turn(stack[stack.size() - 2], stack.back(), p) <= 0.0f)
            stack.resize(stack.size() - 1);
        stack.pushBack(p);
    }
    // The stack turns anticlockwise from the pivot; read from its top, it runs clockwise.
    hull.resize(stack.size());
    for (std::size_t i = 0; i < stack.size(); ++i)
    {
        const Point2D& p = stack[stack.size() - 1 - i];
        hull[i] = {p.x, p.y, 0.0f};
    }
}

bool ConvexHull2D::contains(const Point3& p) const
{
    const std::size_t n = hull.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        const Point3& a = hull[i];
        const Point3& b = hull[(i + 1) % n];
        if ((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x) > 0.0f)
            return false;
    }
    return true;
}
} // namespace ondo
