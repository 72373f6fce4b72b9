#include "math/TarvoDspPoint3Array.h"

#include <array>
#include <cmath>
#include <limits>

namespace ondo
{
namespace
{
constexpr float defaultAzimuths[8][8] = {{0},
                                         {-30, 30},
                                         {-30, 30, 180},
                                         {-45, 45, 135, -135},
                                         {-30, 0, 30, 110, -110},
                                         {-45, 45, 90, 135, -135, -90},
                                         {-30, 0, 30, 90, 150, -150, -90},
                                         {-45, 0, 45, 90, 135, 180, -135, -90}};

Plane planeThrough(const Point3& normal, const Point3& point)
{
    const Point3 n = normal.normalized();
    return {n.x, n.y, n.z, n.dot(point)};
}

/// The eigenvector of the smallest eigenvalue of a symmetric 3 by 3 matrix, by Jacobi
/// rotations: small, exact for coplanar points, and free of special cases.
Point3 smallestEigenvector(std::array<std::array<double, 3>, 3> a)
{
    std::array<std::array<double, 3>, 3> v{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (int sweep = 0; sweep < 50; ++sweep)
    {
        const double off = a[0][1] * a[0][1] + a[0][2] * a[0][2] + a[1][2] * a[1][2];
        if (off < 1e-30)
            break;
        for (int p = 0; p < 2; ++p)
            for (int q = p + 1; q < 3; ++q)
            {
                if (a[p][q] == 0.0)
                    continue;
                const double theta = (a[q][q] - a[p][p]) / (2.0 * a[p][q]);
                const double t = (theta >= 0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
                const double c = 1.0 / std::sqrt(t * t + 1.0), s = t * c;
                for (int k = 0; k < 3; ++k)
                {
                    const double akp = a[k][p], akq = a[k][q];
                    a[k][p] = c * akp - s * akq;
                    a[k][q] = s * akp + c * akq;
                }
                for (int k = 0; k < 3; ++k)
                {
                    const double apk = a[p][k], aqk = a[q][k];
                    a[p][k] = c * apk - s * aqk;
                    a[q][k] = s * apk + c * aqk;
                }
                for (int k = 0; k < 3; ++k)
                {
                    const double vkp = v[k][p], vkq = v[k][q];
                    v[k][p] = c * vkp - s * vkq;
                    v[k][q] = s * vkp + c * vkq;
                }
            }
    }
    int smallest = 0;
    for (int i = 1; i < 3; ++i)
        if (a[i][i] < a[smallest][smallest])
            smallest = i;
    return {static_cast<float>(v[0][smallest]), static_cast<float>(v[1][smallest]),
            static_cast<float>(v[2][smallest])};
}
} // namespace

Point3Array Point3Array::fromFormat(Coordinates::Format format, const float* values, std::size_t count)
{
    const std::size_t group = Coordinates::getNumberOfValues(format);
    Point3Array result;
    if (group == 0 || count % group != 0 || (count > 0 && values == nullptr))
        return result;
    result.resize(count / group);
    for (std::size_t i = 0; i < result.size(); ++i)
    {
        Point3 p;
        Coordinates::apply(format, values + i * group, group, p);
        result[i] = p;
    }
    return result;
}

Point3Array Point3Array::defaultLayout(std::size_t n)
{
    Point3Array layout(n);
    for (std::size_t i = 0; i < n; ++i)
    {
        const float azimuth = n <= 8 ? defaultAzimuths[n - 1][i]
                                     : 360.0f * static_cast<float>(i) / static_cast<float>(n);
        layout[i] = Coordinates::fromNavigational(azimuth, 0.0f, 1.0f);
    }
    return layout;
}

Point3 Point3Array::centroid() const
{
    if (empty())
        return {};
    Point3 sum;
    for (const Point3& p : *this)
        sum += p;
    return sum * (1.0f / static_cast<float>(size()));
}

float Point3Array::maxDistanceTo(const Point3& point) const
{
    float largest = 0.0f;
    for (const Point3& p : *this)
        largest = std::max(largest, p.distanceTo(point));
    return largest;
}

int Point3Array::indexOfClosest(const Point3& point) const
{
    int best = -1;
    float bestDistance = std::numeric_limits<float>::infinity();
    for (std::size_t i = 0; i < size(); ++i)
    {
        const float d = (*this)[i].distanceTo(point);
        if (best < 0 || d < bestDistance)
        {
            best = static_cast<int>(i);
            bestDistance = d;
        }
    }
    return best;
}

bool Point3Array::isPlanar(float epsilon) const
{
    if (empty())
        return false;
    if (size() <= 3)
        return true;
    const Point3& p0 = (*this)[0];
    const Point3 n = ((*this)[1] - p0).cross((*this)[2] - p0);
    const float limit = n.dot(n) * epsilon;
    for (std::size_t k = 3; k < size(); ++k)
    {
        const float offset = ((*this)[k] - p0).dot(n);
        if (offset * offset > limit)
            return false;
    }
    return true;
}

Plane Point3Array::fitPlane() const
{
    if (size() < 2)
        return empty() ? Plane{} : planeThrough({0.0f, 0.0f, 1.0f}, (*this)[0]);
    const Point3& p0 = (*this)[0];
    if (size() == 2)
    {
        // Any plane holds the line; the one that also holds the vertical (or, for a vertical
        // line, the x axis) is the natural choice.
        const Point3 u = direction();
        Point3 n = u.cross({0.0f, 0.0f, 1.0f});
        if (n.length() <= 0.000001f)
            n = u.cross({1.0f, 0.0f, 0.0f});
        return planeThrough(n, p0);
    }
    if (size() == 3)
        return planeThrough(((*this)[1] - p0).cross((*this)[2] - p0), p0);
    const Point3 c = centroid();
    std::array<std::array<double, 3>, 3> scatter{};
    for (const Point3& p : *this)
    {
        const double d[3] = {p.x - c.x, p.y - c.y, p.z - c.z};
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                scatter[i][j] += d[i] * d[j];
    }
    return planeThrough(smallestEigenvector(scatter), c);
}

Rotation Point3Array::getRotationFromPlane() const
{
    const Point3 n = fitPlane().normal();
    Point3 u = direction();
    u = (u - n * u.dot(n)).normalized();
    if (u.length() < 0.5f)
        return Rotation::identity();
    const Point3 v = n.cross(u);
    const float m[3][3] = {{u.x, u.y, u.z}, {v.x, v.y, v.z}, {n.x, n.y, n.z}};
    return Rotation::fromMatrix(m).normalized();
}

Point3 Point3Array::direction() const
{
    if (size() < 2 || (*this)[0] == (*this)[1])
        return Point3::unitX();
    return ((*this)[1] - (*this)[0]).normalized();
}

Point3 Point3Array::perpendicular() const
{
    if (size() < 2)
        return {0.0f, 1.0f, 0.0f};
    return fitPlane().normal().cross(direction()).normalized();
}

bool Point3Array::containsInPolygon(const Point3& point, float epsilon) const
{
    if (size() < 3)
        return false;
    const Point3 u = direction();
    const Point3 v = perpendicular();
    const Point3 w = u.cross(v);
    const float height = (point - (*this)[0]).dot(w);
    if (height * height > epsilon)
        return false;
    // Scan line through the point along +s: count the edges it crosses on the positive side.
    // Vertices on the line are nudged below it so that a vertex is never counted twice.
    auto local = [&](const Point3& p, float& s, float& t) {
        const Point3 d = p - point;
        s = d.dot(u);
        t = d.dot(v);
        if (std::fabs(t) < 0.0001f)
            t = -0.0001f;
    };
    int crossings = 0;
    for (std::size_t i = 0; i < size(); ++i)
    {
        float s0, t0, s1, t1;
        local((*this)[i], s0, t0);
        local((*this)[(i + 1) % size()], s1, t1);
        if (t0 * t1 >= 0.0f)
            continue;
        if (std::min(s0, s1) > 0.0f)
            ++crossings;
        else if (std::max(s0, s1) > 0.0f && s0 - t0 * (s1 - s0) / (t1 - t0) > 0.0f)
            ++crossings;
    }
    return crossings % 2 == 1;
}
} // namespace ondo
