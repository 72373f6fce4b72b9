#pragma once

#include "pan/QuorNFCHOAPanning.h"

namespace Quor
{
/// Near-field periphonic Ambisonics: (M + 1)^2 components, SN3D by default.
class NFCHOAPanning3D : public NFCHOAPanning
{
public:
    /// Control thread; allocates.
    NFCHOAPanning3D(std::uint32_t numSources, std::uint32_t numSpeakers) : NFCHOAPanning(numSources, numSpeakers, 3) {}
};
} // namespace Quor
