#include "pan/QuorNullPanning.h"

#include <cstring>

namespace Quor
{
void NullPanning::process(float** outputs, float** /*inputs*/, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        std::memset(outputs[o], 0, numSamples * sizeof(float));
}

void NullPanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    process(outputs, inputs, numSamples);
}
} // namespace Quor
