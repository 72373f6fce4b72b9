#include "pan/QuorDbapPanning.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
namespace
{
float fraction(float percent)
{
    return std::clamp(percent, 0.0f, 100.0f) * 0.01f;
}
} // namespace

DbapPanning::DbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers), sourcesBlur(numSources), sourcesBlurByDirection(numSources)
{
}

void DbapPanning::setDbapSpreadMode(DbapSpreadMode mode)
{
    spreadMode = mode;
    updateAllSources();
}

void DbapPanning::setSourceSpread(std::uint32_t source, float percent)
{
    if (source >= numInputs)
        return;
    sourcesBlur[source] = fraction(percent);
    updateAllSources();
}

void DbapPanning::setAllSourcesSpread(float percent)
{
    for (std::uint32_t s = 0; s < numInputs; ++s)
        setSourceSpread(s, percent);
}

void DbapPanning::setSourceSpreadByDirection(std::uint32_t source, float x, float y, float z)
{
    if (source >= numInputs)
        return;
    sourcesBlurByDirection[source] = {fraction(x), fraction(y), fraction(z)};
    updateAllSources();
}

void DbapPanning::setAllSourcesSpreadByDirection(float x, float y, float z)
{
    for (std::uint32_t s = 0; s < numInputs; ++s)
        setSourceSpreadByDirection(s, x, y, z);
}

void DbapPanning::setMuteOutside(bool mute)
{
    muteOutside = mute;
    updateAllSources();
}

float DbapPanning::squaredDistanceByDirection(std::uint32_t source, const ondo::Point3& s, const ondo::Point3& p) const
{
    const SpreadByDirection& b = sourcesBlurByDirection[source];
    const ondo::Point3 d = s - p;
    return (1.0f - b.x) * (1.0f - b.x) * d.x * d.x + (1.0f - b.y) * (1.0f - b.y) * d.y * d.y +
           (1.0f - b.z) * (1.0f - b.z) * d.z * d.z;
}

void DbapPanning::gainsFromSquaredDistances(float* row) const
{
    float total = 0.0f;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        const float e = row[o] + 1e-10f;
        row[o] = 1.0f / std::sqrt(e);
        total += 1.0f / e;
    }
    const float scale = 1.0f / std::sqrt(total);
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] *= scale;
}

void DbapPanning::silenceOrScale(float* row, bool silence, float factor) const
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] = silence ? 0.0f : row[o] * factor;
}
} // namespace Quor
