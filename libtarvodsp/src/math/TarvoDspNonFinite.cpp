#include "math/TarvoDspNonFinite.h"

#include "math/TarvoDspWideVectors.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ondo
{
namespace
{
constexpr double largest = 3.4028234663852886e38;
constexpr std::uint32_t magnitudeBits = 0x7fffffffu;
constexpr std::uint32_t unusableFrom = NonFinite::unusableFrom;

/// An integer test on the bits stays exact under any floating-point mode and vectorises
/// without branches.
inline std::uint32_t isNonFinite(float v)
{
    return (std::bit_cast<std::uint32_t>(v) & magnitudeBits) >= unusableFrom ? 1u : 0u;
}

/// Every input sample of every block passes here, so the count has an AVX2 body too.
ONDO_KERNEL_INLINE std::uint32_t countNonFinite(const float* samples, std::uint32_t n)
{
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < n; ++i)
        count += isNonFinite(samples[i]);
    return count;
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET std::uint32_t countNonFiniteWide(const float* samples, std::uint32_t n)
{
    return countNonFinite(samples, n);
}
#endif
} // namespace

std::uint32_t NonFinite::zeroSamples(float* samples, std::uint32_t n)
{
#if ONDO_WIDE_VECTORS
    const std::uint32_t count =
        simd::useWideVectors() ? countNonFiniteWide(samples, n) : countNonFinite(samples, n);
#else
    const std::uint32_t count = countNonFinite(samples, n);
#endif
    if (count == 0)
        return 0;
    for (std::uint32_t i = 0; i < n; ++i)
        samples[i] = isNonFinite(samples[i]) != 0 ? 0.0f : samples[i];
    return count;
}

float NonFinite::held(float value, float lowest, float highest, float fallback)
{
    if (std::isnan(value))
        return fallback;
    return std::clamp(value, lowest, highest);
}

Point3 NonFinite::heldPosition(const Point3& position, const Point3& fallback, float farthest)
{
    // Infinite coordinates count as the largest finite ones.
    const auto coordinate = [](float v, float otherwise) {
        return std::isnan(v) ? double(otherwise) : std::clamp(double(v), -largest, largest);
    };
    double x = coordinate(position.x, fallback.x);
    double y = coordinate(position.y, fallback.y);
    double z = coordinate(position.z, fallback.z);
    // Scaled first so that the squares stay finite.
    const double scale = std::max({std::fabs(x), std::fabs(y), std::fabs(z), 1.0});
    const double length = scale * std::sqrt((x / scale) * (x / scale) + (y / scale) * (y / scale) + (z / scale) * (z / scale));
    if (length > double(farthest))
    {
        const double shrink = double(farthest) / length;
        x *= shrink;
        y *= shrink;
        z *= shrink;
    }
    return Point3(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
}
} // namespace ondo
