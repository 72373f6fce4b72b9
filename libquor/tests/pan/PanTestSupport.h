#pragma once

#include "pan/QuorAmplitudePanning.h"

#include <cstdint>
#include <vector>

namespace Quor::testing
{
/// The gains a panner last asked its matrix for, source by source.
inline std::vector<float> gainsOf(const AmplitudePanning& p, std::uint32_t source)
{
    std::vector<float> row(p.getNumOutputs());
    for (std::uint32_t o = 0; o < row.size(); ++o)
        row[o] = p.getMatrix().getPendingGain(source, o);
    return row;
}

inline float powerOf(const std::vector<float>& row)
{
    float sum = 0.0f;
    for (float g : row)
        sum += g * g;
    return sum;
}

/// Channels of a block with the pointer table the processors take.
struct Block
{
    Block(std::uint32_t channels, std::uint32_t samples, float value = 0.0f)
        : data(channels, std::vector<float>(samples, value)), pointers(channels)
    {
        for (std::uint32_t c = 0; c < channels; ++c)
            pointers[c] = data[c].data();
    }
    float** get() { return pointers.data(); }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};
} // namespace Quor::testing
