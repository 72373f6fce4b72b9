#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// A mid (forward cardioid) and side (figure of eight) pair, unmatrixed.
class StereoMSPanning : public AmplitudePanning
{
public:
    /// Control thread; allocates.
    StereoMSPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return false; }
    /// "mid", "side", then "dumpout".
    std::string getOutletName(std::int32_t index) const override;
};
} // namespace Quor
