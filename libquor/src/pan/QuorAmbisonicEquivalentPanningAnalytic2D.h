#pragma once

#include "pan/QuorAmbisonicEquivalentPanningAnalytic.h"

namespace Quor
{
/// The equivalent panning of horizontal Ambisonics, order (n - 1) / 2 rounded down.
class AmbisonicEquivalentPanningAnalytic2D : public AmbisonicEquivalentPanningAnalytic
{
public:
    /// Control thread; allocates.
    AmbisonicEquivalentPanningAnalytic2D(std::uint32_t numSources, std::uint32_t numSpeakers)
        : AmbisonicEquivalentPanningAnalytic(numSources, numSpeakers, 2)
    {
    }
};
} // namespace Quor
