#include "pan/QuorDbapPanning3D.h"

#include "pan/QuorSpeakerCount.h"

namespace Quor
{
DbapPanning3D::DbapPanning3D(std::uint32_t numSources, std::uint32_t numSpeakers) : DbapPanning(numSources, numSpeakers)
{
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void DbapPanning3D::setSpeakers(const ondo::Point3Array& speakers)
{
    requireSpeakerCount(speakers, numOutputs, "dbap", ondo::SourceLocation("libquor/pan/QuorDbapPanning3D", __LINE__));
    speakersPosition = speakers;
    center = speakers.centroid();
    radius = speakers.maxDistanceTo(center);
    updateAllSources();
}

void DbapPanning3D::computeGains(const ondo::Point3& s, float* row, std::uint32_t source)
{
    const ondo::Point3 c = s - center;
    const float q = c.dot(c);
    const float b = sourcesBlur[source];
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        const ondo::Point3 d = s - speakersPosition[o];
        row[o] = spreadMode == BlurByDirection ? squaredDistanceByDirection(source, s, speakersPosition[o])
                                               : (1.0f - b) * d.dot(d) + b * q;
    }
    gainsFromSquaredDistances(row);
    // The radius is held against the squared distance: a unit setup cuts at its rim, a
    // larger one at the square root of its radius.
    if (muteOutside && radius < q)
        silenceOrScale(row, true, 0.0f);
}
} // namespace Quor
