#pragma once

#include "pan/QuorAmbisonicEquivalentPanningAnalytic.h"

namespace Quor
{
/// The equivalent panning of periphonic Ambisonics, order sqrt(n) - 1 rounded down.
class AmbisonicEquivalentPanningAnalytic3D : public AmbisonicEquivalentPanningAnalytic
{
public:
    /// Control thread; allocates.
    AmbisonicEquivalentPanningAnalytic3D(std::uint32_t numSources, std::uint32_t numSpeakers)
        : AmbisonicEquivalentPanningAnalytic(numSources, numSpeakers, 3)
    {
    }
};
} // namespace Quor
