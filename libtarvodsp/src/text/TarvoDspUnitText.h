#pragma once

#include "text/TarvoDspString.h"

namespace ondo
{
/// Frequencies and durations as the console shows them. Pure; any thread; allocates.
class UnitText
{
public:
    UnitText() = delete;

    /// "44.1 kHz" for exactly 44100; whole Hz below 1 kHz; whole kHz when the value is a
    /// whole number of kHz, whole Hz otherwise, below 1 MHz; "%.2f MHz" below 1 GHz; "%.2f GHz"
    /// beyond. Without the unit, "Hz" is taken out and trailing blanks trimmed ("48 k", "500").
    static String frequency(double hz, bool withUnit = true);
    /// The whole part of the milliseconds and " ms".
    static String duration(double ms);
};
} // namespace ondo
