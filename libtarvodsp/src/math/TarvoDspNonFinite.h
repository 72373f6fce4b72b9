#pragma once

#include "math/TarvoDspPoint3.h"

#include <cstdint>

namespace ondo
{
/// Keeps NaN and infinities out of processors that would hold them for good: a recursive
/// filter or a feedback network that takes in one NaN outputs NaN from then on.
struct NonFinite
{
    /// The bits of 2^64 as a float. NaN and infinities lie above it, and so do the finite
    /// values that the engine's gains (up to some 10^4 together) and its sums would carry
    /// past the float range: a sample whose bits without the sign reach it is unusable.
    static constexpr std::uint32_t unusableFrom = 0x5f800000u;

    /// Replaces every NaN, infinity and magnitude of 2^64 or more in `samples[0..n)` by 0;
    /// returns how many there were.
    /// Audio thread; real-time safe. A clean block is only read, never written.
    static std::uint32_t zeroSamples(float* samples, std::uint32_t n);

    /// The finite stand-in for a parameter: NaN gives `fallback`, and everything else,
    /// infinities included, is held to `lowest`..`highest`. Any thread; allocates nothing.
    static float held(float value, float lowest, float highest, float fallback);

    /// The finite stand-in for a position (m): a NaN coordinate takes that of `fallback`, and
    /// a point farther than `farthest` (infinite coordinates included) is brought in to that
    /// distance along its direction. Any thread; allocates nothing.
    static Point3 heldPosition(const Point3& position, const Point3& fallback, float farthest);
};
} // namespace ondo
