#pragma once

#include <cmath>

namespace ondo
{
/// A position or direction in metres: +x to the right, +y to the front, +z up.
struct Point3
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    constexpr Point3() = default;
    constexpr Point3(float px, float py, float pz) : x(px), y(py), z(pz) {}

    constexpr Point3 operator+(const Point3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Point3 operator-(const Point3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Point3 operator-() const { return {-x, -y, -z}; }
    constexpr Point3 operator*(float s) const { return {x * s, y * s, z * s}; }
    Point3& operator+=(const Point3& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    constexpr bool operator==(const Point3& o) const { return x == o.x && y == o.y && z == o.z; }

    constexpr float dot(const Point3& o) const { return x * o.x + y * o.y + z * o.z; }
    constexpr Point3 cross(const Point3& o) const
    {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    float length() const { return std::sqrt(dot(*this)); }
    float distanceTo(const Point3& o) const { return (*this - o).length(); }
    /// The unit vector, or the vector as it is when its length is 1e-6 or less.
    Point3 normalized() const
    {
        const float l = length();
        return l > 0.000001f ? *this * (1.0f / l) : *this;
    }

    /// The source position every panner starts from: front, 1 m.
    static constexpr Point3 defaultDirection() { return {0.0f, 1.0f, 0.0f}; }
    static constexpr Point3 unitX() { return {1.0f, 0.0f, 0.0f}; }
    static constexpr Point3 origin() { return {}; }
};

/// Turns `p` by `angle` radians about one axis; an angle of 0 returns `p` exactly.
Point3 rotateAboutZ(const Point3& p, float angle);
Point3 rotateAboutY(const Point3& p, float angle);
Point3 rotateAboutX(const Point3& p, float angle);

/// The angle between two directions in radians, in [0, pi]. A zero vector has no direction:
/// against a non-zero one the angle is that vector's |atan2(y, x)|; two zero vectors give 0.
float vectorAngle(const Point3& a, const Point3& b);
} // namespace ondo
