#include "dsp/TarvoDspBiquadLanes.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
namespace
{
// Four channels a vector register (SSE on x86-64, NEON on arm64), through the compilers'
// portable vector types: element-wise operations are the same IEEE operations as scalar.
using Vec4 = float __attribute__((vector_size(16)));

constexpr int maxQuads = 2; // up to 16 channels in flight: enough independent chains to
                            // hide the latency of the recursion

inline Vec4 load(const float* p)
{
    Vec4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void store(float* p, Vec4 v)
{
    std::memcpy(p, &v, sizeof v);
}

/// Rows of four samples of four channels become rows of one sample of four channels, and
/// back again.
inline void transpose(Vec4& r0, Vec4& r1, Vec4& r2, Vec4& r3)
{
    const Vec4 t0 = __builtin_shufflevector(r0, r1, 0, 4, 1, 5);
    const Vec4 t1 = __builtin_shufflevector(r0, r1, 2, 6, 3, 7);
    const Vec4 t2 = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
    const Vec4 t3 = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
    r0 = __builtin_shufflevector(t0, t2, 0, 1, 4, 5);
    r1 = __builtin_shufflevector(t0, t2, 2, 3, 6, 7);
    r2 = __builtin_shufflevector(t1, t3, 0, 1, 4, 5);
    r3 = __builtin_shufflevector(t1, t3, 2, 3, 6, 7);
}

struct Quad
{
    Vec4 b0, b1, b2, a1, a2, z0, z1;
    const float* in[4];
    float* out[4];
    bool used[4];
};

void gather(Quad& q, BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count)
{
    float c[7][4] = {};
    for (int l = 0; l < 4; ++l)
    {
        q.used[l] = l < count;
        q.in[l] = q.used[l] ? inputs[l] : nullptr;
        q.out[l] = q.used[l] ? outputs[l] : nullptr;
        if (!q.used[l])
            continue;
        // Taps are installed with a0 = 1, so the primitive holds exactly these values.
        const float* t = filters[l]->getTaps();
        const float* line = filters[l]->getState().getDelayLine();
        const float values[7] = {t[0], t[1], t[2], t[4], t[5], line[0], line[1]};
        for (int k = 0; k < 7; ++k)
            c[k][l] = values[k];
    }
    q.b0 = load(c[0]);
    q.b1 = load(c[1]);
    q.b2 = load(c[2]);
    q.a1 = load(c[3]);
    q.a2 = load(c[4]);
    q.z0 = load(c[5]);
    q.z1 = load(c[6]);
}

void scatter(const Quad& q, BiquadIPP* const* filters)
{
    float z0[4], z1[4];
    store(z0, q.z0);
    store(z1, q.z1);
    for (int l = 0; l < 4; ++l)
        if (q.used[l])
        {
            const float line[2] = {z0[l], z1[l]};
            filters[l]->getState().setDelayLine(line);
        }
}

/// `m` (1 to 4) samples from `start` through one quad.
inline void step(Quad& q, int start, int m)
{
    Vec4 x[4];
    for (int l = 0; l < 4; ++l)
    {
        if (!q.used[l])
            x[l] = Vec4{};
        else if (m == 4)
            x[l] = load(q.in[l] + start);
        else
        {
            float padded[4] = {};
            std::memcpy(padded, q.in[l] + start, static_cast<std::size_t>(m) * sizeof(float));
            x[l] = load(padded);
        }
    }
    transpose(x[0], x[1], x[2], x[3]);
    Vec4 y[4] = {};
    for (int k = 0; k < m; ++k)
    {
        // The same expressions as the primitive's transposed direct form II.
        y[k] = q.b0 * x[k] + q.z0;
        q.z0 = q.b1 * x[k] + q.z1 - q.a1 * y[k];
        q.z1 = q.b2 * x[k] - q.a2 * y[k];
    }
    transpose(y[0], y[1], y[2], y[3]);
    for (int l = 0; l < 4; ++l)
    {
        if (!q.used[l])
            continue;
        if (m == 4)
            store(q.out[l] + start, y[l]);
        else
        {
            float padded[4];
            store(padded, y[l]);
            std::memcpy(q.out[l] + start, padded, static_cast<std::size_t>(m) * sizeof(float));
        }
    }
}

template <int numQuads>
void runQuads(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count, int numSamples)
{
    Quad quads[numQuads];
    for (int g = 0; g < numQuads; ++g)
        gather(quads[g], filters + 4 * g, outputs + 4 * g, inputs + 4 * g, std::min(4, count - 4 * g));
    for (int start = 0; start < numSamples; start += 4)
    {
        const int m = std::min(4, numSamples - start);
        for (int g = 0; g < numQuads; ++g)
            step(quads[g], start, m);
    }
    for (int g = 0; g < numQuads; ++g)
        scatter(quads[g], filters + 4 * g);
}
} // namespace

void filterBiquadsSideBySide(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count,
                             int numSamples)
{
    for (int first = 0; first < count; first += 4 * maxQuads)
    {
        const int group = std::min(4 * maxQuads, count - first);
        BiquadIPP* const* f = filters + first;
        float* const* o = outputs + first;
        const float* const* i = inputs + first;
        switch ((group + 3) / 4)
        {
        case 1:
            if (group == 1)
                f[0]->filter(o[0], i[0], numSamples); // a lone channel gains nothing
            else
                runQuads<1>(f, o, i, group, numSamples);
            break;
        case 2:
            runQuads<2>(f, o, i, group, numSamples);
            break;
        case 3:
            runQuads<3>(f, o, i, group, numSamples);
            break;
        default:
            runQuads<4>(f, o, i, group, numSamples);
            break;
        }
    }
}
} // namespace ondo
