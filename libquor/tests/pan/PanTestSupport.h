#pragma once

#include "TestBlock.h"
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

using tarvo::testing::Block;
} // namespace Quor::testing
