#pragma once

#include "pan/QuorAmplitudePanning.h"

#include <map>

namespace Quor
{
/// Constant-power pairwise panning on the azimuth circle: a source sounds on the two
/// speakers whose azimuths enclose its own. Elevation and distance play no role.
class AngularPanning : public AmplitudePanning
{
public:
    /// Installs the default layout for `numSpeakers`. Control thread; allocates.
    AngularPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates. Speakers at one azimuth share it: the later index wins.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return true; }

private:
    /// Speaker index by mathematical azimuth in radians.
    std::map<float, std::uint32_t> speakerAngles;
};
} // namespace Quor
