#include "pan/QuorVbipPanning.h"

#include "pan/QuorGainNormalization.h"

namespace Quor
{
VbipPanning::VbipPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : VectorBasedPanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void VbipPanning::normalizeGains(float* row)
{
    GainNormalization::constantIntensity(row, numOutputs);
}
} // namespace Quor
