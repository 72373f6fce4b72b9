#include "dsp/TarvoDspBiquadLanes.h"

#include "dsp/TarvoDspBiquadLaneKernels.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
namespace
{
using namespace lanes;

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
        // Rows past `m` are transposed back but never stored.
        filterRows<V, numStages, whole>(stages, x, z0, z1, m);
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
