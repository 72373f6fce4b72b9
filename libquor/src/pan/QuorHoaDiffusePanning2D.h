#pragma once

#include "pan/QuorHoaDiffusePanning.h"

namespace Quor
{
/// A diffuse field in horizontal Ambisonics.
class HoaDiffusePanning2D : public HoaDiffusePanning
{
public:
    /// Control thread; allocates.
    HoaDiffusePanning2D(std::uint32_t numSources, std::uint32_t numSpeakers)
        : HoaDiffusePanning(numSources, numSpeakers, 2)
    {
    }
};
} // namespace Quor
