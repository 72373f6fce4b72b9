#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// A coincident pair of cardioids at +-45 degrees.
class StereoXYPanning : public AmplitudePanning
{
public:
    /// Control thread; allocates.
    StereoXYPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return false; }
};
} // namespace Quor
