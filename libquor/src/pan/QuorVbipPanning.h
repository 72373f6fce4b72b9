#pragma once

#include "pan/QuorVectorBasedPanning.h"

namespace Quor
{
/// Vector-based panning over a loudspeaker sphere (VBIP, constant intensity).
class VbipPanning : public VectorBasedPanning
{
public:
    /// Control thread; allocates.
    VbipPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void normalizeGains(float* row) override;
};
} // namespace Quor
