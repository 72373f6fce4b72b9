#include "dsp/TarvoDspBiquadLanes.h"

#include <algorithm>

namespace ondo
{
namespace
{
constexpr int lanes = 8;
constexpr int chunk = 32; // samples interleaved at a time: 1 KiB of stack a direction

struct LaneGroup
{
    alignas(32) float b0[lanes] = {}, b1[lanes] = {}, b2[lanes] = {}, a1[lanes] = {}, a2[lanes] = {};
    alignas(32) float z0[lanes] = {}, z1[lanes] = {};
};

void runGroup(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int used, int numSamples)
{
    LaneGroup g;
    for (int l = 0; l < used; ++l)
    {
        // Taps are installed with a0 = 1, so the primitive holds exactly these values.
        const float* t = filters[l]->getTaps();
        g.b0[l] = t[0];
        g.b1[l] = t[1];
        g.b2[l] = t[2];
        g.a1[l] = t[4];
        g.a2[l] = t[5];
        const float* line = filters[l]->getState().getDelayLine();
        g.z0[l] = line[0];
        g.z1[l] = line[1];
    }
    alignas(32) float x[chunk][lanes] = {};
    alignas(32) float y[chunk][lanes];
    for (int start = 0; start < numSamples; start += chunk)
    {
        const int k = std::min(chunk, numSamples - start);
        for (int l = 0; l < used; ++l)
            for (int i = 0; i < k; ++i)
                x[i][l] = inputs[l][start + i];
        for (int i = 0; i < k; ++i)
        {
            // The same expressions as the primitive's transposed direct form II.
            for (int l = 0; l < lanes; ++l)
            {
                const float in = x[i][l];
                const float out = g.b0[l] * in + g.z0[l];
                g.z0[l] = g.b1[l] * in + g.z1[l] - g.a1[l] * out;
                g.z1[l] = g.b2[l] * in - g.a2[l] * out;
                y[i][l] = out;
            }
        }
        for (int l = 0; l < used; ++l)
            for (int i = 0; i < k; ++i)
                outputs[l][start + i] = y[i][l];
    }
    for (int l = 0; l < used; ++l)
    {
        const float line[2] = {g.z0[l], g.z1[l]};
        filters[l]->getState().setDelayLine(line);
    }
}
} // namespace

void filterBiquadsSideBySide(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count,
                             int numSamples)
{
    for (int first = 0; first < count; first += lanes)
        if (count - first == 1)
            filters[first]->filter(outputs[first], inputs[first], numSamples); // a lone channel gains nothing
        else
            runGroup(filters + first, outputs + first, inputs + first, std::min(lanes, count - first), numSamples);
}
} // namespace ondo
