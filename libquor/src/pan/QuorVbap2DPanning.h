#pragma once

#include "pan/QuorVectorBased2DPanning.h"

namespace Quor
{
/// Pairwise panning on a horizontal ring (VBAP, constant power).
class Vbap2DPanning : public VectorBased2DPanning
{
public:
    /// Control thread; allocates.
    Vbap2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void normalizeGains(float* row) override;
};
} // namespace Quor
