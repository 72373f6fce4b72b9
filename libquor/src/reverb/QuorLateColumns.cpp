#include "reverb/QuorLateColumns.h"

#include "dsp/TarvoDspBiquadLaneKernels.h"
#include "dsp/TarvoDspHadamardColumn.h"

#include <cstring>

namespace Quor
{
namespace
{
using namespace ondo::lanes;

/// A column of every line's samples: a row each, rows in groups of a lane per line.
template <typename V, int numGroups>
struct Column
{
    static constexpr int width = widthOf<V>;
    V rows[numGroups][width];

    ONDO_KERNEL_INLINE V& operator[](std::uint32_t line) { return rows[line / width][line % width]; }
};

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

/// The chunk's factors, each in every lane once: read from the chunk at each use, they would
/// be read again after every store, which might have changed them.
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
/// registers from column to column.
template <typename V, int numGroups, int numStages, bool summed>
struct Pass
{
    static constexpr int width = widthOf<V>;
    static constexpr int numLines = width * numGroups;
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

    /// `m` samples from `start`, a whole column when `whole`.
    template <bool whole>
    ONDO_KERNEL_INLINE void column(const LateColumns& chunk, const Factors<V>& factor, int start, int m)
    {
        Column<V, numGroups> x;
#pragma GCC unroll 16
        for (int l = 0; l < numLines; ++l)
            loadRow<whole>(x[l], chunk.reads[l] + start, m);
#pragma GCC unroll 4
        for (int g = 0; g < numGroups; ++g)
            filterRows<V, numStages, whole>(stages[g], x.rows[g], z0[g], z1[g], m);
#pragma GCC unroll 16
        for (int l = 0; l < numLines; ++l)
        {
            // Line by line, the output written before the input is read, as separate
            // passes over the lines would do where the two share samples.
            const V t = x[l];
            const V output = t * factor.output;
            storeRow<whole>(chunk.outputs[l] + start, output, m);
            V in;
            loadRow<whole>(in, chunk.inputs[l] + start, m);
            if constexpr (summed)
            {
                V sum{};
                sum += in * factor.dry;
                sum += output * factor.wet;
                storeRow<whole>(chunk.sums[l] + start, sum, m);
            }
            x[l] = t + in * factor.input;
        }
        ondo::hadamardColumn<numLines>(x);
#pragma GCC unroll 16
        for (int l = 0; l < numLines; ++l)
            storeRow<whole>(chunk.mixed[l] + start, x[l] * factor.mix, m);
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
    if (chunk.sums != nullptr)
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
ONDO_WIDE_VECTORS_TARGET void runColumnsWide(const LateColumns& chunk, int numSamples)
{
    runGroups<Floats8, 1>(chunk, numSamples);
}
#endif
} // namespace

bool canRunLateColumns(std::uint32_t numLines, float outputFactor, float inputGain)
{
    return numLines == lateColumnsLines && outputFactor != 0.0f && inputGain != 0.0f;
}

void runLateColumns(const LateColumns& chunk, std::uint32_t numSamples)
{
    const auto n = static_cast<int>(numSamples);
#if ONDO_WIDE_VECTORS
    if (ondo::simd::useWideVectors())
    {
        runColumnsWide(chunk, n);
        return;
    }
#endif
    runGroups<Floats4, 2>(chunk, n);
}
} // namespace Quor
