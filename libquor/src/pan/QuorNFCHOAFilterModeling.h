#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspBiquadCoefficients.h"

#include <cstdint>

namespace Quor
{
/// The near-field filter of one Ambisonic order l: the curvature of a wave from a source at
/// `sourceDistance`, relative to that of the speaker ring at `speakerDistance`. In the
/// Laplace domain it is the ratio of the two near-field series, whose poles and zeros are
/// the roots of one polynomial scaled by c / r; mapped by the bilinear transform it becomes
/// ceil(l / 2) sections. A source at the speaker radius gives exactly unit sections; below
/// the radius the low end rises towards (R / r)^l, above it falls. Control thread only.
class NFCHOAFilterModeling
{
public:
    static constexpr double speedOfSound = 343.2;  ///< m/s
    static constexpr double minimumDistance = 0.2; ///< m; the series has a pole at r = 0

    /// Control thread; allocates (finds the roots once).
    explicit NFCHOAFilterModeling(std::uint32_t order);

    /// Metres, clamped to 0.2 m; true when the stored value changed (the sections are then
    /// stale until `update`). Control thread; real-time safe.
    bool setSourceDistance(double metres);
    bool setSpeakerDistance(double metres);
    /// Hz; marks both distances stale. Control thread; real-time safe.
    void setSamplingRate(double rate);

    /// Recomputes what a change made stale and returns true when the sections changed.
    /// Control thread; real-time safe.
    bool update();

    std::uint32_t getOrder() const { return order; }
    double getSourceDistance() const { return sourceDistance; }
    double getSpeakerDistance() const { return speakerDistance; }
    /// One section a pole pair (a first-order one last for an odd order), a0 = 1.
    const ondo::CascadeCoefficients& getSections() const { return sections; }
    /// Real parts and squared moduli of the roots kept, one of each conjugate pair.
    const ondo::Vector<double>& getPolesReal() const { return polesReal; }
    const ondo::Vector<double>& getPolesMag2() const { return polesMag2; }

private:
    /// The bilinear constant of a distance: 4 r fs / c.
    double warpOf(double distance) const { return 4.0 * (distance / speedOfSound) * samplingRate; }
    void computeCoefficients(double warp, ondo::Vector<double>& coefficients) const;

    std::uint32_t order;
    bool sourceDirty = true;
    bool speakerDirty = true;
    double sourceDistance = 1.0;
    double speakerDistance = 1.5;
    double samplingRate = 44100.0;
    double sourceWarp = 0.0;
    double speakerWarp = 0.0;
    ondo::Vector<double> polesReal;
    ondo::Vector<double> polesMag2;
    ondo::Vector<double> sourceCoefficients;
    ondo::Vector<double> speakerCoefficients;
    ondo::CascadeCoefficients sections;
};
} // namespace Quor
