#include "pan/QuorVbapPanning.h"

#include "pan/QuorGainNormalization.h"

namespace Quor
{
VbapPanning::VbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : VectorBasedPanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void VbapPanning::normalizeGains(float* row)
{
    GainNormalization::constantPower(row, numOutputs);
}
} // namespace Quor
