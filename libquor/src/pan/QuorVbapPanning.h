#pragma once

#include "pan/QuorVectorBasedPanning.h"

namespace Quor
{
/// Vector-based panning over a loudspeaker sphere (VBAP, constant power).
class VbapPanning : public VectorBasedPanning
{
public:
    /// Control thread; allocates.
    VbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void normalizeGains(float* row) override;
};
} // namespace Quor
