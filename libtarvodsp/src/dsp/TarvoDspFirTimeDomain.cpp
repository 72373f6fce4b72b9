#include "dsp/TarvoDspFirTimeDomain.h"

#include "common/TarvoDspException.h"
#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>

namespace ondo
{
namespace
{
/// sum over k of a[k] b[-k] for k in [0, n), ascending k, unrolled by four; `b` is read
/// backwards from where it points.
inline float reverseDot(const float* a, const float* b, std::uint32_t n, float sum)
{
    std::uint32_t k = 0;
    for (; k + 4 <= n; k += 4)
    {
        sum += a[k] * b[-static_cast<std::ptrdiff_t>(k)];
        sum += a[k + 1] * b[-static_cast<std::ptrdiff_t>(k) - 1];
        sum += a[k + 2] * b[-static_cast<std::ptrdiff_t>(k) - 2];
        sum += a[k + 3] * b[-static_cast<std::ptrdiff_t>(k) - 3];
    }
    for (; k < n; ++k)
        sum += a[k] * b[-static_cast<std::ptrdiff_t>(k)];
    return sum;
}
} // namespace

FirTimeDomain::FirTimeDomain(int order)
{
    setNumCoefficients(std::max(order, 0) + 1);
}

void FirTimeDomain::filter(float* out, const float* in, int numSamples)
{
    const auto length = static_cast<std::uint32_t>(taps.size());
    const float* t = taps.data();
    float* h = history.data();
    for (int i = 0; i < numSamples; ++i)
    {
        const std::uint32_t p = writePosition;
        h[p] = in[i];
        writePosition = p + 1 == length ? 0 : p + 1;
        // The newest p + 1 inputs lie below the write position, the older ones wrap round
        // from the end of the ring: two runs, each read backwards.
        float y = reverseDot(t, h + p, p + 1, 0.0f);
        y = reverseDot(t + p + 1, h + length - 1, length - 1 - p, y);
        out[i] = y;
    }
}

void FirTimeDomain::setCoefficients(const float* values)
{
    primitives::vectorCopy32(values, taps.data(), static_cast<int>(taps.size()));
}

void FirTimeDomain::copyStateFrom(const Filter& other)
{
    const auto* source = dynamic_cast<const FirTimeDomain*>(&other);
    if (source == nullptr || source->history.size() != history.size())
        throw Exception("FIR state can only be copied between filters of the same length", ONDO_SOURCE_LOCATION);
    primitives::vectorCopy32(source->history.data(), history.data(), static_cast<int>(history.size()));
    writePosition = source->writePosition;
}

void FirTimeDomain::clear()
{
    writePosition = 0;
    history.clear();
}

void FirTimeDomain::setNumCoefficients(int n)
{
    const auto length = static_cast<std::size_t>(std::max(n, 1));
    taps.resize(length);
    history.resize(length);
    if (writePosition >= length)
        writePosition = 0;
}
} // namespace ondo
