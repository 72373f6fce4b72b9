#include "dsp/TarvoDspBiquadLanes.h"

#include "math/TarvoDspWideVectors.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
namespace
{
// A lane per channel: four on the baseline, eight in the AVX2 body.
using simd::Floats4;
using simd::Floats8;
using simd::load;
using simd::store;

template <typename V>
constexpr int widthOf = static_cast<int>(sizeof(V) / sizeof(float));

/// Rows of samples of one channel each become rows of one sample of every channel, and back.
ONDO_KERNEL_INLINE void transpose(Floats4 (&r)[4])
{
    const Floats4 t0 = __builtin_shufflevector(r[0], r[1], 0, 4, 1, 5);
    const Floats4 t1 = __builtin_shufflevector(r[0], r[1], 2, 6, 3, 7);
    const Floats4 t2 = __builtin_shufflevector(r[2], r[3], 0, 4, 1, 5);
    const Floats4 t3 = __builtin_shufflevector(r[2], r[3], 2, 6, 3, 7);
    r[0] = __builtin_shufflevector(t0, t2, 0, 1, 4, 5);
    r[1] = __builtin_shufflevector(t0, t2, 2, 3, 6, 7);
    r[2] = __builtin_shufflevector(t1, t3, 0, 1, 4, 5);
    r[3] = __builtin_shufflevector(t1, t3, 2, 3, 6, 7);
}

ONDO_KERNEL_INLINE void transpose(Floats8 (&r)[8])
{
    // Pairs, then quads within each half, then the halves.
    Floats8 t[8], u[8];
    for (int i = 0; i < 8; i += 2)
    {
        t[i] = __builtin_shufflevector(r[i], r[i + 1], 0, 8, 1, 9, 4, 12, 5, 13);
        t[i + 1] = __builtin_shufflevector(r[i], r[i + 1], 2, 10, 3, 11, 6, 14, 7, 15);
    }
    for (int i = 0; i < 8; i += 4)
    {
        u[i] = __builtin_shufflevector(t[i], t[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
        u[i + 1] = __builtin_shufflevector(t[i], t[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
        u[i + 2] = __builtin_shufflevector(t[i + 1], t[i + 3], 0, 1, 8, 9, 4, 5, 12, 13);
        u[i + 3] = __builtin_shufflevector(t[i + 1], t[i + 3], 2, 3, 10, 11, 6, 7, 14, 15);
    }
    for (int i = 0; i < 4; ++i)
    {
        r[i] = __builtin_shufflevector(u[i], u[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        r[i + 4] = __builtin_shufflevector(u[i], u[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
    }
}

/// One biquad of each channel of a group, a lane each. The taps are laid out lane-major
/// once a block and read from memory as operands; only the delay lines travel in registers,
/// so that a row of samples, the state and the transposes fit the register file.
template <typename V>
struct Lanes
{
    static constexpr int width = widthOf<V>;
    /// b0 b1 b2 a1 a2, a row of lanes each.
    alignas(sizeof(V)) float taps[5][width];
    alignas(sizeof(V)) float line[2][width];
    /// Each lane's own delay line, handed back at the end of the block.
    float* own[width];

    ONDO_KERNEL_INLINE void gather(BiquadIPP* const* filters, int used)
    {
        for (int l = 0; l < width; ++l)
        {
            if (l >= used)
            {
                for (auto& row : taps)
                    row[l] = 0.0f;
                line[0][l] = line[1][l] = 0.0f;
                continue;
            }
            // Taps are installed with a0 = 1, so the primitive holds exactly these values.
            const float* t = filters[l]->getTaps();
            float* z = filters[l]->getDelayLineInPlace();
            own[l] = z;
            taps[0][l] = t[0];
            taps[1][l] = t[1];
            taps[2][l] = t[2];
            taps[3][l] = t[4];
            taps[4][l] = t[5];
            line[0][l] = z[0];
            line[1][l] = z[1];
        }
    }

    ONDO_KERNEL_INLINE void scatter(int used) const
    {
        for (int l = 0; l < used; ++l)
        {
            own[l][0] = line[0][l];
            own[l][1] = line[1][l];
        }
    }

    /// One sample of every lane, input in and output out. The same expressions as the
    /// primitive's transposed direct form II.
    ONDO_KERNEL_INLINE void next(V& sample, V& z0, V& z1) const
    {
        V b0, b1, b2, a1, a2;
        load(b0, taps[0]);
        load(b1, taps[1]);
        load(b2, taps[2]);
        load(a1, taps[3]);
        load(a2, taps[4]);
        const V x = sample;
        const V y = b0 * x + z0;
        z0 = b1 * x + z1 - a1 * y;
        z1 = b2 * x - a2 * y;
        sample = y;
    }
};

/// One group of channels through one or two biquads each, the second taking the first's
/// output sample by sample: the two recursions overlap, the second a sample behind.
template <typename V, int numStages>
struct Group
{
    static constexpr int width = widthOf<V>;
    Lanes<V> stages[numStages];
    const float* in[width];
    float* out[width];
    int used;

    ONDO_KERNEL_INLINE void gather(BiquadIPP* const* const* filters, float* const* outputs,
                                   const float* const* inputs, int count)
    {
        used = std::min(width, count);
        // Idle lanes read and write the first channel's samples, so that every row moves
        // through registers without a test per lane: their taps are 0, and the first
        // channel's own store comes last.
        for (int l = 0; l < width; ++l)
        {
            in[l] = inputs[l < used ? l : 0];
            out[l] = outputs[l < used ? l : 0];
        }
        for (int s = 0; s < numStages; ++s)
            stages[s].gather(filters[s], used);
    }

    ONDO_KERNEL_INLINE void scatter() const
    {
        for (int s = 0; s < numStages; ++s)
            stages[s].scatter(used);
    }

    /// `m` samples from `start`; a whole row of `width` when `whole`.
    template <bool whole>
    ONDO_KERNEL_INLINE void step(V (&z0)[numStages], V (&z1)[numStages], int start, int m) const
    {
        V x[width];
#pragma GCC unroll 8
        for (int l = 0; l < width; ++l)
        {
            if constexpr (whole)
                load(x[l], in[l] + start);
            else
            {
                float padded[width] = {};
                std::memcpy(padded, in[l] + start, static_cast<std::size_t>(m) * sizeof(float));
                load(x[l], padded);
            }
        }
        transpose(x);
#pragma GCC unroll 8
        for (int k = 0; k < (whole ? width : m); ++k)
            for (int s = 0; s < numStages; ++s)
                stages[s].next(x[k], z0[s], z1[s]);
        // Rows past `m` are transposed back but never stored.
        transpose(x);
#pragma GCC unroll 8
        for (int l = width - 1; l >= 0; --l)
        {
            if constexpr (whole)
                store(out[l] + start, x[l]);
            else
            {
                float padded[width];
                store(padded, x[l]);
                std::memcpy(out[l] + start, padded, static_cast<std::size_t>(m) * sizeof(float));
            }
        }
    }
};

/// Up to this many groups of lanes in flight: enough independent chains to hide the
/// latency of the recursion. Only the delay lines of each group stay in registers from row
/// to row; a row of one group is done before the next group's begins.
constexpr int maxGroups = 2;

template <typename V, int numStages, int numGroups>
ONDO_KERNEL_INLINE void runGroups(BiquadIPP* const* const* filters, float* const* outputs,
                                  const float* const* inputs, int count, int numSamples)
{
    constexpr int width = widthOf<V>;
    Group<V, numStages> groups[numGroups];
    V z0[numGroups][numStages], z1[numGroups][numStages];
    for (int g = 0; g < numGroups; ++g)
    {
        BiquadIPP* const* own[numStages];
        for (int s = 0; s < numStages; ++s)
            own[s] = filters[s] + width * g;
        groups[g].gather(own, outputs + width * g, inputs + width * g, count - width * g);
        for (int s = 0; s < numStages; ++s)
        {
            load(z0[g][s], groups[g].stages[s].line[0]);
            load(z1[g][s], groups[g].stages[s].line[1]);
        }
    }
    int start = 0;
    for (; start + width <= numSamples; start += width)
        for (int g = 0; g < numGroups; ++g)
            groups[g].template step<true>(z0[g], z1[g], start, width);
    if (start < numSamples)
        for (int g = 0; g < numGroups; ++g)
            groups[g].template step<false>(z0[g], z1[g], start, numSamples - start);
    for (int g = 0; g < numGroups; ++g)
    {
        for (int s = 0; s < numStages; ++s)
        {
            store(groups[g].stages[s].line[0], z0[g][s]);
            store(groups[g].stages[s].line[1], z1[g][s]);
        }
        groups[g].scatter();
    }
}

template <typename V, int numStages>
ONDO_KERNEL_INLINE void sideBySide(BiquadIPP* const* const* filters, float* const* outputs,
                                   const float* const* inputs, int count, int numSamples)
{
    constexpr int width = widthOf<V>;
    for (int first = 0; first < count; first += width * maxGroups)
    {
        const int group = std::min(width * maxGroups, count - first);
        BiquadIPP* const* f[numStages];
        for (int s = 0; s < numStages; ++s)
            f[s] = filters[s] + first;
        float* const* o = outputs + first;
        const float* const* i = inputs + first;
        if (group == 1 && numStages == 1)
            f[0][0]->filter(o[0], i[0], numSamples); // a lone channel gains nothing
        else if (group <= width)
            runGroups<V, numStages, 1>(f, o, i, group, numSamples);
        else
            runGroups<V, numStages, 2>(f, o, i, group, numSamples);
    }
}

template <typename V>
ONDO_KERNEL_INLINE void sideBySide(BiquadIPP* const* firstStage, BiquadIPP* const* secondStage,
                                   float* const* outputs, const float* const* inputs, int count, int numSamples)
{
    BiquadIPP* const* stages[2] = {firstStage, secondStage};
    if (secondStage == nullptr)
        sideBySide<V, 1>(stages, outputs, inputs, count, numSamples);
    else
        sideBySide<V, 2>(stages, outputs, inputs, count, numSamples);
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET void sideBySideWide(BiquadIPP* const* firstStage, BiquadIPP* const* secondStage,
                                             float* const* outputs, const float* const* inputs, int count,
                                             int numSamples)
{
    sideBySide<Floats8>(firstStage, secondStage, outputs, inputs, count, numSamples);
}
#endif
} // namespace

void filterBiquadsSideBySide(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count,
                             int numSamples, BiquadIPP* const* secondStage)
{
#if ONDO_WIDE_VECTORS
    if (simd::useWideVectors())
    {
        sideBySideWide(filters, secondStage, outputs, inputs, count, numSamples);
        return;
    }
#endif
    sideBySide<Floats4>(filters, secondStage, outputs, inputs, count, numSamples);
}
} // namespace ondo
