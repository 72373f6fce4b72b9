#pragma once

#include "pan/QuorHoaDiffusePanning.h"

namespace Quor
{
/// A diffuse field in periphonic Ambisonics.
class HoaDiffusePanning3D : public HoaDiffusePanning
{
public:
    /// Control thread; allocates.
    HoaDiffusePanning3D(std::uint32_t numSources, std::uint32_t numSpeakers)
        : HoaDiffusePanning(numSources, numSpeakers, 3)
    {
    }
};
} // namespace Quor
