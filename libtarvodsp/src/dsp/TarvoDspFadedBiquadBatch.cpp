#include "dsp/TarvoDspFadedBiquadBatch.h"

#include "dsp/TarvoDspBiquadLanes.h"

namespace ondo
{
namespace
{
/// The instance that plays alone through the block, if it does the work of a biquad.
BiquadIPP* steadySection(FadedBiquad& filter)
{
    BiquadIPP* alone = filter.beginBlock();
    return alone != nullptr && !alone->isGainOnlySection() ? alone : nullptr;
}
} // namespace

void FadedBiquadBatch::Queue::reserve(std::uint32_t numChannels)
{
    firsts.resize(numChannels);
    seconds.resize(numChannels);
    outputs.resize(numChannels);
    inputs.resize(numChannels);
}

void FadedBiquadBatch::Queue::push(BiquadIPP* first, BiquadIPP* second, float* out, const float* in)
{
    firsts[size] = first;
    seconds[size] = second;
    outputs[size] = out;
    inputs[size] = in;
    ++size;
}

void FadedBiquadBatch::Queue::run(std::uint32_t numSamples, bool twoStages)
{
    if (size > 0)
        filterBiquadsSideBySide(firsts.data(), outputs.data(), inputs.data(), size, static_cast<int>(numSamples),
                                twoStages ? seconds.data() : nullptr);
    size = 0;
}

void FadedBiquadBatch::reserve(std::uint32_t numChannels)
{
    single.reserve(numChannels);
    pairs.reserve(numChannels);
}

void FadedBiquadBatch::add(FadedBiquad& filter, float* out, const float* in, std::uint32_t numSamples)
{
    addBegun(filter, filter.beginBlock(), out, in, numSamples);
}

void FadedBiquadBatch::addBegun(FadedBiquad& filter, BiquadIPP* alone, float* out, const float* in,
                                std::uint32_t numSamples)
{
    if (alone == nullptr)
        filter.runBlock(out, in, numSamples);
    else if (alone->isGainOnlySection())
        alone->filter(out, in, static_cast<int>(numSamples)); // what `runBlock` would run, at once
    else
        single.push(alone, nullptr, out, in);
}

void FadedBiquadBatch::add(FadedBiquad& first, FadedBiquad& second, float* out, const float* in,
                           std::uint32_t numSamples)
{
    // Both stage updates run first, as each filter's own block would run them.
    BiquadIPP* steadyFirst = steadySection(first);
    BiquadIPP* steadySecond = steadySection(second);
    if (steadyFirst != nullptr && steadySecond != nullptr)
    {
        pairs.push(steadyFirst, steadySecond, out, in);
        return;
    }
    first.runBlock(out, in, numSamples);
    second.runBlock(out, out, numSamples);
}

void FadedBiquadBatch::run(std::uint32_t numSamples)
{
    single.run(numSamples, false);
    pairs.run(numSamples, true);
}

FadedBiquadBatch::Steady FadedBiquadBatch::takeSteady(std::uint32_t count)
{
    const auto n = static_cast<int>(count);
    if (n == 0)
        return {};
    if (single.size == n && pairs.size == 0)
    {
        single.size = 0;
        return {single.firsts.data(), nullptr};
    }
    if (pairs.size == n && single.size == 0)
    {
        pairs.size = 0;
        return {pairs.firsts.data(), pairs.seconds.data()};
    }
    return {};
}
} // namespace ondo
