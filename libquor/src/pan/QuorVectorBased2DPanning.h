#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// Pairwise vector-based panning on a horizontal ring: a source sounds on the two speakers
/// around its azimuth, with gains that solve the 2 by 2 system of their directions. A
/// layout it can't serve is refused, and then the panner stays silent for good.
class VectorBased2DPanning : public AmplitudePanning
{
public:
    struct Point2D
    {
        double x = 0.0;
        double y = 0.0;
        double azimuth = 0.0; ///< navigational degrees
        std::int32_t index = 0;
    };

    /// A speaker and its neighbour on the ring.
    struct Matrix2D
    {
        double x1 = 0.0;
        double y1 = 0.0;
        double x2 = 0.0;
        double y2 = 0.0;
    };

    /// Starts with a provisional ring that any `setSpeakers` replaces.
    VectorBased2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates. Raises `ondo::Exception` for a layout out of one plane or
    /// one that doesn't surround the listener.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return true; }
    /// Brings the gains of one row to the leaf's law.
    virtual void normalizeGains(float* row) = 0;

    bool isValid() const { return valid; }
    const ondo::Vector<Point2D>& getRing() const { return speakers; }
    const ondo::Vector<Matrix2D>& getPairs() const { return pairs; }

    /// Navigational azimuth in degrees, in double precision.
    static double azimuthOf(double x, double y);

private:
    void buildPairs();

    ondo::Vector<Point2D> speakers;
    ondo::Vector<Matrix2D> pairs;
    bool valid = true;
};
} // namespace Quor
