#pragma once

#include <cstdint>

namespace Quor
{
/// The first pass over a block's sources: each sample that `ondo::NonFinite` finds unusable
/// (NaN, infinities, magnitudes a sum would carry past the float range) becomes 0, as one NaN
/// let into a recursive stage would stay there for good; then each source adds into the
/// mono room bus at its send gain and leaves at its direct gain. One pass instead of three,
/// with the same sums: the bus from 0 in source order, and a direct gain of 0 giving zeros.
struct SourceSends
{
    /// Cleaned in place where a sample is unusable.
    float* const* sources;
    const float* sendGains;
    const float* directGains;
    float* room;
    /// Each source times its direct gain; may be the sources themselves.
    float* const* direct;
};

/// Runs the pass over `numSamples` samples of `numSources` sources and returns how many
/// samples were unusable. Audio thread; real-time safe.
std::uint32_t runSourceSends(const SourceSends& pass, std::uint32_t numSources, std::uint32_t numSamples);
} // namespace Quor
