#pragma once

#include "filterdesign/TarvoDspZeroPoleGain.h"

// Analog low-pass prototypes with their band edge at 1 rad/s, as zeros, poles and gain.
// All run on the control thread and allocate.
namespace ondo::analogPrototypes
{
/// Poles evenly spaced on the left half of the unit circle; no zeros, gain 1 (-3 dB at 1).
ZeroPoleGain butterworth(int order);

/// Equiripple in the pass band, `rippleDb` deep (clamped to [0.01, 30] dB), all poles; the
/// gain puts the pass band's top at 0 dB.
ZeroPoleGain chebyshevType1(int order, double rippleDb);

/// Maximally flat group delay, poles from the stored table of orders 1 to 25, normalised so
/// that the magnitude's asymptotes are those of the Butterworth of the same order (the phase
/// is half its final value at 1 rad/s); gain 1. Orders above 25 leave all poles at 0.
ZeroPoleGain bessel(int order);

/// Equiripple in both bands: `passbandRippleDb` deep in the pass band (clamped to
/// [0.01, 30] dB), at least `stopbandAttenuationDb` down in the stop band. Raises
/// "FilterOrderTooLarge" when the order needs a selectivity that double precision cannot
/// represent (the elliptic modulus rounds to 1).
ZeroPoleGain elliptic(int order, double passbandRippleDb, double stopbandAttenuationDb);
} // namespace ondo::analogPrototypes
