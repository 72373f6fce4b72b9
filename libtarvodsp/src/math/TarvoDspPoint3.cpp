#include "math/TarvoDspPoint3.h"

#include <algorithm>

namespace ondo
{
Point3 rotateAboutZ(const Point3& p, float angle)
{
    if (angle == 0.0f)
        return p;
    const float c = std::cos(angle), s = std::sin(angle);
    return {p.x * c - p.y * s, p.x * s + p.y * c, p.z};
}

Point3 rotateAboutY(const Point3& p, float angle)
{
    if (angle == 0.0f)
        return p;
    const float c = std::cos(angle), s = std::sin(angle);
    return {p.x * c - p.z * s, p.y, p.z * c + p.x * s};
}

Point3 rotateAboutX(const Point3& p, float angle)
{
    if (angle == 0.0f)
        return p;
    const float c = std::cos(angle), s = std::sin(angle);
    return {p.x, p.y * c - p.z * s, p.z * c + p.y * s};
}

float vectorAngle(const Point3& a, const Point3& b)
{
    const float la = a.length(), lb = b.length();
    if (la == 0.0f && lb == 0.0f)
        return 0.0f;
    if (la == 0.0f)
        return std::fabs(std::atan2(b.y, b.x));
    if (lb == 0.0f)
        return std::fabs(std::atan2(a.y, a.x));
    const float cosine = std::clamp(a.dot(b) / (la * lb), -1.0f, 1.0f);
    return std::fabs(std::acos(cosine));
}
} // namespace ondo
