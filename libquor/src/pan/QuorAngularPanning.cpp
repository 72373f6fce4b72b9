#include "pan/QuorAngularPanning.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
using ondo::Coordinates;

AngularPanning::AngularPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void AngularPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    speakersPosition = speakers;
    speakerAngles.clear();
    for (std::uint32_t i = 0; i < speakers.size() && i < numOutputs; ++i)
        speakerAngles.insert_or_assign(std::atan2(speakers[i].y, speakers[i].x), i);
    recomputeAllSources();
}

void AngularPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    if (numOutputs == 0 || speakerAngles.empty())
        return;
    if (numOutputs == 1)
    {
        row[0] = 1.0f;
        return;
    }
    float t = std::atan2(position.y, position.x);
    auto b = speakerAngles.upper_bound(t);
    if (b == speakerAngles.end())
        b = speakerAngles.begin();
    auto a = b == speakerAngles.begin() ? std::prev(speakerAngles.end()) : std::prev(b);
    const float from = a->first;
    float to = b->first;
    while (to <= from)
        to += Coordinates::twoPi;
    while (t < from)
        t += Coordinates::twoPi;
    t = std::clamp(t, from, to);
    const float f = (t - from) * Coordinates::halfPi / (to - from);
    std::fill(row, row + numOutputs, 0.0f);
    row[a->second] = std::cos(f);
    row[b->second] = std::sin(f);
}
} // namespace Quor
