#include "dsp/TarvoDspFadedBiquadBatch.h"

#include "dsp/TarvoDspBiquadLanes.h"

namespace ondo
{
void FadedBiquadBatch::reserve(std::uint32_t numChannels)
{
    steadyFilters.resize(numChannels);
    steadyOutputs.resize(numChannels);
    steadyInputs.resize(numChannels);
}

void FadedBiquadBatch::add(FadedBiquad& filter, float* out, const float* in, std::uint32_t numSamples)
{
    BiquadIPP* alone = filter.beginBlock();
    if (alone != nullptr && !alone->isGainOnlySection())
    {
        steadyFilters[numSteady] = alone;
        steadyOutputs[numSteady] = out;
        steadyInputs[numSteady] = in;
        ++numSteady;
    }
    else
    {
        filter.runBlock(out, in, numSamples);
    }
}

void FadedBiquadBatch::run(std::uint32_t numSamples)
{
    filterBiquadsSideBySide(steadyFilters.data(), steadyOutputs.data(), steadyInputs.data(), numSteady,
                            static_cast<int>(numSamples));
    numSteady = 0;
}
} // namespace ondo
