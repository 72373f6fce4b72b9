#pragma once

#include "pan/QuorHOAPanning.h"

namespace Quor
{
/// Horizontal Ambisonics: 2M + 1 circular-harmonic components, SN2D by default.
class HOA2DPanning : public HOAPanning
{
public:
    /// Control thread; allocates.
    HOA2DPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : HOAPanning(numSources, numSpeakers, 2) {}
};
} // namespace Quor
