#include "pan/QuorVbip2DPanning.h"

#include "pan/QuorGainNormalization.h"

namespace Quor
{
Vbip2DPanning::Vbip2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : VectorBased2DPanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

void Vbip2DPanning::normalizeGains(float* row)
{
    GainNormalization::constantIntensity(row, numOutputs);
}
} // namespace Quor
