#pragma once

#include "math/TarvoDspVbapTriplets.h"
#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// Vector-based panning over a loudspeaker sphere: a source sounds on the triplet of
/// speakers around its direction, with gains that solve the 3 by 3 system of their
/// directions. A planar layout is refused, and then the panner stays silent for good.
class VectorBasedPanning : public AmplitudePanning
{
public:
    /// Starts with the default layout, which, being a ring, gives no triplet until
    /// `setSpeakers` brings a real one.
    VectorBasedPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates (the triangulation runs at once). Raises `ondo::Exception`
    /// for a layout in one plane.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return false; }
    /// Adds one line per triplet, speakers counted from 1.
    void getInfos(StringArray& lines) const override;
    /// Brings the gains of one row to the leaf's law.
    virtual void normalizeGains(float* row) = 0;

    bool isValid() const { return valid; }
    const ondo::VbapTriplets& getTriplets() const { return triplets; }

private:
    /// Triangulated lazily, also from the const `getInfos`.
    mutable ondo::VbapTriplets triplets;
    bool valid = true;
};
} // namespace Quor
