#pragma once

#include "pan/QuorNFCHOAPanning.h"

namespace Quor
{
/// Near-field horizontal Ambisonics: 2M + 1 components, SN2D by default.
class NFCHOAPanning2D : public NFCHOAPanning
{
public:
    /// Control thread; allocates.
    NFCHOAPanning2D(std::uint32_t numSources, std::uint32_t numSpeakers) : NFCHOAPanning(numSources, numSpeakers, 2) {}
};
} // namespace Quor
