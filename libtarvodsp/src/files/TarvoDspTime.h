#pragma once

#include <cstdint>

namespace ondo
{
/// Clock and pause for control code: timing of loads, waits in tests and tools.
/// Never for the audio thread.
class Time
{
public:
    Time() = delete;

    /// Milliseconds from an arbitrary start, at sub-millisecond resolution; monotonic.
    static double getMillisecondCounterHiRes();
    /// Pauses the calling thread for `milliseconds` (nothing for 0 or less).
    static void sleep(int milliseconds);
};
} // namespace ondo
