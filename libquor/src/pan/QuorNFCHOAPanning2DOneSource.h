#pragma once

#include "pan/QuorNFCHOAPanningOneSource.h"

namespace Quor
{
/// A horizontal near-field voice: order 0 feeds one component, every other order two.
class NFCHOAPanning2DOneSource : public NFCHOAPanningOneSource
{
public:
    /// Control thread; allocates.
    explicit NFCHOAPanning2DOneSource(std::uint32_t numChannels) : NFCHOAPanningOneSource(2, numChannels) {}
};
} // namespace Quor
