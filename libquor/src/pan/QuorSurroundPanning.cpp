#include "pan/QuorSurroundPanning.h"

#include "math/TarvoDspCoordinates.h"

#include <cmath>

namespace Quor
{
SurroundPanning::SurroundPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : CornerPanning(numSources, numSpeakers, -30.0f, 30.0f, 180.0f, 180.0f)
{
    recomputeAllSources();
}

void SurroundPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    speakersPosition = speakers;
    if (speakers.size() == 3 || speakers.size() == 4)
    {
        cornerAzimuths[0] = ondo::Coordinates::azimuthOf(speakers[0]);
        cornerAzimuths[1] = ondo::Coordinates::azimuthOf(speakers[speakers.size() == 3 ? 1 : 2]);
    }
    recomputeAllSources();
}

void SurroundPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    const Corners c = cornersOf(position);
    const float rear = clamp01(c.back * c.left + c.back * c.right);
    float t[4];
    if (numOutputs == 3)
    {
        t[0] = c.fl, t[1] = c.fr, t[2] = rear;
    }
    else if (numOutputs == 4)
    {
        split(c.fl, c.fr, t);
        t[3] = rear;
    }
    else
        return;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] = std::sqrt(t[o]);
}

std::string SurroundPanning::getOutletName(std::int32_t index) const
{
    static const char* const three[] = {"L", "R", "S"};
    static const char* const four[] = {"L", "C", "R", "S"};
    if (index >= 0 && static_cast<std::uint32_t>(index) < numOutputs && numOutputs <= 4)
        return numOutputs == 3 ? three[index] : four[index];
    return "dumpout";
}
} // namespace Quor
