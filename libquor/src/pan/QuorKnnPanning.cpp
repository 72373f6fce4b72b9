#include "pan/QuorKnnPanning.h"

#include "pan/QuorSpeakerCount.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
KnnPanning::KnnPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers), numberOfNeighbors(numSources, 1u), indices(numSpeakers),
      neighbors(numSpeakers)
{
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void KnnPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    requireSpeakerCount(speakers, numOutputs, "knn", ondo::SourceLocation("libquor/pan/QuorKnnPanning", __LINE__));
    speakersPosition = speakers;
    if (speakers.size() > 1)
        tree.build(speakers);
    recomputeAllSources();
}

void KnnPanning::setKnnNumberOfNeighbors(std::uint32_t source, std::uint32_t count)
{
    if (source >= numInputs)
        return;
    numberOfNeighbors[source] = std::clamp(count, 1u, std::max(numOutputs, 1u));
    setSourcePosition(source, sourcesPosition[source], false);
}

bool KnnPanning::is2D() const
{
    return std::all_of(speakersPosition.begin(), speakersPosition.end(), [](const ondo::Point3& p) {
        return std::fabs(ondo::Coordinates::elevationOf(p)) <= 0.5f;
    });
}

void KnnPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t source)
{
    if (numOutputs == 1)
    {
        row[0] = 1.0f;
        return;
    }
    std::fill(row, row + numOutputs, 0.0f);
    if (tree.getNumPoints() == 0)
        return;
    const std::uint32_t k = numberOfNeighbors[source];
    std::size_t found = 0;
    if (k == 1)
    {
        const int nearest = tree.findNearest(position);
        neighbors[found++] = {position.distanceTo(speakersPosition[static_cast<std::size_t>(nearest)]), nearest};
    }
    else if (k >= numOutputs)
    {
        for (std::uint32_t o = 0; o < numOutputs; ++o)
            neighbors[found++] = {position.distanceTo(speakersPosition[o]), static_cast<int>(o)};
        std::sort(neighbors.begin(), neighbors.end(),
                  [](const Neighbor& a, const Neighbor& b) { return a.distance < b.distance; });
    }
    else
    {
        const std::size_t n = tree.findNearest(position, k, indices.data());
        for (; found < n; ++found)
            neighbors[found] = {position.distanceTo(speakersPosition[static_cast<std::size_t>(indices[found])]),
                                indices[found]};
    }
    float power = 0.0f;
    for (std::size_t i = 0; i < found; ++i)
    {
        const float g = 1.0f / std::max(neighbors[i].distance, 1e-10f);
        row[neighbors[i].index] = g;
        power += g * g;
    }
    const float scale = 1.0f / std::max(std::sqrt(power), 1e-20f);
    for (std::size_t i = 0; i < found; ++i)
        row[neighbors[i].index] *= scale;
}
} // namespace Quor
