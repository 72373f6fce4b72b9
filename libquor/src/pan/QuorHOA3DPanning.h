#pragma once

#include "pan/QuorHOAPanning.h"

namespace Quor
{
/// Periphonic Ambisonics: (M + 1)^2 spherical-harmonic components, SN3D by default.
class HOA3DPanning : public HOAPanning
{
public:
    /// Control thread; allocates.
    HOA3DPanning(std::uint32_t numSources, std::uint32_t numSpeakers) : HOAPanning(numSources, numSpeakers, 3) {}
};
} // namespace Quor
