#pragma once

#include "pan/QuorAmplitudePanning.h"

#include <memory>

namespace Quor
{
/// DBAP inside the setup and 3-D VBAP outside it, blended by the source's distance r from
/// the centre against the setup's radius R: DBAP alone up to 0.7 R, VBAP alone from 1.3 R,
/// a linear crossfade of the two rows between (so the power dips in the band).
class VDbapPanning : public AmplitudePanning
{
public:
    /// Builds the two inner panners through the factory; raises `ondo::Exception` when it
    /// can't, which the factory turns into the silent panner. Control thread; allocates.
    VDbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers);
    ~VDbapPanning() override;

    /// Control thread; allocates (the triangulation). Raises `ondo::Exception` unless
    /// there is one position per speaker, and passes on the refusal of a planar layout by
    /// the VBAP side, after the DBAP side has taken it and every source is recomputed.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    /// Control thread; real-time safe.
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return false; }

    float getRadius() const { return radius; }
    ondo::Point3 getCenter() const { return center; }

private:
    float radius = 0.0f;
    ondo::Point3 center;
    std::unique_ptr<AmplitudePanning> dbap;
    std::unique_ptr<AmplitudePanning> vbap;
    /// The last row each inner panner gave, per source (numSources by numSpeakers).
    ondo::Vector<float> dbapRows;
    ondo::Vector<float> vbapRows;
};
} // namespace Quor
