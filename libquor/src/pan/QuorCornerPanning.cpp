#include "pan/QuorCornerPanning.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
using ondo::Coordinates;

CornerPanning::CornerPanning(std::uint32_t numSources, std::uint32_t numSpeakers, float c0, float c1, float c2,
                             float c3)
    : AmplitudePanning(numSources, numSpeakers), cornerAzimuths{c0, c1, c2, c3}
{
}

float CornerPanning::clamp01(float v)
{
    return std::clamp(v, 0.0f, 1.0f);
}

void CornerPanning::split(float a, float b, float* out)
{
    out[0] = clamp01(a - b);
    out[2] = clamp01(b - a);
    out[1] = a + b - out[0] - out[2];
}

void CornerPanning::squarePosition(const ondo::Point3& position, float& x, float& y) const
{
    float a = Coordinates::azimuthOf(position);
    const float e = Coordinates::elevationOf(position);
    const float d = position.length();
    // Distance folds into elevation: inside the unit sphere the source rises towards the
    // pole, which the horizontal projection maps to the centre.
    float folded = e + std::acos(std::clamp(d, -1.0f, 1.0f)) * Coordinates::radiansToDegrees;
    if (folded > 180.0f)
        folded -= 360.0f;
    if (folded < -180.0f)
        folded += 360.0f;
    const float c = std::cos(folded * Coordinates::degreesToRadians);
    if (c < 0.0f)
        a += 180.0f;
    const float radius = std::fabs(c);

    float corner[4];
    for (int k = 0; k < 4; ++k)
        corner[k] = Coordinates::wrapDegrees(cornerAzimuths[k]);
    for (int k = 1; k < 4; ++k)
        if (corner[k] < corner[k - 1])
            corner[k] += 360.0f;
    const double t = static_cast<double>(Coordinates::wrapDegrees(a - corner[0])) + corner[0];
    const double quarter = 90.0f;
    double u;
    if (t < corner[1])
        u = (t - corner[0]) / (corner[1] - corner[0]) * quarter;
    else if (t < corner[2])
        u = (t - corner[1]) / (corner[2] - corner[1]) * quarter + quarter;
    else if (t < corner[3])
        u = (t - corner[2]) / (corner[3] - corner[2]) * quarter + 2.0 * quarter;
    else
        u = (t - corner[3]) / (corner[0] + 360.0f - corner[3]) * quarter + 3.0 * quarter;
    const float warped = Coordinates::wrapDegrees(static_cast<float>(u - 45.0f));

    // Round the square: 2 - u / 45 on the front half, (u - 180) / 45 - 2 on the back.
    auto squareCoordinate = [](float v) { return v >= 0.0f && v <= 180.0f ? 2.0f - v / 45.0f : (v - 180.0f) / 45.0f - 2.0f; };
    y = std::clamp(squareCoordinate(warped), -1.0f, 1.0f) * radius;
    x = std::clamp(squareCoordinate(Coordinates::wrapDegrees(warped - 90.0f)), -1.0f, 1.0f) * radius;
}

CornerPanning::Corners CornerPanning::cornersOf(const ondo::Point3& position) const
{
    float x, y;
    squarePosition(position, x, y);
    x = std::clamp(x, -1.0f, 1.0f);
    y = std::clamp(y, -1.0f, 1.0f);
    Corners c{};
    c.left = (1.0f - x) / 2.0f;
    c.right = (1.0f + x) / 2.0f;
    c.back = (1.0f - y) / 2.0f;
    c.front = (1.0f + y) / 2.0f;
    c.fl = c.front * c.left;
    c.fr = c.front * c.right;
    c.br = c.back * c.right;
    c.bl = c.back * c.left;
    return c;
}
} // namespace Quor
