#include "reverb/QuorSourceSends.h"

#include "math/TarvoDspNonFinite.h"
#include "math/TarvoDspWideVectors.h"

#include <bit>

namespace Quor
{
namespace
{
using ondo::simd::Floats4;
using ondo::simd::Floats8;
using ondo::simd::load;
using ondo::simd::store;
using Ints4 = std::int32_t __attribute__((vector_size(16)));
using Ints8 = std::int32_t __attribute__((vector_size(32)));

constexpr std::int32_t magnitudeBits = 0x7fffffff;
constexpr auto unusableFrom = static_cast<std::int32_t>(ondo::NonFinite::unusableFrom);

/// One sample of every source, in scalar steps: the same operations as a column's lanes.
ONDO_KERNEL_INLINE std::uint32_t sample(const SourceSends& pass, std::uint32_t numSources, std::uint32_t at)
{
    std::uint32_t count = 0;
    float room = 0.0f;
    for (std::uint32_t i = 0; i < numSources; ++i)
    {
        float x = pass.sources[i][at];
        if ((std::bit_cast<std::int32_t>(x) & magnitudeBits) >= unusableFrom)
        {
            ++count;
            x = 0.0f;
        }
        room += x * pass.sendGains[i];
        const float gain = pass.directGains[i];
        pass.direct[i][at] = gain == 0.0f ? 0.0f : x * gain;
    }
    pass.room[at] = room;
    return count;
}

/// One source's buffers, and its gains in every lane once.
template <typename V>
struct Send
{
    const float* samples;
    float* direct;
    float directGain;
    V send;
    V gain;

    ONDO_KERNEL_INLINE Send(const SourceSends& pass, std::uint32_t i)
        : samples(pass.sources[i]), direct(pass.direct[i]), directGain(pass.directGains[i]),
          send(pass.sendGains[i] - V{}), gain(directGain - V{})
    {
    }

    /// The vector at `at`, cleaned, into the room's `sum` and the direct sound. `bad` counts
    /// the samples that are unusable, a lane each.
    template <typename I>
    ONDO_KERNEL_INLINE void add(V& sum, std::uint32_t at, I& bad) const
    {
        V x;
        load(x, samples + at);
        // Vector casts keep the bits.
        const I bits = (I)x;
        const I unusable = (bits & magnitudeBits) >= unusableFrom;
        bad -= unusable;
        x = (V)(bits & ~unusable);
        sum += x * send;
        store(direct + at, directGain == 0.0f ? V{} : x * gain);
    }
};

/// One source from `first`, or two with `paired`, over the block's whole vectors: the room
/// bus, read and written once, takes their products in turn, starting from 0 with the first
/// source. Returns where the vectors end.
template <typename V, typename I, bool paired>
ONDO_KERNEL_INLINE std::uint32_t sources(const SourceSends& pass, std::uint32_t first, std::uint32_t n, I& bad)
{
    constexpr auto width = static_cast<std::uint32_t>(sizeof(V) / sizeof(float));
    const Send<V> one(pass, first);
    const Send<V> other(pass, paired ? first + 1 : first);
    float* room = pass.room;
    std::uint32_t at = 0;
    for (; at + width <= n; at += width)
    {
        V sum{};
        if (first > 0)
            load(sum, room + at);
        one.add(sum, at, bad);
        if constexpr (paired)
            other.add(sum, at, bad);
        store(room + at, sum);
    }
    return at;
}

template <typename V, typename I>
ONDO_KERNEL_INLINE std::uint32_t run(const SourceSends& pass, std::uint32_t numSources, std::uint32_t n)
{
    constexpr auto width = static_cast<std::uint32_t>(sizeof(V) / sizeof(float));
    I bad{};
    std::uint32_t at = 0;
    // Two sources a pass: the room bus is read and written once for both.
    std::uint32_t i = 0;
    for (; i + 2 <= numSources; i += 2)
        at = sources<V, I, true>(pass, i, n, bad);
    if (i < numSources)
        at = sources<V, I, false>(pass, i, n, bad);
    std::uint32_t count = 0;
    for (std::uint32_t lane = 0; lane < width; ++lane)
        count += static_cast<std::uint32_t>(bad[lane]);
    for (; at < n; ++at)
        count += sample(pass, numSources, at);
    return count;
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET std::uint32_t runWide(const SourceSends& pass, std::uint32_t numSources, std::uint32_t n)
{
    return run<Floats8, Ints8>(pass, numSources, n);
}
#endif
} // namespace

std::uint32_t runSourceSends(const SourceSends& pass, std::uint32_t numSources, std::uint32_t numSamples)
{
#if ONDO_WIDE_VECTORS
    const std::uint32_t count = ondo::simd::useWideVectors() ? runWide(pass, numSources, numSamples)
                                                              : run<Floats4, Ints4>(pass, numSources, numSamples);
#else
    const std::uint32_t count = run<Floats4, Ints4>(pass, numSources, numSamples);
#endif
    // The sources themselves are left clean too, as the host's buffers were before.
    if (count > 0)
        for (std::uint32_t i = 0; i < numSources; ++i)
            ondo::NonFinite::zeroSamples(pass.sources[i], numSamples);
    return count;
}
} // namespace Quor
