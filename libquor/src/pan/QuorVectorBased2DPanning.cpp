#include "pan/QuorVectorBased2DPanning.h"

#include "common/TarvoDspException.h"
#include "math/TarvoDspConvexHull2D.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
namespace
{
// The refusals name the panner's source file, as the house reports them.
const char* const sourceFile = "libquor/pan/QuorVbap2DPanning";

double roundToMicro(double v)
{
    const double factor = std::pow(10.0, 6);
    return std::round(factor * v) / factor;
}
} // namespace

double VectorBased2DPanning::azimuthOf(double x, double y)
{
    double a = 270.0 - std::atan2(y, x) * 57.29577951308232;
    while (a < 0.0)
        a += 360.0;
    while (a >= 360.0)
        a -= 360.0;
    return a - 180.0;
}

VectorBased2DPanning::VectorBased2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers), speakers(numSpeakers), pairs(numSpeakers)
{
    for (std::uint32_t i = 0; i < numSpeakers; ++i)
    {
        // i / n taken as radians: a provisional arc, replaced as soon as speakers are given.
        const double t = static_cast<double>(i) / numSpeakers;
        speakers[i] = {std::cos(t), std::sin(t), azimuthOf(std::cos(t), std::sin(t)), static_cast<std::int32_t>(i)};
    }
    buildPairs();
}

void VectorBased2DPanning::buildPairs()
{
    const std::size_t n = speakers.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        const Point2D& a = speakers[i];
        const Point2D& b = speakers[(i + 1) % n];
        pairs[i] = {roundToMicro(a.x), roundToMicro(a.y), roundToMicro(b.x), roundToMicro(b.y)};
    }
}

void VectorBased2DPanning::setSpeakers(const ondo::Point3Array& layout)
{
    if (layout.size() != numOutputs)
        throw ondo::Exception("vbap 2d: " + std::to_string(layout.size()) + " speaker positions given for " +
                                  std::to_string(numOutputs) + " speakers.",
                              ondo::SourceLocation(sourceFile, __LINE__));
    speakersPosition = layout;
    if (layout.size() > 2)
    {
        if (!layout.isPlanar(0.0001f))
        {
            valid = false;
            throw ondo::Exception("cannot build a 2-D vbap: the loudspeaker setup is not planar.",
                                  ondo::SourceLocation(sourceFile, __LINE__));
        }
        const ondo::ConvexHull2D hull(layout);
        if (!hull.getHull().containsInPolygon(ondo::Point3::origin(), 0.00001f))
        {
            valid = false;
            throw ondo::Exception("invalid setup for vbap 2d: the reference position must be inside the speaker setup.",
                                  ondo::SourceLocation(sourceFile, __LINE__));
        }
    }
    for (std::uint32_t i = 0; i < layout.size(); ++i)
    {
        const double x = layout[i].x, y = layout[i].y;
        speakers[i] = {x, y, azimuthOf(x, y), static_cast<std::int32_t>(i)};
    }
    std::sort(speakers.begin(), speakers.end(),
              [](const Point2D& a, const Point2D& b) { return a.azimuth < b.azimuth; });
    buildPairs();
    recomputeAllSources();
}

void VectorBased2DPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    const std::uint32_t n = numOutputs;
    std::fill(row, row + n, 0.0f);
    if (!valid || n == 0)
        return;
    const double x = position.x, y = position.y;
    const double a = azimuthOf(x, y);
    std::uint32_t i = n - 1;
    for (std::uint32_t k = 0; k + 1 < n; ++k)
        if (speakers[k].azimuth <= a && speakers[k + 1].azimuth >= a)
        {
            i = k;
            break;
        }
    const Matrix2D& p = pairs[i];
    double d = p.x1 * p.y2 - p.y1 * p.x2;
    if (std::fabs(d) <= 1e-10)
        d = d < 0.0 ? -1e-10 : 1e-10;
    const double inverse = 1.0 / d;
    double g1 = std::max((p.y2 * x - p.x2 * y) * inverse, 0.0);
    double g2 = std::max((p.x1 * y - p.y1 * x) * inverse, 0.0);
    // A source at the centre has no direction: it spreads over the pair.
    if (g1 == 0.0 && g2 == 0.0)
        g1 = g2 = 1.0;
    row[speakers[i].index] += static_cast<float>(g1);
    row[speakers[(i + 1) % n].index] += static_cast<float>(g2);
    normalizeGains(row);
}
} // namespace Quor
