#pragma once

// The pieces of the side-by-side biquad kernels, for kernels that run biquads of several
// channels in the lanes of the vector unit as one step among others. Include only from
// kernel sources: everything here is inlined into each body and compiled for its caller.

#include "dsp/TarvoDspBiquadIPP.h"
#include "math/TarvoDspWideVectors.h"

namespace ondo::lanes
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
    /// b0 c1 c2 a1 a2 (the primitive's own), a row of lanes each.
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
            const float* t = filters[l]->getRecursionTaps();
            float* z = filters[l]->getDelayLineInPlace();
            own[l] = z;
            for (int k = 0; k < 5; ++k)
                taps[k][l] = t[k];
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
    /// primitive's recursion.
    ONDO_KERNEL_INLINE void next(V& sample, V& z0, V& z1) const
    {
        V b0, c1, c2, a1, a2;
        load(b0, taps[0]);
        load(c1, taps[1]);
        load(c2, taps[2]);
        load(a1, taps[3]);
        load(a2, taps[4]);
        const V x = sample;
        const V y = b0 * x + z0;
        const V next = (z1 + c1 * x) - a1 * z0;
        z1 = c2 * x - a2 * z0;
        z0 = next;
        sample = y;
    }
};

/// A row of samples of each lane's channel, in place: turned into a row per sample, the
/// first `m` samples (all with `whole`) through every stage in turn, the second a sample
/// behind the first, and turned back.
template <typename V, int numStages, bool whole>
ONDO_KERNEL_INLINE void filterRows(const Lanes<V> (&stages)[numStages], V (&x)[widthOf<V>], V (&z0)[numStages],
                                   V (&z1)[numStages], int m)
{
    constexpr int width = widthOf<V>;
    transpose(x);
#pragma GCC unroll 8
    for (int k = 0; k < (whole ? width : m); ++k)
        for (int s = 0; s < numStages; ++s)
            stages[s].next(x[k], z0[s], z1[s]);
    transpose(x);
}
} // namespace ondo::lanes
