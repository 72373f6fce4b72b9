#pragma once

#include "math/TarvoDspKdTreeHelper.h"
#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// Panning on the k speakers nearest to the source, each with a gain inverse to its
/// distance, at unit power. The neighbours come from a k-d tree of the speakers.
class KnnPanning : public AmplitudePanning
{
public:
    /// Installs the default layout; every source starts with one neighbour. Control
    /// thread; allocates.
    KnnPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates (the tree). Raises `ondo::Exception` unless there is one
    /// position per speaker.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    /// Control thread; real-time safe.
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    /// Neighbours of one source, clamped to [1, numSpeakers]; recomputes it. Control
    /// thread; real-time safe.
    void setKnnNumberOfNeighbors(std::uint32_t source, std::uint32_t count) override;
    std::uint32_t getKnnNumberOfNeighbors(std::uint32_t source) const { return numberOfNeighbors[source]; }
    /// True when no speaker stands more than 0.5 degrees off the horizon.
    bool is2D() const override;

private:
    struct Neighbor
    {
        float distance = 0.0f;
        int index = 0;
    };

    ondo::Vector<std::uint32_t> numberOfNeighbors;
    ondo::KdTreeHelper tree;
    ondo::Vector<int> indices;
    ondo::Vector<Neighbor> neighbors;
};
} // namespace Quor
