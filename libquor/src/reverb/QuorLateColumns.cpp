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

    /// One line's filtered row of `m` samples from `start` (all with `whole`): the output
    /// taken, the sum made and the input added. The output is written before the input is
    /// read, as separate passes over the lines would do where the two share samples.
    template <bool whole>
    ONDO_KERNEL_INLINE void lineStep(const LateColumns& chunk, const Factors<V>& factor, V& x, int line, int start,
                                     int m)
    {
        const V t = x;
        const V output = t * factor.output;
        if constexpr (outputsWritten)
            storeRow<whole>(chunk.outputs[line] + start, output, m);
        V in;
        loadRow<whole>(in, chunk.inputs[line] + start, m);
        if constexpr (summed)
        {
            V sum = in * factor.dry;
            sum += output * factor.wet;
            storeRow<whole>(chunk.sums[line] + start, sum, m);
        }
        x = t + in * factor.input;
    }

    /// One group's rows of `m` samples from `start` (all with `whole`): read and turned into a
    /// row per sample.
    template <bool whole>
    ONDO_KERNEL_INLINE void readColumn(const LateColumns& chunk, V (&x)[width], int group, int start, int m)
    {
#pragma GCC unroll 8
        for (int l = 0; l < width; ++l)
            loadRow<whole>(x[l], chunk.reads[width * group + l] + start, m);
        transpose(x);
    }

    /// One sample of every line of a group through every stage.
    ONDO_KERNEL_INLINE void filterSample(V& sample, int group)
    {
        for (int s = 0; s < numStages; ++s)
            stages[group][s].next(sample, z0[group][s], z1[group][s]);
    }

    /// The network on a column's rows, the first stage across the groups and the rest
    /// within each, the gain, and out to the targets.
    template <bool whole>
    ONDO_KERNEL_INLINE void mixOut(const LateColumns& chunk, const Factors<V>& factor, V (&x)[numGroups][width],
                                   int start, int m)
    {
        if constexpr (numGroups == 2)
        {
#pragma GCC unroll 8
            for (int l = 0; l < width; ++l)
            {
                const V a = x[0][l];
                const V b = x[1][l];
                x[0][l] = a + b;
                x[1][l] = a - b;
            }
        }
        for (int g = numGroups - 1; g >= 0; --g)
        {
            ondo::hadamardColumn<width>(x[g]);
#pragma GCC unroll 8
            for (int l = 0; l < width; ++l)
                storeRow<whole>(chunk.mixed[width * g + l] + start, x[g][l] * factor.mix, m);
        }
    }

    /// A last column of fewer than `width` samples, `m`, from `start`: every step in turn.
    ONDO_KERNEL_INLINE void partColumn(const LateColumns& chunk, const Factors<V>& factor, int start, int m)
    {
        V x[numGroups][width];
        for (int g = 0; g < numGroups; ++g)
        {
            readColumn<false>(chunk, x[g], g, start, m);
            for (int k = 0; k < m; ++k)
                filterSample(x[g][k], g);
            transpose(x[g]);
#pragma GCC unroll 8
            for (int l = 0; l < width; ++l)
                lineStep<false>(chunk, factor, x[g][l], width * g + l, start, m);
        }
        mixOut<false>(chunk, factor, x, start, m);
    }

    /// With `ahead`, the shelves of the whole column from `nextStart`, into `next`, sample by
    /// sample; between the samples, with `behind`, the lines' steps of the column from
    /// `start`, in place in `filtered`. The shelves' recursion is the one chain from column
    /// to column; the steps, which nothing waits on, fill the units while it runs.
    template <bool ahead, bool behind>
    ONDO_KERNEL_INLINE void overlap(const LateColumns& chunk, const Factors<V>& factor, V (&filtered)[numGroups][width],
                                    V (&next)[numGroups][width], int start, int nextStart)
    {
        for (int g = 0; g < numGroups; ++g)
        {
            if constexpr (ahead)
                readColumn<true>(chunk, next[g], g, nextStart, width);
#pragma GCC unroll 8
            for (int k = 0; k < width; ++k)
            {
                if constexpr (ahead)
                    filterSample(next[g][k], g);
                if constexpr (behind)
                    lineStep<true>(chunk, factor, filtered[g][k], width * g + k, start, width);
            }
            if constexpr (ahead)
                transpose(next[g]);
        }
    }

    ONDO_KERNEL_INLINE void run(const LateColumns& chunk, int numSamples)
    {
        begin(chunk);
        const Factors<V> factors(chunk);
        const int wholeEnd = numSamples - numSamples % width;
        if (wholeEnd > 0)
        {
            // A column's shelves run while the column before it takes its steps. The shelves
            // read only the lines' past, which no step of the chunk writes.
            V filtered[numGroups][width];
            overlap<true, false>(chunk, factors, filtered, filtered, 0, 0);
            int start = 0;
            for (; start + width < wholeEnd; start += width)
            {
                V next[numGroups][width];
                overlap<true, true>(chunk, factors, filtered, next, start, start + width);
                mixOut<true>(chunk, factors, filtered, start, width);
                for (int g = 0; g < numGroups; ++g)
                    for (int l = 0; l < width; ++l)
                        filtered[g][l] = next[g][l];
            }
            overlap<false, true>(chunk, factors, filtered, filtered, start, start);
            mixOut<true>(chunk, factors, filtered, start, width);
        }
        if (wholeEnd < numSamples)
            partColumn(chunk, factors, wholeEnd, numSamples - wholeEnd);
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
