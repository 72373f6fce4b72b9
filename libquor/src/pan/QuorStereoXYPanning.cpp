#include "pan/QuorStereoXYPanning.h"

#include "pan/QuorStereoAngle.h"

#include <cmath>

namespace Quor
{
StereoXYPanning::StereoXYPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void StereoXYPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    if (numOutputs < 2)
        return;
    const StereoAngle a = StereoAngle::of(position);
    row[0] = (std::sin(0.7853982f - a.q) * a.r + 1.0f) * 0.41421f;
    row[1] = (std::sin(a.q + 0.7853982f) * a.r + 1.0f) * 0.41421f;
}
} // namespace Quor
