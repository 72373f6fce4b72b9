#pragma once

#include <cstdint>

namespace Quor
{
/// The two normalisations of vector-based panning. Real-time safe.
class GainNormalization
{
public:
    GainNormalization() = delete;

    /// Scales the gains to unit power (sum of squares 1): VBAP.
    static void constantPower(float* gains, std::uint32_t n);
    /// Makes the gains' squares proportional to the gains with unit intensity (the squares
    /// sum to 1): VBIP.
    static void constantIntensity(float* gains, std::uint32_t n);
};
} // namespace Quor
