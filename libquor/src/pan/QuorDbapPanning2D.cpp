#include "pan/QuorDbapPanning2D.h"

#include "pan/QuorSpeakerCount.h"

namespace Quor
{
DbapPanning2D::DbapPanning2D(std::uint32_t numSources, std::uint32_t numSpeakers) : DbapPanning(numSources, numSpeakers)
{
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void DbapPanning2D::setSpeakers(const ondo::Point3Array& speakers)
{
    requireSpeakerCount(speakers, numOutputs, "dbap", ondo::SourceLocation("libquor/pan/QuorDbapPanning2D", __LINE__));
    speakersPosition = speakers;
    hullDirty = true;
    center = speakers.centroid();
    rebuildHull();
    updateAllSources();
}

void DbapPanning2D::rebuildHull()
{
    hull.build(speakersPosition);
    hullPoints = hull.getHull();
    hullDirty = false;
}

void DbapPanning2D::computeGains(const ondo::Point3& s, float* row, std::uint32_t source)
{
    const float b = sourcesBlur[source];
    const float toCenter = (s.x - center.x) * (s.x - center.x) + (s.y - center.y) * (s.y - center.y);
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        const ondo::Point3& p = speakersPosition[o];
        row[o] = spreadMode == BlurByDirection
                     ? squaredDistanceByDirection(source, s, p)
                     : (1.0f - b) * ((s.x - p.x) * (s.x - p.x) + (s.y - p.y) * (s.y - p.y)) + b * toCenter;
    }
    gainsFromSquaredDistances(row);
    if (hullDirty)
        rebuildHull();
    if (hull.contains(s))
        return;
    // Beyond the setup the source fades with its distance from the centre, relative to the
    // hull corner nearest to it (so just past the middle of a long edge it is still louder).
    const int nearest = hullPoints.indexOfClosest(s);
    const float edge = nearest < 0 ? 0.0f : center.distanceTo(hullPoints[static_cast<std::size_t>(nearest)]);
    silenceOrScale(row, muteOutside, (edge + 1.0f) / (center.distanceTo(s) + 1.0f));
}
} // namespace Quor
