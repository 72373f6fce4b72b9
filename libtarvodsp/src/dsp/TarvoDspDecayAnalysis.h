#pragma once

#include <cstddef>
#include <vector>

namespace ondo
{
/// Measures how a room response decays: octave-band filtering, Schroeder's backward
/// integration of the energy, and a straight-line fit of the decay curve extrapolated to
/// 60 dB. Offline analysis in double precision; allocates.
class DecayAnalysis
{
public:
    /// Octave band centres (nominal 1000 * 2^k) from `lowest` to `highest` Hz inclusive.
    static std::vector<double> octaveCentres(double lowest, double highest);

    /// The signal through an octave band-pass around `centre` Hz: two band-pass sections of
    /// one octave, run forward and then backward so that the band adds no delay.
    static std::vector<double> octaveBand(const float* signal, std::size_t n, double sampleRate, double centre);

    /// Schroeder's energy decay curve in dB, 0 dB at the first sample.
    static std::vector<double> energyDecayCurve(const std::vector<double>& signal);

    /// Seconds to decay by 60 dB, from a least-squares line through the part of `curveDb`
    /// between `startDb` and `endDb` (both negative). 0 when the curve never reaches `endDb`.
    static double decayTime(const std::vector<double>& curveDb, double sampleRate, double startDb = -5.0,
                            double endDb = -25.0);

    /// `decayTime` of the octave band around `centre`.
    static double bandDecayTime(const float* signal, std::size_t n, double sampleRate, double centre,
                                double startDb = -5.0, double endDb = -25.0);
};
} // namespace ondo
