#pragma once

#include "math/TarvoDspPoint3.h"

namespace Quor
{
/// How a stereo pair sees a source: its mathematical azimuth t (radians, from +x), the
/// clockwise angle q = pi/2 - t from the front, and r, the horizontal distance clamped to
/// [0, 1], which pulls a near source towards the centre of the image.
struct StereoAngle
{
    float t = 0.0f;
    float q = 0.0f;
    float r = 0.0f;

    static StereoAngle of(const ondo::Point3& position);
};
} // namespace Quor
