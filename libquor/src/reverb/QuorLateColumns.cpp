#include "reverb/QuorLateColumns.h"

#include "dsp/TarvoDspBiquadLaneKernels.h"
#include "dsp/TarvoDspHadamardColumn.h"

#include <cstring>

namespace Quor
{
namespace
{
using namespace ondo::lanes;

/// A row of `m` samples (all with `whole`), the rest zeros.
template <bool whole, typename V>
ONDO_KERNEL_INLINE void loadRow(V& row, const float* samples, int m)
{
    if constexpr (whole)
        load(row, samples);
    else
    {
        float padded[widthOf<V>] = {};
        std::memcpy(padded, samples, static_cast<std::size_t>(m) * sizeof(float));
        load(row, padded);
    }
}

template <bool whole, typename V>
ONDO_KERNEL_INLINE void storeRow(float* samples, const V& row, int m)
{
    if constexpr (whole)
        store(samples, row);
    else
    {
        float padded[widthOf<V>];
        store(padded, row);
        std::memcpy(samples, padded, static_cast<std::size_t>(m) * sizeof(float));
    }
}

/// The chunk's factors, each in every lane once (subtracting a zero vector keeps every
/// value, -0 included): read from the chunk at each use, they would be read again after
/// every store, which might have changed them.
template <typename V>
struct Factors
{
    V output, input, mix, dry, wet;

    explicit Factors(const LateColumns& chunk)
    {
        output = chunk.outputFactor - V{};
        input = chunk.inputGain - V{};
        mix = chunk.mixGain - V{};
        dry = chunk.dry - V{};
        wet = chunk.wet - V{};
    }
};

/// The chunk, with the filters' taps laid out lane-major and their delay lines in
/// registers from column to column; the outputs written unless only the sums are wanted.
template <typename V, int numGroups, int numStages, bool summed, bool outputsWritten = true>
struct Pass
{
    static constexpr int width = widthOf<V>;
    Lanes<V> stages[numGroups][numStages];
    V z0[numGroups][numStages];
    V z1[numGroups][numStages];

    ONDO_KERNEL_INLINE void begin(const LateColumns& chunk)
    {
        for (int g = 0; g < numGroups; ++g)
            for (int s = 0; s < numStages; ++s)
            {
                stages[g][s].gather((s == 0 ? chunk.shelves : chunk.airs) + width * g, width);
                load(z0[g][s], stages[g][s].line[0]);
                load(z1[g][s], stages[g][s].line[1]);
            }
    }

    ONDO_KERNEL_INLINE void end()
    {
        for (int g = 0; g < numGroups; ++g)
            for (int s = 0; s < numStages; ++s)
            {
                store(stages[g][s].line[0], z0[g][s]);
                store(stages[g][s].line[1], z1[g][s]);
                stages[g][s].scatter(width);
            }
    }

    /// One group's rows of `m` samples from `start` (all with `whole`), its lines from
    /// `first`: read, filtered, the output taken, the sum made and the input added.
    template <bool whole>
    ONDO_KERNEL_INLINE void lineSteps(const LateColumns& chunk, const Factors<V>& factor, V (&x)[width], int group,
                                      int start, int m)
    {
        const int first = width * group;
#pragma GCC unroll 8
        for (int l = 0; l < width; ++l)
            loadRow<whole>(x[l], chunk.reads[first + l] + start, m);
        filterRows<V, numStages, whole>(stages[group], x, z0[group], z1[group], m);
#pragma GCC unroll 8
        for (int l = 0; l < width; ++l)
        {
            // Line by line, the output written before the input is read, as separate
            // passes over the lines would do where the two share samples.
            const int line = first + l;
            const V t = x[l];
            const V output = t * factor.output;
            if constexpr (outputsWritten)
                storeRow<whole>(chunk.outputs[line] + start, output, m);
            V in;
            loadRow<whole>(in, chunk.inputs[line] + start, m);
            if constexpr (summed)
            {
                V sum{};
                sum += in * factor.dry;
                sum += output * factor.wet;
                storeRow<whole>(chunk.sums[line] + start, sum, m);
            }
            x[l] = t + in * factor.input;
        }
    }

    /// The network's remaining stages on one group's rows, the gain, and out to the targets.
    template <bool whole>
    ONDO_KERNEL_INLINE void mixOut(const LateColumns& chunk, const Factors<V>& factor, V (&x)[width], int group,
                                   int start, int m)
    {
        ondo::hadamardColumn<width>(x);
#pragma GCC unroll 8
        for (int l = 0; l < width; ++l)
            storeRow<whole>(chunk.mixed[width * group + l] + start, x[l] * factor.mix, m);
    }

    /// `m` samples from `start`, a whole column when `whole`.
    template <bool whole>
    ONDO_KERNEL_INLINE void column(const LateColumns& chunk, const Factors<V>& factor, int start, int m)
    {
        V x[width];
        if constexpr (numGroups == 1)
        {
            lineSteps<whole>(chunk, factor, x, 0, start, m);
            mixOut<whole>(chunk, factor, x, 0, start, m);
        }
        else
        {
            // Two groups: the network's first stage joins each line of the first with the
            // same line of the second; the rest runs within each group. So only one group's
            // rows need the registers at a time.
            V firstGroup[width];
            lineSteps<whole>(chunk, factor, firstGroup, 0, start, m);
            lineSteps<whole>(chunk, factor, x, 1, start, m);
#pragma GCC unroll 8
            for (int l = 0; l < width; ++l)
            {
                const V a = firstGroup[l];
                const V b = x[l];
                firstGroup[l] = a + b;
                x[l] = a - b;
            }
            mixOut<whole>(chunk, factor, x, 1, start, m);
            mixOut<whole>(chunk, factor, firstGroup, 0, start, m);
        }
    }

    ONDO_KERNEL_INLINE void run(const LateColumns& chunk, int numSamples)
    {
        begin(chunk);
        const Factors<V> factors(chunk);
        int start = 0;
        for (; start + width <= numSamples; start += width)
            column<true>(chunk, factors, start, width);
        if (start < numSamples)
            column<false>(chunk, factors, start, numSamples - start);
        end();
    }
};

template <typename V, int numGroups, int numStages>
ONDO_KERNEL_INLINE void runStages(const LateColumns& chunk, int numSamples)
{
    // Left uninitialised: `begin` fills every field.
    if (chunk.sums != nullptr && chunk.outputs == nullptr)
    {
        Pass<V, numGroups, numStages, true, false> pass;
        pass.run(chunk, numSamples);
    }
    else if (chunk.sums != nullptr)
    {
        Pass<V, numGroups, numStages, true> pass;
        pass.run(chunk, numSamples);
    }
    else
    {
        Pass<V, numGroups, numStages, false> pass;
        pass.run(chunk, numSamples);
    }
}

template <typename V, int numGroups>
ONDO_KERNEL_INLINE void runGroups(const LateColumns& chunk, int numSamples)
{
    if (chunk.airs != nullptr)
        runStages<V, numGroups, 2>(chunk, numSamples);
    else
        runStages<V, numGroups, 1>(chunk, numSamples);
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET void runColumnsWide(const LateColumns& chunk, std::uint32_t numLines, int numSamples)
{
    if (numLines == 8)
        runGroups<Floats8, 1>(chunk, numSamples);
    else
        runGroups<Floats8, 2>(chunk, numSamples);
}
#endif
} // namespace

bool canRunLateColumns(std::uint32_t numLines, float outputFactor, float inputGain)
{
    // Sixteen lines are two groups of eight lanes in the wider body; the baseline's four
    // lanes take eight lines in two groups.
    const bool lines = numLines == 8 || (numLines == 16 && ondo::simd::useWideVectors());
    return lines && outputFactor != 0.0f && inputGain != 0.0f;
}

void runLateColumns(const LateColumns& chunk, std::uint32_t numLines, std::uint32_t numSamples)
{
    const auto n = static_cast<int>(numSamples);
#if ONDO_WIDE_VECTORS
    if (ondo::simd::useWideVectors())
    {
        runColumnsWide(chunk, numLines, n);
        return;
    }
#endif
    runGroups<Floats4, 2>(chunk, n);
}
} // namespace Quor
