#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace tarvo::testing
{
/// `n` samples of seeded uniform noise in [-amplitude, amplitude]: the same on every run.
inline std::vector<float> seededNoise(std::size_t n, unsigned seed, float amplitude = 1.0f)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> uniform(-amplitude, amplitude);
    std::vector<float> v(n);
    for (float& x : v)
        x = uniform(generator);
    return v;
}

/// Multichannel storage with its table of channel pointers, as processors take it.
struct ChannelBlock
{
    ChannelBlock(std::uint32_t numChannels, std::size_t numSamples, float fill = 0.0f)
        : data(numChannels, std::vector<float>(numSamples, fill))
    {
        for (auto& channel : data)
            pointers.push_back(channel.data());
        shifted = pointers;
    }
    /// The channel pointers moved on by `offset` samples. Allocates nothing.
    float** get(std::size_t offset = 0)
    {
        for (std::size_t c = 0; c < pointers.size(); ++c)
            shifted[c] = pointers[c] + offset;
        return shifted.data();
    }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
    std::vector<float*> shifted;
};
} // namespace tarvo::testing
