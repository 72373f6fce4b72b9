#include "pan/QuorVbap2DPanning.h"

#include "pan/QuorGainNormalization.h"

namespace Quor
{
Vbap2DPanning::Vbap2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : VectorBased2DPanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void Vbap2DPanning::normalizeGains(float* row)
{
    GainNormalization::constantPower(row, numOutputs);
}
} // namespace Quor
