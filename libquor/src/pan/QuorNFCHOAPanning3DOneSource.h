#pragma once

#include "pan/QuorNFCHOAPanningOneSource.h"

namespace Quor
{
/// A periphonic near-field voice: order l feeds its 2 l + 1 components.
class NFCHOAPanning3DOneSource : public NFCHOAPanningOneSource
{
public:
    /// Control thread; allocates.
    explicit NFCHOAPanning3DOneSource(std::uint32_t numChannels) : NFCHOAPanningOneSource(3, numChannels) {}
};
} // namespace Quor
