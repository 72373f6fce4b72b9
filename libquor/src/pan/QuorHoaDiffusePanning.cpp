#include "pan/QuorHoaDiffusePanning.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
namespace
{
struct Direction
{
    float azimuth;
    float elevation;
};

constexpr Direction eight[] = {{9.8961f, 52.062f},     {-23.794f, -12.2f},    {83.794f, 12.2f},
                               {-129.8961f, 52.062f},  {50.1039f, -52.062f},  {-96.206f, -12.2f},
                               {156.206f, 12.2f},      {-170.1039f, -52.062f}};

constexpr Direction sixteen[] = {{140.0f, 50.0f},        {32.0241f, -20.193f},   {-49.9911f, 34.489f},
                                 {-87.0737f, -0.965f},   {88.1604f, -33.258f},   {-127.7499f, 45.025f},
                                 {177.9677f, 9.533f},    {166.1002f, -47.907f},  {127.4258f, -0.057f},
                                 {-95.9475f, -51.614f},  {72.1957f, 23.116f},    {21.5465f, -71.017f},
                                 {-30.7806f, -20.971f},  {-137.3841f, -12.713f}, {8.0168f, 23.556f},
                                 {18.4668f, 74.456f}};
} // namespace

ondo::Point3Array HoaDiffusePanning::directions(std::uint32_t count, std::uint32_t dimension)
{
    ondo::Point3Array points;
    if (dimension == 2)
    {
        points.resize(count);
        for (std::uint32_t i = 0; i < count; ++i)
            points[i] = ondo::Coordinates::fromNavigational(360.0f * i / count, 0.0f, 1.0f);
        return points;
    }
    if (count == 8 || count == 16)
    {
        const Direction* table = count == 8 ? eight : sixteen;
        points.resize(count);
        for (std::uint32_t i = 0; i < count; ++i)
            points[i] = ondo::Coordinates::fromNavigational(table[i].azimuth, table[i].elevation, 1.0f);
        return points;
    }
    if (count < 6)
        return points;
    // Equal-area bands in height, each point turned by the golden angle from the last.
    const double goldenAngle = 3.14159265358979323846 * (3.0 - std::sqrt(5.0));
    points.resize(count);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const double z = 1.0 - (2.0 * i + 1.0) / count;
        const double r = std::sqrt(std::max(0.0, 1.0 - z * z));
        const double phi = goldenAngle * i;
        points[i] = {static_cast<float>(r * std::cos(phi)), static_cast<float>(r * std::sin(phi)), static_cast<float>(z)};
    }
    return points;
}

HoaDiffusePanning::HoaDiffusePanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dim)
    : Pan(numSources, numSpeakers), dimension(dim),
      inner(Pan::create(numSources, numSpeakers, dim == 2 ? Pan::Hoa2D : Pan::Hoa3D, Pan::Direct))
{
    const ondo::Point3Array fixed = directions(numSources, dimension);
    for (std::uint32_t s = 0; s < fixed.size(); ++s)
        inner->setSourcePosition(s, fixed[s], true);
    inner->setAmbisonicNormalization(ondo::Ambisonics::defaultNormalization(dimension));
}

void HoaDiffusePanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    inner->process(outputs, inputs, numSamples);
}

void HoaDiffusePanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    inner->processAdd(outputs, inputs, numSamples);
}

void HoaDiffusePanning::setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool)
{
    if (source < numInputs)
        sourcesPosition[source] = position;
}
} // namespace Quor
