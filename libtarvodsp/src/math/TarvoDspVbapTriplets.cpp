#include "math/TarvoDspVbapTriplets.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
namespace
{
constexpr std::size_t maximumCandidates = 1000000;
constexpr float arcTolerance = 0.01f;

Point3 times(const float m[9], const Point3& p)
{
    return {m[0] * p.x + m[1] * p.y + m[2] * p.z, m[3] * p.x + m[4] * p.y + m[5] * p.z,
            m[6] * p.x + m[7] * p.y + m[8] * p.z};
}

struct Pair
{
    std::uint16_t i = 0;
    std::uint16_t j = 0;
    float angle = 0.0f;
};
} // namespace

void VbapTriplets::setSpeakers(const Point3Array& positions)
{
    speakers.resize(positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        const Point3& p = positions[i];
        speakers[i] = {static_cast<std::int32_t>(i), p.x, p.y, p.z, Coordinates::azimuthOf(p),
                       Coordinates::elevationOf(p)};
    }
    triplets.resize(0);
    dirty = true;
}

void VbapTriplets::update()
{
    if (dirty)
        triangulate();
}

float VbapTriplets::quality(const Point3& p, const Point3& q, const Point3& r)
{
    const Point3 a = p.normalized(), b = q.normalized(), c = r.normalized();
    const float perimeter = std::fabs(vectorAngle(a, b)) + std::fabs(vectorAngle(a, c)) + std::fabs(vectorAngle(b, c));
    if (perimeter <= 0.00001f)
        return 0.0f;
    return std::fabs(a.dot(b.cross(c))) / perimeter;
}

bool VbapTriplets::arcsCross(const Point3& a, const Point3& b, const Point3& c, const Point3& d)
{
    // The two great circles meet at m and -m; the arcs cross where one of those lies on both.
    const Point3 m = a.cross(b).cross(c.cross(d)).normalized();
    const Point3 n = -m;
    const float am = vectorAngle(a, m), mb = vectorAngle(m, b), cm = vectorAngle(c, m), md = vectorAngle(m, d);
    const float an = vectorAngle(a, n), nb = vectorAngle(n, b), cn = vectorAngle(c, n), nd = vectorAngle(n, d);
    for (float angle : {am, mb, cm, md, an, nb, cn, nd})
        if (std::fabs(angle) <= arcTolerance)
            return false;
    const float ab = vectorAngle(a, b), cd = vectorAngle(c, d);
    const bool mOnBoth = std::fabs(ab - (am + mb)) <= arcTolerance && std::fabs(cd - (cm + md)) <= arcTolerance;
    const bool nOnBoth = std::fabs(ab - (an + nb)) <= arcTolerance && std::fabs(cd - (cn + nd)) <= arcTolerance;
    return mOnBoth || nOnBoth;
}

bool VbapTriplets::invert(const Point3& a, const Point3& b, const Point3& c, float inv[9])
{
    // Columns a, b, c: the inverse's rows are the cross products over the determinant.
    const Point3 r0 = b.cross(c), r1 = c.cross(a), r2 = a.cross(b);
    const float det = a.dot(r0);
    if (std::fabs(det) < 1e-6f)
        return false;
    const float k = 1.0f / det;
    const float values[9] = {r0.x, r0.y, r0.z, r1.x, r1.y, r1.z, r2.x, r2.y, r2.z};
    for (int i = 0; i < 9; ++i)
        inv[i] = values[i] * k;
    return true;
}

void VbapTriplets::triangulate()
{
    dirty = false;
    triplets.resize(0);
    const std::size_t n = speakers.size();
    if (n < 3)
        return;
    Vector<Point3> unit(n);
    for (std::size_t i = 0; i < n; ++i)
        unit[i] = position(i).normalized();

    // The threshold grows until the candidates are few enough to keep.
    auto qualityOf = [&](std::size_t i, std::size_t j, std::size_t k) { return quality(unit[i], unit[j], unit[k]); };
    float threshold = 0.01f;
    auto countAbove = [&](float t) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = i + 1; j < n; ++j)
                for (std::size_t k = j + 1; k < n; ++k)
                    count += qualityOf(i, j, k) > t ? 1 : 0;
        return count;
    };
    while (countAbove(threshold) > maximumCandidates)
        threshold *= 5.0f;

    Vector<Triplet> candidates;
    Vector<std::int8_t> connected(n * n);
    connected.fill(-1);
    auto connect = [&](std::size_t a, std::size_t b) {
        connected[a * n + b] = 1;
        connected[b * n + a] = 1;
    };
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = i + 1; j < n; ++j)
            for (std::size_t k = j + 1; k < n; ++k)
                if (qualityOf(i, j, k) > threshold)
                {
                    Triplet t;
                    t.speakers[0] = static_cast<std::uint16_t>(i);
                    t.speakers[1] = static_cast<std::uint16_t>(j);
                    t.speakers[2] = static_cast<std::uint16_t>(k);
                    candidates.pushBack(t);
                    connect(i, j);
                    connect(i, k);
                    connect(j, k);
                }

    // Connected pairs, shortest first; among equal angles the later pair first.
    Vector<Pair> pairs;
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = i + 1; j < n; ++j)
            if (connected[i * n + j] > 0)
                pairs.pushBack({static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j),
                                vectorAngle(unit[i], unit[j])});
    std::reverse(pairs.begin(), pairs.end());
    std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) { return a.angle < b.angle; });

    // A shorter edge removes every longer edge that crosses it.
    for (const Pair& p : pairs)
    {
        if (connected[p.i * n + p.j] <= 0)
            continue;
        for (std::size_t k = 0; k < n; ++k)
            for (std::size_t l = k + 1; l < n; ++l)
            {
                if (k == p.i || k == p.j || l == p.i || l == p.j || connected[k * n + l] <= 0)
                    continue;
                if (arcsCross(unit[p.i], unit[p.j], unit[k], unit[l]))
                {
                    connected[k * n + l] = -1;
                    connected[l * n + k] = -1;
                }
            }
    }

    for (Triplet& t : candidates)
    {
        const std::size_t a = t.speakers[0], b = t.speakers[1], c = t.speakers[2];
        if (connected[a * n + b] <= 0 || connected[a * n + c] <= 0 || connected[b * n + c] <= 0)
            continue;
        if (!invert(position(a), position(b), position(c), t.inverse))
            continue;
        bool holdsAnother = false;
        for (std::size_t s = 0; s < n && !holdsAnother; ++s)
        {
            if (s == a || s == b || s == c)
                continue;
            const Point3 g = times(t.inverse, position(s));
            holdsAnother = g.x >= -0.001f && g.y >= -0.001f && g.z >= -0.001f;
        }
        if (!holdsAnother)
            triplets.pushBack(t);
    }
}

VbapTriplets::Selection VbapTriplets::select(const Point3& p)
{
    update();
    Selection chosen;
    float bestSmallest = -100000.0f;
    int bestNegatives = 3;
    bool found = false;
    for (const Triplet& t : triplets)
    {
        const Point3 g = times(t.inverse, p);
        const int negatives = (g.x < -0.01f) + (g.y < -0.01f) + (g.z < -0.01f);
        const float smallest = std::min({g.x, g.y, g.z});
        if (smallest > bestSmallest && negatives <= bestNegatives)
        {
            bestSmallest = smallest;
            bestNegatives = negatives;
            chosen.gains[0] = g.x;
            chosen.gains[1] = g.y;
            chosen.gains[2] = g.z;
            std::copy(t.speakers, t.speakers + 3, chosen.speakers);
            found = true;
        }
    }
    if (!found)
        return {};
    for (float& g : chosen.gains)
        g = std::max(g, 0.0f);
    return chosen;
}
} // namespace ondo
