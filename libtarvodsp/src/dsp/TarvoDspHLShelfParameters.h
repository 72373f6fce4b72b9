#pragma once

#include "dsp/TarvoDspBiquadCoefficients.h"
#include "osc/TarvoDspOscBundle.h"

#include <string_view>

namespace ondo
{
/// The three-band shelf: an overall gain and the gains of the low, middle and high bands
/// (dB), split at two crossovers (Hz).
struct HLShelfParameters
{
    float G0 = 0.0f;
    float Gl = 0.0f;
    float Gm = 0.0f;
    float Gh = 0.0f;
    float fl = 250.0f;
    float fh = 4000.0f;

    bool operator==(const HLShelfParameters&) const = default;
};

/// Two first-order shelves (low and high) merged into one biquad, designed in single
/// precision at `sampleRate` (Hz). All band gains 0 gives a pure gain of `G0`.
/// Any thread; real-time safe.
BiquadCoefficients designHLShelf(const HLShelfParameters& parameters, float sampleRate);

/// The record's OSC face: "/params" with six numbers (G0 Gl Gm Gh fl fh) sets all six,
/// "/params/G0" ... "/params/fh" with one number sets that field. True when the message had
/// one of these forms; `changed` tells whether a value moved. Any thread; real-time safe.
bool processHLShelfParametersMessage(const OSCMessage& message, HLShelfParameters& parameters, bool& changed);
/// Appends `prefix` + "/params" with the six values. Allocates.
void addHLShelfParametersState(OSCBundle& state, std::string_view prefix, const HLShelfParameters& parameters);
} // namespace ondo
