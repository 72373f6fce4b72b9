#pragma once

#include "math/TarvoDspPoint3.h"

namespace ondo
{
/// A rotation as a quaternion (x, y, z, w); the identity is (0, 0, 0, 1).
struct Rotation
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 1.0f;

    static constexpr Rotation identity() { return {}; }

    /// The quaternion of a rotation matrix m[row][column], by the trace method.
    static Rotation fromMatrix(const float m[3][3]);

    /// Divides by the length, unless the length is below 0.0001.
    Rotation normalized() const;
    float length() const;
    /// `p` turned by this rotation.
    Point3 rotate(const Point3& p) const;

    bool operator==(const Rotation&) const = default;
};
} // namespace ondo
