#include "math/TarvoDspRotation.h"

#include <cmath>

namespace ondo
{
Rotation Rotation::fromMatrix(const float m[3][3])
{
    Rotation q;
    const float trace = m[0][0] + m[1][1] + m[2][2];
    if (trace > 0.0f)
    {
        q.w = std::sqrt(trace + 1.0f) * 0.5f;
        const float k = 1.0f / (4.0f * q.w);
        q.x = (m[2][1] - m[1][2]) * k;
        q.y = (m[0][2] - m[2][0]) * k;
        q.z = (m[1][0] - m[0][1]) * k;
    }
    else if (m[0][0] >= m[1][1] && m[0][0] >= m[2][2])
    {
        const float s = std::sqrt(1.0f + m[0][0] - m[1][1] - m[2][2]) * 2.0f;
        q.w = (m[2][1] - m[1][2]) / s;
        q.x = 0.25f * s;
        q.y = (m[0][1] + m[1][0]) / s;
        q.z = (m[0][2] + m[2][0]) / s;
    }
    else if (m[1][1] >= m[2][2])
    {
        const float s = std::sqrt(1.0f + m[1][1] - m[0][0] - m[2][2]) * 2.0f;
        q.w = (m[0][2] - m[2][0]) / s;
        q.x = (m[0][1] + m[1][0]) / s;
        q.y = 0.25f * s;
        q.z = (m[1][2] + m[2][1]) / s;
    }
    else
    {
        const float s = std::sqrt(1.0f + m[2][2] - m[0][0] - m[1][1]) * 2.0f;
        q.w = (m[1][0] - m[0][1]) / s;
        q.x = (m[0][2] + m[2][0]) / s;
        q.y = (m[1][2] + m[2][1]) / s;
        q.z = 0.25f * s;
    }
    return q;
}

float Rotation::length() const
{
    return std::sqrt(x * x + y * y + z * z + w * w);
}

Rotation Rotation::normalized() const
{
    const float l = length();
    if (l < 0.0001f)
        return *this;
    const float k = 1.0f / l;
    return {x * k, y * k, z * k, w * k};
}

Point3 Rotation::rotate(const Point3& p) const
{
    // p' = p + 2 w (u x p) + 2 u x (u x p), with u the vector part.
    const Point3 u{x, y, z};
    const Point3 t = u.cross(p) * 2.0f;
    return p + t * w + u.cross(t);
}
} // namespace ondo
