#pragma once

#include <cstdint>
#include <vector>

namespace tarvo::testing
{
/// Channels of a block, with the table of channel pointers the processors take.
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
} // namespace tarvo::testing
