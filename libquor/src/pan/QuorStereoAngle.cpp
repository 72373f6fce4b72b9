#include "pan/QuorStereoAngle.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
StereoAngle StereoAngle::of(const ondo::Point3& position)
{
    const ondo::Spherical s = ondo::Coordinates::toSpherical(position);
    StereoAngle a;
    a.t = s.azimuth;
    a.q = ondo::Coordinates::halfPi - s.azimuth;
    a.r = std::clamp(std::cos(s.elevation) * s.distance, 0.0f, 1.0f);
    return a;
}
} // namespace Quor
