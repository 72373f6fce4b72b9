#include "pan/QuorAmbisonicPanning.h"

#include "common/TarvoDspException.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
AmbisonicPanning::AmbisonicPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    if (numSpeakers != 3 && numSpeakers != 4)
        throw ondo::Exception("b-format needs 3 or 4 channels, not " + std::to_string(numSpeakers),
                              ondo::SourceLocation("libquor/pan/QuorAmbisonicPanning", __LINE__));
    recomputeAllSources();
}

void AmbisonicPanning::computeGains(const ondo::Point3& p, float* row, std::uint32_t)
{
    const float d = p.length();
    const float t = std::atan2(p.y, p.x);
    const float e = d > 0.0f ? std::asin(std::clamp(p.z / d, -1.0f, 1.0f)) : 0.0f;
    const float c = std::cos(e);
    if (numOutputs == 3)
    {
        // The horizontal form keeps W + X + Y at unit power, whatever the elevation.
        const float k = std::sqrt(2.0f) / std::sqrt(3.0f);
        row[0] = std::sqrt(1.0f - c * c * 0.6666667f);
        row[1] = k * std::cos(t) * c;
        row[2] = k * std::sin(t) * c;
    }
    else if (numOutputs == 4)
    {
        row[0] = 1.0f / std::sqrt(3.0f);
        row[1] = std::sqrt(2.0f) * std::cos(t) * c;
        row[2] = std::sqrt(2.0f) * std::sin(t) * c;
        row[3] = std::sqrt(2.0f) * std::sin(e);
    }
}

std::string AmbisonicPanning::getOutletName(std::int32_t index) const
{
    static const char* const names[] = {"W", "X", "Y", "Z"};
    if (index >= 0 && static_cast<std::uint32_t>(index) < numOutputs)
        return names[index];
    return "dumpout";
}
} // namespace Quor
