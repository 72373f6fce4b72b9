#include "pan/QuorStereoMSPanning.h"

#include "pan/QuorStereoAngle.h"

#include <cmath>

namespace Quor
{
StereoMSPanning::StereoMSPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void StereoMSPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    if (numOutputs < 2)
        return;
    const StereoAngle a = StereoAngle::of(position);
    row[0] = (std::sin(a.t) * a.r + 1.0f) * 0.5f;
    row[1] = -0.5f * std::cos(a.t) * a.r;
}

std::string StereoMSPanning::getOutletName(std::int32_t index) const
{
    if (index == 0)
        return "mid";
    if (index == 1)
        return "side";
    return "dumpout";
}
} // namespace Quor
